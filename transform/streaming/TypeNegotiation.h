#pragma once

#include "diagnostics/ObjectLog.h"
#include "geometry/OutputSize.h"
#include "platform/InterfaceTypes.h"
#include "transform/streaming/NegotiatedFormats.h"
#include "transform/streaming/StreamOwner.h"
#include "transform/streaming/StreamSettings.h"
#include "transform/streaming/VideoFormat.h"

#include <mutex>

namespace tarvo::transform {

/// Which types the streams take and which they offer.
///
/// A check keeps what it found, also when the caller only tries the type: the formats always describe the
/// type that was checked last. All calls but formats() under the lock of the streams; formats() on any
/// thread.
class CTypeNegotiation {
public:
    CTypeNegotiation(IStreamOwner& owner, StreamSettings& settings, diagnostics::ObjectLog log)
        : m_owner(owner), m_settings(settings), m_log(log) {}
    CTypeNegotiation(const CTypeNegotiation&) = delete;
    CTypeNegotiation& operator=(const CTypeNegotiation&) = delete;

    /// S_OK or DMO_E_TYPE_NOT_ACCEPTED; null is no type. Derives the output size and releases the render
    /// resources of the old one. The input's rate is kept even where its size is refused.
    HRESULT checkInputType(const DMO_MEDIA_TYPE* type);
    /// The same for the output. Adopts the type's rate unless the host limits it.
    HRESULT checkOutputType(const DMO_MEDIA_TYPE* type);

    /// The types offered, into a record whose old contents are not freed; a null record only asks whether
    /// there is such an index: DMO_E_NO_MORE_ITEMS if not. An output type has a format block once the input
    /// type is set; that takes a device: E_FAIL if there can be none.
    HRESULT offerInputType(DWORD index, DMO_MEDIA_TYPE* type) const;
    HRESULT offerOutputType(DWORD index, bool isInputTypeSet, DMO_MEDIA_TYPE* type);

    /// As negotiated now; sizes and rate of the output as the settings have them now.
    NegotiatedFormats formats() const;

private:
    /// False, and nothing has changed, where no picture of the derived size can be.
    bool deriveOutputSize(NegotiatedFormats& formats);
    HRESULT fillOutputType(DWORD index, DMO_MEDIA_TYPE* type) const;

    IStreamOwner& m_owner;
    StreamSettings& m_settings;
    diagnostics::ObjectLog m_log;
    // Held for a copy and no longer, never while anybody is called.
    mutable std::mutex m_formatsLock;
    NegotiatedFormats m_formats;
};

} // namespace tarvo::transform
