#pragma once

#include "diagnostics/ObjectLog.h"
#include "dshow/OutputPin.h"

namespace tarvo::accelerator {

class CAcceleratorFilter;

/// Gives out what the input pin takes: the same type but for the orientation and what pads its rows.
class CVideoOutputPin final : public dshow::COutputPin {
public:
    CVideoOutputPin(CAcceleratorFilter& filter, const diagnostics::ObjectLog& log);

    HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
    /// The input's, while that is connected.
    HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    /// One buffer: the next frame is copied when the last has been delivered. VFW_E_NOT_CONNECTED without a
    /// connection.
    HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) override;

protected:
    HRESULT connectionMade() override;
    void connectionEnded() noexcept override;
    /// To whoever delivers to the filter.
    HRESULT passQuality(const Quality& quality) override;

private:
    CAcceleratorFilter& m_accelerator;
    const diagnostics::ObjectLog& m_log;
};

} // namespace tarvo::accelerator
