#include "render/ConstantRecords.h"
#include "tests/render/software/RowVariants.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tarvo::render::software {
namespace {

class CustomRowVariants : public RowVariants {};

TEST_P(CustomRowVariants, haveTheirOwnMixing) {
    EXPECT_NE(variant().mixLayers, plain().mixLayers);
    EXPECT_NE(variant().lookUp, plain().lookUp);
    EXPECT_NE(variant().customVirtualPtz, plain().customVirtualPtz);
}

TEST_P(CustomRowVariants, lookAtTheSamePlacesOfTheGrid) {
    for (int round = 0; round < 600; ++round) {
        VirtualPtzConstants camera{};
        camera.inputFov[0] = between(0.5F, 6.3F);
        camera.inputFov[1] = between(0.3F, 3.1F);
        camera.outputAR = between(0.5F, 2.0F);
        for (float& angle : camera.panTiltFov)
            angle = between(-3.0F, 3.0F);
        for (float& angle : camera.pitchRoll)
            angle = between(-3.0F, 3.0F);
        camera.effectLevel = std::array{0.0F, 1.0F, between(0.0F, 1.0F)}[static_cast<std::size_t>(round) % 3];
        if (round % 10 == 9)
            camera.panTiltFov[static_cast<std::size_t>(round / 10 % 3)] =
                std::numeric_limits<float>::quiet_NaN();
        if (round % 10 == 8)
            camera.inputFov[round / 10 % 2] = 0.0F;
        CustomTransformConstants zoom{};
        for (float& value : zoom.viewRect)
            value = between(0.0F, 1.0F);
        for (float& value : zoom.projectionRect)
            value = between(-0.3F, 1.5F);
        const int count = whole(1, 140);
        std::vector<float> u(static_cast<std::size_t>(count) + 3);
        std::vector<float> v(u.size());
        for (std::size_t i = 0; i < u.size(); ++i) {
            u[i] = between(-0.1F, 1.1F);
            v[i] = between(-0.1F, 1.1F);
        }
        const auto offset = static_cast<std::size_t>(round % 4);
        const PlaceRow places{u.data() + offset % 3, v.data() + offset % 3, count};
        for (const bool isCamera : {false, true}) {
            const void* const record = isCamera ? static_cast<const void*>(&camera) : &zoom;
            const auto program = isCamera ? &RowKernels::customVirtualPtz : &RowKernels::customTransform;
            CGuarded<float> x(count);
            CGuarded<float> y(count);
            CGuarded<float> variantX(count, 3);
            CGuarded<float> variantY(count, 5);
            (plain().*program)(record, places, {x.data(), y.data(), 1.0F, 1.0F});
            (variant().*program)(record, places, {variantX.data(), variantY.data(), 1.0F, 1.0F});
            expectSame(x.content(), variantX.content());
            expectSame(y.content(), variantY.content());
            ASSERT_TRUE(variantX.isGuardIntact() && variantY.isGuardIntact());
        }
    }
}

TEST_P(CustomRowVariants, lookUpAlike) {
    int seen = 0;
    for (int round = 0; round < 600; ++round) {
        const int columns = whole(1, 20);
        const int rows = whole(1, 20);
        const int pitch = std::max(columns, 2) + whole(0, 3);
        std::vector<float> texels(static_cast<std::size_t>(pitch * rows * 4));
        for (std::size_t i = 0; i < texels.size(); ++i) {
            const bool isEmpty = i % 4 == 2 && (round % 4 == 1 || (round % 4 == 2 && whole(0, 9) != 0));
            const bool isFull = i % 4 == 2 && round % 4 == 3;
            texels[i] = isEmpty ? 0.0F : static_cast<float>(isFull ? fullWeight : whole(0, fullWeight));
        }
        const int count = whole(1, 140);
        std::vector<float> x(static_cast<std::size_t>(count) + 1);
        std::vector<float> y(x.size());
        const float spread = round % 2 == 0 ? 1.0F : 0.1F;
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] = between(0.0F, spread);
            y[i] = between(0.0F, spread);
            if (round % 5 == 0 && whole(0, 3) == 0)
                x[i] = y[i] = std::numeric_limits<float>::quiet_NaN();
        }
        CGuarded<float> positionX(count);
        CGuarded<float> positionY(count);
        CGuarded<std::uint16_t> weights(count);
        CGuarded<float> variantX(count, 1);
        CGuarded<float> variantY(count, 3);
        CGuarded<std::uint16_t> variantWeights(count, 5);
        TableRow row{x.data() + 1,
                     y.data() + 1,
                     count,
                     texels.data(),
                     pitch,
                     columns,
                     rows,
                     between(0.5F, 20.0F),
                     between(0.5F, 20.0F),
                     between(-1.0F, 0.5F),
                     between(-1.0F, 0.5F),
                     2592.0F,
                     1944.0F,
                     positionX.data(),
                     positionY.data(),
                     weights.data()};
        const TableWeights expected = plain().lookUp(row);
        row.positionX = variantX.data();
        row.positionY = variantY.data();
        row.weights = variantWeights.data();
        ASSERT_EQ(variant().lookUp(row), expected);
        expectSame(positionX.content(), variantX.content());
        expectSame(positionY.content(), variantY.content());
        ASSERT_TRUE(std::ranges::equal(weights.content(), variantWeights.content()));
        ASSERT_TRUE(variantX.isGuardIntact() && variantY.isGuardIntact() && variantWeights.isGuardIntact());
        seen |= 1 << static_cast<int>(expected);
    }
    EXPECT_EQ(seen, 7) << "none, full and any";
}

TEST_P(CustomRowVariants, mixAlike) {
    for (int round = 0; round < 600; ++round) {
        const int width = whole(1, 50);
        const int height = whole(1, 30);
        const std::ptrdiff_t pitch = width * 4 + 4 * whole(1, 20);
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(pitch * (height + 1) + 4));
        for (std::uint8_t& byte : pixels)
            byte = static_cast<std::uint8_t>(round % 4 == 0 ? 255 * whole(0, 1) : whole(0, 255));
        const int count = whole(1, 140);
        const auto size = static_cast<std::size_t>(count);
        const auto layerCount = static_cast<std::size_t>(whole(0, 8));
        std::array<std::vector<std::int32_t>, 8> offsets;
        std::array<std::vector<std::uint16_t>, 8> fractions;
        std::array<std::vector<std::uint16_t>, 8> weights;
        std::array<MixLayer, 8> layers{};
        for (std::size_t k = 0; k < layerCount; ++k) {
            // Some see everything, some a stretch, some a few pixels here and there.
            const int kind = whole(0, 2);
            const int first = whole(0, count);
            const int end = whole(first, count);
            for (int i = 0; i < count; ++i) {
                const bool isSeen = kind == 0 || (kind == 1 ? i >= first && i < end : whole(0, 4) == 0);
                offsets[k].push_back(
                    isSeen ? static_cast<std::int32_t>(whole(0, height - 1) * pitch + whole(0, width - 1) * 4)
                           : -1);
                fractions[k].push_back(static_cast<std::uint16_t>(whole(0, 65535)));
                weights[k].push_back(
                    static_cast<std::uint16_t>(isSeen ? (round % 3 == 0 ? 65535 : whole(1, 65535)) : 0));
            }
            layers[k] = {offsets[k].data(), fractions[k].data(), weights[k].data()};
        }
        CGuarded<std::uint8_t> expected(count * 4);
        CGuarded<std::uint8_t> actual(count * 4, size % 64);
        MixRow row{pixels.data(), pitch, layers.data(), static_cast<int>(layerCount), count, expected.data()};
        plain().mixLayers(row);
        row.target = actual.data();
        variant().mixLayers(row);
        ASSERT_TRUE(std::ranges::equal(expected.content(), actual.content())) << round;
        ASSERT_TRUE(actual.isGuardIntact());
    }
}

INSTANTIATE_TEST_SUITE_P(variants, CustomRowVariants, vectorVariants, variantName);

} // namespace
} // namespace tarvo::render::software
