#include "render/software/TouchedTiles.h"

#include <algorithm>

namespace tarvo::render::software {
namespace {

struct TileBox {
    unsigned left;
    unsigned top;
    unsigned right;
    unsigned bottom;

    friend bool operator==(const TileBox&, const TileBox&) = default;
};

TileBox tilesOf(const SampledWindow& window, const GroupBox& box) noexcept {
    const auto tile = [](int place, int size) {
        return static_cast<unsigned>(place) / static_cast<unsigned>(size);
    };
    // With the neighbours to the right and below, which are read even where they have no weight, as at the
    // edges of a window: another thread might be writing them. The picture's last pixels have none.
    return {tile(window.left + box.left, tileWidth), tile(window.top + box.top, tileHeight),
            tile(std::min(window.left + box.right + 1, window.pictureWidth - 1), tileWidth),
            tile(std::min(window.top + box.bottom + 1, window.pictureHeight - 1), tileHeight)};
}

void touchBox(const SampledWindow& window, const TileBox& box, std::span<std::uint64_t> tiles) noexcept {
    const auto columns = static_cast<unsigned>(tileColumns(window.pictureWidth));
    for (unsigned row = box.top; row <= box.bottom; ++row) {
        for (unsigned tile = row * columns + box.left; tile <= row * columns + box.right; ++tile)
            tiles[tile / 64] |= std::uint64_t{1} << tile % 64;
    }
}

/// Pixels of the picture, `size` of them, around positions; none where the first is beyond the last.
struct PixelRange {
    int first;
    int last;

    PixelRange(float least, float most, int size, bool isBounded) : first(1), last(0) {
        // Far more than what the reach is uncertain by.
        constexpr float margin = 0.1F;
        const auto end = static_cast<float>(size);
        const bool isSomewhere = isBounded ? most > -margin && least < end + margin : least <= most;
        if (!isSomewhere)
            return;
        const auto pixel = [&](float position) {
            return static_cast<int>(std::clamp(position - 0.5F, 0.0F, end - 1.0F));
        };
        first = pixel(least - margin);
        last = pixel(most + margin);
    }
};

} // namespace

void touchTiles(const SampledWindow& window, const GroupBox* boxes, const std::int32_t* offsets, int count,
                std::span<std::uint64_t> tiles) noexcept {
    constexpr unsigned mostTilesOfNeighbours = 6;
    TileBox last{1, 1, 0, 0};
    // The tiles of the box around a few neighbours are as good as always those that they look at; where the
    // projection tears neighbours apart, they are taken one by one.
    for (int begin = 0; begin < count; begin += groupLength) {
        const GroupBox& box = boxes[begin / groupLength];
        if (box.left > box.right)
            continue;
        const TileBox touched = tilesOf(window, box);
        if (touched == last)
            continue;
        if ((touched.right - touched.left + 1) * (touched.bottom - touched.top + 1) <=
            mostTilesOfNeighbours) {
            touchBox(window, touched, tiles);
            last = touched;
            continue;
        }
        const auto pitch = static_cast<std::int32_t>(window.pitch);
        for (int i = begin; i < std::min(begin + groupLength, count); ++i) {
            if (offsets[i] < 0)
                continue;
            const std::int32_t row = offsets[i] / pitch;
            const std::int32_t column = (offsets[i] - row * pitch) / 4;
            touchBox(window, tilesOf(window, {column, row, column, row}), tiles);
        }
    }
}

void touchTiles(const SampledWindow& window, const Reach& x, const Reach& y, int count, bool isBounded,
                std::span<std::uint64_t> tiles) noexcept {
    // Two stretches at once: most of them look at the same tiles.
    for (int i = 0; i < Reach::count && i * knotDistance < count; i += 2) {
        const PixelRange columns(std::min(x.least[i], x.least[i + 1]), std::max(x.most[i], x.most[i + 1]),
                                 window.width, isBounded);
        const PixelRange lines(std::min(y.least[i], y.least[i + 1]), std::max(y.most[i], y.most[i + 1]),
                               window.height, isBounded);
        if (columns.first <= columns.last && lines.first <= lines.last)
            touchBox(window, tilesOf(window, {columns.first, lines.first, columns.last, lines.last}), tiles);
    }
}

} // namespace tarvo::render::software
