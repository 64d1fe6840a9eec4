#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvo::render::reference {

/// Rows of texels of one kind, top row first, without padding; what `Picture` is for pixels.
template<typename Texel>
struct Grid {
    int width;
    int height;
    std::vector<Texel> texels;

    /// Width and height are positive; every texel starts as zero.
    Grid(int theWidth, int theHeight)
        : width(theWidth), height(theHeight),
          texels(static_cast<std::size_t>(theWidth) * static_cast<std::size_t>(theHeight)) {}

    /// The texel in column x of row y; both must lie inside.
    Texel& at(int x, int y) { return texels[index(x, y)]; }
    const Texel& at(int x, int y) const { return texels[index(x, y)]; }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

/// One plane of a YV12 picture.
using Plane = Grid<std::uint8_t>;

/// One cell of a custom table: where in the input to look and how much that counts; 65535 stands for 1.
struct LookupTexel {
    std::uint16_t sourceX;
    std::uint16_t sourceY;
    std::uint16_t weight;
    std::uint16_t unused;
};
static_assert(sizeof(LookupTexel) == 8);

/// All tables of a custom view, one below the other.
using LookupTables = Grid<LookupTexel>;

} // namespace tarvo::render::reference
