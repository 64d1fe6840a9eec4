#pragma once

#include "platform/InterfaceTypes.h"

#include <atomic>
#include <cstdint>

namespace tarvo::transform {

/// When an output frame shall be shown, as its buffer's status says it.
struct OutputTiming {
    DWORD flags = 0;           ///< DMO_OUTPUT_DATA_BUFFERF_…
    std::int64_t time = 0;     ///< 0 without a time of the input
    std::int64_t duration = 0; ///< 0: unknown
};

/// Where the bytes of an output frame come from.
enum class FrameSource {
    cache,             ///< copied from the cached frame
    renderTarget,      ///< read back into the output buffer
    renderTargetCached ///< read back into the cached frame, and copied from there
};

/// What an output frame's source depends on.
struct FrameCircumstances {
    bool haveSettingsChanged = false;
    bool hasCachedFrame = false;
    bool hasEverHadImageSinks = false; ///< those look at what is read back
    double outputFrameRate = 0.0;
    double inputFrameRate = 0.0;
};

/// The time line of the frames: how long each is shown and how many are made of one input.
///
/// An input that lasts longer than an output frame is shown as several: the first at its own time, the next
/// ones a duration apart, each but the last announced as incomplete. Durations and times count 100 ns; times
/// beyond 64 bits stay at the end of the range.
///
/// The streaming thread makes the changes, under its locks. What is marked so may be read by any thread and
/// be a frame old there.
class CFramePacing {
public:
    /// An input frame is held from now on. `flags` DMO_INPUT_DATA_BUFFERF_…; a duration of at most 1 ms is
    /// distrusted and taken from the rate instead.
    void holdInput(DWORD flags, REFERENCE_TIME time, REFERENCE_TIME duration, double inputFrameRate);
    /// Lets the input go without a frame of it.
    void dropInput() { m_isInputHeld = false; }
    bool isInputHeld() const { return m_isInputHeld; }

    /// Whether there is anything to show: an input, or a frame since the last flush that can be repeated.
    bool hasOutput() const { return m_isInputHeld || m_outputCount != 0; }

    /// Begins the next output frame and moves the time line on to it.
    OutputTiming beginOutput(double outputFrameRate);
    /// What begun was is on its way: counts it and lets the input go.
    void finishOutput();

    FrameSource frameSource(const FrameCircumstances& circumstances) const;

    /// Forgets input and time line; the next frame starts at its own time.
    void flush();

    // Any thread.
    /// Begin and end of the last output frame; 0 before one.
    std::int64_t lastOutputTime() const { return m_lastOutputTime.load(std::memory_order_relaxed); }
    std::int64_t nextOutputTime() const { return m_nextOutputTime.load(std::memory_order_relaxed); }
    /// Since the last flush.
    std::uint32_t outputCount() const { return m_outputCount.load(std::memory_order_relaxed); }
    /// The last output frame had no new input behind it.
    bool wasLastOutputRepeat() const { return m_wasLastOutputRepeat.load(std::memory_order_relaxed); }

private:
    bool m_isInputHeld = false;
    bool m_isInputTimeValid = false;
    std::int64_t m_inputTime = 0;
    std::int64_t m_inputDuration = 0; ///< 0: unknown
    std::atomic<std::int64_t> m_lastOutputTime{0};
    std::atomic<std::int64_t> m_nextOutputTime{0};
    std::atomic<std::uint32_t> m_outputCount{0};
    std::atomic<bool> m_wasLastOutputRepeat{false};
};

} // namespace tarvo::transform
