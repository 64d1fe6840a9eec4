#include "tests/render/conformance/InputFrames.h"

#include "scene/Render.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <tuple>

namespace tarvo::render::conformance {
namespace {

constexpr std::byte padding{0xA5};

std::byte byteOf(double value) {
    return static_cast<std::byte>(std::lround(std::clamp(value, 0.0, 255.0)));
}

/// Binomial weights along one direction.
Picture blurred(const Picture& picture, int stepX, int stepY) {
    static constexpr std::array<int, 7> weights{1, 6, 15, 20, 15, 6, 1};
    Picture result(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            std::array<int, 3> sum{};
            for (int i = -3; i <= 3; ++i) {
                const Bgra& near = picture.at(std::clamp(x + i * stepX, 0, picture.width - 1),
                                              std::clamp(y + i * stepY, 0, picture.height - 1));
                const int weight = weights[static_cast<std::size_t>(i + 3)];
                sum[0] += weight * near.blue;
                sum[1] += weight * near.green;
                sum[2] += weight * near.red;
            }
            const auto level = [](int total) { return static_cast<std::uint8_t>((total + 32) / 64); };
            result.at(x, y) = {level(sum[0]), level(sum[1]), level(sum[2]), 255};
        }
    }
    return result;
}

/// The mean of a 2 × 2 block, blue, green and red.
std::array<double, 3> blockMean(const Picture& picture, int left, int top) {
    std::array<double, 3> sum{};
    for (const auto& [x, y] : {std::pair{left, top}, {left + 1, top}, {left, top + 1}, {left + 1, top + 1}}) {
        const Bgra& pixel = picture.at(x, y);
        sum[0] += pixel.blue / 4.0;
        sum[1] += pixel.green / 4.0;
        sum[2] += pixel.red / 4.0;
    }
    return sum;
}

// Of blue = Y + 1.732446 B, red = Y + 1.370705 A and green = Y - 0.698001 A - 0.337633 B, solved for Y.
double yv12Luma(double blue, double green, double red) {
    const double a = 0.698001 / 1.370705;
    const double b = 0.337633 / 1.732446;
    return (green + a * red + b * blue) / (1.0 + a + b);
}

void putYv12(const Picture& picture, InputFrame& frame) {
    std::size_t offset = 0;
    for (int i = 0; i < 3; ++i) {
        const PlaneFormat plane = yv12Plane(frame.format, i);
        for (int y = 0; y < static_cast<int>(plane.height); ++y) {
            for (int x = 0; x < static_cast<int>(plane.width); ++x) {
                std::byte& target = frame.bytes[offset + static_cast<std::size_t>(y) * plane.strideBytes +
                                                static_cast<std::size_t>(x)];
                if (i == 0) {
                    const Bgra& pixel = picture.at(x, y);
                    target = byteOf(yv12Luma(pixel.blue, pixel.green, pixel.red));
                } else {
                    const auto [blue, green, red] = blockMean(picture, 2 * x, 2 * y);
                    const double luma = yv12Luma(blue, green, red);
                    target = byteOf(127.5 + (i == 1 ? (red - luma) / 1.370705 : (blue - luma) / 1.732446));
                }
            }
        }
        offset += plane.planeBytes;
    }
}

/// Pixels two by two, on over the ends of rows.
void putYuy2(const Picture& picture, InputFrame& frame) {
    for (std::size_t i = 0; i < picture.pixels.size(); i += 2) {
        const Bgra& first = picture.pixels[i];
        const Bgra& second = picture.pixels[std::min(i + 1, picture.pixels.size() - 1)];
        const auto luma = [](const Bgra& p) { return 0.299 * p.red + 0.587 * p.green + 0.114 * p.blue; };
        std::byte* const word = &frame.bytes[i * 2];
        word[0] = byteOf(luma(first));
        word[1] = byteOf(128.0 + (first.blue - luma(first)) / 1.772);
        word[2] = byteOf(luma(second));
        word[3] = byteOf(128.0 + (first.red - luma(first)) / 1.402);
    }
}

} // namespace

const Picture& roomPicture(geometry::TiltOrientation mounting, int width, int height) {
    static std::map<std::tuple<geometry::TiltOrientation, int, int>, Picture> pictures;
    const auto [entry, isNew] = pictures.try_emplace({mounting, width, height});
    if (isNew) {
        scene::FisheyeCamera camera = scene::defaultCamera(mounting);
        camera.lens = geometry::LensProfile{-0.01F, 0.005F, 0.31F};
        const Picture sharp = scene::renderFisheye(scene::CRoom(), camera, width, height, {3, 1});
        const Picture soft = blurred(blurred(sharp, 1, 0), 0, 1);
        entry->second = blurred(blurred(soft, 1, 0), 0, 1);
    }
    return entry->second;
}

Picture randomPicture(int width, int height, unsigned seed) {
    std::minstd_rand random(seed);
    const auto channel = [&] { return static_cast<std::uint8_t>(random() >> 8); };
    Picture picture(width, height);
    for (Bgra& pixel : picture.pixels) {
        pixel.blue = channel();
        pixel.green = channel();
        pixel.red = channel();
        pixel.alpha = channel();
    }
    return picture;
}

InputFormat inputFormat(FrameKind kind, int width, int height, bool isPadded) {
    InputFormat format;
    format.width = width;
    format.height = height;
    const auto columns = static_cast<std::uint32_t>(width);
    const auto rows = static_cast<std::uint32_t>(height);
    switch (kind) {
    case FrameKind::rgb32:
    case FrameKind::rgb32BottomUp:
        format.format = PixelFormat::rgb32;
        format.strideBytes = columns * 4 + (isPadded ? 20 : 0);
        format.frameBytes = format.strideBytes * rows;
        format.isBottomUp = kind == FrameKind::rgb32BottomUp;
        break;
    case FrameKind::yv12:
        format.format = PixelFormat::yv12;
        // Even, so that two rows of chroma are as long as one of luma; the frame's size is what tells it.
        format.strideBytes = (columns + 1) / 2 * 2 + (isPadded ? 14 : 0);
        format.frameBytes = (format.strideBytes * rows + 1) / 2 * 3;
        break;
    case FrameKind::yuy2:
        format.format = PixelFormat::yuy2;
        format.strideBytes = columns * 2;
        format.frameBytes = (columns * rows + 1) / 2 * 4;
        break;
    }
    return format;
}

InputFrame inputFrame(FrameKind kind, const Picture& picture, bool isPadded) {
    InputFrame frame{inputFormat(kind, picture.width, picture.height, isPadded), {}};
    frame.bytes.assign(frame.format.frameBytes, padding);
    switch (kind) {
    case FrameKind::rgb32:
    case FrameKind::rgb32BottomUp:
        for (int y = 0; y < picture.height; ++y) {
            const int row = frame.format.isBottomUp ? picture.height - 1 - y : y;
            std::memcpy(&frame.bytes[static_cast<std::size_t>(row) * frame.format.strideBytes],
                        &picture.at(0, y), static_cast<std::size_t>(picture.width) * 4);
        }
        break;
    case FrameKind::yv12:
        putYv12(picture, frame);
        break;
    case FrameKind::yuy2:
        putYuy2(picture, frame);
        break;
    }
    return frame;
}

InputFrame randomYuvFrame(FrameKind kind, int width, int height, unsigned seed) {
    InputFrame frame{inputFormat(kind, width, height, false), {}};
    const Picture random = randomPicture(width, height, seed);
    const auto bytes = std::as_bytes(std::span(random.pixels));
    frame.bytes.assign(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(frame.format.frameBytes));
    return frame;
}

} // namespace tarvo::render::conformance
