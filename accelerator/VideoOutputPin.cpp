#include "accelerator/VideoOutputPin.h"

#include "accelerator/AcceleratorFilter.h"
#include "accelerator/FrameFormat.h"
#include "diagnostics/LogLine.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tarvo::accelerator {
namespace {

constexpr const char* decideBufferSizeName = "CVideoOutputPin::DecideBufferSize";

/// In rows of the same kind and number; they may be longer, and stand in the other order.
bool holdsTheSameRows(const BITMAPINFOHEADER& one, const BITMAPINFOHEADER& other) noexcept {
    return one.biBitCount == other.biBitCount && one.biCompression == other.biCompression &&
           one.biPlanes == other.biPlanes &&
           std::abs(std::int64_t{one.biHeight}) == std::abs(std::int64_t{other.biHeight});
}

} // namespace

CVideoOutputPin::CVideoOutputPin(CAcceleratorFilter& filter, const diagnostics::ObjectLog& log)
    : COutputPin(filter, OLESTR("video")), m_accelerator(filter), m_log(log) {}

HRESULT CVideoOutputPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    const dshow::CPin& input = m_accelerator.inputPin();
    if (!input.isConnected())
        return S_FALSE;
    const AM_MEDIA_TYPE& taken = input.connectionType();
    if (type.majortype != taken.majortype || type.subtype != taken.subtype ||
        type.formattype != taken.formattype)
        return S_FALSE;
    const BITMAPINFOHEADER* const offered = bitmapHeader(type);
    const BITMAPINFOHEADER* const own = bitmapHeader(taken);
    return offered != nullptr && own != nullptr && holdsTheSameRows(*offered, *own) ? S_OK : S_FALSE;
}

HRESULT CVideoOutputPin::mediaType(LONG position, dshow::CPinType& type) {
    if (position < 0)
        return E_INVALIDARG;
    const std::lock_guard lock(m_accelerator.lock());
    const dshow::CPin& input = m_accelerator.inputPin();
    if (position > 0 || !input.isConnected())
        return VFW_S_NO_MORE_ITEMS;
    return type.assign(input.connectionType());
}

HRESULT CVideoOutputPin::decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) {
    if (!isConnected())
        return VFW_E_NOT_CONNECTED;
    const AM_MEDIA_TYPE& type = connectionType();
    if (type.majortype == GUID{})
        return E_FAIL;
    ALLOCATOR_PROPERTIES request = wanted;
    request.cBuffers = 1;
    request.cbPrefix = 0;
    // Formats whose samples vary in size leave it open: then it is the picture's.
    const auto format = readFrameFormat(type);
    const std::int64_t bytes =
        type.lSampleSize != 0 || !format ? std::int64_t{type.lSampleSize} : format->imageBytes;
    if (bytes > std::numeric_limits<LONG>::max())
        return E_FAIL;
    request.cbBuffer = static_cast<LONG>(bytes);
    ALLOCATOR_PROPERTIES actual{};
    if (const HRESULT result = allocator.SetProperties(&request, &actual); FAILED(result)) {
        TARVO_LOG(m_log.log, diagnostics::LogCategory::error, m_log.instanceId, decideBufferSizeName, "%s",
                  "Failed in SetProperties");
        return result;
    }
    if (actual.cBuffers < request.cBuffers || actual.cbBuffer < request.cbBuffer) {
        TARVO_LOG(m_log.log, diagnostics::LogCategory::error, m_log.instanceId, decideBufferSizeName, "%s",
                  "DecideBufferSize: Failed in checking properties");
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CVideoOutputPin::connectionMade() {
    const HRESULT result = COutputPin::connectionMade();
    if (SUCCEEDED(result))
        m_accelerator.outputConnected();
    return result;
}

void CVideoOutputPin::connectionEnded() noexcept {
    COutputPin::connectionEnded();
}

HRESULT CVideoOutputPin::passQuality(const Quality& quality) {
    com::ComPtr<IPin> upstream;
    {
        const std::lock_guard lock(m_accelerator.lock());
        upstream = com::ComPtr<IPin>(m_accelerator.inputPin().connected());
    }
    const auto sink = upstream.as<IQualityControl>();
    return sink ? sink->Notify(&m_accelerator, quality) : E_NOTIMPL;
}

} // namespace tarvo::accelerator
