#include "transform/streaming/StreamTypes.h"

#include "com/Trace.h"
#include "transform/streaming/MediaObjectResults.h"

namespace tarvo::transform {
namespace {

/// Flags of both kinds of stream, whose names not all headers have: 1 whole samples, 4 fixed sample size.
constexpr DWORD wholeSamplesOfFixedSize = 1 | 4;

HRESULT checkStream(DWORD stream) {
    return stream == 0 ? S_OK : invalidStreamIndex;
}

template<class... Pointers>
HRESULT checkStream(DWORD stream, Pointers*... pointers) {
    if (stream != 0)
        return invalidStreamIndex;
    return ((pointers != nullptr) && ...) ? S_OK : E_POINTER;
}

} // namespace

HRESULT CStreamTypes::GetStreamCount(DWORD* inputStreams, DWORD* outputStreams) {
    if (inputStreams == nullptr || outputStreams == nullptr)
        return E_POINTER;
    *inputStreams = 1;
    *outputStreams = 1;
    return S_OK;
}

HRESULT CStreamTypes::GetInputStreamInfo(DWORD stream, DWORD* flags) {
    RETURN_IF_FAILED(checkStream(stream, flags));
    *flags = wholeSamplesOfFixedSize;
    return S_OK;
}

HRESULT CStreamTypes::GetOutputStreamInfo(DWORD stream, DWORD* flags) {
    RETURN_IF_FAILED(checkStream(stream, flags));
    *flags = wholeSamplesOfFixedSize;
    return S_OK;
}

HRESULT CStreamTypes::GetInputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) const {
    RETURN_IF_FAILED(checkStream(stream));
    return m_negotiation.offerInputType(index, type);
}

HRESULT CStreamTypes::GetOutputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) {
    RETURN_IF_FAILED(checkStream(stream));
    return m_negotiation.offerOutputType(index, isInputTypeSet(), type);
}

HRESULT CStreamTypes::SetInputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) {
    RETURN_IF_FAILED(checkStream(stream));
    return setType(m_input, &CTypeNegotiation::checkInputType, type, flags);
}

HRESULT CStreamTypes::SetOutputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) {
    RETURN_IF_FAILED(checkStream(stream));
    return setType(m_output, &CTypeNegotiation::checkOutputType, type, flags);
}

HRESULT CStreamTypes::setType(Stream& stream, Check check, const DMO_MEDIA_TYPE* type, DWORD flags) {
    constexpr DWORD knownFlags = DMO_SET_TYPEF_TEST_ONLY | DMO_SET_TYPEF_CLEAR;
    if ((flags & ~knownFlags) != 0)
        return E_INVALIDARG;
    if ((flags & DMO_SET_TYPEF_CLEAR) != 0) {
        stream.isSet = false;
        stream.type.reset();
        Flush();
        return FreeStreamingResources();
    }
    RETURN_IF_FAILED((m_negotiation.*check)(type));
    if ((flags & DMO_SET_TYPEF_TEST_ONLY) != 0)
        return S_OK;
    RETURN_IF_FAILED(stream.type.assign(*type));
    stream.isSet = true;
    return S_OK;
}

HRESULT CStreamTypes::GetInputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) const {
    RETURN_IF_FAILED(checkStream(stream, type));
    return copyCurrentType(m_input, type);
}

HRESULT CStreamTypes::GetOutputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) const {
    RETURN_IF_FAILED(checkStream(stream, type));
    return copyCurrentType(m_output, type);
}

HRESULT CStreamTypes::copyCurrentType(const Stream& stream, DMO_MEDIA_TYPE* type) {
    return stream.isSet ? stream.type.copyTo(type) : typeNotSet;
}

HRESULT CStreamTypes::GetInputSizeInfo(DWORD stream, DWORD* bytes, DWORD* lookahead, DWORD* alignment) const {
    RETURN_IF_FAILED(checkStream(stream, bytes, lookahead, alignment));
    if (!isInputTypeSet())
        return typeNotSet;
    *bytes = m_negotiation.formats().inputImageBytes;
    *lookahead = 0;
    *alignment = 1;
    return S_OK;
}

HRESULT CStreamTypes::GetOutputSizeInfo(DWORD stream, DWORD* bytes, DWORD* alignment) const {
    RETURN_IF_FAILED(checkStream(stream, bytes, alignment));
    if (!areAllTypesSet())
        return typeNotSet;
    *bytes = m_negotiation.formats().outputImageBytes;
    *alignment = 1;
    return S_OK;
}

HRESULT CStreamTypes::GetInputMaxLatency(DWORD stream, REFERENCE_TIME* latency) {
    RETURN_IF_FAILED(checkStream(stream, latency));
    *latency = 0;
    return S_OK;
}

HRESULT CStreamTypes::SetInputMaxLatency(DWORD stream, REFERENCE_TIME /*latency*/) {
    return checkStream(stream);
}

HRESULT CStreamTypes::GetInputStatus(DWORD stream, bool isInputHeld, DWORD* flags) const {
    RETURN_IF_FAILED(checkStream(stream, flags));
    *flags = 0;
    if (!areAllTypesSet())
        return typeNotSet;
    if (!isInputHeld)
        *flags = DMO_INPUT_STATUSF_ACCEPT_DATA;
    return S_OK;
}

HRESULT CStreamTypes::Discontinuity(DWORD stream, bool isInputHeld) const {
    RETURN_IF_FAILED(checkStream(stream));
    if (!areAllTypesSet())
        return typeNotSet;
    return isInputHeld ? notAccepting : S_OK;
}

HRESULT CStreamTypes::Flush() {
    if (areAllTypesSet() && !m_isFlushed) {
        // Before it: a buffer that is let go may hand the next one in.
        m_isFlushed = true;
        m_owner.flushStream();
    }
    return S_OK;
}

HRESULT CStreamTypes::AllocateStreamingResources() {
    if (!areAllTypesSet())
        return typeNotSet;
    if (m_areResourcesAllocated)
        return S_OK;
    if (!m_owner.hasDevice() && FAILED(m_owner.createDevice())) {
        m_owner.releaseRenderResources();
        return E_FAIL;
    }
    m_areResourcesAllocated = true;
    return S_OK;
}

HRESULT CStreamTypes::FreeStreamingResources() {
    if (!m_areResourcesAllocated)
        return S_OK;
    m_areResourcesAllocated = false;
    m_owner.flushStream();
    m_owner.freeCachedFrame();
    m_owner.releaseCurrentImage();
    return S_OK;
}

} // namespace tarvo::transform
