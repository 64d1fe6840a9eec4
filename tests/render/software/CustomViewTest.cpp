#include "tests/render/software/CustomViewFixture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <random>
#include <utility>

namespace tarvo::render::software {
namespace {

// What the software device does, and does not do, for a view through tables. What the view looks like is
// compared elsewhere.

/// 640 × 480: ten columns of tiles in thirty rows.
class CustomView : public SoftwareDevice {
protected:
    void SetUp() override { openFor(PixelFormat::yv12, 640, 480, 64, 48); }

    void newFrame(unsigned seed = 1) {
        Yv12Frame(640, 480, seed).uploadTo(device);
        convertYv12(device);
    }
    std::uint64_t evaluated() const { return device.counters().rangesEvaluated; }
};

TEST_F(CustomView, AtRestIsWorkedOutOnce) {
    ASSERT_EQ(putTables(device, 2, 2, cornersOf(0.1, 0.1, 0.9, 0.8)), S_OK);
    CustomTransformConstants c = wholeOf(2, 2, 1);
    std::vector<Picture> shown;
    for (int i = 0; i < 3; ++i) {
        newFrame();
        ASSERT_EQ(drawTables(device, c), S_OK);
        shown.push_back(outputOf(device));
        EXPECT_EQ(evaluated(), 1U);
    }
    EXPECT_NE(shown[0].pixels, std::vector<Bgra>(64 * 48, opaqueBlack));
    EXPECT_EQ(shown[1].pixels, shown[0].pixels);
    EXPECT_EQ(shown[2].pixels, shown[0].pixels);
    newFrame(9);
    ASSERT_EQ(drawTables(device, c), S_OK);
    EXPECT_NE(outputOf(device).pixels, shown[0].pixels) << "another frame at the same places";
    EXPECT_EQ(evaluated(), 1U);

    c.viewRect[0] = 0.25F;
    ASSERT_EQ(drawTables(device, c), S_OK);
    outputOf(device);
    EXPECT_EQ(evaluated(), 2U) << "moved";
}

TEST_F(CustomView, ANewTableIsSeenAtOnce) {
    ASSERT_EQ(device.open(inputOf(PixelFormat::rgb32, 2, 1), outputOf(4, 4)), S_OK);
    ASSERT_EQ(device.geometry(quads(), {}), S_OK);
    Picture picture(2, 1);
    picture.pixels = {{10, 20, 30, 255}, {110, 120, 130, 255}};
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    const CustomTransformConstants c = wholeOf(1, 1, 1);
    const auto shown = [&] {
        EXPECT_EQ(drawTables(device, c), S_OK);
        return outputOf(device).at(2, 2);
    };
    ASSERT_EQ(putTables(device, 1, 1, {lookingAt(0.0, 0.0)}), S_OK);
    EXPECT_EQ(shown(), picture.at(0, 0));
    ASSERT_EQ(putTables(device, 1, 1, {lookingAt(1.0, 0.0)}), S_OK);
    EXPECT_EQ(shown(), picture.at(1, 0));
    // A new surface has no weights until it gets tables.
    ASSERT_EQ(device.lookup(1, 2), S_OK);
    EXPECT_EQ(shown(), opaqueBlack);
    device.releaseLookup();
    ASSERT_EQ(putTables(device, 1, 1, {lookingAt(0.0, 0.0)}), S_OK);
    EXPECT_EQ(shown(), picture.at(0, 0));
    device.releaseLookup();
    ASSERT_EQ(putTables(device, 1, 1, {lookingAt(1.0, 0.0)}), S_OK);
    EXPECT_EQ(shown(), picture.at(1, 0));
}

TEST_F(CustomView, WhatAnUploadLacksHasNoWeight) {
    newFrame();
    ASSERT_EQ(putTables(device, 2, 4, cornersOf(0.1, 0.1, 0.9, 0.9)), S_OK); // two rows of four
    ASSERT_EQ(drawTables(device, wholeOf(2, 4, 1)), S_OK);
    const Picture shown = outputOf(device);
    EXPECT_NE(shown.at(10, 2), opaqueBlack);
    for (int x = 0; x < 64; ++x)
        ASSERT_EQ(shown.at(x, 40), opaqueBlack);
}

TEST_F(CustomView, OnlyTilesThatAreLookedAtAreMade) {
    // Columns 130 … 190 and rows 130 … 174: one column of tiles and three rows.
    ASSERT_EQ(putTables(device, 2, 2, cornersOf(130.0 / 640, 130.0 / 480, 190.0 / 640, 174.0 / 480)), S_OK);
    for (std::uint64_t frame = 1; frame < 4; ++frame) {
        newFrame(static_cast<unsigned>(frame));
        ASSERT_EQ(drawTables(device, wholeOf(2, 2, 1)), S_OK);
        const Picture shown = outputOf(device);
        EXPECT_EQ(device.counters().tilesMade, 3U * frame);
        EXPECT_NE(shown.at(30, 20), opaqueBlack);
    }
}

TEST_F(CustomView, ATableWithoutWeightsCostsNothing) {
    std::vector<Texel> texels = cornersOf(130.0 / 640, 130.0 / 480, 190.0 / 640, 174.0 / 480, 0);
    const std::vector<Texel> second = cornersOf(322.0 / 640, 242.0 / 480, 350.0 / 640, 262.0 / 480);
    texels.insert(texels.end(), second.begin(), second.end());
    newFrame();
    ASSERT_EQ(putTables(device, 2, 4, texels), S_OK);
    ASSERT_EQ(drawTables(device, wholeOf(2, 2, 2)), S_OK);
    const Picture shown = outputOf(device);
    // Columns 321 … 350 and rows 241 … 262: one column of tiles, two rows.
    EXPECT_EQ(device.counters().tilesMade, 2U);
    // The same as the second table alone.
    ASSERT_EQ(putTables(device, 2, 2, second), S_OK);
    ASSERT_EQ(drawTables(device, wholeOf(2, 2, 1)), S_OK);
    EXPECT_EQ(outputOf(device).pixels, shown.pixels);

    newFrame(2);
    ASSERT_EQ(putTables(device, 2, 2, cornersOf(0.0, 0.0, 1.0, 1.0, 0)), S_OK);
    ASSERT_EQ(drawTables(device, wholeOf(2, 2, 1)), S_OK);
    EXPECT_EQ(outputOf(device).pixels, std::vector<Bgra>(64 * 48, opaqueBlack));
    EXPECT_EQ(device.counters().tilesMade, 2U) << "none for tables without any weight";
}

TEST_F(CustomView, NoIslandOfWeightIsMissed) {
    constexpr int columns = 33;
    constexpr int rows = 25;
    constexpr int tables = 8;
    constexpr int width = 300;
    constexpr int height = 40;
    openFor(PixelFormat::rgb32, 16, 16, width, height);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(16, 16, {200, 100, 40, 255}))), S_OK);
    std::mt19937 random(5);
    const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    int seen = 0;
    for (int round = 0; round < 60; ++round) {
        // Each table sees around a single one of its texels.
        std::vector<Texel> texels(columns * rows * tables, lookingAt(0.5, 0.5, 0));
        std::array<std::pair<int, int>, tables> islands;
        for (int table = 0; table < tables; ++table) {
            auto& [column, row] = islands[static_cast<std::size_t>(table)];
            column = below(columns);
            row = below(rows);
            texels[static_cast<std::size_t>((table * rows + row) * columns + column)].weight = full;
        }
        CustomTransformConstants zoom = wholeOf(columns, rows, tables);
        const bool isMirrored = round % 4 == 3;
        const double size = 0.05 + 0.95 * below(1000) / 1000.0;
        const double left = (1.0 - size) * below(1000) / 1000.0;
        const double top = (1.0 - size) * below(1000) / 1000.0;
        zoom.viewRect[0] = static_cast<float>(isMirrored ? left + size : left);
        zoom.viewRect[1] = static_cast<float>(top);
        zoom.viewRect[2] = static_cast<float>(isMirrored ? -size : size);
        zoom.viewRect[3] = static_cast<float>(size);
        ASSERT_EQ(putTables(device, columns, rows * tables, texels), S_OK);
        ASSERT_EQ(drawTables(device, zoom), S_OK);
        const Picture shown = outputOf(device);
        const auto viewed = [&](int side, double place) {
            return place * static_cast<double>(zoom.viewRect[side + 2]) +
                   static_cast<double>(zoom.viewRect[side]);
        };
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double across = viewed(0, (x + 0.5) / width);
                const double down = viewed(1, (y + 0.5) / height);
                double weight = 0.0;
                for (const auto& [column, row] : islands) {
                    weight += std::max(0.0, 1.0 - std::abs(across * (columns - 1) - column)) *
                              std::max(0.0, 1.0 - std::abs(down * (rows - 1) - row));
                }
                ASSERT_NEAR(shown.at(x, y).blue, std::min(200.0 * weight, 255.0), 0.75) << x << " " << y;
                seen += weight > 0.1 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(seen, 1000);
}

TEST_F(CustomView, SeveralTablesShowWhatEachShowsAlone) {
    constexpr int columns = 33;
    constexpr int rows = 25;
    constexpr int tables = 8;
    openFor(PixelFormat::rgb32, 16, 16, 300, 200);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(16, 16, {200, 100, 40, 255}))), S_OK);
    std::mt19937 random(6);
    const auto between = [&](double low, double high) {
        return static_cast<float>(low + (high - low) * static_cast<double>(random() % 10001) / 10000.0);
    };
    int seen = 0;
    for (int round = 0; round < 20; ++round) {
        // A camera that is turned, so that a row crosses many cells.
        const auto camera = [&, pan = between(-0.5, 0.5), tilt = between(-0.3, 0.3), fov = between(0.2, 1.0),
                             pitch = between(-0.2, 0.2), roll = between(-1.5, 1.5)](int count) {
            const CustomTransformConstants grid = wholeOf(columns, rows, count);
            VirtualPtzConstants c{};
            std::copy_n(grid.lookupRectangle, 4, c.lookupRectangle);
            c.numberOfTables = grid.numberOfTables;
            c.tableHeight = grid.tableHeight;
            c.inputFov[0] = 3.0F;
            c.inputFov[1] = 1.5F;
            c.outputAR = 1.5F;
            c.panTiltFov[0] = pan;
            c.panTiltFov[1] = tilt;
            c.panTiltFov[2] = fov;
            c.pitchRoll[0] = pitch;
            c.pitchRoll[1] = roll;
            c.effectLevel = 1.0F;
            return c;
        };
        // Each sees around a single one of its texels.
        std::vector<Texel> texels(columns * rows * tables, lookingAt(0.5, 0.5, 0));
        std::vector<int> sums(300 * 200);
        std::vector<int> counts(sums.size());
        for (std::size_t table = 0; table < tables; ++table) {
            const auto first = texels.begin() + static_cast<std::ptrdiff_t>(table * columns * rows);
            first[static_cast<std::ptrdiff_t>(random() % (columns * rows))].weight = full;
            ASSERT_EQ(putTables(device, columns, rows, {first, first + columns * rows}), S_OK);
            ASSERT_EQ(drawTables(device, camera(1)), S_OK);
            const Picture shown = outputOf(device);
            for (std::size_t i = 0; i < sums.size(); ++i) {
                sums[i] += shown.pixels[i].blue;
                counts[i] += shown.pixels[i].blue != 0 ? 1 : 0;
            }
        }
        ASSERT_EQ(putTables(device, columns, rows * tables, texels), S_OK);
        ASSERT_EQ(drawTables(device, camera(tables)), S_OK);
        const Picture shown = outputOf(device);
        for (std::size_t i = 0; i < sums.size(); ++i) {
            // Each was rounded.
            ASSERT_NEAR(shown.pixels[i].blue, std::min(sums[i], 255), counts[i] > 1 ? counts[i] : 1) << i;
            seen += counts[i];
        }
    }
    EXPECT_GT(seen, 10000);
}

/// Two pixels, of 100 and of 200, whose alpha is not what is shown.
class CustomLayers : public SoftwareDevice {
protected:
    void SetUp() override {
        openFor(PixelFormat::rgb32, 2, 1, 40, 40);
        Picture picture(2, 1);
        picture.pixels = {{100, 50, 0, 7}, {200, 100, 40, 9}};
        ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), S_OK);
    }

    /// What tables of one texel each show.
    Bgra shown(const std::vector<Texel>& texels, bool isBlended = false) {
        const auto count = static_cast<int>(texels.size());
        EXPECT_EQ(putTables(device, 1, count, texels), S_OK);
        device.clear(Surface::outputTarget, greyClear);
        EXPECT_EQ(drawTables(device, wholeOf(1, 1, count), isBlended), S_OK);
        const Picture picture = outputOf(device);
        EXPECT_EQ(picture.pixels, std::vector<Bgra>(1600, picture.at(0, 0)));
        return picture.at(0, 0);
    }

    const Texel left = lookingAt(0.0, 0.0);
    const Texel right = lookingAt(1.0, 0.0);

    static Texel weighing(Texel texel, double weight) {
        texel.weight = static_cast<std::uint16_t>(std::lround(weight * 65535.0));
        return texel;
    }
};

TEST_F(CustomLayers, AreAddedByTheirWeights) {
    EXPECT_EQ(shown({left}), (Bgra{100, 50, 0, 255}));
    EXPECT_EQ(shown({right}), (Bgra{200, 100, 40, 255}));
    EXPECT_EQ(shown({weighing(right, 0.5)}), (Bgra{100, 50, 20, 255}));
    EXPECT_EQ(shown({weighing(left, 0.2), weighing(right, 0.6)}), (Bgra{140, 70, 24, 255}));
    EXPECT_EQ(shown({weighing(left, 0.0), right}), (Bgra{200, 100, 40, 255}));
    EXPECT_EQ(shown({weighing(left, 0.2), weighing(right, 0.0), weighing(left, 0.3)}),
              (Bgra{50, 25, 0, 255}));
    EXPECT_EQ(shown({left, right}), (Bgra{255, 150, 40, 255}));
    EXPECT_EQ(shown(std::vector(8, weighing(right, 0.125))), (Bgra{200, 100, 40, 255}));
    EXPECT_EQ(shown(std::vector(9, weighing(right, 0.1))), (Bgra{160, 80, 32, 255})) << "the ninth";
    EXPECT_EQ(shown({right}, true), (Bgra{200, 100, 40, 255})) << "mixed in, but opaque";
}

TEST_F(CustomLayers, NeitherTablesNorFieldsOfViewNorNumbersShowsBlack) {
    ASSERT_EQ(putTables(device, 1, 1, {right}), S_OK);
    const Bgra black = opaqueBlack;
    const Bgra seen{200, 100, 40, 255};
    const auto expectShown = [&](const auto& constants, const Bgra& expected) {
        device.clear(Surface::outputTarget, greyClear);
        ASSERT_EQ(drawTables(device, constants), S_OK);
        const Picture shown = outputOf(device);
        EXPECT_EQ(std::count(shown.pixels.begin(), shown.pixels.end(), expected), 1600);
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    CustomTransformConstants zoom = wholeOf(1, 1, 1);
    expectShown(zoom, seen);
    zoom.numberOfTables = 0;
    expectShown(zoom, black);
    zoom.numberOfTables = 1;
    for (float* const field : {&zoom.lookupRectangle[0], &zoom.lookupRectangle[3], &zoom.viewRect[0],
                               &zoom.viewRect[3], &zoom.projectionRect[1], &zoom.projectionRect[2]}) {
        const float good = std::exchange(*field, nan);
        expectShown(zoom, black);
        *field = good;
    }
    expectShown(zoom, seen);

    VirtualPtzConstants camera{};
    std::memcpy(&camera, &zoom, offsetof(VirtualPtzConstants, inputFov));
    camera.inputFov[0] = 6.3F; // all around
    camera.inputFov[1] = 3.2F;
    camera.outputAR = 1.0F;
    camera.panTiltFov[2] = 0.5F;
    for (const float level : {0.0F, 0.5F, 1.0F}) {
        SCOPED_TRACE(level);
        camera.effectLevel = level;
        expectShown(camera, seen);
        for (float* const field :
             {&camera.inputFov[0], &camera.inputFov[1], &camera.outputAR, &camera.panTiltFov[0],
              &camera.panTiltFov[1], &camera.pitchRoll[0], &camera.pitchRoll[1], &camera.effectLevel}) {
            SCOPED_TRACE(field - camera.inputFov);
            const float good = std::exchange(*field, nan);
            expectShown(camera, black);
            *field = good;
        }
        for (float& fieldOfView : camera.inputFov) {
            const float good = std::exchange(fieldOfView, 0.0F);
            expectShown(camera, black);
            fieldOfView = good;
        }
        expectShown(camera, seen);
        if (level != 0.0F) {
            // Rays too long for their length to be a number.
            camera.outputAR = 1e-30F;
            expectShown(camera, black);
            camera.outputAR = 1.0F;
        }
    }
    camera.panTiltFov[2] = nan;
    expectShown(camera, black);
}

TEST_F(CustomLayers, AnyRecordIsSurvived) {
    std::mt19937 random(8);
    std::vector<Texel> texels(12);
    for (Texel& texel : texels)
        texel = {static_cast<std::uint16_t>(random()), static_cast<std::uint16_t>(random()),
                 static_cast<std::uint16_t>(random())};
    ASSERT_EQ(putTables(device, 3, 4, texels), S_OK);
    for (int round = 0; round < 300; ++round) {
        std::array<std::uint32_t, sizeof(VirtualPtzConstants) / 4> bits{};
        for (std::uint32_t& each : bits)
            each = round % 2 == 0 ? static_cast<std::uint32_t>(random())
                                  : std::bit_cast<std::uint32_t>(static_cast<float>(random()) * 1e-9F);
        VirtualPtzConstants camera{};
        CustomTransformConstants zoom{};
        std::memcpy(&camera, bits.data(), sizeof(camera));
        std::memcpy(&zoom, bits.data(), sizeof(zoom));
        if (round % 3 == 0)
            camera.effectLevel = 1.0F;
        ASSERT_EQ(drawTables(device, zoom), S_OK);
        for (const Bgra& pixel : outputOf(device).pixels)
            ASSERT_EQ(pixel.alpha, 255);
        ASSERT_EQ(drawTables(device, camera), S_OK);
        for (const Bgra& pixel : outputOf(device).pixels)
            ASSERT_EQ(pixel.alpha, 255);
    }
}

} // namespace
} // namespace tarvo::render::software
