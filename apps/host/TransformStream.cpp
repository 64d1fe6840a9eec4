#include "apps/host/TransformStream.h"

#include "apps/host/HostError.h"

#include <utility>

namespace tarvo::host {

CTransformStream::CTransformStream(const com::ComPtr<IDewarpingTransform>& transform)
    : m_transform(transform) {
    HRESULT result = S_OK;
    m_media = m_transform.as<IMediaObject>(result);
    requireStep(result, "asking the transform for its streams");
}

void CTransformStream::setInput(const VideoFormat& format) {
    const com::CMediaType type = mediaTypeOf(format);
    requireStep(m_media->SetInputType(0, &type.get(), 0), "setting the input type");
    m_ticksPerFrame = format.ticksPerFrame;
}

VideoFormat CTransformStream::setOutput(FramePixels pixels, bool isBottomUp, std::uint32_t strideBytes) {
    LONG width = 0;
    LONG height = 0;
    requireStep(m_transform->get_OutputWidth(&width), "getting OutputWidth");
    requireStep(m_transform->get_OutputHeight(&height), "getting OutputHeight");
    if (width < 1 || height < 1) {
        throw HostError("setting the output type", DMO_E_TYPE_NOT_ACCEPTED, "the output has no pixels");
    }
    const bool isTopDown = pixels == FramePixels::rgb32 && !isBottomUp;
    const VideoFormat format =
        makeVideoFormat(pixels, width, isTopDown ? -height : height, m_ticksPerFrame, strideBytes);
    const com::CMediaType type = mediaTypeOf(format);
    requireStep(m_media->SetOutputType(0, &type.get(), 0), "setting the output type");
    return format;
}

void CTransformStream::allocate() {
    requireStep(m_media->AllocateStreamingResources(), "opening the render device");
}

bool CTransformStream::acceptsInput() const {
    DWORD flags = 0;
    requireStep(m_media->GetInputStatus(0, &flags), "asking whether there is room for a frame");
    return (flags & DMO_INPUT_STATUSF_ACCEPT_DATA) != 0;
}

void CTransformStream::putFrame(std::vector<std::byte> frame, const FrameTime& time) {
    const auto buffer = CMediaBuffer::holding(std::move(frame));
    DWORD flags = DMO_INPUT_DATA_BUFFERF_SYNCPOINT;
    flags |= time.start ? DMO_INPUT_DATA_BUFFERF_TIME : 0;
    flags |= time.duration ? DMO_INPUT_DATA_BUFFERF_TIMELENGTH : 0;
    requireStep(
        m_media->ProcessInput(0, buffer.get(), flags, time.start.value_or(0), time.duration.value_or(0)),
        "handing the frame in");
}

std::optional<OutputFrame> CTransformStream::nextFrame() {
    DWORD size = 0;
    DWORD alignment = 0;
    requireStep(m_media->GetOutputSizeInfo(0, &size, &alignment), "asking for the output's size");
    OutputFrame frame;
    frame.buffer = CMediaBuffer::withRoom(size);
    DMO_OUTPUT_DATA_BUFFER data{};
    data.pBuffer = frame.buffer.get();
    DWORD status = 0;
    const HRESULT result = m_media->ProcessOutput(0, 1, &data, &status);
    requireStep(result, "rendering the frame");
    if (result == S_FALSE) {
        return std::nullopt;
    }
    if ((data.dwStatus & DMO_OUTPUT_DATA_BUFFERF_TIME) != 0) {
        frame.time.start = data.rtTimestamp;
    }
    if ((data.dwStatus & DMO_OUTPUT_DATA_BUFFERF_TIMELENGTH) != 0) {
        frame.time.duration = data.rtTimelength;
    }
    frame.isIncomplete = (data.dwStatus & DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE) != 0;
    return frame;
}

void CTransformStream::flush() {
    requireStep(m_media->Flush(), "flushing");
}

} // namespace tarvo::host
