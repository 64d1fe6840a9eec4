#include "apps/samples/graph-host/SceneSource.h"

#include "com/Guarded.h"
#include "scene/Camera.h"
#include "scene/Render.h"
#include "scene/Room.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tarvo::samples {
namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr LONG frameBytes = 2 * width * height;

BYTE level(double value) {
    return static_cast<BYTE>(std::clamp(value + 0.5, 0.0, 255.0));
}

/// Two pixels side by side, in the weights of standard-definition video.
void encodePair(const render::Bgra& left, const render::Bgra& right, BYTE* target) {
    const auto luma = [](const render::Bgra& pixel) {
        return 16.0 + (65.738 * pixel.red + 129.057 * pixel.green + 25.064 * pixel.blue) / 256.0;
    };
    const double red = (left.red + right.red) / 2.0;
    const double green = (left.green + right.green) / 2.0;
    const double blue = (left.blue + right.blue) / 2.0;
    target[0] = level(luma(left));
    target[1] = level(128.0 + (-37.945 * red - 74.494 * green + 112.439 * blue) / 256.0);
    target[2] = level(luma(right));
    target[3] = level(128.0 + (112.439 * red - 94.154 * green - 18.285 * blue) / 256.0);
}

} // namespace

CSceneSource::CPin::CPin(CSceneSource& source, REFERENCE_TIME frameDuration)
    : COutputPin(source, OLESTR("camera")) {
    m_format.AvgTimePerFrame = frameDuration;
    m_format.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    m_format.bmiHeader.biWidth = width;
    m_format.bmiHeader.biHeight = height;
    m_format.bmiHeader.biPlanes = 1;
    m_format.bmiHeader.biBitCount = 16;
    m_format.bmiHeader.biCompression = MEDIASUBTYPE_YUY2.Data1;
    m_format.bmiHeader.biSizeImage = frameBytes;
    m_type.majortype = MEDIATYPE_Video;
    m_type.subtype = MEDIASUBTYPE_YUY2;
    m_type.bFixedSizeSamples = TRUE;
    m_type.lSampleSize = frameBytes;
    m_type.formattype = FORMAT_VideoInfo;
    m_type.cbFormat = sizeof m_format;
    m_type.pbFormat = reinterpret_cast<BYTE*>(&m_format);
}

HRESULT CSceneSource::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    return type.majortype == m_type.majortype && type.subtype == m_type.subtype &&
                   type.formattype == m_type.formattype && type.cbFormat >= m_type.cbFormat &&
                   std::memcmp(type.pbFormat, m_type.pbFormat, m_type.cbFormat) == 0
               ? S_OK
               : S_FALSE;
}

HRESULT CSceneSource::CPin::mediaType(LONG position, dshow::CPinType& type) {
    if (position < 0)
        return E_INVALIDARG;
    return position == 0 ? type.assign(m_type) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CSceneSource::CPin::decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) {
    wanted.cBuffers = std::max<LONG>(wanted.cBuffers, 1);
    wanted.cbBuffer = std::max<LONG>(wanted.cbBuffer, frameBytes);
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT result = allocator.SetProperties(&wanted, &actual);
    return SUCCEEDED(result) && actual.cbBuffer < frameBytes ? E_FAIL : result;
}

CSceneSource::CSceneSource(int frameCount, REFERENCE_TIME frameDuration)
    : m_frameCount(frameCount), m_frameDuration(frameDuration), m_pin(*this, frameDuration) {
    setPins({&m_pin});
}

HRESULT CSceneSource::starting() {
    m_isStopping = false;
    m_thread = std::thread([this] { push(); });
    return S_OK;
}

void CSceneSource::stopped() noexcept {
    m_isStopping = true;
    if (std::thread ending = std::exchange(m_thread, {}); ending.joinable())
        ending.join();
}

void CSceneSource::push() noexcept {
    HRESULT result =
        com::guarded([&] { return m_pin.deliverNewSegment(0, m_frameCount * m_frameDuration, 1.0); });
    for (int i = 0; i < m_frameCount && SUCCEEDED(result) && !m_isStopping; ++i)
        result = com::guarded([&] { return pushFrame(i); });
    if (!m_isStopping)
        m_pin.deliverEndOfStream();
}

HRESULT CSceneSource::pushFrame(int index) {
    REFERENCE_TIME start = index * m_frameDuration;
    REFERENCE_TIME stop = start + m_frameDuration;
    const scene::CRoom room(static_cast<double>(start) / 1e7);
    const render::Picture picture = scene::renderFisheye(
        room, scene::defaultCamera(geometry::TiltOrientation::ceiling), width, height, {1, 1});

    com::ComPtr<IMediaSample> sample;
    HRESULT result = m_pin.deliveryBuffer(sample);
    // The graph commits the memory while this thread begins already.
    while (result == VFW_E_NOT_COMMITTED && isStopped() && !m_isStopping) {
        std::this_thread::yield();
        result = m_pin.deliveryBuffer(sample);
    }
    BYTE* bytes = nullptr;
    if (SUCCEEDED(result))
        result = sample->GetPointer(&bytes);
    if (FAILED(result))
        return result;
    for (std::size_t pair = 0; pair < picture.pixels.size() / 2; ++pair)
        encodePair(picture.pixels[2 * pair], picture.pixels[2 * pair + 1], bytes + 4 * pair);
    sample->SetActualDataLength(frameBytes);
    sample->SetTime(&start, &stop);
    sample->SetSyncPoint(TRUE);
    return m_pin.deliver(*sample);
}

} // namespace tarvo::samples
