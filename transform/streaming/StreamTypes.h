#pragma once

#include "com/MediaType.h"
#include "platform/InterfaceTypes.h"
#include "transform/streaming/StreamOwner.h"
#include "transform/streaming/TypeNegotiation.h"

#include <atomic>

namespace tarvo::transform {

/// The bookkeeping of a media object with one input and one output stream: current types, what is known once
/// they are set, streaming resources. Methods of IMediaObject's names have its contracts; the object passes
/// its calls on under the lock of its streams.
///
/// A stream index other than 0 is DMO_E_INVALIDSTREAMINDEX, a missing out pointer E_POINTER, what needs a
/// type that is not set DMO_E_TYPE_NOT_SET; judged in this order.
class CStreamTypes {
public:
    CStreamTypes(IStreamOwner& owner, CTypeNegotiation& negotiation)
        : m_owner(owner), m_negotiation(negotiation) {}
    CStreamTypes(const CStreamTypes&) = delete;
    CStreamTypes& operator=(const CStreamTypes&) = delete;

    static HRESULT GetStreamCount(DWORD* inputStreams, DWORD* outputStreams);
    static HRESULT GetInputStreamInfo(DWORD stream, DWORD* flags);
    static HRESULT GetOutputStreamInfo(DWORD stream, DWORD* flags);

    HRESULT GetInputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) const;
    HRESULT GetOutputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type);
    /// DMO_SET_TYPEF_CLEAR forgets the type (and wins over TEST_ONLY); TEST_ONLY checks without setting it,
    /// with the side effects of a check. A type that is refused leaves the current one.
    HRESULT SetInputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags);
    HRESULT SetOutputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags);
    HRESULT GetInputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) const;
    HRESULT GetOutputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) const;

    HRESULT GetInputSizeInfo(DWORD stream, DWORD* bytes, DWORD* lookahead, DWORD* alignment) const;
    HRESULT GetOutputSizeInfo(DWORD stream, DWORD* bytes, DWORD* alignment) const;
    static HRESULT GetInputMaxLatency(DWORD stream, REFERENCE_TIME* latency);
    static HRESULT SetInputMaxLatency(DWORD stream, REFERENCE_TIME latency);

    HRESULT GetInputStatus(DWORD stream, bool isInputHeld, DWORD* flags) const;
    /// DMO_E_NOTACCEPTING while an input is held.
    HRESULT Discontinuity(DWORD stream, bool isInputHeld) const;
    /// Has the owner flush once after inputBegun(), and not before both types are set.
    HRESULT Flush();
    /// Builds the device if there is none; E_FAIL if there can be none.
    HRESULT AllocateStreamingResources();
    HRESULT FreeStreamingResources();

    /// From now on there is something to flush.
    void inputBegun() { m_isFlushed = false; }

    // Any thread.
    bool isInputTypeSet() const { return m_input.isSet; }
    bool isOutputTypeSet() const { return m_output.isSet; }
    bool areAllTypesSet() const { return isInputTypeSet() && isOutputTypeSet(); }

private:
    struct Stream {
        com::CMediaType type;
        std::atomic<bool> isSet{false};
    };
    using Check = HRESULT (CTypeNegotiation::*)(const DMO_MEDIA_TYPE*);

    HRESULT setType(Stream& stream, Check check, const DMO_MEDIA_TYPE* type, DWORD flags);
    static HRESULT copyCurrentType(const Stream& stream, DMO_MEDIA_TYPE* type);

    IStreamOwner& m_owner;
    CTypeNegotiation& m_negotiation;
    Stream m_input;
    Stream m_output;
    bool m_isFlushed = true;
    bool m_areResourcesAllocated = false;
};

} // namespace tarvo::transform
