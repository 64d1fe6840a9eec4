#include "render/colour/ConvertRGB32ToYV12.h"

#include "render/colour/KernelChain.h"

#include <algorithm>

namespace tarvo::render {
namespace {

std::uint8_t luma(const std::uint8_t* pixel) {
    return static_cast<std::uint8_t>((16843 * pixel[0] + 33030 * pixel[1] + 6423 * pixel[2] + 0x108000) >>
                                     16);
}

/// The columns from `first` on. Results lie in 16 … 240, so nothing is clamped.
void convertPlainly(const RowPairToYv12& rows, int first) {
    for (int x = first; x < rows.columns; x += 2) {
        const std::uint8_t* const upper = rows.upper + static_cast<std::ptrdiff_t>(x) * 4;
        const std::uint8_t* const lower = rows.lower + static_cast<std::ptrdiff_t>(x) * 4;
        rows.upperLuma[x] = luma(upper);
        rows.upperLuma[x + 1] = luma(upper + 4);
        rows.lowerLuma[x] = luma(lower);
        rows.lowerLuma[x + 1] = luma(lower + 4);

        const int sum0 = upper[0] + upper[4] + lower[0] + lower[4];
        const int sum1 = upper[1] + upper[5] + lower[1] + lower[5];
        const int sum2 = upper[2] + upper[6] + lower[2] + lower[6];
        rows.chroma1[x / 2] =
            static_cast<std::uint8_t>((28770 * sum0 - 24117 * sum1 - 4653 * sum2 + 0x2008000) >> 18);
        rows.chroma2[x / 2] =
            static_cast<std::uint8_t>((-9699 * sum0 - 19071 * sum1 + 28770 * sum2 + 0x2008000) >> 18);
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): spelt as the formats are
ImageStatus ConvertRGB32ToYV12(const std::uint8_t* source, std::ptrdiff_t sourceStep,
                               const std::array<std::uint8_t*, 3>& planes,
                               const std::array<std::ptrdiff_t, 3>& planeSteps, ImageRegion region,
                               const ColourKernels& kernels) {
    if (source == nullptr || std::ranges::find(planes, nullptr) != planes.end())
        return ImageStatus::nullPointer;
    if (region.width < 2 || region.height < 2)
        return ImageStatus::badSize;

    for (std::ptrdiff_t pair = 0; pair < region.height / 2; ++pair) {
        const std::uint8_t* const upper = source + 2 * pair * sourceStep;
        std::uint8_t* const upperLuma = planes[0] + 2 * pair * planeSteps[0];
        const RowPairToYv12 rows{upper,
                                 upper + sourceStep,
                                 upperLuma,
                                 upperLuma + planeSteps[0],
                                 planes[1] + pair * planeSteps[1],
                                 planes[2] + pair * planeSteps[2],
                                 region.width / 2 * 2};
        convertPlainly(rows, firstThatServes(kernels, &ColourKernels::rgb32ToYv12, rows));
    }
    const bool isOdd = region.width % 2 != 0 || region.height % 2 != 0;
    return isOdd ? ImageStatus::oddSize : ImageStatus::done;
}

} // namespace tarvo::render
