#include "geometry/OverviewMarker.h"
#include "tests/render/software/CountedMemory.h"
#include "tests/render/software/SoftwareDeviceFixture.h"
#include "tests/support/AllocationCount.h"

#include <atomic>
#include <random>

namespace tarvo::render::software {
namespace {

// 640 × 480: 10 columns of tiles in 30 rows.
constexpr int width = 640;
constexpr int height = 480;

class LazyWork : public SoftwareDevice {
protected:
    void SetUp() override {
        ASSERT_EQ(device.open(inputOf(PixelFormat::yv12, width, height), outputOf(64, 48)), S_OK);
        ASSERT_EQ(device.geometry(quads(), {{}, area}), S_OK);
    }

    /// What the input picture shows at a box as large as the output.
    Picture shownAt(int left, int top) {
        device.copyBox(Surface::inputPicture, {left, top, left + 64, top + 48}, Surface::excludeArea);
        EXPECT_EQ(drawCopy(Surface::excludeArea), S_OK);
        return outputOf(device);
    }

    void expectFrameAt(const Picture& shown, const Yv12Frame& frame, int left, int top) const {
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 64; ++x)
                ASSERT_LE(largestDifference(shown.at(x, y), frame.pixelAt(left + x, top + y)), 1)
                    << x << ", " << y;
        }
    }

    std::uint64_t tilesSince(std::uint64_t before) const { return device.counters().tilesMade - before; }

    const geometry::PixelBox area{0, 0, 64, 48};
};

TEST_F(LazyWork, OnlyWhatIsLookedAtIsConverted) {
    const Yv12Frame frame(width, height, 1);
    frame.uploadTo(device);
    convertYv12(device);
    device.flush();
    EXPECT_EQ(device.counters().tilesMade, 0U);
    // Columns 128 … 191 are one column of tiles, rows 128 … 175 are three rows; the pixels behind the window
    // are read as well.
    expectFrameAt(shownAt(128, 128), frame, 128, 128);
    EXPECT_EQ(device.counters().tilesMade, 2U * 4U);
    // Elsewhere, without another upload: two tiles by four.
    expectFrameAt(shownAt(100, 250), frame, 100, 250);
    EXPECT_EQ(device.counters().tilesMade, 2U * 4U + 2U * 4U);
    // And what was made stays.
    expectFrameAt(shownAt(128, 128), frame, 128, 128);
    EXPECT_EQ(device.counters().tilesMade, 16U);
    EXPECT_EQ(device.counters().rowsCopied, 0U);
}

TEST_F(LazyWork, ASmallWindowConvertsLittle) {
    Yv12Frame(width, height, 1).uploadTo(device);
    convertYv12(device);
    // The field of view's tangent is 0.05: no more than 0.1 · 640 / (2 / 3.14) pixels, a hundred, each way.
    ASSERT_EQ(drawView(singleViewConstants(width, height, 0.0F, 0.0F, 0.05F), 0), S_OK);
    outputOf(device);
    EXPECT_GT(device.counters().tilesMade, 0U);
    EXPECT_LE(device.counters().tilesMade, 3U * 8U);
}

TEST_F(LazyWork, NoTileIsForgotten) {
    // Windows of two pixels somewhere, so that many lie on a border of tiles and nothing else touches the
    // neighbour. Each is seen on a fresh frame, which has no tiles, and on one that has them all.
    std::mt19937 random(5);
    std::uniform_real_distribution<float> place(-0.01F, 1.0F);
    for (unsigned round = 0; round < 150; ++round) {
        geometry::ViewVertices vertices = quads();
        const float u = place(random);
        const float v = place(random);
        for (int i = 0; i < 4; ++i) {
            geometry::Vertex& vertex = vertices[static_cast<std::size_t>(i)];
            vertex.u = u + vertex.u * 2.0F / width;
            vertex.v = v + vertex.v * 2.0F / height;
        }
        ASSERT_EQ(device.geometry(vertices, {{}, area}), S_OK);
        Yv12Frame(width, height, round + 1).uploadTo(device);
        convertYv12(device);
        ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
        const Picture lazily = outputOf(device);
        const std::uint64_t made = device.counters().tilesMade;
        // A part of a surface can only be copied from pixels.
        device.copyBox(Surface::inputPicture, {0, 0, 1, 1}, Surface::maskedInput);
        device.flush();
        ASSERT_GE(device.counters().tilesMade + 8, made + 300U);
        ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
        ASSERT_EQ(outputOf(device).pixels, lazily.pixels) << u << ", " << v;
    }
}

TEST_F(LazyWork, TheLastFrameStaysWhileNewPlanesAreNotConverted) {
    const Yv12Frame first(width, height, 1);
    first.uploadTo(device);
    convertYv12(device);
    device.flush();
    for (unsigned seed = 10; seed < 60; seed += 10)
        Yv12Frame(width, height, seed).uploadTo(device);
    expectFrameAt(shownAt(64, 64), first, 64, 64);
    const Yv12Frame last(width, height, 77);
    last.uploadTo(device);
    convertYv12(device);
    expectFrameAt(shownAt(64, 64), last, 64, 64);
}

TEST_F(LazyWork, ASurfaceLeftBehindKeepsItsFrame) {
    const Yv12Frame first(width, height, 1);
    first.uploadTo(device);
    convertYv12(device);
    const ExcludeConstants constants{{0.0F, 0.0F, 0.2F, 0.2F}}; // 128 × 96 pixels
    ASSERT_EQ(device.draw(excludePass(constants)), S_OK);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    std::uint64_t made = 0;
    Yv12Frame frame(width, height, 2);
    for (unsigned seed = 2; seed < 8; ++seed) {
        frame = Yv12Frame(width, height, seed * 5);
        frame.uploadTo(device);
        convertYv12(device);
        expectFrameAt(shownAt(64, 64), frame, 64, 64);
        if (seed == 4)
            made = device.counters().tilesMade;
    }
    // Once the old frame was in the way, and was put aside; after that a frame costs its own tiles.
    EXPECT_EQ(tilesSince(made), 3U * (2U * 4U));
    device.copyBox(Surface::maskedInput, {100, 64, 164, 112}, Surface::excludeArea);
    ASSERT_EQ(drawCopy(Surface::excludeArea), S_OK);
    const Picture masked = outputOf(device);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            const bool isBlack = 100 + x < 128 && 64 + y < 96;
            const Bgra expected = isBlack ? opaqueBlack : first.pixelAt(100 + x, 64 + y);
            ASSERT_LE(largestDifference(masked.at(x, y), expected), 1) << x << ", " << y;
        }
    }
}

TEST_F(LazyWork, MaskedTilesAreMadeOnceWhoeverLooks) {
    const Yv12Frame frame(width, height, 1);
    frame.uploadTo(device);
    convertYv12(device);
    const ExcludeConstants constants{{0.0F, 0.0F, 0.05F, 0.05F}};
    ASSERT_EQ(device.draw(excludePass(constants)), S_OK);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    ASSERT_EQ(drawCopy(Surface::maskedInput), S_OK);
    ASSERT_EQ(drawCopy(Surface::conversionTarget), S_OK);
    outputOf(device);
    // 64 × 48 points over 640 × 480 pixels: every tile is looked at, on the masked picture alone.
    EXPECT_EQ(device.counters().tilesMade, 300U);
}

TEST_F(LazyWork, AFrameOfPixelsIsMaskedOnlyWhereSomebodyLooks) {
    // Rows without gaps keep that layout, which is not the one of other pictures of this width.
    ASSERT_EQ(device.open(inputOf(PixelFormat::rgb32, 352, 64), outputOf(64, 48)), S_OK);
    ASSERT_EQ(device.geometry(quads(), {{}, area}), S_OK);
    const Picture frame = noisePicture(352, 64, 4);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(frame)), S_OK);
    const ExcludeConstants constants{{0.0F, 0.0F, 0.25F, 0.25F}}; // 88 × 16 pixels
    ASSERT_EQ(device.draw(excludePass(constants)), S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
    const Picture shown = shownAt(64, 0);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(shown.at(x, y), 64 + x < 88 && y < 16 ? opaqueBlack : frame.at(64 + x, y))
                << x << ", " << y;
    }
    EXPECT_EQ(device.counters().tilesMade, 2U * 4U);
}

TEST_F(LazyWork, AViewAtRestIsWorkedOutOnce) {
    Yv12Frame(width, height, 1).uploadTo(device);
    convertYv12(device);
    const DewarpConstants still = singleViewConstants(width, height, 0.3F, 0.0F);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(drawView(still, 0), S_OK);
        outputOf(device);
        EXPECT_EQ(device.counters().rangesEvaluated, 1U);
    }
    // Geometry that says the same keeps it, too.
    ASSERT_EQ(device.geometry(quads(), {{}, area}), S_OK);
    ASSERT_EQ(drawView(still, 0), S_OK);
    const Picture first = outputOf(device);
    EXPECT_EQ(device.counters().rangesEvaluated, 1U);

    ASSERT_EQ(drawView(singleViewConstants(width, height, 0.3F, 0.5F), 0), S_OK);
    const Picture moved = outputOf(device);
    EXPECT_EQ(device.counters().rangesEvaluated, 2U);
    EXPECT_NE(moved.pixels, first.pixels);

    geometry::ViewVertices mirrored = quads();
    for (int i = 0; i < 4; ++i)
        mirrored[static_cast<std::size_t>(i)].u = 1.0F - mirrored[static_cast<std::size_t>(i)].u;
    ASSERT_EQ(device.geometry(mirrored, {{}, area}), S_OK);
    ASSERT_EQ(drawView(still, 0), S_OK);
    const Picture other = outputOf(device);
    EXPECT_EQ(device.counters().rangesEvaluated, 3U);
    EXPECT_EQ(other.at(0, 20), first.at(63, 20));
    EXPECT_NE(other.pixels, first.pixels);
}

TEST_F(LazyWork, ManyDifferentRangesInOneFrameAllAppear) {
    Yv12Frame(width, height, 1).uploadTo(device);
    convertYv12(device);
    // More than are kept at once; the last one covers all.
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(drawView(singleViewConstants(width, height, 0.01F * static_cast<float>(i), 0.0F), 0), S_OK);
    const Picture shown = outputOf(device);
    EXPECT_EQ(device.counters().rangesEvaluated, 40U);
    ASSERT_EQ(drawView(singleViewConstants(width, height, 0.39F, 0.0F), 0), S_OK);
    EXPECT_EQ(outputOf(device).pixels, shown.pixels);
}

TEST_F(LazyWork, ClearsThatAreDrawnOverCostNothing) {
    Yv12Frame(width, height, 1).uploadTo(device);
    convertYv12(device);
    device.clear(Surface::outputTarget, opaqueBlackClear);
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::inputPicture), S_OK);
    device.flush();
    EXPECT_EQ(device.counters().pixelsCleared, 0U);

    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawCopy(Surface::inputPicture, 4), S_OK);
    ASSERT_EQ(drawCopy(Surface::inputPicture, 8), S_OK);
    const Picture shown = outputOf(device);
    EXPECT_EQ(device.counters().pixelsCleared, 64U * 48U / 2U);
    EXPECT_EQ(shown.at(40, 10), grey);
    EXPECT_EQ(shown.at(10, 40), grey);
    EXPECT_NE(shown.at(10, 10), grey);
    EXPECT_NE(shown.at(40, 40), grey);

    // What is mixed in does not hide what lies below.
    device.clear(Surface::outputTarget, greyClear);
    Pass blended = passOf(ShaderProgram::overviewRegion, Surface::none, quadRange(0));
    blended.isBlended = true;
    ASSERT_EQ(device.draw(blended), S_OK);
    EXPECT_EQ(outputOf(device).at(5, 5), (Bgra{0, 0, 255, 255}));
    EXPECT_EQ(device.counters().pixelsCleared, 64U * 48U / 2U + 64U * 48U);
}

TEST_F(LazyWork, WhatIsQueuedIsDrawnWithWhatWasThere) {
    const Yv12Frame first(width, height, 1);
    first.uploadTo(device);
    convertYv12(device);
    device.copyBox(Surface::inputPicture, area, Surface::excludeArea);
    ASSERT_EQ(drawCopy(Surface::excludeArea), S_OK);
    // Before anything was done, everything changes.
    Yv12Frame(width, height, 50).uploadTo(device);
    convertYv12(device);
    device.clear(Surface::conversionTarget, greyClear);
    ASSERT_EQ(device.geometry(geometry::ViewVertices{}, {}), S_OK);
    expectFrameAt(outputOf(device), first, 0, 0);
}

/// A device with everything that a frame can have.
class WholeFrame {
public:
    WholeFrame(diagnostics::Log& log, std::shared_ptr<CThreadPool> pool,
               const MemorySource& memory = systemMemory)
        : device(diagnostics::ObjectLog{log, 1}, std::move(pool), memory) {}

    HRESULT open() {
        const HRESULT result = device.open(inputOf(PixelFormat::yv12, 320, 240), outputOf(160, 120));
        if (FAILED(result))
            return result;
        geometry::ViewLayout layout;
        layout.viewType = geometry::ViewType::singleOverview;
        layout.panorama = {90.0, 90.0, 0.0, 0.0};
        layout.excludeArea = exclude;
        m_vertices = geometry::buildViewVertices(layout);
        return device.geometry(m_vertices, {excludeConstants, exclude.pixelBox(320, 240)});
    }

    /// Upload, conversion, exclude area, view, overview, marker and read-back.
    HRESULT show(const Yv12Frame& frame, float rotation, IMappedRowsVisitor& visitor) {
        const DewarpConstants c = singleViewConstants(320, 240, 0.5F, rotation);
        frame.uploadTo(device);
        geometry::buildOverviewMarker(c, 4.0 / 3.0, 4.0 / 3.0, geometry::overviewPlacement(4.0 / 3.0, false),
                                      m_marker);
        HRESULT result = device.overviewMarker(m_marker);
        const auto keep = [&result](HRESULT next) { result = FAILED(result) ? result : next; };
        device.clear(Surface::outputTarget, opaqueBlackClear);
        device.clear(Surface::conversionTarget, {1, 0, 0, 1});
        keep(device.draw(yv12Pass()));
        device.copy(Surface::conversionTarget, Surface::inputPicture);
        device.copyBox(Surface::inputPicture, exclude.pixelBox(320, 240), Surface::excludeArea);
        keep(device.draw(excludePass(excludeConstants)));
        device.copy(Surface::conversionTarget, Surface::maskedInput);
        keep(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(c)));
        Pass view =
            passOf(ShaderProgram::singleView, Surface::maskedInput, quadRange(geometry::quad::singleView));
        view.constantSlot = ConstantSlot::dewarp;
        view.constants = recordBytes(c);
        keep(device.draw(view));
        keep(device.draw(
            passOf(ShaderProgram::plainCopy, Surface::excludeArea, quadRange(geometry::quad::excludeArea))));
        keep(device.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, overviewDiscRange)));
        Pass marker = passOf(ShaderProgram::overviewRegion, Surface::none, overviewMarkerRange);
        marker.isBlended = true;
        keep(device.draw(marker));
        device.flush();
        keep(device.readBack(visitor));
        return result;
    }

    CSoftwareDevice device;

private:
    const geometry::ExcludeArea exclude{0.1, 0.1, 0.3, 0.4};
    const ExcludeConstants excludeConstants{{0.1F, 0.1F, 0.3F, 0.4F}};
    geometry::ViewVertices m_vertices{};
    geometry::OverviewMarkerVertices m_marker{};
};

struct CNothing final : IMappedRowsVisitor {
    HRESULT visit(const MappedRows& /*rows*/) override { return S_OK; }
};

TEST(SoftwareDeviceWork, TheSteadyStateAllocatesNothing) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    const CountedMemory memory;
    {
        // A single thread, so that all work is counted.
        const auto whole =
            std::make_unique<WholeFrame>(log, std::make_shared<CThreadPool>(1), CountedMemory::source);
        ASSERT_EQ(whole->open(), S_OK);
        const std::array<Yv12Frame, 2> frames{Yv12Frame(320, 240, 1), Yv12Frame(320, 240, 9)};
        CNothing nothing;
        const auto path = [&] {
            HRESULT result = S_OK;
            for (int i = 0; i < 24; ++i) {
                const float rotation = i < 8 ? 0.25F : 0.25F * static_cast<float>(i); // at rest, then moving
                const HRESULT next = whole->show(frames[static_cast<std::size_t>(i % 2)], rotation, nothing);
                result = FAILED(next) ? next : result;
            }
            return result;
        };
        ASSERT_EQ(path(), S_OK);
        const int before = tests::allocationCount();
        const int blocksBefore = CountedMemory::taken;
        EXPECT_EQ(path(), S_OK);
        EXPECT_EQ(tests::allocationCount(), before);
        EXPECT_EQ(CountedMemory::taken.load(), blocksBefore);
        EXPECT_GT(blocksBefore, 0);
        EXPECT_GT(before, 0);
    }
    EXPECT_EQ(CountedMemory::held.load(), 0);
}

TEST(SoftwareDeviceWork, WithoutMemoryItSaysSoAndHoldsNothing) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    const Yv12Frame frame(320, 240, 1);
    const auto pool = std::make_shared<CThreadPool>(2);
    const auto whole = std::make_unique<WholeFrame>(log, pool);
    ASSERT_EQ(whole->open(), S_OK);
    CRowsCopy expected;
    ASSERT_EQ(whole->show(frame, 0.3F, expected), S_OK);

    int failuresToOpen = 0;
    int failuresToShow = 0;
    bool isEnough = false;
    for (int limit = 0; !isEnough && limit < 100; ++limit) {
        const CountedMemory memory;
        CountedMemory::limit = limit;
        services.debuggerLines.clear();
        const auto poor = std::make_unique<WholeFrame>(log, pool, CountedMemory::source);
        CRowsCopy shown;
        if (const HRESULT opened = poor->open(); FAILED(opened)) {
            EXPECT_EQ(opened, E_OUTOFMEMORY);
            EXPECT_FALSE(poor->device.isOpen());
            EXPECT_EQ(CountedMemory::held.load(), 0);
            ++failuresToOpen;
        } else if (const HRESULT result = poor->show(frame, 0.3F, shown); FAILED(result)) {
            EXPECT_EQ(result, E_OUTOFMEMORY);
            ++failuresToShow;
        } else {
            isEnough = true;
        }
        EXPECT_EQ(services.debuggerLines.empty(), isEnough);
        if (!isEnough) {
            EXPECT_NE(services.debuggerLines.front().find("CDewarpingTransform::CreateTextures() [id: 1]"),
                      std::string::npos);
            // With memory again, the next frame is whole.
            CountedMemory::limit = 1 << 30;
            if (!poor->device.isOpen()) {
                ASSERT_EQ(poor->open(), S_OK);
            }
            ASSERT_EQ(poor->show(frame, 0.3F, shown), S_OK);
        }
        EXPECT_EQ(shown.picture.pixels, expected.picture.pixels);
    }
    EXPECT_TRUE(isEnough);
    EXPECT_GT(failuresToOpen, 3);
    EXPECT_GT(failuresToShow, 1);
}

TEST(SoftwareDeviceWork, AnyNumberOfThreadsGivesTheSameBytes) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    const Yv12Frame frame(320, 240, 1);
    std::vector<Bgra> expected;
    for (const int threads : {1, 2, 3, 7}) {
        const auto whole = std::make_unique<WholeFrame>(log, std::make_shared<CThreadPool>(threads));
        ASSERT_EQ(whole->open(), S_OK);
        CRowsCopy shown;
        for (const float rotation : {0.1F, 0.8F})
            ASSERT_EQ(whole->show(frame, rotation, shown), S_OK);
        if (threads == 1) {
            expected = shown.picture.pixels;
            EXPECT_NE(expected, std::vector<Bgra>(160 * 120, opaqueBlack));
        }
        EXPECT_EQ(shown.picture.pixels, expected) << threads;
    }
}

TEST(SoftwareDeviceWork, DevicesOfManyThreadsShareThePool) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    const Yv12Frame frame(320, 240, 1);
    const auto alone = std::make_unique<WholeFrame>(log, nullptr);
    ASSERT_EQ(alone->open(), S_OK);
    CRowsCopy expected;
    ASSERT_EQ(alone->show(frame, 0.4F, expected), S_OK);
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 3; ++round) {
                const auto whole = std::make_unique<WholeFrame>(log, nullptr);
                CRowsCopy shown;
                if (whole->open() == S_OK && whole->show(frame, 1.0F, shown) == S_OK &&
                    whole->show(frame, 0.4F, shown) == S_OK &&
                    shown.picture.pixels == expected.picture.pixels) {
                    ++right;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right.load(), 12);
}

} // namespace
} // namespace tarvo::render::software
