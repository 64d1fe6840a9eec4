#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/InputPin.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace tarvo::samples {

/// Where a stream of RGB32 ends: counts the pictures and keeps the last one.
class CPictureSink final
    : public com::CObject<com::Implementing<dshow::CBaseFilter, IBaseFilter, IMediaFilter, IPersist>,
                          IAMFilterMiscFlags> {
public:
    struct Pictures {
        int count = 0;
        REFERENCE_TIME lastStart = -1;
        LONG width = 0;
        LONG height = 0; ///< above 0: the bottom row comes first
        std::vector<std::uint8_t> last;
    };

    CPictureSink();

    IPin& input() noexcept { return m_pin; }
    Pictures pictures() const;

    /// A renderer: the graph waits for its end of stream.
    STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

    STDMETHODIMP Run(REFERENCE_TIME start) override;

protected:
    ~CPictureSink() override = default;

    void stopped() noexcept override;

    CLSID classId() const noexcept override { return {}; }

private:
    class CPin final : public dshow::CInputPin {
    public:
        explicit CPin(CPictureSink& sink) : CInputPin(sink, OLESTR("picture")), m_sink(sink) {}

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    protected:
        HRESULT received(IMediaSample& sample) override;
        HRESULT streamEnded() override;
        HRESULT flushBegan() override { return S_OK; }
        HRESULT flushEnds() override { return S_OK; }
        HRESULT segmentBegan(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    private:
        CPictureSink& m_sink;
    };

    HRESULT keep(IMediaSample& sample);
    /// Tells the graph of the end of the stream, once. A graph may forget an end that it is told while
    /// paused.
    void reportEnd();

    CPin m_pin;
    mutable std::mutex m_picturesLock;
    Pictures m_pictures;
    bool m_isEndToReport = false;
};

} // namespace tarvo::samples
