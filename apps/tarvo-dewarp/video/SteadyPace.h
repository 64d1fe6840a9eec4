#pragma once

#include "apps/tarvo-dewarp/video/FrameRate.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tarvo::apps::video {

/// Fits frames with times of their own into a file where frames only have numbers. The frame that came last
/// is held back until it is known how long it is shown:
///
///     write the held frame repeatsUntil(start) times; hold the new one; … write the held one repeatsToEnd()
///
/// A frame that falls onto the number of the one before takes its place.
class CSteadyPace {
public:
    explicit CSteadyPace(const FrameRate& rate) : m_rate(rate) {}

    /// How often the held frame is to be written before one that begins at `start` takes its place.
    std::int64_t repeatsUntil(std::int64_t start, std::int64_t duration) {
        m_end = start + duration;
        const std::int64_t index = indexAt(start, m_rate);
        if (!m_held) {
            m_held = index;
            return 0;
        }
        const std::int64_t repeats = std::max<std::int64_t>(index - *m_held, 0);
        *m_held += repeats;
        return repeats;
    }

    /// How often the last frame is to be written; 0 if there was none.
    std::int64_t repeatsToEnd() const {
        return m_held ? std::max<std::int64_t>(indexAt(m_end, m_rate) - *m_held, 1) : 0;
    }

private:
    FrameRate m_rate;
    std::optional<std::int64_t> m_held; ///< number of the held frame
    std::int64_t m_end = 0;
};

} // namespace tarvo::apps::video
