#include "transform/FrameProducer.h"

#include "com/Guarded.h"
#include "com/Trace.h"
#include "diagnostics/LogLine.h"
#include "transform/BitmapImage.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <utility>

namespace tarvo::transform {
namespace {

using diagnostics::LogCategory;

constexpr const char* context = "CDewarpingTransform::InternalProcessOutput";

/// Bytes that a frame takes with the stride of its type, whatever size the type gives.
std::uint64_t neededBytes(const NegotiatedFormats& formats) {
    const std::uint64_t stride = formats.outputStrideBytes;
    const std::uint64_t height = formats.outputHeight;
    if (formats.renderOutput().format != render::PixelFormat::yv12)
        return stride * height;
    return stride * height + 2 * (stride / 2) * (height / 2);
}

bool overlap(std::span<const std::byte> a, std::span<const std::byte> b) {
    // Pointers into different objects have an order only this way.
    const std::less<> isBefore;
    return isBefore(a.data(), b.data() + b.size()) && isBefore(b.data(), a.data() + a.size());
}

void copyFrame(std::span<const std::byte> frame, std::span<std::byte> target) {
    if (const std::size_t count = std::min(frame.size(), target.size()); count != 0)
        std::memcpy(target.data(), frame.data(), count);
}

} // namespace

HRESULT CFrameProducer::holdInput(IMediaBuffer& buffer, DWORD flags, REFERENCE_TIME time,
                                  REFERENCE_TIME duration) {
    BYTE* data = nullptr;
    DWORD length = 0;
    RETURN_IF_FAILED(buffer.GetBufferAndLength(&data, &length));
    if (length == 0)
        return S_OK;
    if (data == nullptr)
        return E_POINTER;
    const std::lock_guard lock(m_renderer.lock());
    letGoOfInput();
    m_input = com::ComPtr<IMediaBuffer>(&buffer);
    m_inputBytes = {reinterpret_cast<const std::byte*>(data), length};
    m_pacing.holdInput(flags, time, duration, m_settings.inputFrameRate);
    return S_OK;
}

HRESULT CFrameProducer::openOutput(IMediaBuffer* buffer, Output& output) {
    output.buffer = com::ComPtr<IMediaBuffer>(buffer);
    BYTE* data = nullptr;
    DWORD length = 0;
    DWORD capacity = 0;
    RETURN_IF_FAILED(buffer->GetBufferAndLength(&data, &length));
    RETURN_IF_FAILED(buffer->GetMaxLength(&capacity));
    if (data != nullptr)
        output.bytes = {reinterpret_cast<std::byte*>(data), capacity};
    return S_OK;
}

HRESULT CFrameProducer::InternalProcessOutput(DMO_OUTPUT_DATA_BUFFER& buffer,
                                              const NegotiatedFormats& formats) {
    const std::lock_guard lock(m_renderer.lock());
    if (buffer.pBuffer == nullptr)
        return E_FAIL;
    if (!m_pacing.hasOutput())
        return S_FALSE;
    Output output;
    RETURN_IF_FAILED(openOutput(buffer.pBuffer, output));
    if (!m_renderer.isOpen() && FAILED(com::guarded([&] { return m_renderer.open(formats); }))) {
        m_renderer.close();
        return E_FAIL;
    }
    // The frame before was lost with its device: an empty picture must not pass for it.
    if (!m_pacing.isInputHeld() && !m_renderer.hasInput())
        return S_FALSE;
    return produce(buffer, output, formats);
}

HRESULT CFrameProducer::produce(DMO_OUTPUT_DATA_BUFFER& buffer, const Output& output,
                                const NegotiatedFormats& formats) {
    const bool isInputHeld = m_pacing.isInputHeld();
    // Memory that is missing in a step is a failure of that step.
    if (isInputHeld && FAILED(com::guarded([&] { return m_renderer.upload(m_inputBytes); })))
        return loseFrame(buffer, "Failed to update texture");

    const OutputTiming timing = m_pacing.beginOutput(m_settings.outputFrameRate);
    buffer.dwStatus |= timing.flags;
    buffer.rtTimestamp = timing.time;
    buffer.rtTimelength = timing.duration;
    m_events.prepareImage(timing.time);

    // Not before the event, in which sinks set what they want to see in this very frame.
    const bool haveSettingsChanged = m_renderer.haveSettingsChanged();
    if ((isInputHeld || haveSettingsChanged) && FAILED(com::guarded([&] { return m_renderer.render(); })))
        return loseFrame(buffer, "Failed to render output");
    if (FAILED(com::guarded([&] { return deliver(output, formats, haveSettingsChanged); })))
        return loseFrame(buffer, "Failed to copy output video data");
    if (isInputHeld || haveSettingsChanged)
        m_renderer.frameDelivered();

    if (FAILED(output.buffer->SetLength(formats.outputImageBytes)))
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, context, "%s",
                  "Failed to set output length");
    m_pacing.finishOutput();
    m_isFrameEmitted = true;
    letGoOfInput();
    return S_OK;
}

HRESULT CFrameProducer::deliver(const Output& output, const NegotiatedFormats& formats,
                                bool haveSettingsChanged) {
    if (output.bytes.size() < neededBytes(formats))
        return E_FAIL;
    // Nothing is drawn from memory that the result is written to.
    if (overlap(m_inputBytes, output.bytes))
        m_renderer.keepInput();
    FrameCircumstances circumstances;
    circumstances.haveSettingsChanged = haveSettingsChanged;
    circumstances.hasCachedFrame = !m_cachedFrame.frame().empty();
    circumstances.hasEverHadImageSinks = m_events.haveImagesEverBeenWanted();
    circumstances.outputFrameRate = m_settings.outputFrameRate;
    circumstances.inputFrameRate = m_settings.inputFrameRate;
    switch (m_pacing.frameSource(circumstances)) {
    case FrameSource::cache:
        copyFrame(m_cachedFrame.frame().first(
                      std::min<std::size_t>(m_cachedFrame.frame().size(), formats.outputImageBytes)),
                  output.bytes);
        return S_OK;
    case FrameSource::renderTargetCached:
        return deliverThroughCache(output, formats.outputImageBytes);
    case FrameSource::renderTarget:
        break;
    }
    // It would be of another frame than the last one.
    m_cachedFrame.free();
    m_currentImage.setTimes(m_pacing.lastOutputTime(), m_pacing.nextOutputTime() - m_pacing.lastOutputTime());
    const HRESULT result =
        m_renderer.readBack(output.bytes, circumstances.hasEverHadImageSinks ? &m_currentImage : nullptr);
    // Not while the picture was mapped: a sink may ask for it too.
    if (const auto image = m_currentImage.takeNew())
        m_events.newImage(*image);
    return result;
}

HRESULT CFrameProducer::deliverThroughCache(const Output& output, std::size_t frameBytes) {
    const std::span<std::byte> room = m_cachedFrame.allocate(frameBytes);
    if (room.empty())
        return m_renderer.readBack(output.bytes, nullptr);
    const HRESULT result = m_renderer.readBack(room, nullptr);
    if (FAILED(result)) {
        m_cachedFrame.free();
        return result;
    }
    copyFrame(room, output.bytes);
    return S_OK;
}

HRESULT CFrameProducer::loseFrame(DMO_OUTPUT_DATA_BUFFER& buffer, const char* reason) {
    TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, context, "%s", reason);
    m_pacing.dropInput();
    letGoOfInput();
    // Nothing is to be fetched of a frame that is lost.
    buffer.dwStatus = 0;
    return E_FAIL;
}

com::ComPtr<IMediaBuffer> CFrameProducer::letGoOfInput() {
    // The render device may still look at its memory.
    m_renderer.keepInput();
    m_inputBytes = {};
    return std::exchange(m_input, nullptr);
}

HRESULT CFrameProducer::getCurrentImage(VARIANT* theImageData, LONGLONG* theTimestamp, LONG theFlags) {
    const auto refuse = [this](const char* reason, HRESULT result) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "GetCurrentImage", "%s", reason);
        return result;
    };
    if (theImageData == nullptr)
        return E_POINTER;
    VariantInit(theImageData);
    if (theFlags != 0)
        return refuse("Unsupported flag argument, must be zero.", E_INVALIDARG);
    const std::lock_guard lock(m_renderer.lock());
    if (!m_renderer.isOpen())
        return refuse("Not initialized", E_FAIL);
    if (!m_isFrameEmitted || !m_renderer.hasPicture())
        return refuse("No image available", E_FAIL);
    CBitmapImage bitmap;
    const HRESULT result = com::guarded([&] { return m_renderer.readBack(bitmap); });
    if (FAILED(result) && !bitmap.hasSeenPicture()) {
        m_log.failedCall("CDewarpingTransform::GetCurrentImage()", __LINE__, result);
        return result;
    }
    if (FAILED(result))
        return E_FAIL;
    theImageData->vt = VT_ARRAY | VT_UI1;
    theImageData->parray = bitmap.detach();
    if (theTimestamp != nullptr)
        *theTimestamp = m_pacing.lastOutputTime();
    return S_OK;
}

void CFrameProducer::flush() {
    com::ComPtr<IMediaBuffer> input;
    com::ComPtr<CImageBuffer> image;
    {
        const std::lock_guard lock(m_renderer.lock());
        m_cachedFrame.free();
        image = m_currentImage.giveUp();
        input = letGoOfInput();
        m_pacing.flush();
        m_isFrameEmitted = false;
    }
    // Released here: the image may have to wait for a client, and nobody else shall wait with it.
}

void CFrameProducer::freeCachedFrame() {
    const std::lock_guard lock(m_renderer.lock());
    m_cachedFrame.free();
}

void CFrameProducer::releaseCurrentImage() {
    com::ComPtr<CImageBuffer> image;
    const std::lock_guard lock(m_renderer.lock());
    image = m_currentImage.giveUp();
}

} // namespace tarvo::transform
