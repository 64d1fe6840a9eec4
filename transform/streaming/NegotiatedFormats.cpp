#include "transform/streaming/NegotiatedFormats.h"

namespace tarvo::transform {

using render::PixelFormat;

render::InputFormat NegotiatedFormats::renderInput() const {
    render::InputFormat result;
    if (inputFormat != nullptr)
        result.format = inputFormat->pixelFormat;
    result.width = static_cast<int>(inputWidth);
    result.height = static_cast<int>(inputHeight);
    result.strideBytes = inputStrideBytes;
    result.frameBytes = inputImageBytes;
    result.isBottomUp = isInputBottomUp;
    return result;
}

render::OutputFormat NegotiatedFormats::renderOutput() const {
    render::OutputFormat result;
    result.width = static_cast<int>(outputWidth);
    result.height = static_cast<int>(outputHeight);
    if (outputFormat == nullptr) {
        result.strideBytes = outputWidth * 4;
        return result;
    }
    result.format = outputFormat->pixelFormat;
    result.strideBytes = outputStrideBytes;
    result.isBottomUp = isOutputBottomUp && result.format == PixelFormat::rgb32;
    return result;
}

} // namespace tarvo::transform
