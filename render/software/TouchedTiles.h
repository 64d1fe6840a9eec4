#pragma once

#include "render/software/TiledPicture.h"
#include "render/software/kernels/RowKernels.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::render::software {

/// The picture that a program samples: a window of a tiled picture.
struct SampledWindow {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    int pictureWidth = 0;
    int pictureHeight = 0;
    std::ptrdiff_t pitch = 0;

    friend bool operator==(const SampledWindow&, const SampledWindow&) = default;
};

/// How many words hold a bit for each tile of the picture.
inline std::size_t tileWordsOf(const SampledWindow& window) {
    return tileWords(static_cast<std::size_t>(tileColumns(window.pictureWidth)) *
                     static_cast<std::size_t>(tileRows(window.pictureHeight)));
}

/// Sets the bits of the tiles that packed positions look at, with the neighbours to the right and below;
/// tile 0 is the lowest bit of the first word. `boxes` are those of the groups, as packed.
void touchTiles(const SampledWindow& window, const GroupBox* boxes, const std::int32_t* offsets, int count,
                std::span<std::uint64_t> tiles) noexcept;

/// The same for up to `count` pixels of some rows that lie between positions; where `isBounded`, those beyond
/// the picture look at nothing, else at its edge.
void touchTiles(const SampledWindow& window, const Reach& x, const Reach& y, int count, bool isBounded,
                std::span<std::uint64_t> tiles) noexcept;

} // namespace tarvo::render::software
