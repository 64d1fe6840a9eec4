#include "bench/comparison/OwnTransform.h"

#include "apps/host/HostError.h"
#include "apps/host/TransformProperties.h"
#include "apps/host/TransformStream.h"
#include "bench/comparison/Pictures.h"

#include <stdexcept>

namespace tarvo::bench {
namespace {

host::TransformProperties propertiesOf(const Work& work) {
    host::TransformProperties properties;
    properties.outputWidth = work.outputWidth;
    properties.outputHeight = work.outputHeight;
    properties.lensProfile = {double{equidistantLens.a}, double{equidistantLens.b},
                              double{equidistantLens.c}};
    properties.tiltOrientation = static_cast<LONG>(work.mounting);
    properties.viewType = static_cast<LONG>(work.viewType);
    if (isPanorama(work)) {
        properties.panoramaFieldOfView = panoramaWidthDegrees;
        properties.panoramaPanOffset = -panoramaWidthDegrees / 2.0;
    } else {
        properties.pan = work.panDegrees;
        properties.tilt = work.tiltDegrees;
        properties.fieldOfView = fieldOfViewDegrees;
    }
    return properties;
}

} // namespace

COwnTransform::COwnTransform(const host::CModule& module, const Work& work, const CInputs& inputs)
    : m_work(work), m_inputs(inputs), m_transform(module.createTransform()) {
    const host::TransformProperties properties = propertiesOf(work);
    host::putProperties(*m_transform, properties);
    host::CTransformStream stream(m_transform);
    stream.setInput(inputs.format());
    m_outputFormat = stream.setOutput(inputs.format().pixels);
    host::putPosition(*m_transform, properties);
    stream.allocate();
    m_media = com::ComPtr<IMediaObject>(&stream.mediaObject());
    m_output = host::CMediaBuffer::withRoom(m_outputFormat.frameBytes);
}

void COwnTransform::pan(double degrees) {
    host::requireStep(m_transform->put_Pan(degrees), "setting Pan");
}

void COwnTransform::frame(int number) {
    if (m_work.isMoving) {
        pan(m_work.panDegrees + sweepDegrees(number));
    }
    const std::int64_t ticks = m_inputs.format().ticksPerFrame;
    host::requireStep(m_media->ProcessInput(0, &m_inputs.buffer(number),
                                            DMO_INPUT_DATA_BUFFERF_SYNCPOINT | DMO_INPUT_DATA_BUFFERF_TIME |
                                                DMO_INPUT_DATA_BUFFERF_TIMELENGTH,
                                            m_time, ticks),
                      "handing the frame in");
    m_time += ticks;
    m_output->SetLength(0);
    DMO_OUTPUT_DATA_BUFFER data{};
    data.pBuffer = m_output.get();
    DWORD status = 0;
    const HRESULT result = m_media->ProcessOutput(0, 1, &data, &status);
    host::requireStep(result, "rendering the frame");
    // One frame for each, and a whole one.
    if (result != S_OK || (data.dwStatus & DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE) != 0 ||
        m_output->contents().size() != m_outputFormat.frameBytes) {
        throw std::runtime_error("the transform did not give one frame for one frame");
    }
}

render::Picture COwnTransform::picture() const {
    const auto toPicture = m_work.isRgb32 ? pictureOfRgb32 : pictureOfDelivered;
    return toPicture(m_output->contents(), m_work.outputWidth, m_work.outputHeight);
}

} // namespace tarvo::bench
