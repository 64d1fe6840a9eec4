#pragma once

#include "render/FrameFormat.h"
#include "transform/streaming/FormatTable.h"

#include <cstdint>

namespace tarvo::transform {

/// What the types that were checked last say, accepted as current ones or only tried. Sizes in pixels, rates
/// in frames a second (0: unknown), aspects are width / height (0: unknown).
struct NegotiatedFormats {
    const StreamFormat* inputFormat = nullptr; ///< null before the first
    std::uint32_t inputWidth = 0;
    std::uint32_t inputHeight = 0;
    std::uint32_t inputImageBytes = 0;
    std::uint32_t inputStrideBytes = 0; ///< of YV12 the luma plane's
    double inputFrameRate = 0.0;
    bool isInputBottomUp = false; ///< RGB32 only
    float inputAspect = 0.0F;

    const StreamFormat* outputFormat = nullptr; ///< null before the first
    std::uint32_t outputWidth = 0;
    std::uint32_t outputHeight = 0;
    std::uint32_t outputImageBytes = 0;
    std::uint32_t outputStrideBytes = 0; ///< of YV12 the luma plane's
    double outputFrameRate = 0.0;
    bool isOutputBottomUp = false; ///< as the type says, of YV12 too
    float outputAspect = 0.0F;

    /// For the renderer. Before the first output type it is packed RGB32 with the top row first: a device can
    /// be built for it, and what is read back has another format by then.
    render::InputFormat renderInput() const;
    render::OutputFormat renderOutput() const;
};

} // namespace tarvo::transform
