#include "transform/streaming/FramePacing.h"

#include "transform/streaming/FrameRate.h"

#include <algorithm>
#include <limits>

namespace tarvo::transform {
namespace {

constexpr std::int64_t earliest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max();

/// Durations up to 1 ms come from sources that make them up.
constexpr std::int64_t longestDistrustedDuration = 10'000;

std::int64_t later(std::int64_t time, std::int64_t duration) {
    return time > latest - duration ? latest : time + duration;
}

/// minuend − subtrahend ≥ limit, in true numbers, for limits above the smallest value.
bool isDifferenceAtLeast(std::int64_t minuend, std::int64_t subtrahend, std::int64_t limit) {
    if (subtrahend > 0 && minuend < earliest + subtrahend)
        return false;
    if (subtrahend < 0 && minuend > latest + subtrahend)
        return true;
    return minuend - subtrahend >= limit;
}

} // namespace

void CFramePacing::holdInput(DWORD flags, REFERENCE_TIME time, REFERENCE_TIME duration,
                             double inputFrameRate) {
    m_isInputHeld = true;
    m_isInputTimeValid = (flags & DMO_INPUT_DATA_BUFFERF_TIME) != 0;
    m_inputTime = m_isInputTimeValid ? time : 0;
    if ((flags & DMO_INPUT_DATA_BUFFERF_TIMELENGTH) != 0 && duration > longestDistrustedDuration)
        m_inputDuration = duration;
    else
        m_inputDuration = ticksPerFrame(inputFrameRate);
}

OutputTiming CFramePacing::beginOutput(double outputFrameRate) {
    OutputTiming timing;
    timing.flags = DMO_OUTPUT_DATA_BUFFERF_SYNCPOINT;
    timing.duration = m_inputDuration;
    if (outputFrameRate > 0.0)
        timing.duration = std::min(ticksPerFrame(outputFrameRate), m_inputDuration);
    if (m_isInputTimeValid) {
        timing.time = m_isInputHeld ? std::max(m_inputTime, lastOutputTime())
                                    : later(lastOutputTime(), timing.duration);
        timing.flags |= DMO_OUTPUT_DATA_BUFFERF_TIME;
    }
    if (timing.duration > 0) {
        timing.flags |= DMO_OUTPUT_DATA_BUFFERF_TIMELENGTH;
        // (input time + input duration) − (time + duration) ≥ duration ÷ 2, with no sum that could be too
        // large.
        const std::int64_t limit = timing.duration / 2 - (m_inputDuration - timing.duration);
        if (m_isInputTimeValid && isDifferenceAtLeast(m_inputTime, timing.time, limit))
            timing.flags |= DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE;
    }
    m_lastOutputTime = timing.time;
    m_nextOutputTime = later(timing.time, timing.duration);
    return timing;
}

void CFramePacing::finishOutput() {
    m_wasLastOutputRepeat = !m_isInputHeld;
    ++m_outputCount;
    m_isInputHeld = false;
}

FrameSource CFramePacing::frameSource(const FrameCircumstances& circumstances) const {
    if (!m_isInputHeld && !circumstances.haveSettingsChanged && circumstances.hasCachedFrame)
        return FrameSource::cache;
    const bool makesMoreFrames = circumstances.outputFrameRate > circumstances.inputFrameRate;
    return makesMoreFrames && !circumstances.hasEverHadImageSinks ? FrameSource::renderTargetCached
                                                                  : FrameSource::renderTarget;
}

void CFramePacing::flush() {
    m_isInputHeld = false;
    m_isInputTimeValid = false;
    m_inputTime = 0;
    m_inputDuration = 0;
    m_lastOutputTime = 0;
    m_nextOutputTime = 0;
    m_outputCount = 0;
}

} // namespace tarvo::transform
