#include "apps/tarvo-dewarp/FrameCoding.h"

#include "apps/tarvo-dewarp/video/FramePlanes.h"

#include <algorithm>
#include <cmath>

namespace tarvo::apps {
namespace {

using host::FramePixels;
using host::VideoFormat;

std::byte toByte(double value) {
    return static_cast<std::byte>(std::lround(std::clamp(value, 0.0, 255.0)));
}

/// Luma and the two colour differences, all 0 … 255 with the differences around 0.
struct Ycc {
    double luma = 0.0;
    double blue = 0.0;
    double red = 0.0;
};

/// The factors of one conversion to RGB: R = y + red·Cr, G = y − greenRed·Cr − greenBlue·Cb, B = y + blue·Cb.
struct Factors {
    double red;
    double greenRed;
    double greenBlue;
    double blue;
};
constexpr Factors yv12Factors{1.370705, 0.698001, 0.337633, 1.732446};
constexpr Factors yuy2Factors{1.402, 0.714, 0.344, 1.772};

/// With Cr = (R − y)/red and Cb = (B − y)/blue the equation of G holds y alone.
Ycc fromRgb(double red, double green, double blue, const Factors& factors) {
    const double shareOfRed = factors.greenRed / factors.red;
    const double shareOfBlue = factors.greenBlue / factors.blue;
    const double luma = (green + shareOfRed * red + shareOfBlue * blue) / (1.0 + shareOfRed + shareOfBlue);
    return {luma, (blue - luma) / factors.blue, (red - luma) / factors.red};
}

Ycc fromPixel(Bgra pixel, const Factors& factors, double scale) {
    return fromRgb(pixel.red * scale, pixel.green * scale, pixel.blue * scale, factors);
}

/// The mean over the pixels that share a chroma sample; beyond an odd edge the edge pixel counts again.
Ycc meanOf(const Picture& picture, int x, int y, int columns, int rows, const Factors& factors,
           double scale) {
    Ycc mean;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const Ycc one = fromPixel(
                picture.at(std::min(x + column, picture.width - 1), std::min(y + row, picture.height - 1)),
                factors, scale);
            mean.blue += one.blue;
            mean.red += one.red;
        }
    }
    mean.blue /= columns * rows;
    mean.red /= columns * rows;
    return mean;
}

/// Where a byte of a plane lies in it.
std::size_t offset(std::size_t strideBytes, int row, std::size_t column) {
    return static_cast<std::size_t>(strideBytes) * static_cast<std::size_t>(row) + column;
}

/// Where row y of a picture lies in a packed frame.
int memoryRow(const VideoFormat& format, int y) {
    const bool isBottomUp = format.pixels == FramePixels::rgb32 && format.height > 0;
    return isBottomUp ? format.height - 1 - y : y;
}

void encodeRgb32(const Picture& picture, const VideoFormat& format, std::vector<std::byte>& frame) {
    const std::size_t stride = video::packedPlane(format).stride;
    for (int y = 0; y < picture.height; ++y) {
        const int row = memoryRow(format, y);
        for (int x = 0; x < picture.width; ++x) {
            const Bgra pixel = picture.at(x, y);
            const std::size_t at = offset(stride, row, static_cast<std::size_t>(x) * 4);
            frame[at] = static_cast<std::byte>(pixel.blue);
            frame[at + 1] = static_cast<std::byte>(pixel.green);
            frame[at + 2] = static_cast<std::byte>(pixel.red);
            frame[at + 3] = static_cast<std::byte>(pixel.alpha);
        }
    }
}

void encodeYv12(const Picture& picture, const VideoFormat& format, std::vector<std::byte>& frame) {
    const video::Yv12Planes planes = video::yv12Planes(format);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            frame[offset(planes.luma.stride, y, static_cast<std::size_t>(x))] =
                toByte(fromPixel(picture.at(x, y), yv12Factors, 1.0).luma);
        }
    }
    for (int y = 0; y < static_cast<int>(planes.red.height); ++y) {
        for (int x = 0; x < static_cast<int>(planes.red.width); ++x) {
            // Half of full scale is 127.5.
            const Ycc mean = meanOf(picture, 2 * x, 2 * y, 2, 2, yv12Factors, 1.0);
            const std::size_t at = offset(planes.red.stride, y, static_cast<std::size_t>(x));
            frame[planes.red.offset + at] = toByte(mean.red + 127.5);
            frame[planes.blue.offset + at] = toByte(mean.blue + 127.5);
        }
    }
}

void encodeYuy2(const Picture& picture, const VideoFormat& format, std::vector<std::byte>& frame) {
    // The component divides by 256 where full scale is 255.
    constexpr double scale = 256.0 / 255.0;
    const std::size_t stride = video::packedPlane(format).stride;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; x += 2) {
            const Ycc mean = meanOf(picture, x, y, 2, 1, yuy2Factors, scale);
            const std::size_t at = offset(stride, y, static_cast<std::size_t>(x) * 2);
            frame[at] = toByte(fromPixel(picture.at(x, y), yuy2Factors, scale).luma);
            frame[at + 1] = toByte(mean.blue + 128.0);
            frame[at + 2] = toByte(fromPixel(picture.at(x + 1, y), yuy2Factors, scale).luma);
            frame[at + 3] = toByte(mean.red + 128.0);
        }
    }
}

double level(std::span<const std::byte> frame, std::size_t at) {
    return at < frame.size() ? std::to_integer<int>(frame[at]) : 0.0;
}

/// The inverse of 16 + 65.738·r/256 + … with blue in the place of red: the component's own weights.
Bgra fromDeliveredYv12(double luma, double first, double second) {
    const double y = 1.164383 * (luma - 16.0);
    const auto channel = [](double value) { return std::to_integer<std::uint8_t>(toByte(value)); };
    return {channel(y + 1.596027 * (first - 128.0)),
            channel(y - 0.391762 * (second - 128.0) - 0.812968 * (first - 128.0)),
            channel(y + 2.017232 * (second - 128.0)), 255};
}

Picture decodeRgb32(std::span<const std::byte> frame, const VideoFormat& format) {
    const video::Plane plane = video::packedPlane(format);
    Picture picture(format.width, static_cast<int>(plane.height));
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::size_t at =
                offset(plane.stride, memoryRow(format, y), static_cast<std::size_t>(x) * 4);
            const auto channel = [&](std::size_t index) {
                return static_cast<std::uint8_t>(level(frame, at + index));
            };
            picture.at(x, y) = {channel(0), channel(1), channel(2), 255};
        }
    }
    return picture;
}

Picture decodeYv12(std::span<const std::byte> frame, const VideoFormat& format) {
    const video::Yv12Planes planes = video::yv12Planes(format);
    Picture picture(format.width, format.height);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::size_t at = offset(planes.red.stride, y / 2, static_cast<std::size_t>(x) / 2);
            // The difference that follows blue lies last, where players look for Cb.
            picture.at(x, y) = fromDeliveredYv12(
                level(frame, offset(planes.luma.stride, y, static_cast<std::size_t>(x))),
                level(frame, planes.blue.offset + at), level(frame, planes.red.offset + at));
        }
    }
    return picture;
}

} // namespace

int leastStride(FramePixels pixels, int width) {
    switch (pixels) {
    case FramePixels::yv12:
        // The component finds the planes by fractions of the frame's size, which odd by odd would not give.
        return width + width % 2;
    case FramePixels::yuy2:
        return width * 2;
    case FramePixels::rgb32:
        break;
    }
    return width * 4;
}

VideoFormat frameFormat(FramePixels pixels, int width, int height, bool isBottomUp, int strideBytes) {
    const bool isTopDown = pixels == FramePixels::rgb32 && !isBottomUp;
    return host::makeVideoFormat(pixels, width, isTopDown ? -height : height, 0,
                                 static_cast<std::uint32_t>(strideBytes));
}

std::vector<std::byte> encodeFrame(const Picture& picture, const VideoFormat& format) {
    std::vector<std::byte> frame(format.frameBytes);
    switch (format.pixels) {
    case FramePixels::yv12:
        encodeYv12(picture, format, frame);
        break;
    case FramePixels::yuy2:
        encodeYuy2(picture, format, frame);
        break;
    case FramePixels::rgb32:
        encodeRgb32(picture, format, frame);
        break;
    }
    return frame;
}

Picture decodeFrame(std::span<const std::byte> frame, const VideoFormat& format) {
    return format.pixels == FramePixels::yv12 ? decodeYv12(frame, format) : decodeRgb32(frame, format);
}

} // namespace tarvo::apps
