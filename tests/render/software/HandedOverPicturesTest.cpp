#include "tests/render/software/CountedMemory.h"
#include "tests/render/software/HandedOverFixture.h"

#include <array>
#include <functional>

namespace tarvo::render::software {
namespace {

using namespace handedOver;

/// Frames that come as pixels, through a device that hands rows over, beside one that draws them into memory.
class HandedOverPictures : public SoftwareDevice {
protected:
    void SetUp() override {
        for (CSoftwareDevice* const each : both())
            open(*each);
    }

    static void open(CSoftwareDevice& target) {
        ASSERT_EQ(
            target.open(inputOf(PixelFormat::rgb32, width, height), outputOf(outputWidth, outputHeight)),
            S_OK);
        ASSERT_EQ(target.geometry(quads(), {}), S_OK);
    }
    std::array<CSoftwareDevice*, 2> both() { return {&device, &plainDevice}; }

    static SourceRows lent(const Picture& picture) {
        SourceRows rows = rowsOf(picture);
        rows.isLent = true;
        return rows;
    }
    /// Only the device under test may put it off.
    void upload(CSoftwareDevice& target, const Picture& picture) {
        EXPECT_EQ(
            target.upload(Surface::inputPicture, &target == &plainDevice ? rowsOf(picture) : lent(picture)),
            S_OK);
    }
    /// Uploads a picture, draws it and hands the output over, which is the plain device's.
    Picture handOver(const Picture& input, float turn) {
        for (CSoftwareDevice* const each : both()) {
            upload(*each, input);
            drawViews(*each, turn, {0, 8});
        }
        const Picture expected = readAlike(device, plainDevice);
        for (CSoftwareDevice* const each : both())
            each->keepInput();
        return expected;
    }

    /// Both draw a view of what was uploaded last.
    void expectToDrawAlike() {
        for (CSoftwareDevice* const each : both())
            drawViews(*each, 0.5F, {0});
        EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
    }

    const Picture first = noisePicture(width, height, 3);
    const Picture second = noisePicture(width, height, 4);
    CSoftwareDevice plainDevice{diagnostics::ObjectLog{log, 8}};
};

TEST_F(HandedOverPictures, RowsAreThoseOfThePicture) {
    for (unsigned seed = 1; seed < 6; ++seed)
        handOver(noisePicture(width, height, seed), static_cast<float>(seed / 2));
}

TEST_F(HandedOverPictures, IsDrawnAgainForWhoAsksLater) {
    for (unsigned seed = 1; seed < 4; ++seed) {
        const Picture expected = handOver(noisePicture(width, height, seed), 0.5F);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(outputOf(device).pixels, expected.pixels);
        // Who asked may ask again, so that the next one is in memory, and the one after it is not.
        upload(device, first);
        drawViews(device, 0.5F, {0});
        CRowsTaken taken;
        EXPECT_EQ(device.readBack(taken), S_OK);
        EXPECT_TRUE(taken.hasSeenPixels);
    }
}

TEST_F(HandedOverPictures, IsThereUntilTheNextOneIsBegun) {
    const Picture expected = handOver(first, 0.5F);
    upload(device, second);
    EXPECT_EQ(outputOf(device).pixels, expected.pixels) << "the next frame is there, but not drawn";
    upload(plainDevice, second);
    expectToDrawAlike();
    EXPECT_NE(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOverPictures, OutlastsPicturesThatAreNotDrawn) {
    const Picture expected = handOver(first, 0.5F);
    // All of them stay where they are: what was still looked at after its loan would be grey.
    std::array<Picture, 3> others{noisePicture(width, height, 10), noisePicture(width, height, 11), second};
    for (Picture& other : others) {
        upload(device, other);
        device.keepInput();
        std::fill(other.pixels.begin(), other.pixels.end(), grey);
    }
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
    // The last one of them is what is seen from now on.
    upload(plainDevice, second);
    expectToDrawAlike();
}

TEST_F(HandedOverPictures, OutlastsAPictureThatIsNotLent) {
    const Picture expected = handOver(first, 0.5F);
    Picture other = second;
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(other)), S_OK);
    std::fill(other.pixels.begin(), other.pixels.end(), grey);
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
    upload(plainDevice, second);
    expectToDrawAlike();
}

TEST_F(HandedOverPictures, OfTwoThatWereLentTheLaterOneIsSeen) {
    handOver(first, 0.5F);
    const Picture third = noisePicture(width, height, 5);
    for (CSoftwareDevice* const each : both()) {
        upload(*each, third);
        upload(*each, second);
    }
    expectToDrawAlike();
}

TEST_F(HandedOverPictures, WhatLooksAtTheNextOneSeesItBeforeItIsDrawn) {
    const geometry::PixelBox area{10, 20, 74, 68};
    const ExcludeConstants constants{{0.0F, 0.0F, 0.5F, 0.5F}};
    // Each upon the output of the first picture, with the second one uploaded.
    const std::array<std::function<void(IRenderDevice&)>, 5> steps{
        [](IRenderDevice& target) {
            EXPECT_EQ(target.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(4))),
                      S_OK);
        },
        [&](IRenderDevice& target) { EXPECT_EQ(target.draw(excludePass(constants)), S_OK); },
        [](IRenderDevice& target) { target.copy(Surface::inputPicture, Surface::conversionTarget); },
        [&](IRenderDevice& target) { target.copyBox(Surface::inputPicture, area, Surface::excludeArea); },
        [&](IRenderDevice& target) { target.copyBox(Surface::inputPicture, area, Surface::outputTarget); }};
    for (const auto& step : steps) {
        for (CSoftwareDevice* const each : both())
            ASSERT_EQ(each->geometry(quads(), {{}, area}), S_OK);
        handOver(first, 0.5F);
        for (CSoftwareDevice* const each : both()) {
            upload(*each, second);
            step(*each);
        }
        EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
        for (const Surface surface :
             {Surface::conversionTarget, Surface::excludeArea, Surface::inputPicture}) {
            for (CSoftwareDevice* const each : both()) {
                each->clear(Surface::outputTarget, greyClear);
                EXPECT_EQ(each->draw(passOf(ShaderProgram::plainCopy, surface, quadRange(0))), S_OK);
            }
            EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
        }
        // Nobody asks for the next frames more than once.
        for (CSoftwareDevice* const each : both()) {
            each->clear(Surface::outputTarget, greyClear);
            CRowsTaken taken;
            EXPECT_EQ(each->readBack(taken), S_OK);
        }
    }
}

/// Blocks that could hold an input picture.
constexpr std::size_t pictureBytes = std::size_t{width} * height * 4;

TEST_F(HandedOverPictures, TheNextOneTakesTheSameMemory) {
    CSoftwareDevice watched(diagnostics::ObjectLog{log, 9}, std::make_shared<CThreadPool>(2),
                            WatchedMemory::source);
    open(watched);
    ASSERT_EQ(WatchedMemory::written(pictureBytes), 0);
    for (unsigned seed = 1; seed < 9; ++seed) {
        const Picture input = noisePicture(width, height, seed);
        ASSERT_EQ(watched.upload(Surface::inputPicture, lent(input)), S_OK);
        if (seed % 4 == 0)
            outputOf(watched); // the one before
        drawViews(watched, 0.1F * static_cast<float>(seed), {0, 8});
        CRowsTaken taken;
        ASSERT_EQ(watched.readBack(taken), S_OK);
        EXPECT_EQ(taken.hasSeenPixels, seed % 4 == 0 || seed == 7) << seed;
        watched.keepInput();
        if (seed == 6) {
            outputOf(watched);
            drawViews(watched, 0.0F, {0}); // the same input once more, into memory
            outputOf(watched);
        }
        EXPECT_EQ(WatchedMemory::written(pictureBytes), 1);
    }
}

TEST_F(HandedOverPictures, OneThatCannotWaitTakesTheSameMemoryToo) {
    for (const bool isLent : {true, false}) {
        CSoftwareDevice watched(diagnostics::ObjectLog{log, 9}, std::make_shared<CThreadPool>(2),
                                WatchedMemory::source);
        open(watched);
        // It is in its place before anything is drawn. So would the next one be, whose output is in memory
        // already: nothing is drawn twice from then on.
        for (const bool isFirst : {true, false}) {
            upload(watched, first);
            drawViews(watched, 0.5F, {0, 8});
            CRowsTaken taken;
            ASSERT_EQ(watched.readBack(taken), S_OK);
            EXPECT_EQ(taken.hasSeenPixels, !isFirst);
            watched.keepInput();
            ASSERT_EQ(watched.upload(Surface::inputPicture, isLent ? lent(second) : rowsOf(second)), S_OK);
            watched.keepInput();
            EXPECT_EQ(WatchedMemory::written(pictureBytes), 1);
        }
    }
}

TEST_F(HandedOverPictures, OneThatFindsNoMemoryIsRefusedAtOnce) {
    const CountedMemory counted;
    CSoftwareDevice counting(diagnostics::ObjectLog{log, 9}, std::make_shared<CThreadPool>(2),
                             CountedMemory::source);
    open(counting);
    // There is memory for three, each of which some other surface goes on showing.
    const geometry::PixelBox area{0, 0, 64, 48};
    ASSERT_EQ(counting.geometry(quads(), {{}, area}), S_OK);
    ASSERT_EQ(plainDevice.geometry(quads(), {{}, area}), S_OK);
    const Picture shownByArea = noisePicture(width, height, 1);
    const Picture shownMasked = noisePicture(width, height, 2);
    upload(counting, shownByArea);
    counting.copyBox(Surface::inputPicture, area, Surface::excludeArea);
    upload(counting, shownMasked);
    counting.copy(Surface::inputPicture, Surface::maskedInput);
    for (CSoftwareDevice* const each : {&counting, &plainDevice}) {
        upload(*each, first);
        each->copy(Surface::inputPicture, Surface::conversionTarget);
        drawViews(*each, 0.5F, {0, 8});
    }
    CRowsTaken taken;
    EXPECT_EQ(counting.readBack(taken), S_OK);
    CountedMemory::limit = CountedMemory::taken.load();
    EXPECT_EQ(counting.upload(Surface::inputPicture, lent(second)), E_OUTOFMEMORY);
    counting.keepInput();
    EXPECT_EQ(outputOf(counting).pixels, outputOf(plainDevice).pixels);
    for (CSoftwareDevice* const each : {&counting, &plainDevice})
        drawViews(*each, 0.2F, {0});
    EXPECT_EQ(outputOf(counting).pixels, outputOf(plainDevice).pixels) << "of the picture before";
}

TEST_F(HandedOverPictures, AreaAndOverviewTakeNoMoreMemoryThanIsReady) {
    const CountedMemory counted;
    CSoftwareDevice counting(diagnostics::ObjectLog{log, 9}, std::make_shared<CThreadPool>(2),
                             CountedMemory::source);
    open(counting);
    const geometry::PixelBox area{0, 0, 64, 48};
    const ExcludeConstants constants{{0.0F, 0.0F, 0.2F, 0.2F}};
    int blocks = 0;
    for (CSoftwareDevice* const each : {&counting, &plainDevice})
        ASSERT_EQ(each->geometry(quads(), {{}, area}), S_OK);
    for (unsigned seed = 1; seed < 9; ++seed) {
        const Picture input = noisePicture(width, height, seed);
        for (CSoftwareDevice* const each : {&counting, &plainDevice}) {
            upload(*each, input);
            each->clear(Surface::outputTarget, greyClear);
            each->clear(Surface::conversionTarget, opaqueBlackClear);
            each->copyBox(Surface::inputPicture, area, Surface::excludeArea);
            EXPECT_EQ(each->draw(excludePass(constants)), S_OK);
            each->copy(Surface::conversionTarget, Surface::maskedInput);
            for (const auto& [surface, quad] :
                 {std::pair{Surface::maskedInput, 0}, {Surface::excludeArea, 4}, {Surface::inputPicture, 8}})
                EXPECT_EQ(each->draw(passOf(ShaderProgram::plainCopy, surface, quadRange(quad))), S_OK);
        }
        CRowsTaken taken;
        ASSERT_EQ(counting.readBack(taken), S_OK);
        EXPECT_FALSE(taken.hasSeenPixels);
        counting.keepInput();
        const Picture expected = outputOf(plainDevice);
        EXPECT_EQ(taken.picture.pixels, expected.pixels);
        if (seed == 2)
            blocks = CountedMemory::taken;
        if (seed == 8) {
            upload(counting, first);
            EXPECT_EQ(outputOf(counting).pixels, expected.pixels);
        }
    }
    EXPECT_EQ(CountedMemory::taken, blocks);
}

} // namespace
} // namespace tarvo::render::software
