#include "render/colour/MirrorRGB24.h"

#include <algorithm>

namespace tarvo::render {
namespace {

constexpr std::ptrdiff_t pixelBytes = 3;

void swapRows(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes, const ColourKernels& kernels) {
    std::ptrdiff_t done = 0;
    for (const ColourKernels* set = &kernels; set != nullptr; set = set->narrower) {
        if (set->swapBytes != nullptr)
            done += set->swapBytes(first + done, second + done, bytes - done);
    }
    std::swap_ranges(first + done, first + bytes, second + done);
}

/// Exchanges the pixels from `front` on with those from `backEnd` back.
void swapReversed(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels,
                  const ColourKernels& kernels) {
    std::ptrdiff_t done = 0;
    for (const ColourKernels* set = &kernels; set != nullptr; set = set->narrower) {
        if (set->swapReversed24 != nullptr)
            done +=
                set->swapReversed24(front + done * pixelBytes, backEnd - done * pixelBytes, pixels - done);
    }
    for (; done < pixels; ++done) {
        std::uint8_t* const one = front + done * pixelBytes;
        std::swap_ranges(one, one + pixelBytes, backEnd - (done + 1) * pixelBytes);
    }
}

bool isKnown(FlipMode mode) {
    return mode == FlipMode::upsideDown || mode == FlipMode::leftToRight || mode == FlipMode::halfTurn;
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): spelt as the format is
ImageStatus MirrorRGB24(std::uint8_t* image, std::ptrdiff_t step, ImageRegion region, FlipMode mode,
                        const ColourKernels& kernels) {
    if (image == nullptr)
        return ImageStatus::nullPointer;
    if (region.width < 1 || region.height < 1)
        return ImageStatus::badSize;
    if (!isKnown(mode))
        return ImageStatus::badFlipMode;
    const bool turnsRows = mode != FlipMode::leftToRight;
    const bool turnsPixels = mode != FlipMode::upsideDown;
    if ((turnsRows && region.height < 2) || (turnsPixels && region.width < 2))
        return ImageStatus::badSize;

    const std::ptrdiff_t width = region.width;
    const std::ptrdiff_t rowBytes = width * pixelBytes;
    const std::ptrdiff_t height = region.height;
    for (std::ptrdiff_t row = 0; turnsRows && row < height / 2; ++row) {
        std::uint8_t* const upper = image + row * step;
        std::uint8_t* const lower = image + (height - 1 - row) * step;
        if (turnsPixels)
            swapReversed(upper, lower + rowBytes, width, kernels);
        else
            swapRows(upper, lower, rowBytes, kernels);
    }
    // Rows without a partner: all of them, or the middle one of a half turn.
    const std::ptrdiff_t firstAlone = turnsRows ? height / 2 : 0;
    const std::ptrdiff_t endAlone = turnsRows ? (height + 1) / 2 : height;
    for (std::ptrdiff_t row = firstAlone; turnsPixels && row < endAlone; ++row)
        swapReversed(image + row * step, image + row * step + rowBytes, width / 2, kernels);
    return ImageStatus::done;
}

} // namespace tarvo::render
