#include "render/reference/Rasteriser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace tarvo::render::reference {
namespace {

using geometry::Vertex;

/// Vertex at a pixel position of a target, with the position as texture coordinate.
Vertex at(double x, double y, int width, int height, float colour = 1.0F) {
    return {static_cast<float>(2.0 * x / width - 1.0),
            static_cast<float>(2.0 * y / height - 1.0),
            0.0F,
            colour,
            static_cast<float>(x),
            static_cast<float>(y)};
}

struct Counter {
    int width;
    int height;
    std::vector<int> visits = std::vector<int>(static_cast<std::size_t>(width * height));

    FragmentVisitor visitor() {
        return [this](const Fragment& f) { ++visits[static_cast<std::size_t>(f.y * width + f.x)]; };
    }
    int at(int x, int y) const { return visits[static_cast<std::size_t>(y * width + x)]; }
};

std::vector<Vertex> quadOf(double left, double top, double right, double bottom, int width, int height) {
    return {at(left, bottom, width, height), at(left, top, width, height), at(right, bottom, width, height),
            at(right, top, width, height)};
}

TEST(Rasteriser, quadCoversThePixelsWhoseCentresItHolds) {
    Counter counter{8, 6};
    rasteriseStrip(quadOf(1.5, 2.0, 5.5, 4.6, 8, 6), 8, 6, counter.visitor());
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            // A centre on the left edge belongs to the quad, one on the right edge does not.
            const bool isInside = x >= 1 && x <= 4 && y >= 2 && y <= 4;
            EXPECT_EQ(counter.at(x, y), isInside ? 1 : 0) << x << ' ' << y;
        }
    }
}

TEST(Rasteriser, neighboursLeaveNoGapAndOverlapNowhere) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> jitter(-0.2, 0.2);
    constexpr int size = 41;
    constexpr int cells = 10;
    // A grid with inner corners shaken, but not so far that a triangle turns over; every cell a strip of two
    // triangles of its own.
    std::vector<std::vector<Vertex>> corners;
    for (int row = 0; row <= cells; ++row) {
        std::vector<Vertex> line;
        for (int column = 0; column <= cells; ++column) {
            const bool isInner = row > 0 && row < cells && column > 0 && column < cells;
            const double step = static_cast<double>(size) / cells;
            line.push_back(at((column + (isInner ? jitter(random) : 0.0)) * step,
                              (row + (isInner ? jitter(random) : 0.0)) * step, size, size));
        }
        corners.push_back(line);
    }
    Counter counter{size, size};
    for (std::size_t row = 0; row < cells; ++row) {
        for (std::size_t column = 0; column < cells; ++column) {
            const std::vector<Vertex> cell{corners[row + 1][column], corners[row][column],
                                           corners[row + 1][column + 1], corners[row][column + 1]};
            rasteriseStrip(cell, size, size, counter.visitor());
        }
    }
    for (const int visits : counter.visits) {
        ASSERT_EQ(visits, 1);
    }
}

TEST(Rasteriser, backSidesAreLeftOut) {
    Counter counter{8, 8};
    const std::vector<Vertex> triangle{at(0, 0, 8, 8), at(8, 0, 8, 8), at(0, 8, 8, 8)}; // clockwise
    const std::vector<std::uint32_t> front{0, 1, 2};
    const std::vector<std::uint32_t> back{0, 2, 1};
    rasteriseList(triangle, back, 8, 8, counter.visitor());
    for (const int visits : counter.visits) {
        ASSERT_EQ(visits, 0);
    }
    rasteriseList(triangle, front, 8, 8, counter.visitor());
    EXPECT_EQ(counter.at(1, 1), 1);
    EXPECT_EQ(counter.at(7, 7), 0);
}

TEST(Rasteriser, valuesAreThoseAtThePixelCentres) {
    int seen = 0;
    const auto check = [&seen](const Fragment& f) {
        EXPECT_NEAR(f.u, static_cast<float>(f.x) + 0.5F, 1e-4F);
        EXPECT_NEAR(f.v, static_cast<float>(f.y) + 0.5F, 1e-4F);
        ++seen;
    };
    rasteriseStrip(quadOf(-3.3, 1.2, 20.7, 9.9, 16, 12), 16, 12, check); // reaches beyond the target
    EXPECT_EQ(seen, 16 * 9);                                             // centres of rows 1 to 9
}

TEST(Rasteriser, colourIsInterpolated) {
    const std::vector<Vertex> quad{at(0, 4, 8, 4, 0.0F), at(0, 0, 8, 4, 0.0F), at(8, 4, 8, 4, 1.0F),
                                   at(8, 0, 8, 4, 1.0F)};
    rasteriseStrip(quad, 8, 4, [](const Fragment& f) {
        EXPECT_NEAR(f.colour, (static_cast<float>(f.x) + 0.5F) / 8.0F, 1e-6F);
    });
}

TEST(Rasteriser, wildCornersAreHarmless) {
    Counter counter{16, 16};
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float wild : {none, infinity, -infinity}) {
        std::vector<Vertex> quad = quadOf(0, 0, 16, 16, 16, 16);
        quad[1].x = wild;
        quad[2].y = wild;
        rasteriseStrip(quad, 16, 16, counter.visitor());
    }
    for (const int visits : counter.visits) {
        ASSERT_EQ(visits, 0); // both triangles have a corner that is nowhere
    }
    rasteriseStrip(quadOf(-1e9, -1e9, 1e9, 1e9, 16, 16), 16, 16, counter.visitor());
    for (const int visits : counter.visits) {
        ASSERT_EQ(visits, 1);
    }
    rasteriseStrip({}, 16, 16, counter.visitor());
    rasteriseStrip(std::vector<Vertex>(2), 16, 16, counter.visitor());
    rasteriseStrip(std::vector<Vertex>(4), 16, 16, counter.visitor()); // no area
    for (const int visits : counter.visits) {
        ASSERT_EQ(visits, 1);
    }
}

} // namespace
} // namespace tarvo::render::reference
