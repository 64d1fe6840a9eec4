#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvo::apps {

/// A pixel as it lies in an RGB32 frame.
struct Bgra {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    std::uint8_t alpha = 0;

    friend constexpr bool operator==(const Bgra&, const Bgra&) = default;
};

inline constexpr Bgra opaqueBlack{0, 0, 0, 255};

/// The content of a picture file: the top row first, no padding. The module's own pictures are none of a
/// host's business, so this program has its own.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Bgra> pixels;

    Picture() = default;
    /// Width and height are positive; every pixel starts as `fill`.
    Picture(int theWidth, int theHeight, Bgra fill = opaqueBlack)
        : width(theWidth), height(theHeight),
          pixels(static_cast<std::size_t>(theWidth) * static_cast<std::size_t>(theHeight), fill) {}

    /// The pixel in column x of row y; both must lie inside the picture.
    Bgra& at(int x, int y) { return pixels[index(x, y)]; }
    const Bgra& at(int x, int y) const { return pixels[index(x, y)]; }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

} // namespace tarvo::apps
