#pragma once

#include "dshow/InputPin.h"

namespace tarvo::accelerator {

class CAcceleratorFilter;

/// Takes video of any subtype and hands it to the filter.
class CVideoInputPin final : public dshow::CInputPin {
public:
    explicit CVideoInputPin(CAcceleratorFilter& filter);

    HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
    /// Video, all else open.
    HRESULT mediaType(LONG position, dshow::CPinType& type) override;

protected:
    HRESULT connectionMade() override;
    void connectionEnded() noexcept override;

    /// S_OK whatever becomes of the sample: the source shall go on.
    HRESULT received(IMediaSample& sample) override;
    HRESULT streamEnded() override;
    HRESULT flushBegan() override;
    HRESULT flushEnds() override;
    HRESULT segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
    HRESULT typeChanged() override;

private:
    CAcceleratorFilter& m_accelerator;
};

} // namespace tarvo::accelerator
