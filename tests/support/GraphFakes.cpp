#include "tests/support/GraphFakes.h"

#include "com/Guarded.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace tarvo::tests {
namespace {

template<class Format>
dshow::CPinType typeWith(const VideoKind& kind) {
    Format format{};
    format.AvgTimePerFrame = kind.frameDuration;
    format.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    format.bmiHeader.biWidth = kind.width;
    format.bmiHeader.biHeight = kind.height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = kind.bitCount;
    format.bmiHeader.biCompression = kind.subtype.Data1 < 0x10000 ? 0 : kind.subtype.Data1;
    format.bmiHeader.biSizeImage = kind.imageBytes;
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = kind.subtype;
    type.bFixedSizeSamples = TRUE;
    type.lSampleSize = kind.imageBytes;
    type.formattype = kind.formatType;
    type.cbFormat = sizeof format;
    type.pbFormat = reinterpret_cast<BYTE*>(&format);
    dshow::CPinType owned;
    com::throwIfFailed(owned.assign(type));
    return owned;
}

} // namespace

dshow::CPinType typeOf(const VideoKind& kind) {
    return kind.formatType == FORMAT_VideoInfo2 ? typeWith<VIDEOINFOHEADER2>(kind)
                                                : typeWith<VIDEOINFOHEADER>(kind);
}

CFakeSource::CPin::CPin(CFakeSource& source, const VideoKind& kind)
    : COutputPin(source, OLESTR("out")), m_type(typeOf(kind)) {}

HRESULT CFakeSource::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    return !accepts || accepts(type) ? S_OK : S_FALSE;
}

HRESULT CFakeSource::CPin::mediaType(LONG position, dshow::CPinType& type) {
    return position == 0 ? type.assign(m_type.get()) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CFakeSource::CPin::decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) {
    wanted.cBuffers = 2;
    wanted.cbBuffer = std::max<LONG>(static_cast<LONG>(connectionType().lSampleSize), 1);
    ALLOCATOR_PROPERTIES actual{};
    return allocator.SetProperties(&wanted, &actual);
}

CFakeSource::CFakeSource(const VideoKind& kind) : m_pin(*this, kind) {
    setPins({&m_pin});
}

HRESULT CFakeSource::push(const std::vector<std::uint8_t>& bytes, std::optional<std::int64_t> start,
                          std::optional<std::int64_t> stop, const AM_MEDIA_TYPE* newType) {
    com::ComPtr<IMediaSample> sample;
    HRESULT result = m_pin.deliveryBuffer(sample);
    BYTE* buffer = nullptr;
    if (SUCCEEDED(result))
        result = sample->GetPointer(&buffer);
    if (SUCCEEDED(result))
        result = sample->SetActualDataLength(static_cast<LONG>(bytes.size()));
    if (SUCCEEDED(result) && newType != nullptr)
        result = sample->SetMediaType(const_cast<AM_MEDIA_TYPE*>(newType));
    if (FAILED(result))
        return result;
    std::copy(bytes.begin(), bytes.end(), buffer);
    sample->SetTime(start ? &*start : nullptr, stop ? &*stop : nullptr);
    return m_pin.deliver(*sample);
}

CFakeSink::CFakeSink() : m_pin(*this) {
    setPins({&m_pin});
}

HRESULT CFakeSink::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    return !m_sink.accepts || m_sink.accepts(type) ? S_OK : S_FALSE;
}

HRESULT CFakeSink::CPin::mediaType(LONG position, dshow::CPinType& type) {
    if (position < 0 || static_cast<std::size_t>(position) >= m_sink.preferred.size())
        return VFW_S_NO_MORE_ITEMS;
    type = typeOf(m_sink.preferred[static_cast<std::size_t>(position)]);
    return S_OK;
}

STDMETHODIMP CFakeSink::CPin::GetAllocator(IMemAllocator** given) {
    return m_sink.allocator ? m_sink.allocator.copyTo(given) : CInputPin::GetAllocator(given);
}

HRESULT CFakeSink::CPin::received(IMediaSample& sample) {
    if (filter().isStopped())
        return VFW_E_WRONG_STATE;
    if (isFlushing())
        return S_FALSE;
    HRESULT result = followType(sample);
    if (SUCCEEDED(result) && m_sink.onReceive)
        result = m_sink.onReceive(sample);
    if (result != S_OK)
        return result;
    Delivery delivery;
    BYTE* bytes = nullptr;
    sample.GetPointer(&bytes);
    delivery.bytes.assign(bytes, bytes + sample.GetActualDataLength());
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    if (SUCCEEDED(times))
        delivery.start = start;
    if (times == S_OK)
        delivery.stop = stop;
    {
        const std::lock_guard lock(m_sink.m_lock);
        m_sink.m_deliveries.push_back(std::move(delivery));
    }
    return m_sink.note("frame");
}

HRESULT CFakeSink::CPin::streamEnded() {
    return m_sink.note("end");
}

HRESULT CFakeSink::CPin::flushBegan() {
    return m_sink.note("flush");
}

HRESULT CFakeSink::CPin::flushEnds() {
    return m_sink.note("flushed");
}

HRESULT CFakeSink::CPin::segmentBegan(REFERENCE_TIME, REFERENCE_TIME, double) {
    return m_sink.note("segment");
}

HRESULT CFakeSink::note(const char* event) {
    const std::lock_guard lock(m_lock);
    m_events.emplace_back(event);
    m_changed.notify_all();
    return S_OK;
}

std::vector<std::string> CFakeSink::events() const {
    const std::lock_guard lock(m_lock);
    return m_events;
}

std::vector<Delivery> CFakeSink::deliveries() const {
    const std::lock_guard lock(m_lock);
    return m_deliveries;
}

bool CFakeSink::waitForEvents(std::size_t count) const {
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_events.size() >= count; });
}

com::ComPtr<IPin> pinOf(IBaseFilter& filter, PIN_DIRECTION direction) {
    com::ComPtr<IEnumPins> pins;
    com::throwIfFailed(filter.EnumPins(pins.put()));
    com::ComPtr<IPin> pin;
    ULONG fetched = 0;
    while (pins->Next(1, pin.put(), &fetched) == S_OK) {
        PIN_DIRECTION found{};
        if (SUCCEEDED(pin->QueryDirection(&found)) && found == direction)
            return pin;
    }
    return {};
}

} // namespace tarvo::tests
