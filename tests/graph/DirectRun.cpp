#include "tests/graph/DirectRun.h"

#include "com/ComPtr.h"
#include "tests/transform/MediaBuffers.h"

#include <gtest/gtest.h>

namespace tarvo::tests {
namespace {

using transform::CFakeBuffer;

const DMO_MEDIA_TYPE* asObjects(const AM_MEDIA_TYPE& type) {
    return reinterpret_cast<const DMO_MEDIA_TYPE*>(&type);
}

void takeOutputs(IMediaObject& media, DWORD frameBytes, std::vector<Delivery>& outputs) {
    for (DWORD status = DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE;
         (status & DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE) != 0;) {
        CFakeBuffer buffer(frameBytes);
        DMO_OUTPUT_DATA_BUFFER data{};
        data.pBuffer = &buffer;
        DWORD reserved = 0;
        const HRESULT result = media.ProcessOutput(0, 1, &data, &reserved);
        EXPECT_GE(result, S_OK);
        if (result != S_OK)
            return;
        buffer.bytes.resize(buffer.length);
        outputs.push_back({buffer.bytes, data.rtTimestamp, data.rtTimestamp + data.rtTimelength});
        status = data.dwStatus;
    }
}

} // namespace

std::vector<Delivery> driveDirectly(IUnknown& transform, const AM_MEDIA_TYPE& input,
                                    const AM_MEDIA_TYPE& output, const std::vector<SourceFrame>& frames) {
    std::vector<Delivery> outputs;
    const auto media = com::ComPtr<IUnknown>(&transform).as<IMediaObject>();
    DWORD frameBytes = 0;
    DWORD alignment = 0;
    if (media->SetInputType(0, asObjects(input), 0) != S_OK ||
        media->SetOutputType(0, asObjects(output), 0) != S_OK ||
        media->GetOutputSizeInfo(0, &frameBytes, &alignment) != S_OK) {
        ADD_FAILURE() << "the transform by itself does not take the types";
        return outputs;
    }
    for (const SourceFrame& frame : frames) {
        if (frame.isDiscontinuity) {
            EXPECT_EQ(media->Discontinuity(0), S_OK);
            takeOutputs(*media, frameBytes, outputs);
        }
        CFakeBuffer buffer(frame.bytes);
        EXPECT_EQ(media->ProcessInput(0, &buffer,
                                      DMO_INPUT_DATA_BUFFERF_SYNCPOINT | DMO_INPUT_DATA_BUFFERF_TIME |
                                          DMO_INPUT_DATA_BUFFERF_TIMELENGTH,
                                      frame.start, frame.stop - frame.start),
                  S_OK);
        takeOutputs(*media, frameBytes, outputs);
        EXPECT_EQ(buffer.references(), 0);
    }
    EXPECT_EQ(media->Discontinuity(0), S_OK);
    takeOutputs(*media, frameBytes, outputs);
    return outputs;
}

} // namespace tarvo::tests
