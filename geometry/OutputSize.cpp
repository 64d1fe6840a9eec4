#include "geometry/OutputSize.h"

#include <cmath>
#include <limits>

namespace tarvo::geometry {
namespace {

constexpr std::uint32_t defaultWidth = 1024;

constexpr std::uint32_t even(std::uint32_t value) {
    return (value + 1) & ~std::uint32_t{1};
}

constexpr PictureSize even(PictureSize size) {
    return {even(size.width), even(size.height)};
}

/// Integer part; 0 for what has none, the largest value for what is beyond it.
std::uint32_t integerPart(double value) {
    constexpr double most = std::numeric_limits<std::uint32_t>::max();
    if (!(value > 0.0)) {
        return 0;
    }
    return value >= most ? std::numeric_limits<std::uint32_t>::max() : static_cast<std::uint32_t>(value);
}

/// value × multiplier ÷ divisor in unsigned arithmetic; 0 for a divisor of 0.
constexpr std::uint32_t scaled(std::uint32_t value, std::uint32_t multiplier, std::uint32_t divisor) {
    return divisor == 0 ? 0 : value * multiplier / divisor;
}

PictureSize customSize(const OutputSizeRequest& request) {
    PictureSize size = request.wanted;
    if (size.width != 0 && size.height != 0) {
        return even(size);
    }
    if (!request.customAspect || !(*request.customAspect > 0.0F)) {
        return request.input;
    }
    const double aspect = static_cast<double>(*request.customAspect);
    if (size.height == 0 && size.width == 0) {
        size.height = request.input.height;
    }
    if (size.height != 0) {
        size.width = even(integerPart(size.height * aspect));
    } else {
        size.height = even(integerPart(size.width / aspect));
    }
    return size;
}

} // namespace

PictureSize deriveOutputSize(const OutputSizeRequest& request) {
    const PictureSize input = request.input;
    if (request.viewType == ViewType::custom) {
        return customSize(request);
    }
    if (hasFlag(request.options, OptionFlag::outputFormat_16_9)) {
        return {input.width, even((input.width * 9) >> 4)};
    }
    PictureSize size = request.wanted;
    if (request.isWantedSet && size.width == 0 && size.height == 0) {
        return input;
    }
    if (size.width != 0 && size.height != 0) {
        return even(size);
    }
    if (!request.isWantedSet) {
        size.width = defaultWidth;
        size.height = even(scaled(input.height, defaultWidth, input.width));
    } else if (size.height == 0) {
        size.height = even(scaled(input.height, size.width, input.width));
    } else {
        size.width = even(scaled(input.width, size.height, input.height));
    }
    if (isPanorama(request.viewType)) {
        double widthPerHeight = request.panoramaFieldOfViewDegrees / panoramaHeightDegrees;
        if (request.viewType == ViewType::panoramaDouble) {
            widthPerHeight /= 2.0;
        }
        size.height = integerPart(size.width / widthPerHeight);
    }
    return size;
}

} // namespace tarvo::geometry
