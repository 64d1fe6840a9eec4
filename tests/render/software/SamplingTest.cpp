#include "render/software/kernels/RowChoice.h"
#include "tests/render/software/SoftwareDeviceFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace tarvo::render::software {
namespace {

/// Four channels of the linear mix at a position, pixels from the picture's corner.
std::array<double, 4> exactMix(const Picture& picture, double x, double y) {
    const double px = std::clamp(x - 0.5, 0.0, picture.width - 1.0);
    const double py = std::clamp(y - 0.5, 0.0, picture.height - 1.0);
    const int x0 = static_cast<int>(px);
    const int y0 = static_cast<int>(py);
    const int x1 = std::min(x0 + 1, picture.width - 1);
    const int y1 = std::min(y0 + 1, picture.height - 1);
    const auto channels = [&](int cx, int cy) {
        const Bgra& p = picture.at(cx, cy);
        return std::array<double, 4>{double(p.blue), double(p.green), double(p.red), double(p.alpha)};
    };
    std::array<double, 4> mix{};
    for (std::size_t i = 0; i < 4; ++i) {
        const double above = channels(x0, y0)[i] * (1 - (px - x0)) + channels(x1, y0)[i] * (px - x0);
        const double below = channels(x0, y1)[i] * (1 - (px - x0)) + channels(x1, y1)[i] * (px - x0);
        mix[i] = above * (1 - (py - y0)) + below * (py - y0);
    }
    return mix;
}

/// A picture in rows with a pitch, and the pixel and row more that sampling may read.
struct PaddedPicture {
    std::ptrdiff_t pitch;
    std::vector<std::uint8_t> bytes;

    explicit PaddedPicture(const Picture& picture)
        : pitch(picture.width * 4 + 64), bytes(static_cast<std::size_t>(pitch * (picture.height + 1)), 0xEE) {
        for (int y = 0; y < picture.height; ++y)
            std::memcpy(bytes.data() + y * pitch, &picture.at(0, y),
                        static_cast<std::size_t>(picture.width) * 4);
    }
};

std::vector<Bgra> sampled(const Picture& picture, const std::vector<float>& x, const std::vector<float>& y) {
    const PaddedPicture padded(picture);
    const auto count = static_cast<int>(x.size());
    std::vector<std::int32_t> offsets(x.size());
    std::vector<std::uint16_t> fractions(x.size());
    std::vector<Bgra> pixels(x.size());
    std::vector<GroupBox> boxes(x.size() / groupLength + 1);
    rowKernels().pack({x.data(), y.data(), count, picture.width, picture.height, false,
                       static_cast<std::int32_t>(padded.pitch), offsets.data(), fractions.data(),
                       boxes.data()});
    rowKernels().sample({padded.bytes.data(), padded.pitch, offsets.data(), fractions.data(), 0, count, 1,
                         0x04030201U, &pixels.data()->blue, 0});
    return pixels;
}

TEST(Sampling, SamplesAreWithinOneLevelOfTheExactMix) {
    std::mt19937 random(9);
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 7}, {37, 23}, {2592, 5}}) {
        const Picture picture = noisePicture(width, height, 4);
        std::uniform_real_distribution<float> px(-2.0F, static_cast<float>(width) + 2.0F);
        std::uniform_real_distribution<float> py(-2.0F, static_cast<float>(height) + 2.0F);
        std::vector<float> x(3001);
        std::vector<float> y(3001);
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] = px(random);
            y[i] = py(random);
        }
        const std::vector<Bgra> pixels = sampled(picture, x, y);
        for (std::size_t i = 0; i < x.size(); ++i) {
            const auto mix = exactMix(picture, static_cast<double>(x[i]), static_cast<double>(y[i]));
            const std::array<int, 4> actual{pixels[i].blue, pixels[i].green, pixels[i].red, pixels[i].alpha};
            for (std::size_t channel = 0; channel < 4; ++channel)
                ASSERT_LE(std::abs(actual[channel] - std::lround(mix[channel])), 1) << x[i] << ", " << y[i];
        }
    }
}

TEST(Sampling, SamplesAreTheNearestLevelsButForAHundredth) {
    std::mt19937 random(21);
    // Every pair of shares, in one row.
    std::vector<std::uint16_t> fractions(65536);
    std::iota(fractions.begin(), fractions.end(), std::uint16_t{0});
    const std::vector<std::int32_t> offsets(fractions.size(), 0);
    std::vector<Bgra> pixels(fractions.size());
    for (int round = 0; round < 40; ++round) {
        // Upper and lower two pixels, all channels alike; extremes, four alike or anything.
        std::array<int, 4> levels{};
        for (int& level : levels)
            level = static_cast<int>(round % 3 == 0 ? random() % 2 * 255 : random() % 256);
        if (round % 3 == 1)
            levels.fill(levels[0]);
        std::array<std::uint8_t, 16> picture{};
        for (std::size_t i = 0; i < picture.size(); ++i)
            picture[i] = static_cast<std::uint8_t>(levels[i / 4]);
        rowKernels().sample(
            {picture.data(), 8, offsets.data(), fractions.data(), 0, 65536, 1, 0, &pixels.data()->blue, 0});
        for (std::size_t i = 0; i < fractions.size(); ++i) {
            const double right = static_cast<double>(i & 255) / 255.0;
            const double down = static_cast<double>(i >> 8) / 255.0;
            const double above = levels[0] + right * (levels[1] - levels[0]);
            const double below = levels[2] + right * (levels[3] - levels[2]);
            const double mix = above + down * (below - above);
            const bool isExact = round % 3 == 1 || ((i & 255) % 255 == 0 && (i >> 8) % 255 == 0);
            ASSERT_NEAR(pixels[i].blue, mix, isExact ? 1e-9 : 0.51) << i;
            ASSERT_EQ(pixels[i].alpha, pixels[i].blue);
        }
    }
}

TEST(Sampling, SamplesAtCentresAreThePixelsThemselves) {
    const Picture picture = noisePicture(50, 40, 2);
    std::vector<float> x;
    std::vector<float> y;
    for (int i = 0; i < 40; ++i) {
        x.push_back(static_cast<float>(i + 10) + 0.5F);
        y.push_back(static_cast<float>(i) + 0.5F);
    }
    const std::vector<Bgra> pixels = sampled(picture, x, y);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(pixels[static_cast<std::size_t>(i)], picture.at(i + 10, i));
}

TEST(Sampling, WhatIsNoNumberShowsTheOutsideColour) {
    const Picture picture = noisePicture(4, 4, 2);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    const std::vector<Bgra> pixels =
        sampled(picture, {nan, 1.0F, infinite, -infinite}, {1.0F, nan, 0.5F, 3.5F});
    EXPECT_EQ(pixels[0], (Bgra{1, 2, 3, 4}));
    EXPECT_EQ(pixels[1], (Bgra{1, 2, 3, 4}));
    EXPECT_EQ(pixels[2], picture.at(3, 0));
    EXPECT_EQ(pixels[3], picture.at(0, 3));
}

TEST(Sampling, PositionsOutsideTheirBoundsLookAtNothing) {
    const float x[] = {0.0F, -0.001F, 3.999F, 4.0F, 2.0F, 2.0F, 2.0F};
    const float y[] = {0.0F, 1.0F, 1.0F, 1.0F, 2.999F, 3.0F, -0.001F};
    const bool expected[] = {true, false, true, false, true, false, false};
    std::int32_t offsets[7];
    std::uint16_t fractions[7];
    GroupBox box{};
    rowKernels().pack({x, y, 7, 4, 3, true, 64, offsets, fractions, &box});
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(offsets[i] >= 0, expected[i]) << i;
    rowKernels().pack({x, y, 7, 4, 3, false, 64, offsets, fractions, &box});
    for (const std::int32_t offset : offsets)
        EXPECT_GE(offset, 0);
}

} // namespace
} // namespace tarvo::render::software
