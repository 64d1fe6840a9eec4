#include "transform/streaming/QualityControl.h"

#include "geometry/Enumerations.h"
#include "transform/streaming/FrameRate.h"

#include <algorithm>
#include <utility>

namespace tarvo::transform {
namespace {

using diagnostics::LogCategory;

constexpr const char* context = "Quality Control";
constexpr std::int64_t reportPeriod = 10'000'000;
constexpr std::int32_t largestDeviation = 2'500'000;
constexpr std::int64_t usualSmoothing = 32;
constexpr int ticksPerMillisecond = 10'000;
constexpr LONG normalProportion = 1000;

/// The true difference, or the end of the range on its side.
std::int64_t difference(std::int64_t minuend, std::int64_t subtrahend) {
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    if (subtrahend > 0 && minuend < least + subtrahend)
        return least;
    if (subtrahend < 0 && minuend > most + subtrahend)
        return most;
    return minuend - subtrahend;
}

/// The difference as far as 32 bits hold it: the lower half.
std::int32_t wrappedDifference(std::int64_t minuend, std::int64_t subtrahend) {
    const auto difference = static_cast<std::uint64_t>(minuend) - static_cast<std::uint64_t>(subtrahend);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(difference));
}

} // namespace

HRESULT CQualityControl::SetNow(REFERENCE_TIME now) {
    com::ComPtr<IQualityControl> upstream;
    Finding finding;
    {
        const std::lock_guard lock(m_lock);
        if (!m_isEnabled || m_pacing.lastOutputTime() == 0)
            return S_OK;
        finding = judge(now);
        upstream = m_upstream;
    }
    if (finding.isReportDue)
        report(finding);
    if (!m_pacing.wasLastOutputRepeat() && upstream)
        notify(*upstream, finding);
    return S_OK;
}

CQualityControl::Finding CQualityControl::judge(std::int64_t now) {
    Finding finding;
    finding.outputFrameRate = m_settings.outputFrameRate;
    finding.inputFrameRate = m_settings.inputFrameRate;
    finding.deviation = wrappedDifference(now, m_pacing.lastOutputTime());

    const std::int64_t wholeRate = integerPart(finding.outputFrameRate);
    const std::int64_t smoothing = wholeRate < 1 ? usualSmoothing : wholeRate;
    const std::int64_t step = (std::int64_t{finding.deviation} - m_state.smoothedDeviation) / smoothing;
    m_state.smoothedDeviation = static_cast<std::int32_t>(m_state.smoothedDeviation + step);
    m_state.maximumDeviation = std::max(m_state.maximumDeviation, finding.deviation);

    const bool isRateLowered = lowerOutputRate(finding);
    const std::int64_t elapsed = difference(now, m_state.lastReportTime);
    finding.isReportDue = elapsed > reportPeriod || isRateLowered;
    if (finding.isReportDue) {
        const std::uint32_t count = m_pacing.outputCount();
        // Negative after a flush, which counts the frames anew but not those of the last report.
        const auto frames = static_cast<std::int32_t>(count - m_state.lastReportCount);
        if (elapsed != 0)
            finding.measuredRate = frames / (static_cast<double>(elapsed) / ticksPerSecond);
        finding.reported = m_state;
        m_state.maximumDeviation = noDeviation;
        m_state.lastReportTime = now;
        m_state.lastReportCount = count;
        if (isRateLowered)
            m_state.smoothedDeviation = 0;
    }
    finding.smoothedDeviation = m_state.smoothedDeviation;
    return finding;
}

bool CQualityControl::lowerOutputRate(Finding& finding) {
    if (geometry::hasFlag(m_settings.options, geometry::OptionFlag::noOutputFpsDecimation) ||
        m_state.smoothedDeviation < largestDeviation || finding.outputFrameRate == finding.inputFrameRate)
        return false;
    double lowered = finding.outputFrameRate / 2.0;
    const bool isInputRate = !(lowered > finding.inputFrameRate);
    if (isInputRate)
        lowered = finding.inputFrameRate;
    // What the host puts meanwhile counts more.
    double expected = finding.outputFrameRate;
    if (!m_settings.outputFrameRate.compare_exchange_strong(expected, lowered))
        return false;
    finding.outputFrameRate = lowered;
    // The streaming thread may be at it; it lets go of it before it uses it again.
    if (isInputRate)
        m_cachedFrame.requestFree();
    return true;
}

void CQualityControl::report(const Finding& finding) const {
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, context,
              "Timestamp deviation: %i (%i) ms, Output FPS (target): %.1f (%.1f)",
              int{finding.reported.smoothedDeviation / ticksPerMillisecond},
              int{finding.reported.maximumDeviation / ticksPerMillisecond}, finding.measuredRate,
              finding.outputFrameRate);
}

void CQualityControl::notify(IQualityControl& upstream, const Finding& finding) const {
    Quality quality{};
    quality.Type = finding.deviation < 1 ? Flood : Famine;
    quality.Proportion = normalProportion;
    quality.Late =
        finding.outputFrameRate != finding.inputFrameRate ? finding.smoothedDeviation : finding.deviation;
    quality.TimeStamp = m_pacing.lastOutputTime();
    void* sender = nullptr;
    HRESULT result = m_controllingUnknown.QueryInterface(__uuidof(IBaseFilter), &sender);
    com::ComPtr<IBaseFilter> filter;
    if (SUCCEEDED(result)) {
        filter.attach(static_cast<IBaseFilter*>(sender));
        result = upstream.Notify(filter.get(), quality);
    }
    if (FAILED(result))
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, context, "%s",
                  "Failed notify upstream filter pin");
}

HRESULT CQualityControl::SetStatus(DWORD flags) {
    const bool isEnabled = (flags & DMO_QUALITY_STATUS_ENABLED) != 0;
    com::ComPtr<IQualityControl> old;
    {
        const std::lock_guard lock(m_lock);
        m_isEnabled = isEnabled;
        old = std::exchange(m_upstream, nullptr);
    }
    old.reset();
    if (!isEnabled)
        return S_OK;
    com::ComPtr<IQualityControl> found = findUpstream();
    const std::lock_guard lock(m_lock);
    // Unless another call was faster to switch it off again.
    if (m_isEnabled)
        std::swap(m_upstream, found);
    return S_OK;
}

HRESULT CQualityControl::GetStatus(DWORD* flags) const {
    if (flags == nullptr)
        return E_POINTER;
    const std::lock_guard lock(m_lock);
    *flags = m_isEnabled ? DMO_QUALITY_STATUS_ENABLED : 0;
    return S_OK;
}

com::ComPtr<IQualityControl> CQualityControl::findUpstream() const {
    void* answer = nullptr;
    if (FAILED(m_controllingUnknown.QueryInterface(__uuidof(IBaseFilter), &answer)))
        return nullptr;
    com::ComPtr<IBaseFilter> filter;
    filter.attach(static_cast<IBaseFilter*>(answer));
    com::ComPtr<IEnumPins> pins;
    if (!filter || FAILED(filter->EnumPins(pins.put())) || !pins)
        return nullptr;
    com::ComPtr<IPin> pin;
    if (pins->Next(1, pin.put(), nullptr) != S_OK || !pin)
        return nullptr;
    com::ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.put())) || !peer)
        return nullptr;
    return peer.as<IQualityControl>();
}

void CQualityControl::flush() {
    const std::lock_guard lock(m_lock);
    m_state.smoothedDeviation = 0;
    m_state.maximumDeviation = noDeviation;
    m_state.lastReportTime = 0;
}

} // namespace tarvo::transform
