#pragma once

#include "apps/host/TransformStream.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tarvo::apps::video {

/// Leaves frames out where fewer are wanted than there are. The transform shows every frame that it is given,
/// so this is the host's business: of a steady row of moments, each shows the frame that is seen then.
class CInputPace {
public:
    /// With a rate below that of the input only; without one every frame passes.
    explicit CInputPace(const std::optional<FrameRate>& rate) : m_rate(rate) {}

    /// The time that a frame is to be shown with, none for one that is left out. Frames come in order.
    std::optional<host::FrameTime> place(std::int64_t start, std::int64_t duration) {
        if (!m_rate) {
            return host::FrameTime{start, duration > 0 ? std::optional(duration) : std::nullopt};
        }
        // Files round their times, some to milliseconds: a moment just before a frame is meant for it.
        const std::int64_t grace = std::min<std::int64_t>(ticksPerSecond / 1000, duration / 4);
        const std::int64_t first = std::max(firstSince(start - grace), m_next);
        const std::int64_t end = std::max(firstSince(start + duration - grace), first);
        if (end == first) {
            return std::nullopt;
        }
        m_next = end;
        return host::FrameTime{startOf(first, *m_rate), startOf(end, *m_rate) - startOf(first, *m_rate)};
    }

private:
    /// The number of the first moment at or after a time.
    std::int64_t firstSince(std::int64_t time) const {
        const std::int64_t nearest = indexAt(time, *m_rate);
        return startOf(nearest, *m_rate) < time ? nearest + 1 : nearest;
    }

    std::optional<FrameRate> m_rate;
    std::int64_t m_next = 0; ///< number of the first moment that no frame has
};

} // namespace tarvo::apps::video
