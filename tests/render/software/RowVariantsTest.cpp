#include "tests/render/software/RowVariants.h"

#include "render/ConstantRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace tarvo::render::software {
namespace {

TEST_P(RowVariants, haveTheirOwnSampling) {
    EXPECT_NE(variant().sample, plain().sample);
    EXPECT_NE(variant().pack, plain().pack);
    EXPECT_NE(variant().singleView, plain().singleView);
}

TEST_P(RowVariants, interpolateAlike) {
    for (int round = 0; round < 300; ++round) {
        const int count = whole(1, 140);
        const LinearRow row{std::uniform_real_distribution<double>(-3.0, 3.0)(random),
                            std::uniform_real_distribution<double>(-0.01, 0.01)(random)};
        const int first = whole(0, 16000);
        CGuarded<float> expected(count);
        CGuarded<float> actual(count, static_cast<std::size_t>(round % 16));
        plain().interpolate(row, first, count, expected.data());
        variant().interpolate(row, first, count, actual.data());
        expectSame(expected.content(), actual.content());
        ASSERT_TRUE(actual.isGuardIntact());
        // In double precision throughout, rounded once.
        ASSERT_EQ(expected.data()[0], static_cast<float>(row.atLeftEdge + row.perColumn * (first + 0.5)));
    }
}

TEST_P(RowVariants, lookAtTheSamePlaces) {
    constexpr PositionKernel RowKernels::*programs[] = {
        &RowKernels::singleView,   &RowKernels::panoramaWall, &RowKernels::panoramaCeiling,
        &RowKernels::panoramaDesk, &RowKernels::plainCopy,    &RowKernels::excludeRegion};
    for (int round = 0; round < 600; ++round) {
        DewarpConstants c{};
        c.size[0] = static_cast<float>(whole(33, 4000));
        c.size[1] = static_cast<float>(whole(33, 3000));
        c.imageCenter[0] = c.size[0] * between(0.4F, 0.6F);
        c.imageCenter[1] = c.size[1] * between(0.4F, 0.6F);
        for (float& angle : c.rotateData)
            angle = between(-3.1F, 3.1F);
        c.tangentOfFieldOfView = between(0.01F, 3.0F);
        c.lensProfile[0] = c.size[1] * between(-0.03F, 0.03F);
        c.lensProfile[1] = c.size[1] * between(-0.03F, 0.03F);
        c.lensProfile[2] = c.size[1] * between(0.25F, 0.4F);
        c.lambdaOffset = between(-3.1F, 3.1F);
        c.panoramaRectAngles[0] = between(-7.0F, 7.0F);
        c.panoramaRectAngles[2] = between(0.5F, 6.3F);
        c.panoramaRectAngles[3] = between(0.3F, 1.5F);
        if (round % 10 == 9)
            c.panoramaRectAngles[0] = c.lensProfile[1] = std::numeric_limits<float>::infinity();
        const ExcludeConstants area{{0.2F, 0.3F, 0.6F, 0.7F}};
        const int count = whole(1, 140);
        std::vector<float> u(static_cast<std::size_t>(count) + 3);
        std::vector<float> v(u.size());
        for (std::size_t i = 0; i < u.size(); ++i) {
            u[i] = between(-0.1F, 1.1F);
            v[i] = i % 7 == 0 ? 0.5F : between(-0.1F, 1.1F);
        }
        for (const auto program : programs) {
            const void* const record =
                program == &RowKernels::excludeRegion ? static_cast<const void*>(&area) : &c;
            CGuarded<float> x(count);
            CGuarded<float> y(count);
            CGuarded<float> variantX(count, 3);
            CGuarded<float> variantY(count, 5);
            const auto offset = static_cast<std::size_t>(round % 4);
            const PlaceRow places{u.data() + offset % 3, v.data() + offset % 3, count};
            (plain().*program)(record, places, {x.data(), y.data(), c.size[0], c.size[1]});
            (variant().*program)(record, places, {variantX.data(), variantY.data(), c.size[0], c.size[1]});
            expectSame(x.content(), variantX.content());
            expectSame(y.content(), variantY.content());
            ASSERT_TRUE(variantX.isGuardIntact() && variantY.isGuardIntact());
        }
    }
}

/// Positions in and around a picture of this size, and some that are nowhere.
struct Positions {
    std::vector<float> x;
    std::vector<float> y;
};

TEST_P(RowVariants, packAlike) {
    for (int round = 0; round < 600; ++round) {
        const int count = whole(1, 140);
        const int width = whole(1, round % 2 == 0 ? 40 : 16384);
        const int height = whole(1, round % 2 == 0 ? 40 : 16384);
        const int groups = (count + groupLength - 1) / groupLength;
        Positions positions;
        // Half a pixel inside the outermost centres, or anywhere.
        const bool areInside = round % 7 == 0 && width > 2 && height > 2;
        const float beyond = areInside ? -1.0F : 3.0F;
        for (int i = 0; i < count + 1; ++i) {
            positions.x.push_back(between(-beyond, static_cast<float>(width) + beyond));
            positions.y.push_back(between(-beyond, static_cast<float>(height) + beyond));
            if (areInside)
                continue;
            if (round % 3 == 0 && whole(0, 5) == 0)
                positions.x.back() = std::numeric_limits<float>::quiet_NaN();
            if (round % 5 == 0 && whole(0, 9) == 0)
                positions.y.back() = std::numeric_limits<float>::infinity();
        }
        CGuarded<std::int32_t> offsets(count);
        CGuarded<std::uint16_t> fractions(count);
        CGuarded<GroupBox> boxes(groups);
        CGuarded<std::int32_t> variantOffsets(count, 1);
        CGuarded<std::uint16_t> variantFractions(count, 1);
        CGuarded<GroupBox> variantBoxes(groups);
        PackRow row{positions.x.data() + 1,
                    positions.y.data() + 1,
                    count,
                    width,
                    height,
                    round % 4 == 1,
                    width * 4 + 64,
                    offsets.data(),
                    fractions.data(),
                    boxes.data()};
        plain().pack(row);
        row.offsets = variantOffsets.data();
        row.fractions = variantFractions.data();
        row.boxes = variantBoxes.data();
        row.isInside = areInside;
        variant().pack(row);
        ASSERT_TRUE(std::ranges::equal(offsets.content(), variantOffsets.content()));
        ASSERT_TRUE(std::ranges::equal(fractions.content(), variantFractions.content()));
        ASSERT_EQ(std::memcmp(boxes.data(), variantBoxes.data(), boxes.content().size_bytes()), 0);
        ASSERT_TRUE(variantOffsets.isGuardIntact() && variantFractions.isGuardIntact() &&
                    variantBoxes.isGuardIntact());
        // The boxes are those of the offsets.
        for (int group = 0; group < groups; ++group) {
            GroupBox box{1 << 20, 1 << 20, -1, -1};
            for (int i = group * groupLength; i < std::min((group + 1) * groupLength, count); ++i) {
                const std::int32_t offset = offsets.data()[i];
                if (offset < 0)
                    continue;
                const std::int32_t y = offset / row.pitch;
                const std::int32_t x = offset % row.pitch / 4;
                box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
                       std::max(box.bottom, y)};
            }
            ASSERT_EQ(std::memcmp(&box, boxes.data() + group, sizeof(box)), 0) << group;
        }
    }
}

TEST_P(RowVariants, spreadAlike) {
    for (int round = 0; round < 300; ++round) {
        std::vector<float> knotsX(groupLength);
        std::vector<float> knotsY(groupLength);
        const float bend = between(-0.3F, 0.3F);
        for (int i = 0; i < groupLength; ++i) {
            const auto k = static_cast<float>(i);
            knotsX[static_cast<std::size_t>(i)] = 300.0F + between(14.0F, 14.01F) * k + bend * k * k;
            knotsY[static_cast<std::size_t>(i)] = 700.0F - between(7.0F, 7.002F) * k;
        }
        const int count = whole(1, 128);
        const int padded = (count + 31) / 32 * 32;
        CGuarded<float> x(padded);
        CGuarded<float> y(padded);
        CGuarded<float> variantX(padded, 1);
        CGuarded<float> variantY(padded, 2);
        const bool isTaken = plain().spread(knotsX.data(), knotsY.data(), count, x.data(), y.data());
        ASSERT_EQ(variant().spread(knotsX.data(), knotsY.data(), count, variantX.data(), variantY.data()),
                  isTaken);
        expectSame(x.content(), variantX.content());
        expectSame(y.content(), variantY.content());
        ASSERT_TRUE(variantX.isGuardIntact() && variantY.isGuardIntact());
    }
}

TEST_P(RowVariants, widenAlike) {
    Reach expected{};
    Reach actual{};
    for (int round = 0; round < 300; ++round) {
        std::vector<float> knots(knotCount);
        for (float& knot : knots)
            knot = between(-50.0F, 3000.0F);
        if (round % 10 == 0)
            knots[static_cast<std::size_t>(whole(0, knotCount - 1))] =
                std::numeric_limits<float>::quiet_NaN();
        if (round % 20 == 0) {
            std::ranges::fill(expected.least, 1e9F);
            std::ranges::fill(expected.most, -1e9F);
        }
        actual = expected;
        plain().widen(knots.data(), expected);
        variant().widen(knots.data(), actual);
        expectSame(expected.least, actual.least);
        expectSame(expected.most, actual.most);
    }
}

TEST_P(RowVariants, sampleAlike) {
    for (int round = 0; round < 400; ++round) {
        const int width = whole(1, 50);
        const int height = whole(1, 30);
        const std::ptrdiff_t pitch = width * 4 + 4 * whole(1, 20);
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(pitch * (height + 1) + 4));
        for (std::uint8_t& byte : pixels)
            byte = static_cast<std::uint8_t>(round % 4 == 0 ? 255 * whole(0, 1) : whole(0, 255));
        const int count = whole(1, 140);
        const int rows = whole(1, 16);
        const std::ptrdiff_t step = count + whole(0, 20);
        // Of what follows, pixels are fetched in advance.
        const std::ptrdiff_t following = round % 2 == 0 ? 0 : whole(0, 2000);
        std::vector<std::int32_t> offsets(static_cast<std::size_t>((rows - 1) * step + count + following));
        std::vector<std::uint16_t> fractions(offsets.size());
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            const bool isNowhere = round % 3 == 0 && whole(0, 20) == 0;
            offsets[i] =
                isNowhere ? -1
                          : static_cast<std::int32_t>(whole(0, height - 1) * pitch + whole(0, width - 1) * 4);
            fractions[i] = static_cast<std::uint16_t>(whole(0, 65535));
        }
        const int targetPitch = count * 4 + 4 * whole(0, 5);
        const int targetBytes = (rows - 1) * targetPitch + count * 4;
        CGuarded<std::uint8_t> expected(targetBytes);
        CGuarded<std::uint8_t> actual(targetBytes, static_cast<std::size_t>(round % 64));
        // The gaps between rows are nobody's.
        std::fill_n(expected.data(), targetBytes, std::uint8_t{0xA5});
        std::fill_n(actual.data(), targetBytes, std::uint8_t{0xA5});
        SampleBlock block{pixels.data(), pitch,       offsets.data(),  fractions.data(), step,     count,
                          rows,          0x11223344U, expected.data(), targetPitch,      following};
        plain().sample(block);
        block.target = actual.data();
        variant().sample(block);
        ASSERT_TRUE(std::ranges::equal(expected.content(), actual.content())) << round;
        ASSERT_TRUE(actual.isGuardIntact());
        for (int row = 0; row + 1 < rows; ++row) {
            const auto gap = actual.content().subspan(static_cast<std::size_t>(row * targetPitch + count * 4),
                                                      static_cast<std::size_t>(targetPitch - count * 4));
            ASSERT_TRUE(std::ranges::all_of(gap, [](std::uint8_t byte) { return byte == 0xA5; })) << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(variants, RowVariants, vectorVariants, variantName);

} // namespace
} // namespace tarvo::render::software
