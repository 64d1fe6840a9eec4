#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/OutputPin.h"

#include <atomic>
#include <thread>

namespace tarvo::samples {

/// A camera on the ceiling of the sample room, as a filter: pushes YUY2 frames, each with its time, as fast
/// as they are taken, and then ends the stream.
class CSceneSource final
    : public com::CObject<com::Implementing<dshow::CBaseFilter, IBaseFilter, IMediaFilter, IPersist>> {
public:
    CSceneSource(int frameCount, REFERENCE_TIME frameDuration);

    IPin& output() noexcept { return m_pin; }

protected:
    ~CSceneSource() override = default;

    CLSID classId() const noexcept override { return {}; }
    HRESULT starting() override;
    void stopped() noexcept override;

private:
    class CPin final : public dshow::COutputPin {
    public:
        CPin(CSceneSource& source, REFERENCE_TIME frameDuration);

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    protected:
        HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) override;

    private:
        VIDEOINFOHEADER m_format{};
        AM_MEDIA_TYPE m_type{};
    };

    void push() noexcept;
    HRESULT pushFrame(int index);

    const int m_frameCount;
    const REFERENCE_TIME m_frameDuration;
    CPin m_pin;
    std::atomic<bool> m_isStopping{false};
    std::thread m_thread;
};

} // namespace tarvo::samples
