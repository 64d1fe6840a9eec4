#include "render/software/Raster.h"

#include "render/reference/Rasteriser.h"
#include "render/software/DrawnRange.h"
#include "render/software/kernels/RowChoice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace tarvo::render::software {
namespace {

using geometry::Vertex;
using reference::Fragment;

struct Target {
    int width;
    int height;
};

std::vector<Fragment> fragmentsOf(const CRaster& raster) {
    std::vector<Fragment> fragments;
    for (int band = 0; band < bandCount(raster.bottom()); ++band) {
        raster.forEachPiece(band, [&](const Span& span, int y, int x, int count) {
            float u[pieceLength];
            float v[pieceLength];
            float colour[pieceLength];
            rowKernels().interpolate(alongRow(raster.values(span).u, y), x, count, u);
            rowKernels().interpolate(alongRow(raster.values(span).v, y), x, count, v);
            rowKernels().interpolate(alongRow(raster.values(span).colour, y), x, count, colour);
            for (int i = 0; i < count; ++i)
                fragments.push_back({x + i, y, colour[i], u[i], v[i]});
        });
    }
    return fragments;
}

/// Row by row, in the order of drawing within a row.
std::vector<Fragment> byRow(const std::vector<Fragment>& fragments) {
    std::map<int, std::vector<Fragment>> rows;
    for (const Fragment& fragment : fragments)
        rows[fragment.y].push_back(fragment);
    std::vector<Fragment> sorted;
    for (const auto& [y, row] : rows)
        sorted.insert(sorted.end(), row.begin(), row.end());
    return sorted;
}

void expectAlike(const std::vector<Fragment>& actual, const std::vector<Fragment>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        ASSERT_EQ(actual[i].x, expected[i].x) << "row " << expected[i].y;
        ASSERT_EQ(actual[i].y, expected[i].y);
        const auto isNear = [](float a, float b) {
            return std::abs(a - b) <= 2e-6F * std::max(1.0F, std::abs(b));
        };
        ASSERT_TRUE(isNear(actual[i].u, expected[i].u)) << actual[i].u << " and " << expected[i].u;
        ASSERT_TRUE(isNear(actual[i].v, expected[i].v)) << actual[i].v << " and " << expected[i].v;
        ASSERT_TRUE(isNear(actual[i].colour, expected[i].colour));
    }
}

std::vector<Fragment> strip(std::span<const Vertex> vertices, Target target) {
    std::vector<Fragment> fragments;
    reference::rasteriseStrip(vertices, target.width, target.height,
                              [&](const Fragment& f) { fragments.push_back(f); });
    return byRow(fragments);
}

CRaster rasterOfStrip(std::span<const Vertex> vertices, Target target) {
    CRaster raster;
    raster.build(vertices, {}, Topology::triangleStrip, target.width, target.height);
    return raster;
}

TEST(Raster, UprightQuadsAreThoseOfThePlatform) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> place(-1.4F, 1.4F);
    std::size_t drawn = 0;
    for (int round = 0; round < 300; ++round) {
        const Target target{1 + round % 97, 1 + round * 7 % 61};
        const auto [left, right] = std::minmax({place(random), place(random)});
        const auto [top, bottom] = std::minmax({place(random), place(random)});
        const std::array<Vertex, 4> quad{
            Vertex{left, bottom, 0, 1, -0.25F, 1.5F}, Vertex{left, top, 0, 1, -0.25F, 0.5F},
            Vertex{right, bottom, 0, 1, 0.75F, 1.5F}, Vertex{right, top, 0, 1, 0.75F, 0.5F}};
        const CRaster raster = rasterOfStrip(quad, target);
        EXPECT_TRUE(raster.isRectangle());
        const std::vector<Fragment> fragments = fragmentsOf(raster);
        ASSERT_NO_FATAL_FAILURE(expectAlike(fragments, strip(quad, target))) << round;
        drawn += fragments.size();
    }
    EXPECT_GT(drawn, 10000U);
}

TEST(Raster, AFullQuadHasEachPixelOnceAndUFollowsTheCentres) {
    const std::array<Vertex, 4> quad{Vertex{-1, 1, 0, 1, 0, 1}, Vertex{-1, -1, 0, 1, 0, 0},
                                     Vertex{1, 1, 0, 1, 1, 1}, Vertex{1, -1, 0, 1, 1, 0}};
    const std::vector<Fragment> fragments = fragmentsOf(rasterOfStrip(quad, {301, 3}));
    ASSERT_EQ(fragments.size(), 903U);
    for (const Fragment& f : fragments) {
        EXPECT_FLOAT_EQ(f.u, static_cast<float>((f.x + 0.5) / 301));
        EXPECT_FLOAT_EQ(f.v, static_cast<float>((f.y + 0.5) / 3));
    }
}

TEST(Raster, AnyStripIsThatOfThePlatform) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> place(-1.3F, 1.3F);
    std::uniform_int_distribution<int> onGrid(-20, 20);
    std::size_t drawn = 0;
    for (int round = 0; round < 400; ++round) {
        const Target target{40, 40};
        std::vector<Vertex> vertices(static_cast<std::size_t>(3 + round % 7));
        for (Vertex& v : vertices) {
            // Every second strip has its corners on pixel centres and edges, where the rules decide.
            const bool isOnGrid = round % 2 == 0;
            v = {isOnGrid ? static_cast<float>(onGrid(random)) / 20.0F : place(random),
                 isOnGrid ? static_cast<float>(onGrid(random)) / 40.0F : place(random),
                 0.0F,
                 place(random),
                 place(random),
                 place(random)};
        }
        const std::vector<Fragment> fragments = fragmentsOf(rasterOfStrip(vertices, target));
        // Values on a sliver are ill-conditioned in any arithmetic; which pixels it has is not.
        const std::vector<Fragment> expected = strip(vertices, target);
        ASSERT_EQ(fragments.size(), expected.size()) << round;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(fragments[i].x, expected[i].x);
            ASSERT_EQ(fragments[i].y, expected[i].y);
            ASSERT_NEAR(static_cast<double>(fragments[i].u), static_cast<double>(expected[i].u), 1e-4);
            ASSERT_NEAR(static_cast<double>(fragments[i].v), static_cast<double>(expected[i].v), 1e-4);
            ASSERT_NEAR(static_cast<double>(fragments[i].colour), static_cast<double>(expected[i].colour),
                        1e-4);
        }
        drawn += fragments.size();
    }
    EXPECT_GT(drawn, 10000U);
}

TEST(Raster, TheOverviewDiscIsThatOfThePlatform) {
    geometry::ViewLayout layout;
    layout.viewType = geometry::ViewType::singleOverview;
    layout.panorama = {90.0, 90.0, 0.0, 0.0};
    const geometry::ViewVertices vertices = geometry::buildViewVertices(layout);
    const geometry::OverviewDiscIndices indices = geometry::overviewDiscIndices();
    const auto disc = std::span(vertices).subspan(geometry::overviewDiscBaseVertex);
    std::vector<Fragment> expected;
    reference::rasteriseList(disc, indices, 161, 120, [&](const Fragment& f) { expected.push_back(f); });
    CRaster raster;
    raster.build(disc, indices, Topology::triangleList, 161, 120);
    const std::vector<Fragment> fragments = fragmentsOf(raster);
    ASSERT_NO_FATAL_FAILURE(expectAlike(fragments, byRow(expected)));
    std::set<std::pair<int, int>> places;
    for (const Fragment& f : fragments)
        places.insert({f.x, f.y});
    EXPECT_EQ(places.size(), fragments.size()) << "no pixel twice";
    EXPECT_GT(places.size(), 2500U);
}

TEST(Raster, BackSidesAndWhatIsNoNumberAreLeftOut) {
    std::array<Vertex, 4> mirrored{Vertex{1, 1, 0, 1, 0, 1}, Vertex{1, -1, 0, 1, 0, 0},
                                   Vertex{-1, 1, 0, 1, 1, 1}, Vertex{-1, -1, 0, 1, 1, 0}};
    EXPECT_TRUE(fragmentsOf(rasterOfStrip(mirrored, {8, 8})).empty());
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e30F}) {
        std::array<Vertex, 3> triangle{Vertex{-1, 1, 0, 1, 0, 1}, Vertex{-1, -1, 0, 1, 0, 0},
                                       Vertex{1, 1, 0, 1, 1, 1}};
        EXPECT_EQ(fragmentsOf(rasterOfStrip(triangle, {8, 8})).size(), 28U)
            << "half of the square, without the diagonal, which is its right edge";
        triangle[1].y = bad;
        EXPECT_TRUE(fragmentsOf(rasterOfStrip(triangle, {8, 8})).empty());
    }
}

TEST(Raster, SlotsOfSpansDoNotOverlapAndAreAligned) {
    const std::array<Vertex, 4> quad{Vertex{-1, 1, 0, 1, 0, 1}, Vertex{-1, -1, 0, 1, 0, 0},
                                     Vertex{0.9F, 1, 0, 1, 1, 1}, Vertex{0.9F, -1, 0, 1, 1, 0}};
    const CRaster raster = rasterOfStrip(quad, {50, 9});
    int next = 0;
    for (int y = 0; y < 9; ++y) {
        const Span& span = raster.row(y).front();
        EXPECT_EQ(span.slot, next);
        EXPECT_EQ(span.slot % slotAlignment, 0);
        next += 48; // 47.5 pixels wide: 47 or 48, filled up to a multiple of 16
    }
    EXPECT_EQ(raster.slotCount(), 9U * 48U);
}

TEST(Raster, RowsOfBlocksFollowEachOtherInTheSlots) {
    // 300 by 30 pixels from row 5 on: two whole pieces and one of 44, filled up to 48; rows 5 to 15, 16 to 31
    // and 32 to 34.
    const std::array<Vertex, 4> quad{Vertex{-1, 0.75F, 0, 1, 0, 1}, Vertex{-1, -0.75F, 0, 1, 0, 0},
                                     Vertex{0.5F, 0.75F, 0, 1, 1, 1}, Vertex{0.5F, -0.75F, 0, 1, 1, 0}};
    const CRaster raster = rasterOfStrip(quad, {400, 40});
    ASSERT_TRUE(raster.isRectangle());
    ASSERT_EQ(raster.top(), 5);
    ASSERT_EQ(raster.bottom(), 35);
    std::vector<int> rows;
    std::ptrdiff_t next = 0;
    for (int band = 0; band < 3; ++band) {
        int left = 0;
        raster.forEachBlock(band, [&](const Block& block) {
            EXPECT_EQ(block.left, left);
            EXPECT_EQ(block.columns, left == 256 ? 44 : 128);
            EXPECT_EQ(raster.slotOf(block), next);
            EXPECT_EQ(raster.slotStep(block), left == 256 ? 48 : 128);
            for (int row = 0; row < block.rows; ++row)
                EXPECT_EQ(raster.slotOf(block.span, block.top + row, block.left),
                          raster.slotOf(block) + row * raster.slotStep(block));
            left += 128;
            next += block.rows * raster.slotStep(block);
            rows.push_back(block.rows);
        });
        EXPECT_EQ(raster.endSlot(band), next);
    }
    EXPECT_EQ(rows, (std::vector<int>{11, 11, 11, 16, 16, 16, 3, 3, 3}));
    EXPECT_EQ(raster.slotCount(), 30U * 304U);
}

} // namespace
} // namespace tarvo::render::software
