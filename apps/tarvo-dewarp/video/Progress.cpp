#include "apps/tarvo-dewarp/video/Progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace tarvo::apps::video {
namespace {

constexpr auto leastPause = std::chrono::milliseconds(100);
constexpr int barWidth = 20;

/// At least two digits.
std::string twoDigits(long long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string duration(double seconds) {
    // A guess may be long when little is done yet.
    const auto whole = static_cast<long long>(std::min(std::ceil(seconds), 359'999.0));
    const std::string minutesAndSeconds = twoDigits(whole / 60 % 60) + ":" + twoDigits(whole % 60);
    return whole < 3600 ? minutesAndSeconds : std::to_string(whole / 3600) + ":" + minutesAndSeconds;
}

} // namespace

std::string progressText(const ProgressState& state) {
    const double perSecond = state.seconds > 0.0 ? static_cast<double>(state.frames) / state.seconds : 0.0;
    std::array<char, 32> speed{};
    std::snprintf(speed.data(), speed.size(), "  %.1f fps", perSecond);
    // A total that is passed was a wrong one.
    if (!state.total || *state.total < state.frames || *state.total == 0) {
        return std::to_string(state.frames) + " frames" + speed.data();
    }
    const double share = static_cast<double>(state.frames) / static_cast<double>(*state.total);
    const int done = static_cast<int>(share * barWidth);
    const std::string percent = std::to_string(static_cast<int>(share * 100.0));
    std::string text = "[" + std::string(static_cast<std::size_t>(done), '#') +
                       std::string(static_cast<std::size_t>(barWidth - done), '-') + "]" +
                       std::string(4 - percent.size(), ' ') + percent + "%  " + std::to_string(state.frames) +
                       "/" + std::to_string(*state.total) + " frames" + speed.data();
    if (perSecond > 0.0) {
        text += "  " + duration(static_cast<double>(*state.total - state.frames) / perSecond) + " left";
    }
    return text;
}

CProgress::CProgress(std::ostream* stream, std::optional<std::int64_t> total) : m_stream(stream) {
    m_state.total = total;
}

CProgress::~CProgress() {
    if (m_width != 0) {
        show("");
        *m_stream << '\r' << std::flush;
    }
}

void CProgress::frameDone() {
    ++m_state.frames;
    const Clock::time_point now = Clock::now();
    if (m_stream == nullptr || now - m_shown < leastPause) {
        return;
    }
    m_shown = now;
    m_state.seconds = std::chrono::duration<double>(now - m_begin).count();
    show(progressText(m_state));
}

void CProgress::show(const std::string& text) {
    const std::string rest(m_width > text.size() ? m_width - text.size() : 0, ' ');
    *m_stream << '\r' << text << rest << std::flush;
    m_width = text.size();
}

std::ostream* terminalForProgress() {
#ifdef _WIN32
    const bool isTerminal = _isatty(_fileno(stderr)) != 0;
#else
    const bool isTerminal = isatty(STDERR_FILENO) != 0;
#endif
    return isTerminal ? &std::cerr : nullptr;
}

} // namespace tarvo::apps::video
