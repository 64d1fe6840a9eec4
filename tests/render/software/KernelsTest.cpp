#include "render/ConstantRecords.h"
#include "render/software/kernels/ArcTangent.h"
#include "render/software/kernels/Blending.h"
#include "render/software/kernels/RowChoice.h"
#include "tests/render/software/SoftwareDeviceFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <tuple>
#include <vector>

namespace tarvo::render::software {
namespace {

struct Position {
    double x;
    double y;
};

/// The record in double precision.
struct Exact {
    double size[2];
    double imageCenter[2];
    double rotateData[3];
    double tangentOfFieldOfView;
    double lensProfile[3];
    double lambdaOffset;
    double clearColor[4];
    double panoramaRectAngles[4];
};

Exact exactly(const DewarpConstants& constants) {
    std::array<float, 20> floats{};
    std::array<double, 20> doubles{};
    static_assert(sizeof(floats) == sizeof(constants) && sizeof(doubles) == sizeof(Exact));
    std::memcpy(floats.data(), &constants, sizeof(floats));
    std::copy(floats.begin(), floats.end(), doubles.begin());
    Exact exact{};
    std::memcpy(&exact, doubles.data(), sizeof(exact));
    return exact;
}

// The projections once more, in double precision and by the book: rays as angles, rotations as rotations.

Position imagePoint(const Exact& c, double theta, double lambda) {
    const double radius = c.lensProfile[0] * std::pow(theta, 3) + c.lensProfile[1] * std::pow(theta, 2) +
                          c.lensProfile[2] * theta;
    return {c.imageCenter[0] + radius * std::cos(lambda), c.imageCenter[1] + radius * std::sin(lambda)};
}

Position singleView(const Exact& c, double u, double v) {
    const double sx = u * c.size[0] - c.size[0] / 2.0;
    const double sy = v * c.size[1] - c.size[1] / 2.0;
    const double theta = std::atan(std::hypot(sx, sy) / (c.size[1] / 2.0) * c.tangentOfFieldOfView);
    const double lambda = c.lambdaOffset - std::atan2(sy, -sx);
    double x = std::sin(theta) * std::cos(lambda);
    double y = std::sin(theta) * std::sin(lambda);
    double z = std::cos(theta);
    const auto cosine = [](double angle) { return std::abs(std::cos(angle)); };
    const double sx1 = std::sin(c.rotateData[0]);
    const double cx1 = cosine(c.rotateData[0]);
    std::tie(y, z) = std::make_tuple(y * cx1 + z * sx1, z * cx1 - y * sx1);
    const double sy1 = std::sin(c.rotateData[1]);
    const double cy1 = cosine(c.rotateData[1]);
    std::tie(x, z) = std::make_tuple(x * cy1 + z * sy1, z * cy1 - x * sy1);
    return imagePoint(c, std::acos(std::clamp(z, -1.0, 1.0)), std::atan2(y, x) + c.rotateData[2]);
}

constexpr double halfPi = std::numbers::pi / 2.0;

Position panoramaWall(const Exact& c, double u, double v) {
    const double polar = halfPi - 0.5 * c.panoramaRectAngles[3] + v * c.panoramaRectAngles[3];
    const double azimuth = u * c.panoramaRectAngles[2] + c.panoramaRectAngles[0] + halfPi;
    const double x = std::sin(polar) * std::cos(azimuth);
    const double y = std::sin(polar) * std::sin(azimuth);
    const double z = std::cos(polar);
    return imagePoint(c, std::acos(std::clamp(y, -1.0, 1.0)), std::atan2(-z, -x));
}

Position panoramaCeiling(const Exact& c, double u, double v) {
    const double start = c.panoramaRectAngles[0] - halfPi + (v > 0.5 ? c.panoramaRectAngles[2] : 0.0);
    const double down = v > 0.5 ? v - 0.5 : v;
    return imagePoint(c, halfPi - down * 2.0 * c.panoramaRectAngles[3], start + u * c.panoramaRectAngles[2]);
}

Position panoramaDesk(const Exact& c, double u, double v) {
    const double start = -c.panoramaRectAngles[0] - halfPi - (v > 0.5 ? c.panoramaRectAngles[2] : 0.0);
    const double down = v > 0.5 ? v : v + 0.5;
    return imagePoint(c, halfPi + (down - 1.0) * 2.0 * c.panoramaRectAngles[3],
                      start - u * c.panoramaRectAngles[2]);
}

DewarpConstants randomConstants(std::mt19937& random) {
    const auto between = [&](double low, double high) {
        return static_cast<float>(std::uniform_real_distribution<double>(low, high)(random));
    };
    DewarpConstants c{};
    c.size[0] = std::floor(between(33, 4000));
    c.size[1] = std::floor(between(33, 3000));
    c.imageCenter[0] = c.size[0] * between(0.4, 0.6);
    c.imageCenter[1] = c.size[1] * between(0.4, 0.6);
    c.rotateData[0] = between(-1.5, 1.5);
    c.rotateData[1] = between(0, 1) < 0.5F ? 0.0F : between(-1.0, 1.0);
    c.rotateData[2] = between(-3.1, 3.1);
    c.tangentOfFieldOfView = between(0.05, 2.0);
    c.lensProfile[0] = c.size[1] * between(-0.03, 0.03);
    c.lensProfile[1] = c.size[1] * between(-0.03, 0.03);
    c.lensProfile[2] = c.size[1] * between(0.25, 0.4);
    c.lambdaOffset = between(-3.1, 3.1);
    c.panoramaRectAngles[0] = between(-3.1, 3.1);
    c.panoramaRectAngles[2] = between(0.5, 3.1);
    c.panoramaRectAngles[3] = between(0.3, 1.5);
    return c;
}

struct Projection {
    const char* name;
    PositionKernel RowKernels::*kernel;
    Position (*exact)(const Exact&, double, double);
    bool isBounded; ///< looks at nothing outside the input
};

const Projection projections[] = {
    {"single view", &RowKernels::singleView, singleView, true},
    {"wall", &RowKernels::panoramaWall, panoramaWall, false},
    {"ceiling", &RowKernels::panoramaCeiling, panoramaCeiling, true},
    {"desk", &RowKernels::panoramaDesk, panoramaDesk, true},
};

/// What a bounded program shows there: the picture, or its outside colour.
bool isSomewhere(float x, float y, const DewarpConstants& c) {
    std::int32_t offset = 0;
    std::uint16_t fractions = 0;
    GroupBox box{};
    const auto width = static_cast<int>(c.size[0]);
    rowKernels().pack(
        {&x, &y, 1, width, static_cast<int>(c.size[1]), true, width * 4, &offset, &fractions, &box});
    return offset >= 0;
}

TEST(SoftwareKernels, ProjectionsLieWithinAThirtySecondOfAPixel) {
    constexpr double tolerance = 1.0 / 32.0;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> coordinate(0.0F, 1.0F);
    for (const Projection& projection : projections) {
        int inside = 0;
        for (int round = 0; round < 200; ++round) {
            const DewarpConstants c = randomConstants(random);
            constexpr int count = 101;
            float u[count];
            float v[count];
            float x[count];
            float y[count];
            for (int i = 0; i < count; ++i) {
                u[i] = coordinate(random);
                v[i] = coordinate(random);
            }
            u[0] = v[0] = 0.5F;
            (rowKernels().*projection.kernel)(&c, {u, v, count}, {x, y, c.size[0], c.size[1]});
            const Exact exact = exactly(c);
            for (int i = 0; i < count; ++i) {
                const Position p =
                    projection.exact(exact, static_cast<double>(u[i]), static_cast<double>(v[i]));
                if (projection.isBounded) {
                    // How far inside the input, or outside if negative; at the edge rounding decides.
                    const double depth = std::min({p.x, p.y, exact.size[0] - p.x, exact.size[1] - p.y});
                    if (std::abs(depth) < tolerance)
                        continue;
                    ASSERT_EQ(isSomewhere(x[i], y[i], c), depth > 0.0) << projection.name;
                    if (depth < 0.0)
                        continue;
                }
                ++inside;
                ASSERT_NEAR(static_cast<double>(x[i]), p.x, tolerance)
                    << projection.name << " " << u[i] << " " << v[i];
                ASSERT_NEAR(static_cast<double>(y[i]), p.y, tolerance)
                    << projection.name << " " << u[i] << " " << v[i];
            }
        }
        EXPECT_GT(inside, 5000) << projection.name;
    }
}

TEST(SoftwareKernels, ProjectionsScaleToThePictureThatTheySample) {
    const DewarpConstants c = singleViewConstants(640, 480, 0.3F, 1.0F);
    const float u = 0.3F;
    const float v = 0.6F;
    float x = 0;
    float y = 0;
    rowKernels().singleView(&c, {&u, &v, 1}, {&x, &y, 320.0F, 960.0F});
    const Position p = singleView(exactly(c), static_cast<double>(u), static_cast<double>(v));
    EXPECT_NEAR(static_cast<double>(x), p.x / 2.0, 1e-3);
    EXPECT_NEAR(static_cast<double>(y), p.y * 2.0, 1e-3);
}

TEST(SoftwareKernels, ProjectionsSurviveAnyRecord) {
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        DewarpConstants c{};
        std::array<std::uint32_t, sizeof(c) / 4> bits{};
        for (std::uint32_t& each : bits)
            each = round % 3 == 0      ? static_cast<std::uint32_t>(random())
                   : random() % 2 == 0 ? 0x7FC00000U
                                       : 0x7F800000U;
        std::memcpy(&c, bits.data(), sizeof(c));
        const float u[2] = {0.5F, 0.1F};
        const float v[2] = {0.5F, 0.9F};
        for (const Projection& projection : projections) {
            float x[2];
            float y[2];
            (rowKernels().*projection.kernel)(&c, {u, v, 2}, {x, y, 100.0F, 50.0F});
            std::int32_t offsets[2];
            std::uint16_t fractions[2];
            GroupBox box;
            rowKernels().pack({x, y, 2, 100, 50, projection.isBounded, 448, offsets, fractions, &box});
            for (const std::int32_t offset : offsets) {
                ASSERT_GE(offset, -1);
                ASSERT_LE(offset, 49 * 448 + 99 * 4);
            }
        }
    }
}

TEST(SoftwareKernels, ArcTangentIsExactToSinglePrecision) {
    for (int i = -2000; i <= 2000; ++i) {
        const float y = static_cast<float>(std::sin(i * 0.0015708)) * 3.0F;
        const float x = static_cast<float>(std::cos(i * 0.0015708)) * 3.0F;
        EXPECT_NEAR(static_cast<double>(arcTangent(y, x)),
                    std::atan2(static_cast<double>(y), static_cast<double>(x)), 4e-7);
    }
    EXPECT_EQ(arcTangent(0.0F, 0.0F), 0.0F);
}

TEST(SoftwareKernels, CurvesThroughKnotsComeNearEnoughOrAreRefused) {
    // Arcs, from nearly straight to far too round: what is taken is right to 1/128 pixel everywhere.
    int taken = 0;
    int refused = 0;
    std::mt19937 random(23);
    for (int round = 0; round < 2000; ++round) {
        const double radius = std::exp(std::uniform_real_distribution<double>(0.0, 9.0)(random));
        const double rate = std::exp(std::uniform_real_distribution<double>(-9.0, 0.0)(random));
        const double phase = std::uniform_real_distribution<double>(-3.0, 3.0)(random);
        const auto at = [&](double pixel) {
            return std::pair{radius * std::cos(phase + rate * pixel),
                             radius * std::sin(phase + rate * pixel)};
        };
        float knotsX[groupLength]{};
        float knotsY[groupLength]{};
        for (int i = 0; i < knotCount; ++i) {
            const auto [knotX, knotY] = at((i - 1) * knotDistance);
            knotsX[i] = static_cast<float>(knotX);
            knotsY[i] = static_cast<float>(knotY);
        }
        float x[128];
        float y[128];
        if (!rowKernels().spread(knotsX, knotsY, 128, x, y)) {
            ++refused;
            continue;
        }
        ++taken;
        // A turn within a few knots looks like none at all: nobody asks for such.
        if (rate * 3 * knotDistance > std::numbers::pi)
            continue;
        for (int i = 0; i < 128; ++i) {
            const auto [exactX, exactY] = at(i);
            ASSERT_NEAR(static_cast<double>(x[i]), exactX, 1.0 / 128.0) << radius << " " << rate << " " << i;
            ASSERT_NEAR(static_cast<double>(y[i]), exactY, 1.0 / 128.0) << radius << " " << rate << " " << i;
        }
    }
    EXPECT_GT(taken, 500);
    EXPECT_GT(refused, 500);
}

TEST(SoftwareKernels, PositionsLieWithinTheReachOfTheirKnots) {
    std::mt19937 random(29);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    for (int round = 0; round < 1000; ++round) {
        // Far more bent than a parabola needs to turn round half-way, and in every other round a cubic.
        const double start = between(0.0, 2000.0);
        const double slope = between(-40.0, 40.0);
        const double bend = between(-8.0, 8.0);
        const double twist = round % 2 == 0 ? 0.0 : between(-1.0, 1.0);
        const auto at = [&](double knot) { return start + knot * (slope + knot * (bend + knot * twist)); };
        float knots[groupLength]{};
        for (int i = 0; i < knotCount; ++i)
            knots[i] = static_cast<float>(at(i - 6));
        float x[128];
        float y[128];
        ASSERT_TRUE(rowKernels().spread(knots, knots, 128, x, y));
        Reach reach{};
        std::fill_n(reach.least, Reach::count, 1e9F);
        std::fill_n(reach.most, Reach::count, -1e9F);
        rowKernels().widen(knots, reach);
        for (int stretch = 0; stretch < Reach::count; ++stretch) {
            double least = 1e9;
            double most = -1e9;
            for (int i = 0; i < knotDistance; ++i) {
                const double exact = at(stretch - 5 + i / static_cast<double>(knotDistance));
                ASSERT_NEAR(static_cast<double>(x[stretch * knotDistance + i]), exact, 1.0 / 128.0);
                least = std::min(least, exact);
                most = std::max(most, exact);
            }
            const auto lowest = static_cast<double>(reach.least[stretch]);
            const auto highest = static_cast<double>(reach.most[stretch]);
            ASSERT_LE(lowest, least + 1.0 / 64.0);
            ASSERT_GE(highest, most - 1.0 / 64.0);
            // Not much further: up to the next knot, and as far as control points lie beside their curve,
            // which is a third of what the slope changes by.
            const double toNext = std::abs(at(stretch - 4) - at(stretch - 4 - 1.0 / knotDistance));
            const double beside = (2.0 * std::abs(bend) + 6.0 * 7.0 * std::abs(twist)) / 3.0;
            ASSERT_GE(lowest, least - toNext - beside - 0.1);
            ASSERT_LE(highest, most + toNext + beside + 0.1);
        }
    }
}

TEST(SoftwareKernels, KnotsThatAreNoNumbersAreRefused) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        for (int i = 0; i < knotCount; ++i) {
            float knotsX[groupLength]{};
            float knotsY[groupLength]{};
            (i % 2 == 0 ? knotsX : knotsY)[i] = bad;
            float x[128];
            float y[128];
            EXPECT_FALSE(rowKernels().spread(knotsX, knotsY, 128, x, y)) << i;
        }
    }
}

TEST(SoftwareKernels, TheExcludedEdgesBelongToTheArea) {
    const ExcludeConstants area{{0.25F, 0.5F, 0.75F, 0.5F}};
    const float u[] = {0.25F, 0.75F, 0.24F, 0.76F, 0.5F, 0.5F};
    const float v[] = {0.5F, 0.5F, 0.5F, 0.5F, 0.49F, 0.51F};
    float x[6];
    float y[6];
    rowKernels().excludeRegion(&area, {u, v, 6}, {x, y, 100.0F, 10.0F});
    EXPECT_TRUE(std::isnan(x[0]));
    EXPECT_TRUE(std::isnan(x[1]));
    EXPECT_FLOAT_EQ(x[2], 24.0F);
    EXPECT_FLOAT_EQ(x[3], 76.0F);
    EXPECT_FLOAT_EQ(y[4], 4.9F);
    EXPECT_FLOAT_EQ(y[5], 5.1F);
}

TEST(SoftwareKernels, TheMarkerIsMixedInByItsAlpha) {
    const float alpha[] = {0.0F, 0.5F, 1.0F};
    Bgra pixels[] = {{200, 100, 50, 7}, {200, 100, 50, 7}, {200, 100, 50, 7}};
    blendOverviewRegion(alpha, 3, &pixels[0].blue);
    EXPECT_EQ(pixels[0], (Bgra{200, 100, 50, 0}));
    EXPECT_EQ(pixels[1], (Bgra{100, 50, 153, 128})); // 0.5 · 255 + 25 = 152.5, and 127.5
    EXPECT_EQ(pixels[2], (Bgra{0, 0, 255, 255}));
    overviewRegion(alpha, 3, &pixels[0].blue);
    EXPECT_EQ(pixels[1], (Bgra{0, 0, 255, 128}));
}

TEST(SoftwareKernels, AnAlphaBeyondItsRangeIsSaturatedBeforeItMixes) {
    const float alpha[] = {-0.4F, 1.5F, std::numeric_limits<float>::quiet_NaN()};
    Bgra pixels[] = {{200, 100, 50, 7}, {200, 100, 50, 7}, {200, 100, 50, 7}};
    blendOverviewRegion(alpha, 3, &pixels[0].blue);
    EXPECT_EQ(pixels[0], (Bgra{200, 100, 50, 0}));
    EXPECT_EQ(pixels[1], (Bgra{0, 0, 255, 255}));
    EXPECT_EQ(pixels[2], (Bgra{200, 100, 50, 0}));
}

TEST(SoftwareKernels, PixelsAreMixedInByTheirOwnAlpha) {
    const Bgra source[] = {{10, 20, 30, 255}, {10, 20, 30, 0}, {250, 0, 100, 51}};
    Bgra target[] = {{1, 2, 3, 4}, {1, 2, 3, 4}, {0, 100, 200, 255}};
    blend(&source[0].blue, 3, &target[0].blue);
    EXPECT_EQ(target[0], (Bgra{10, 20, 30, 255}));
    EXPECT_EQ(target[1], (Bgra{1, 2, 3, 0}));
    EXPECT_EQ(target[2], (Bgra{50, 80, 180, 51})); // one fifth and four fifths
}

TEST(SoftwareKernels, StoredColoursSaturateAndRound) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(storedColour({0.2F, 0.4F, 0.6F, 1.0F}), grey);
    EXPECT_EQ(storedColour({2.0F, -1.0F, nan, 0.501F}), (Bgra{0, 0, 255, 128}));
}

} // namespace
} // namespace tarvo::render::software
