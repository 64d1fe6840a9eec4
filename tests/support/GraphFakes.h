#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/InputPin.h"
#include "dshow/OutputPin.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::tests {

/// A kind of video as a type of the graph.
struct VideoKind {
    GUID subtype = MEDIASUBTYPE_YUY2;
    LONG width = 4;
    LONG height = 2; ///< of RGB, above 0: the bottom row comes first
    WORD bitCount = 16;
    DWORD imageBytes = 16;
    REFERENCE_TIME frameDuration = 0;
    GUID formatType = FORMAT_VideoInfo;
};

/// The type, in a block of the format's whole length. Throws std::bad_alloc.
dshow::CPinType typeOf(const VideoKind& kind);

using FilterPart = com::Implementing<dshow::CBaseFilter, IBaseFilter, IMediaFilter, IPersist>;

/// A filter with one output pin; whoever tests is its streaming thread.
class CFakeSource final : public com::CObject<FilterPart> {
public:
    explicit CFakeSource(const VideoKind& kind);

    class CPin final : public dshow::COutputPin {
    public:
        CPin(CFakeSource& source, const VideoKind& kind);
        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

        /// What the pin heard about quality.
        std::vector<Quality> messages;
        /// Which types it takes; all at first.
        std::function<bool(const AM_MEDIA_TYPE&)> accepts;

    protected:
        HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) override;
        HRESULT passQuality(const Quality& quality) override {
            messages.push_back(quality);
            return S_OK;
        }

    private:
        dshow::CPinType m_type;
    };

    CPin& pin() noexcept { return m_pin; }

    /// Delivers a frame, with as much of its times as there is, and with a new type if one is given.
    HRESULT push(const std::vector<std::uint8_t>& bytes, std::optional<std::int64_t> start = {},
                 std::optional<std::int64_t> stop = {}, const AM_MEDIA_TYPE* newType = nullptr);

protected:
    ~CFakeSource() override = default;
    CLSID classId() const noexcept override { return CLSID{1, 0, 0, {}}; }

private:
    CPin m_pin;
};

/// What a sink was given.
struct Delivery {
    std::vector<std::uint8_t> bytes;
    std::optional<std::int64_t> start;
    std::optional<std::int64_t> stop;
};

/// A filter with one input pin that keeps what it is given.
class CFakeSink final : public com::CObject<FilterPart> {
public:
    CFakeSink();

    class CPin final : public dshow::CInputPin {
    public:
        explicit CPin(CFakeSink& sink) : CInputPin(sink, OLESTR("in")), m_sink(sink) {}
        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;
        STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;

    protected:
        HRESULT received(IMediaSample& sample) override;
        HRESULT streamEnded() override;
        HRESULT flushBegan() override;
        HRESULT flushEnds() override;
        HRESULT segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    private:
        CFakeSink& m_sink;
    };

    CPin& pin() noexcept { return m_pin; }

    /// In order: "frame", "end", "flush", "flushed", "segment".
    std::vector<std::string> events() const;
    std::vector<Delivery> deliveries() const;
    /// Waits until that many events came; false after ten seconds.
    bool waitForEvents(std::size_t count) const;

    // To be set before there is a stream.

    /// Called with each sample, outside of all locks; its result is Receive's.
    std::function<HRESULT(IMediaSample&)> onReceive;
    std::function<bool(const AM_MEDIA_TYPE&)> accepts;
    /// Preferred types.
    std::vector<VideoKind> preferred;
    /// Given out instead of an own one.
    com::ComPtr<IMemAllocator> allocator;

protected:
    ~CFakeSink() override = default;
    CLSID classId() const noexcept override { return CLSID{2, 0, 0, {}}; }

private:
    HRESULT note(const char* event);

    CPin m_pin;
    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    std::vector<std::string> m_events;
    std::vector<Delivery> m_deliveries;
};

/// The filter's pin of a direction, by the interface.
com::ComPtr<IPin> pinOf(IBaseFilter& filter, PIN_DIRECTION direction);

} // namespace tarvo::tests
