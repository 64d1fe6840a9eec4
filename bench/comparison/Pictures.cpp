#include "bench/comparison/Pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace tarvo::bench {
namespace {

std::uint8_t toLevel(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// What the module reads YV12 with: R = y + 1.370705·Cr, G = y − 0.698001·Cr − 0.337633·Cb, B = y
// + 1.732446·Cb.
constexpr double redOfCr = 1.370705;
constexpr double blueOfCb = 1.732446;
constexpr double shareOfRed = 0.698001 / redOfCr;
constexpr double shareOfBlue = 0.337633 / blueOfCb;

/// From Cr = (R − y)/1.37… and Cb = (B − y)/1.73… the equation of G gives y.
double lumaOf(const render::Bgra& pixel) {
    return (pixel.green + shareOfRed * pixel.red + shareOfBlue * pixel.blue) /
           (1.0 + shareOfRed + shareOfBlue);
}

} // namespace

std::vector<std::byte> yv12Frame(const render::Picture& picture) {
    const std::size_t pixels = picture.pixels.size();
    std::vector<std::byte> frame(pixels / 2 * 3);
    for (std::size_t i = 0; i < pixels; ++i) {
        frame[i] = static_cast<std::byte>(toLevel(lumaOf(picture.pixels[i])));
    }
    std::size_t place = pixels;
    for (int y = 0; y < picture.height; y += 2) {
        for (int x = 0; x < picture.width; x += 2, ++place) {
            double red = 0.0;
            double blue = 0.0;
            for (int i = 0; i < 4; ++i) {
                const render::Bgra& pixel = picture.at(x + i % 2, y + i / 2);
                red += (pixel.red - lumaOf(pixel)) / redOfCr / 4.0;
                blue += (pixel.blue - lumaOf(pixel)) / blueOfCb / 4.0;
            }
            frame[place] = static_cast<std::byte>(toLevel(red + 127.5));
            frame[place + pixels / 4] = static_cast<std::byte>(toLevel(blue + 127.5));
        }
    }
    return frame;
}

std::vector<std::byte> rgb32Frame(const render::Picture& picture) {
    std::vector<std::byte> frame(picture.pixels.size() * sizeof(render::Bgra));
    std::memcpy(frame.data(), picture.pixels.data(), frame.size());
    return frame;
}

render::Picture pictureOfRgb32(std::span<const std::byte> frame, int width, int height) {
    render::Picture picture(width, height);
    if (frame.size() != picture.pixels.size() * sizeof(render::Bgra)) {
        throw std::invalid_argument("a frame of another size");
    }
    std::memcpy(picture.pixels.data(), frame.data(), frame.size());
    return picture;
}

render::Picture pictureOfDelivered(std::span<const std::byte> frame, int width, int height) {
    render::Picture picture(width, height);
    const std::size_t pixels = picture.pixels.size();
    if (frame.size() != pixels / 2 * 3) {
        throw std::invalid_argument("a frame of another size");
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t chroma = pixels + static_cast<std::size_t>(y / 2) * (width / 2) + x / 2;
            const auto level = [&](std::size_t place) { return std::to_integer<int>(frame[place]); };
            const double luma = 1.164383 * (level(static_cast<std::size_t>(y) * width + x) - 16);
            const double blue = level(chroma + pixels / 4) - 128;
            const double red = level(chroma) - 128;
            picture.at(x, y) = {toLevel(luma + 1.596027 * blue),
                                toLevel(luma - 0.391762 * red - 0.812968 * blue),
                                toLevel(luma + 2.017232 * red), 255};
        }
    }
    return picture;
}

void pasteYv12(const render::Yv12Source& source, int x, int y, render::Picture& whole) {
    render::Picture part(source.width, source.height);
    render::convertYv12ToBgra(
        source, {reinterpret_cast<std::uint8_t*>(part.pixels.data()), std::ptrdiff_t{source.width} * 4},
        {0, 0, source.width, source.height});
    paste(part, x, y, whole);
}

void paste(const render::Picture& part, int x, int y, render::Picture& whole) {
    for (int row = 0; row < part.height; ++row) {
        for (int column = 0; column < part.width; ++column) {
            whole.at(x + column, y + row) = part.at(column, row);
        }
    }
}

double meanDifference(const render::Picture& one, const render::Picture& other) {
    if (one.width != other.width || one.height != other.height || one.pixels.empty()) {
        throw std::invalid_argument("pictures of different sizes cannot be compared");
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < one.pixels.size(); ++i) {
        const render::Bgra& a = one.pixels[i];
        const render::Bgra& b = other.pixels[i];
        sum += std::abs(a.blue - b.blue) + std::abs(a.green - b.green) + std::abs(a.red - b.red);
    }
    return sum / 3.0 / static_cast<double>(one.pixels.size());
}

void writePpm(const std::filesystem::path& path, const render::Picture& picture) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.width << " " << picture.height << "\n255\n";
    for (const render::Bgra& pixel : picture.pixels) {
        file.put(static_cast<char>(pixel.red));
        file.put(static_cast<char>(pixel.green));
        file.put(static_cast<char>(pixel.blue));
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

} // namespace tarvo::bench
