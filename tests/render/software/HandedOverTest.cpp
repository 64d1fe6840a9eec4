#include "tests/render/software/CountedMemory.h"
#include "tests/render/software/CustomViewFixture.h"
#include "tests/render/software/HandedOverFixture.h"
#include "tests/support/AllocationCount.h"

#include <initializer_list>

namespace tarvo::render::software {
namespace {

using namespace handedOver;

/// A device whose rows are handed over, beside one that draws the same into memory.
class HandedOver : public SoftwareDevice {
protected:
    void SetUp() override {
        openFor(PixelFormat::yv12, width, height, outputWidth, outputHeight);
        openLikewise(plainDevice);
    }

    static void openLikewise(CSoftwareDevice& other, const geometry::PixelBox& area = {}) {
        ASSERT_EQ(other.open(inputOf(PixelFormat::yv12, width, height), outputOf(outputWidth, outputHeight)),
                  S_OK);
        ASSERT_EQ(other.geometry(quads(), {{}, area}), S_OK);
    }

    static void upload(IRenderDevice& target, unsigned seed) {
        Yv12Frame(width, height, seed).uploadTo(target);
    }
    /// Two views, the second one over a quarter of the first.
    static void draw(IRenderDevice& target, float turn, std::initializer_list<int> quads = {0, 8}) {
        drawViews(target, turn, quads);
    }
    void frame(unsigned seed, float turn) {
        for (IRenderDevice* const each :
             {static_cast<IRenderDevice*>(&device), static_cast<IRenderDevice*>(&plainDevice)}) {
            upload(*each, seed);
            convertYv12(*each);
            draw(*each, turn);
        }
    }
    /// Hands a frame over; the picture, which is the plain device's.
    Picture handOver(unsigned seed, float turn) {
        frame(seed, turn);
        return readAlike(device, plainDevice);
    }

    CSoftwareDevice plainDevice{diagnostics::ObjectLog{log, 8}};
};

TEST_F(HandedOver, RowsAreThoseOfThePicture) {
    for (unsigned seed = 1; seed < 6; ++seed)
        handOver(seed * 3, static_cast<float>(seed / 2));
}

TEST_F(HandedOver, TheResultIsTheReaders) {
    frame(1, 0.0F);
    CRowsTaken taken;
    taken.result = E_ABORT;
    EXPECT_EQ(device.readBack(taken), E_ABORT);
}

TEST_F(HandedOver, WhoWantsThePictureHasItInMemory) {
    frame(1, 0.0F);
    CRowsTaken taken;
    taken.takesAlone = false;
    EXPECT_EQ(device.readBack(taken), S_OK);
    EXPECT_TRUE(taken.hasSeenPixels);
    EXPECT_EQ(taken.picture.pixels, outputOf(plainDevice).pixels);
}

TEST_F(HandedOver, IsDrawnAgainForWhoAsksLater) {
    // Two quarters are left to the clear, which counts.
    constexpr auto half = std::uint64_t{outputWidth} * outputHeight / 2;
    for (IRenderDevice* const each :
         {static_cast<IRenderDevice*>(&device), static_cast<IRenderDevice*>(&plainDevice)}) {
        upload(*each, 1);
        convertYv12(*each);
        draw(*each, 0.5F, {4, 8});
    }
    CRowsTaken taken;
    EXPECT_EQ(device.readBack(taken), S_OK);
    EXPECT_EQ(device.counters().pixelsCleared, half);
    const Picture expected = outputOf(plainDevice);
    EXPECT_EQ(taken.picture.pixels, expected.pixels);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(outputOf(device).pixels, expected.pixels);
        EXPECT_EQ(device.counters().pixelsCleared, 2 * half) << "once is enough";
    }
    // And nothing is told row by row that was not drawn.
    std::fill(taken.visits.begin(), taken.visits.end(), 0);
    EXPECT_EQ(device.readBack(taken), S_OK);
    EXPECT_TRUE(taken.hasSeenPixels);
    EXPECT_EQ(taken.visits, std::vector<int>(outputHeight, 0));
}

TEST_F(HandedOver, WhoAsksLaterTimeAndAgainHasItInMemory) {
    const auto isHandedOver = [this](unsigned seed) {
        frame(seed, 0.5F);
        CRowsTaken taken;
        EXPECT_EQ(device.readBack(taken), S_OK);
        EXPECT_EQ(taken.picture.pixels, outputOf(plainDevice).pixels);
        return !taken.hasSeenPixels;
    };
    EXPECT_TRUE(isHandedOver(1));
    for (unsigned seed = 2; seed < 5; ++seed) {
        EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
        EXPECT_FALSE(isHandedOver(seed));
    }
    EXPECT_TRUE(isHandedOver(5)) << "nobody asked for the last one";
}

TEST_F(HandedOver, OutlastsTheLoanOfItsFrame) {
    upload(plainDevice, 4);
    convertYv12(plainDevice);
    draw(plainDevice, 1.0F);
    const Picture expected = outputOf(plainDevice);

    Yv12Frame lent(width, height, 4);
    const auto lend = [&](Surface surface, std::vector<std::uint8_t>& plane, int columns, int rows) {
        SourceRows source = rowsOf(plane.data(), static_cast<std::size_t>(columns), rows);
        source.isLent = true;
        EXPECT_EQ(device.upload(surface, source), S_OK);
    };
    lend(Surface::yPlane, lent.y, width, height);
    lend(Surface::crPlane, lent.cr, width / 2, height / 2);
    lend(Surface::cbPlane, lent.cb, width / 2, height / 2);
    convertYv12(device);
    draw(device, 1.0F);
    CRowsTaken taken;
    EXPECT_EQ(device.readBack(taken), S_OK);
    EXPECT_EQ(taken.picture.pixels, expected.pixels);
    device.keepInput();
    for (auto* const plane : {&lent.y, &lent.cr, &lent.cb})
        std::fill(plane->begin(), plane->end(), std::uint8_t{0xEE});
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOver, OutlastsFramesThatAreNotDrawn) {
    const Picture expected = handOver(1, 0.5F);
    // Converted or not: its own planes are the only ones that must not be written to.
    for (unsigned seed = 2; seed < 9; ++seed) {
        upload(device, seed * 5);
        if (seed % 2 == 0)
            convertYv12(device);
    }
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOver, IsThereForWhatIsDrawnUponIt) {
    const Picture expected = handOver(1, 0.5F);
    ASSERT_EQ(drawCopy(Surface::inputPicture, 4), S_OK);
    ASSERT_EQ(plainDevice.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(4))), S_OK);
    EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
    EXPECT_NE(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOver, IsThereForCopies) {
    const geometry::PixelBox area{0, 0, outputWidth, outputHeight};
    ASSERT_EQ(device.geometry(quads(), {{}, area}), S_OK);
    const Picture expected = handOver(1, 0.5F);
    device.copyBox(Surface::outputTarget, area, Surface::excludeArea);
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::excludeArea), S_OK);
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOver, IsNotConfusedByManyOtherRanges) {
    const Picture expected = handOver(1, 0.5F);
    // More conversions with vertices of their own than ranges are kept.
    for (int i = 0; i < 40; ++i) {
        geometry::ViewVertices vertices = quads();
        putQuad(std::span(vertices).subspan(44, 4), -1, -1, 1, 1.0F - 0.01F * static_cast<float>(i));
        ASSERT_EQ(device.geometry(vertices, {}), S_OK);
        ASSERT_EQ(device.draw(yv12Pass()), S_OK);
    }
    EXPECT_EQ(outputOf(device).pixels, expected.pixels);
}

TEST_F(HandedOver, WhatIsSeenThroughTablesOutlastsThem) {
    for (const bool isReplaced : {true, false}) {
        openFor(PixelFormat::yv12, width, height, outputWidth, outputHeight);
        upload(device, 1);
        convertYv12(device);
        ASSERT_EQ(putTables(device, 2, 2, cornersOf(0.1, 0.1, 0.9, 0.9)), S_OK);
        device.clear(Surface::outputTarget, greyClear);
        ASSERT_EQ(drawTables(device, wholeOf(2, 2, 1)), S_OK);
        CRowsTaken taken;
        ASSERT_EQ(device.readBack(taken), S_OK);
        EXPECT_FALSE(taken.hasSeenPixels);
        EXPECT_NE(taken.picture.at(100, 70), opaqueBlack);
        if (isReplaced) {
            ASSERT_EQ(putTables(device, 2, 2, cornersOf(0.4, 0.4, 0.6, 0.6)), S_OK);
        } else {
            device.releaseLookup();
        }
        EXPECT_EQ(outputOf(device).pixels, taken.picture.pixels);
    }
}

TEST_F(HandedOver, WithoutMemoryForTheNextFrameThereIsNone) {
    const CountedMemory counted;
    CSoftwareDevice poor(diagnostics::ObjectLog{log, 9}, nullptr, CountedMemory::source);
    openLikewise(poor, {0, 0, 64, 48});
    const auto mask = [&](Surface source, float side) {
        const ExcludeConstants constants{{0.0F, 0.0F, side, side}};
        EXPECT_EQ(poor.draw(excludePass(constants, source)), S_OK);
    };
    // Looks at four pictures; there is memory for three.
    const auto drawMany = [&] {
        upload(poor, 2);
        convertYv12(poor);
        mask(Surface::inputPicture, 0.2F);
        poor.copy(Surface::conversionTarget, Surface::maskedInput);
        mask(Surface::maskedInput, 0.3F);
        poor.clear(Surface::outputTarget, greyClear);
        for (const Surface surface :
             {Surface::inputPicture, Surface::maskedInput, Surface::conversionTarget, Surface::excludeArea})
            EXPECT_EQ(poor.draw(passOf(ShaderProgram::plainCopy, surface, quadRange(0))), S_OK);
    };
    upload(poor, 1);
    convertYv12(poor);
    draw(poor, 0.0F);
    CRowsTaken taken;
    ASSERT_EQ(poor.readBack(taken), S_OK);
    ASSERT_FALSE(taken.hasSeenPixels);

    drawMany();
    CountedMemory::limit = 0;
    EXPECT_EQ(poor.readBack(taken), E_OUTOFMEMORY);
    EXPECT_EQ(poor.readBack(taken), E_FAIL) << "the frame before was handed over and is gone";
    CountedMemory::limit = 1 << 30;
    // Nor is there one to draw upon or to copy from.
    EXPECT_EQ(poor.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(4))), S_OK);
    EXPECT_EQ(poor.readBack(taken), E_FAIL);
    Pass pass = passOf(ShaderProgram::plainCopy, Surface::outputTarget, quadRange(0));
    pass.target = Surface::conversionTarget;
    EXPECT_EQ(poor.draw(pass), E_FAIL);
    // Until all of it is replaced.
    poor.copyBox(Surface::inputPicture, {0, 0, outputWidth, outputHeight - 1}, Surface::outputTarget);
    EXPECT_EQ(poor.readBack(taken), E_FAIL);
    poor.copyBox(Surface::inputPicture, {0, 0, outputWidth, outputHeight}, Surface::outputTarget);
    EXPECT_EQ(poor.readBack(taken), S_OK);
    const Bgra shown = outputOf(poor).at(100, 70);
    EXPECT_LE(largestDifference(shown, Yv12Frame(width, height, 2).pixelAt(100, 70)), 1);

    drawMany();
    EXPECT_EQ(poor.readBack(taken), S_OK);
    EXPECT_EQ(outputOf(poor).pixels, taken.picture.pixels);
}

TEST_F(HandedOver, FramesAllocateNothing) {
    const CountedMemory counted;
    CSoftwareDevice counting(diagnostics::ObjectLog{log, 9}, nullptr, CountedMemory::source);
    openLikewise(counting);
    const Yv12Frame input(width, height, 1);
    float turn = 0.0F;
    CRowsTaken taken;
    const auto once = [&] {
        input.uploadTo(counting);
        convertYv12(counting);
        draw(counting, turn += 0.1F);
        EXPECT_EQ(counting.readBack(taken), S_OK);
    };
    for (int i = 0; i < 4; ++i)
        once();
    const int before = tests::allocationCount();
    const int blocks = CountedMemory::taken;
    for (int i = 0; i < 4; ++i)
        once();
    EXPECT_EQ(tests::allocationCount(), before);
    EXPECT_EQ(CountedMemory::taken, blocks);
    EXPECT_FALSE(taken.hasSeenPixels);
}

} // namespace
} // namespace tarvo::render::software
