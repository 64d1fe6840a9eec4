#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/InputPin.h"
#include "tests/support/GraphFakes.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace tarvo::tests {

/// Where a stream ends: takes video of one subtype, keeps the frames and reports the end to the graph.
class CFrameSink final : public com::CObject<FilterPart, IAMFilterMiscFlags> {
public:
    explicit CFrameSink(const GUID& subtype);

    IPin& input() noexcept { return m_pin; }
    /// Of the connection; under no lock.
    const AM_MEDIA_TYPE& type() const noexcept { return m_pin.connectionType(); }

    /// What came since the last call or the last flush, whichever was later.
    std::vector<Delivery> takeFrames();
    /// Waits until that many came; false after a minute.
    bool waitForFrames(std::size_t count) const;
    /// How often the stream ended.
    int ends() const;

    /// Called on the stream's thread with each frame once it is kept. To be set while there is no stream.
    std::function<void(const Delivery&)> onFrame;

    /// An end that came while paused is reported when the graph runs, which forgets whatever came before.
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    /// A renderer: the graph waits for its end of stream.
    STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

protected:
    ~CFrameSink() override = default;

    CLSID classId() const noexcept override { return CLSID{5, 0, 0, {}}; }
    void stopped() noexcept override;

private:
    class CPin final : public dshow::CInputPin {
    public:
        explicit CPin(CFrameSink& sink) : CInputPin(sink, OLESTR("picture")), m_sink(sink) {}

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    protected:
        HRESULT received(IMediaSample& sample) override;
        HRESULT streamEnded() override;
        HRESULT flushBegan() override { return S_OK; }
        HRESULT flushEnds() override;
        HRESULT segmentBegan(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    private:
        CFrameSink& m_sink;
    };

    void keep(const Delivery& frame);
    void reportEnd();

    const GUID m_subtype;
    CPin m_pin;
    mutable std::mutex m_framesLock;
    mutable std::condition_variable m_changed;
    std::vector<Delivery> m_frames;
    int m_ends = 0;
    bool m_isEndToReport = false;
};

} // namespace tarvo::tests
