#include "render/ConstantRecords.h"
#include "render/software/kernels/RowChoice.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace tarvo::render::software {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

struct Place {
    double x;
    double y;
    double poleDistance = 1.0; ///< the cosine of the latitude
};

/// The virtual camera in double precision and by the book: angles throughout.
Place virtualPtz(const VirtualPtzConstants& c, double u, double v) {
    const auto exact = [](float value) { return static_cast<double>(value); };
    const double pan = exact(c.panTiltFov[0]);
    const double tilt = exact(c.panTiltFov[1]);
    const double level = exact(c.effectLevel);
    const double aspect = exact(c.outputAR);
    const double scale = 2.0 * std::tan(exact(c.panTiltFov[2]) / 2.0);
    const double x = (u - 0.5) * scale;
    const double y = (v - 0.5) * scale / aspect;
    const double rho = std::hypot(x, y);
    const double angle = std::atan(rho);
    const double ratio = rho > 0.0 ? std::sin(angle) / rho : 1.0;
    double longitude =
        pan + std::atan2(x * ratio, std::cos(tilt) * std::cos(angle) + y * ratio * std::sin(tilt));
    double latitude =
        std::asin(std::clamp(y * ratio * std::cos(tilt) - std::cos(angle) * std::sin(tilt), -1.0, 1.0));
    if (level != 1.0) {
        const double rest = 1.0 - level;
        longitude = level * longitude + rest * (u - 0.5) * exact(c.inputFov[0]) + rest * pan;
        latitude = level * latitude + rest * (v - 0.5) * exact(c.inputFov[0]) / aspect - rest * tilt;
    }
    const double rayX = std::cos(longitude) * std::cos(latitude);
    const double rayY = std::sin(longitude) * std::cos(latitude);
    const double rayZ = std::sin(latitude);
    const double roll = exact(c.pitchRoll[1]);
    const double pitch = exact(c.pitchRoll[0]);
    const double rolledY = rayY * std::cos(roll) - rayZ * std::sin(roll);
    const double rolledZ = rayY * std::sin(roll) + rayZ * std::cos(roll);
    const double pitchedX = rayX * std::cos(pitch) - rolledZ * std::sin(pitch);
    const double pitchedZ = rayX * std::sin(pitch) + rolledZ * std::cos(pitch);
    return {std::atan2(rolledY, pitchedX) / exact(c.inputFov[0]) + 0.5,
            std::asin(std::clamp(pitchedZ, -1.0, 1.0)) / exact(c.inputFov[1]) + 0.5,
            std::hypot(rolledY, pitchedX)};
}

TEST(CustomKernels, TheVirtualCameraLooksWhereItsFormulaSays) {
    // A thirty-second of a pixel of a picture that the grid shows one to one.
    constexpr double width = 2592.0;
    constexpr double height = 1944.0;
    constexpr double tolerance = 1.0 / 32.0;
    std::mt19937 random(6);
    const auto between = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    int inside = 0;
    int outside = 0;
    for (int round = 0; round < 300; ++round) {
        VirtualPtzConstants c{};
        c.inputFov[0] = between(1.5F, 6.28F);
        c.inputFov[1] = between(0.8F, 3.1F);
        c.outputAR = between(0.7F, 2.0F);
        c.panTiltFov[0] = between(-3.1F, 3.1F);
        c.panTiltFov[1] = between(-1.5F, 1.5F);
        c.panTiltFov[2] = between(0.1F, 2.4F);
        c.pitchRoll[0] = between(-1.5F, 1.5F);
        c.pitchRoll[1] = between(-1.5F, 1.5F);
        c.effectLevel = std::array{0.0F, 1.0F, between(0.0F, 1.0F)}[static_cast<std::size_t>(round) % 3];
        constexpr int count = 101;
        float u[count];
        float v[count];
        float x[count];
        float y[count];
        for (int i = 0; i < count; ++i) {
            u[i] = between(0.0F, 1.0F);
            v[i] = between(0.0F, 1.0F);
        }
        u[0] = v[0] = 0.5F;
        rowKernels().customVirtualPtz(&c, {u, v, count}, {x, y, 1.0F, 1.0F});
        for (int i = 0; i < count; ++i) {
            const Place p = virtualPtz(c, static_cast<double>(u[i]), static_cast<double>(v[i]));
            // Next to a pole, a longitude has no such digits; straight behind it jumps.
            const double behind = std::abs(p.x - 0.5) * static_cast<double>(c.inputFov[0]);
            if (p.poleDistance < 0.03 || std::abs(behind - std::numbers::pi) < 1e-3)
                continue;
            const double depth =
                std::min({p.x * width, p.y * height, (1.0 - p.x) * width, (1.0 - p.y) * height});
            if (std::abs(depth) < tolerance)
                continue;
            ASSERT_EQ(x[i] == x[i], depth > 0.0) << round << " " << u[i] << " " << v[i];
            ASSERT_EQ(y[i] == y[i], depth > 0.0);
            if (depth < 0.0) {
                ++outside;
                continue;
            }
            ++inside;
            ASSERT_NEAR(static_cast<double>(x[i]) * width, p.x * width, tolerance) << round;
            ASSERT_NEAR(static_cast<double>(y[i]) * height, p.y * height, tolerance) << round;
        }
    }
    EXPECT_GT(inside, 5000);
    EXPECT_GT(outside, 2000);
}

TEST(CustomKernels, TheCutOutIsLetterBoxed) {
    CustomTransformConstants c{};
    const std::array view{0.25F, 0.5F, 0.5F, 0.25F};
    const std::array projection{-0.5F, 0.0F, 2.0F, 1.0F};
    std::ranges::copy(view, c.viewRect);
    std::ranges::copy(projection, c.projectionRect);
    const float u[] = {0.5F, 0.0F, 1.0F, -0.01F, 0.5F, nan};
    const float v[] = {0.5F, 0.0F, 1.0F, 0.5F, 2.01F, 0.5F};
    float x[6];
    float y[6];
    rowKernels().customTransform(&c, {u, v, 6}, {x, y, 1.0F, 1.0F});
    // (0.5 · 0.5 + 0.25) · 2 − 0.5 and 0.5 · 0.25 + 0.5; the edges belong to the grid.
    EXPECT_EQ(x[0], 0.5F);
    EXPECT_EQ(y[0], 0.625F);
    EXPECT_EQ(x[1], 0.0F);
    EXPECT_EQ(y[1], 0.5F);
    EXPECT_EQ(x[2], 1.0F);
    EXPECT_EQ(y[2], 0.75F);
    for (int i = 3; i < 6; ++i) {
        EXPECT_TRUE(std::isnan(x[i])) << i;
        EXPECT_TRUE(std::isnan(y[i])) << i;
    }
}

struct Found {
    TableWeights weights;
    std::vector<float> x;
    std::vector<float> y;
    std::vector<std::uint16_t> weight;
};

/// Looks up places in texels from the first one's centre.
Found found(const std::vector<float>& texels, int columns, int rows, const std::vector<float>& x,
            const std::vector<float>& y) {
    Found result{TableWeights::none, std::vector<float>(x.size()), std::vector<float>(x.size()),
                 std::vector<std::uint16_t>(x.size())};
    result.weights =
        rowKernels().lookUp({x.data(), y.data(), static_cast<int>(x.size()), texels.data(),
                             std::max(columns, 2), columns, rows, 1.0F, 1.0F, 0.0F, 0.0F, 65535.0F,
                             2.0F * 65535.0F, result.x.data(), result.y.data(), result.weight.data()});
    return result;
}

TEST(CustomKernels, CellsAreBilinear) {
    const std::vector<float> texels{0,   100, 0,   9, 1000, 100, 400, 9, 2000, 0,   65535, 9, //
                                    100, 200, 200, 9, 3000, 600, 800, 9, 4000, 400, 65535, 9};
    const Found f =
        found(texels, 3, 2, {0.5F, 1.0F, 1.25F, 2.0F, 7.0F, -3.0F}, {0.5F, 0.0F, 1.0F, 1.0F, 9.0F, 1.0F});
    // The mean of the first cell's corners: (0 + 1000 + 100 + 3000) / 4 and so on.
    EXPECT_NEAR(f.x[0], 1025.0F, 1e-2);
    EXPECT_NEAR(f.y[0], 2.0F * 250.0F, 1e-2);
    EXPECT_EQ(f.weight[0], 350);
    EXPECT_NEAR(f.x[1], 1000.0F, 1e-2);
    EXPECT_EQ(f.weight[1], 400);
    EXPECT_NEAR(f.x[2], 3250.0F, 1e-2);
    EXPECT_NEAR(f.y[2], 2.0F * 550.0F, 1e-2);
    // 0.75 · 800 + 0.25 · 65535 = 16983.75
    EXPECT_EQ(f.weight[2], 16984);
    EXPECT_NEAR(f.x[3], 4000.0F, 1e-2);
    EXPECT_EQ(f.weight[3], 65535);
    // Beyond the outermost centres the edge goes on.
    EXPECT_NEAR(f.x[4], 4000.0F, 1e-2);
    EXPECT_NEAR(f.x[5], 100.0F, 1e-2);
    EXPECT_EQ(f.weight[5], 200);
    EXPECT_EQ(f.weights, TableWeights::any);
}

TEST(CustomKernels, WhereThereIsNoWeightThereIsNoPosition) {
    const std::vector<float> texels{10, 20, 0, 0, 30, 40, 65535, 0};
    Found f = found(texels, 2, 1, {0.0F, 1.0F, nan, 1.0F}, {0.0F, 0.0F, 0.0F, nan});
    EXPECT_EQ(f.weights, TableWeights::full);
    EXPECT_TRUE(std::isnan(f.x[0]) && std::isnan(f.y[0]));
    EXPECT_NEAR(f.x[1], 30.0F, 1e-3);
    EXPECT_TRUE(std::isnan(f.x[2]) && std::isnan(f.x[3]));
    EXPECT_EQ(f.weight, (std::vector<std::uint16_t>{0, 65535, 0, 0}));
    EXPECT_EQ(found(texels, 2, 1, {0.0F, nan}, {0.0F, 0.0F}).weights, TableWeights::none);
    EXPECT_EQ(found(texels, 2, 1, {0.5F, 1.0F}, {0.0F, 0.0F}).weights, TableWeights::any);
    // A lone texel is everywhere, whatever pads its row.
    f = found({5, 6, 65535, 0, 900, 900, 900, 0}, 1, 1, {0.0F, 3.0F}, {0.0F, -2.0F});
    EXPECT_EQ(f.weights, TableWeights::full);
    EXPECT_NEAR(f.x[1], 5.0F, 1e-3);
    EXPECT_NEAR(f.y[1], 2.0F * 6.0F, 1e-3);
}

TEST(CustomKernels, LayersAreSummedByTheirWeights) {
    // Two pixels, 100 and 200, each beside its like; every sum by hand.
    std::vector<std::uint8_t> pixels(64, 100);
    std::fill(pixels.begin() + 16, pixels.begin() + 24, std::uint8_t{200});
    std::fill(pixels.begin() + 48, pixels.begin() + 56, std::uint8_t{200});
    const auto mixed = [&](const std::vector<std::pair<std::int32_t, int>>& layers) {
        std::vector<std::int32_t> offsets;
        std::vector<std::uint16_t> weights;
        for (const auto& [offset, weight] : layers) {
            offsets.push_back(offset);
            weights.push_back(static_cast<std::uint16_t>(weight));
        }
        const std::uint16_t fractions = 0;
        std::vector<MixLayer> rows;
        for (std::size_t i = 0; i < layers.size(); ++i)
            rows.push_back({&offsets[i], &fractions, &weights[i]});
        std::array<std::uint8_t, 4> pixel{};
        rowKernels().mixLayers(
            {pixels.data(), 32, rows.data(), static_cast<int>(rows.size()), 1, pixel.data()});
        EXPECT_EQ(pixel[0], pixel[1]);
        EXPECT_EQ(pixel[0], pixel[2]);
        EXPECT_EQ(pixel[3], 255);
        return static_cast<int>(pixel[0]);
    };
    EXPECT_EQ(mixed({}), 0);
    EXPECT_EQ(mixed({{-1, 0}, {-1, 0}}), 0);
    EXPECT_EQ(mixed({{0, 65535}}), 100);
    EXPECT_EQ(mixed({{16, 65535}}), 200);
    EXPECT_EQ(mixed({{16, 32768}}), 100);
    EXPECT_EQ(mixed({{0, 16384}, {16, 49151}}), 175);
    EXPECT_EQ(mixed({{0, 16384}, {-1, 0}, {16, 49151}}), 175);
    EXPECT_EQ(mixed({{0, 65535}, {0, 65535}}), 200);
    EXPECT_EQ(mixed({{16, 65535}, {16, 65535}}), 255);
    const std::pair<std::int32_t, int> eighth{16, 8192};
    EXPECT_EQ(mixed(std::vector(8, eighth)), 200);
}

} // namespace
} // namespace tarvo::render::software
