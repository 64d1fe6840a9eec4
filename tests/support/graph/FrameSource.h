#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/OutputPin.h"
#include "tests/support/GraphFakes.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tarvo::tests {

/// One frame of a stream.
struct SourceFrame {
    std::vector<std::uint8_t> bytes;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool isDiscontinuity = false;
};

/// A filter whose thread pushes frames, as fast as they are taken, and then ends the stream. Each time it
/// leaves the stopped state it begins anew.
class CFrameSource final : public com::CObject<FilterPart> {
public:
    /// `makeFrame` makes frame `index`; it is called on the source's thread, and no more than one at a time.
    CFrameSource(const AM_MEDIA_TYPE& type, int frameCount, std::function<SourceFrame(int)> makeFrame);

    IPin& output() noexcept { return m_pin; }

    /// What came from downstream about quality.
    std::vector<Quality> messages() const;

    /// How many attempts to connect from now on are refused as if the type did not suit.
    void refuseConnections(int count) noexcept { m_refusals = count; }

    /// While it is at work: flushes what lies downstream and goes on with another frame.
    void seek(int frame);

protected:
    ~CFrameSource() override = default;

    CLSID classId() const noexcept override { return CLSID{4, 0, 0, {}}; }
    void stopped() noexcept override { endThread(); }

private:
    class CPin final : public dshow::COutputPin {
    public:
        CPin(CFrameSource& source, const AM_MEDIA_TYPE& type);

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;
        HRESULT activate() override;

    protected:
        HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) override;
        HRESULT passQuality(const Quality& quality) override;

    private:
        CFrameSource& m_source;
        dshow::CPinType m_type;
    };

    void beginThread(int firstFrame);
    void endThread() noexcept;
    void push(int firstFrame) noexcept;
    HRESULT pushFrame(const SourceFrame& frame);

    const int m_frameCount;
    const std::function<SourceFrame(int)> m_makeFrame;
    CPin m_pin;
    std::atomic<int> m_refusals{0};
    std::atomic<bool> m_isEnding{false};
    std::thread m_thread;

    mutable std::mutex m_messagesLock;
    std::vector<Quality> m_messages;
};

} // namespace tarvo::tests
