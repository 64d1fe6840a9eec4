#include "render/software/Knots.h"

#include "render/software/TouchedTiles.h"
#include "render/software/kernels/RowChoice.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace tarvo::render::software {
namespace {

constexpr int width = 640;
constexpr int height = 480;

/// Looks at the place itself, which is counted in pixels here, but `shift` pixels further down from the row
/// `from` on.
struct Jump {
    float from;
    float shift;
};

void look(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const auto& jump = *static_cast<const Jump*>(constants);
    for (int i = 0; i < places.count; ++i) {
        positions.x[i] = places.u[i];
        positions.y[i] = places.v[i] + (places.v[i] > jump.from ? jump.shift : 0.0F);
    }
}

/// One block, 128 by 16 pixels, whose first looks at the middle of pixel (left, top).
class Knots : public testing::Test {
protected:
    void lookFrom(int left, int top, Jump jump = {1e9F, 0.0F}) {
        PositionKey key;
        key.kernel = look;
        key.window = {0, 0, width, height, width, height, width * 4};
        std::memcpy(key.record.bytes.data(), &jump, sizeof(jump));
        tiles.assign(tileWordsOf(key.window), 0);
        const auto u = static_cast<double>(left);
        const auto v = static_cast<double>(top);
        const VertexValues values{{u, 1.0, 0.0}, {v, 0.0, 1.0}, {}};
        const Span span{0, 0, 0, pieceLength};
        const Block block{span, 0, bandHeight, 0, pieceLength};
        CKnots knots(key, rowKernels(), tiles);
        knots.project(values, 0, bandHeight, 0, pieceLength);
        for (int row = 0; row < bandHeight; ++row) {
            alignas(alignment) std::array<float, pieceLength> x{};
            alignas(alignment) std::array<float, pieceLength> y{};
            ASSERT_TRUE(knots.spread(block, row, x.data(), y.data()));
            const double y0 = top + row + 0.5;
            const double moved = y0 > static_cast<double>(jump.from) ? static_cast<double>(jump.shift) : 0.0;
            for (int i = 0; i < pieceLength; ++i) {
                ASSERT_NEAR(static_cast<double>(x[static_cast<std::size_t>(i)]), left + i + 0.5, 0.01);
                ASSERT_NEAR(static_cast<double>(y[static_cast<std::size_t>(i)]), y0 + moved, 0.01);
            }
        }
        knots.touch(pieceLength);
        isInside = knots.isInside();
    }

    int touched() const {
        int count = 0;
        for (const std::uint64_t word : tiles)
            count += std::popcount(word);
        return count;
    }

    std::vector<std::uint64_t> tiles;
    bool isInside = false;
};

TEST_F(Knots, AreInsideOnlyWhereAllRowsAre) {
    lookFrom(200, 100);
    EXPECT_TRUE(isInside);
    for (const auto& [left, top] :
         {std::pair{-3, 100}, {width - pieceLength + 1, 100}, {200, -3}, {200, height - 8}}) {
        lookFrom(left, top);
        EXPECT_FALSE(isInside) << left << ", " << top;
    }
    // The upper rows look at nothing and the lower ones into the middle, or the other way round.
    lookFrom(200, -300, {-292.0F, 500.0F});
    EXPECT_FALSE(isInside);
    lookFrom(200, 200, {208.0F, 500.0F});
    EXPECT_FALSE(isInside);
    lookFrom(200, 100, {108.0F, 200.0F});
    EXPECT_TRUE(isInside);
}

TEST_F(Knots, TouchTheTilesThatTornRowsLookAtAndNoneBetween) {
    // Tiles are 64 by 16 pixels. Columns 256 to 383 and the neighbour of the last are tiles 4 to 6, rows 96
    // to 111 and the one below tiles 6 and 7. One more to the left and above may be taken as well.
    lookFrom(256, 96);
    EXPECT_GE(touched(), 3 * 2);
    EXPECT_LE(touched(), 4 * 3);
    // The lower eight rows 192 further down: 96 to 104 is tile 6, 296 to 304 are 18 and 19.
    lookFrom(256, 96, {104.0F, 192.0F});
    EXPECT_GE(touched(), 3 * 3);
    EXPECT_LE(touched(), 4 * 4);
}

} // namespace
} // namespace tarvo::render::software
