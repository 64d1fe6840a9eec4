#pragma once

#include "com/Object.h"
#include "dshow/BaseFilter.h"
#include "dshow/InputPin.h"
#include "dshow/OutputPin.h"
#include "tests/support/GraphFakes.h"

#include <mutex>

namespace tarvo::tests {

/// A filter that aggregates a media object with one input and one output stream, and is it in a graph: the
/// pins' types are the object's, samples go into it and out of it on the thread of whoever delivers them.
/// Whatever interface the filter lacks is the object's to answer.
///
/// One frame at a time, under the stream's lock; what stops or flushes takes it after it has freed whoever
/// might hold it. The filter's own lock comes first.
class CDmoWrapper final : public com::CObject<FilterPart> {
public:
    /// Throws com::CComError if the factory makes no media object.
    explicit CDmoWrapper(IClassFactory& factory);

protected:
    ~CDmoWrapper() override = default;

    CLSID classId() const noexcept override { return CLSID{6, 0, 0, {}}; }
    HRESULT queryOwn(REFIID iid, void** object) noexcept override;
    void finalRelease() noexcept override;
    HRESULT starting() override;
    void stopped() noexcept override;

private:
    class CInput final : public dshow::CInputPin {
    public:
        explicit CInput(CDmoWrapper& wrapper) : CInputPin(wrapper, OLESTR("in0")), m_wrapper(wrapper) {}

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    protected:
        HRESULT connectionMade() override { return typeChanged(); }
        void connectionEnded() noexcept override;
        HRESULT received(IMediaSample& sample) override;
        HRESULT streamEnded() override;
        HRESULT flushBegan() override;
        HRESULT flushEnds() override;
        HRESULT segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
        HRESULT typeChanged() override;

    private:
        CDmoWrapper& m_wrapper;
    };

    class COutput final : public dshow::COutputPin {
    public:
        explicit COutput(CDmoWrapper& wrapper) : COutputPin(wrapper, OLESTR("out0")), m_wrapper(wrapper) {}

        HRESULT checkMediaType(const AM_MEDIA_TYPE& type) override;
        HRESULT mediaType(LONG position, dshow::CPinType& type) override;

    protected:
        HRESULT connectionMade() override;
        void connectionEnded() noexcept override;
        HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) override;
        HRESULT passQuality(const Quality& quality) override;

    private:
        CDmoWrapper& m_wrapper;
    };

    /// All that the object gives for what it has been given.
    HRESULT processOutput();
    HRESULT processInput(IMediaSample& sample);
    /// The object gives what it still has.
    HRESULT drain();
    void flush() noexcept;

    CInput m_input{*this};
    COutput m_output{*this};
    com::ComPtr<IUnknown> m_inner;
    // Of the inner object, which counts on this one: not counted.
    IMediaObject* m_media = nullptr;
    IDMOQualityControl* m_quality = nullptr;
    std::mutex m_streamLock;
};

} // namespace tarvo::tests
