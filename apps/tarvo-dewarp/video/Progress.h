#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace tarvo::apps::video {

/// How far the work is, as a line of text.
struct ProgressState {
    std::int64_t frames = 0; ///< done
    std::optional<std::int64_t> total;
    double seconds = 0.0; ///< since the beginning
};

/// For instance "[########------------]  40%  60/150 frames  45.2 fps  00:02 left", without a total only
/// "60 frames  45.2 fps".
std::string progressText(const ProgressState& state);

/// A line about the progress which is drawn over again, ten times a second at most, and in the end gone.
class CProgress {
public:
    /// Without a stream nothing is shown.
    CProgress(std::ostream* stream, std::optional<std::int64_t> total);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void frameDone();

private:
    using Clock = std::chrono::steady_clock;

    void show(const std::string& text);

    std::ostream* m_stream;
    ProgressState m_state;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_shown;
    std::size_t m_width = 0; ///< of what stands there
};

/// The standard error stream if it is a terminal's, else null.
std::ostream* terminalForProgress();

} // namespace tarvo::apps::video
