#include "tests/render/software/CountedMemory.h"
#include "tests/render/software/CustomViewFixture.h"
#include "tests/support/AllocationCount.h"

#include <memory>

namespace tarvo::render::software {
namespace {

/// A device that counts its blocks, with a frame and tables that fade into one another.
class CustomWork : public testing::Test {
protected:
    static constexpr int tables = 8;

    std::unique_ptr<CSoftwareDevice> opened(int threads) {
        auto device = std::make_unique<CSoftwareDevice>(
            diagnostics::ObjectLog{log, 1}, std::make_shared<CThreadPool>(threads), CountedMemory::source);
        EXPECT_EQ(device->open(inputOf(PixelFormat::yv12, 320, 240), outputOf(160, 120)), S_OK);
        geometry::ViewVertices vertices{};
        putQuad(std::span(vertices).subspan(0, 4), -1, -1, 1, 1);
        putQuad(std::span(vertices).subspan(44, 4), -1, -1, 1, 1);
        EXPECT_EQ(device->geometry(vertices, {}), S_OK);
        std::vector<Texel> texels;
        for (int table = 0; table < tables; ++table) {
            for (int i = 0; i < 9 * 5; ++i) {
                const double x = i % 9 / 8.0;
                texels.push_back(
                    lookingAt(x, i / 9 / 4.0,
                              static_cast<int>(65535.0 * std::max(0.0, 1.0 - std::abs(x * 7 - table)))));
            }
        }
        EXPECT_EQ(putTables(*device, 9, 5 * tables, texels), S_OK);
        return device;
    }

    static HRESULT show(CSoftwareDevice& device, const Yv12Frame& frame, float left,
                        IMappedRowsVisitor& visitor) {
        frame.uploadTo(device);
        convertYv12(device);
        CustomTransformConstants c = wholeOf(9, 5, tables);
        c.viewRect[0] = left;
        const HRESULT result = drawTables(device, c);
        return FAILED(result) ? result : device.readBack(visitor);
    }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    const CountedMemory memory;
    const Yv12Frame frame{320, 240, 3};
};

TEST_F(CustomWork, AnyNumberOfThreadsGivesTheSameBytes) {
    std::vector<Bgra> expected;
    for (const int threads : {1, 2, 5}) {
        const auto device = opened(threads);
        CRowsCopy shown;
        for (const float left : {0.2F, 0.0F})
            ASSERT_EQ(show(*device, frame, left, shown), S_OK);
        if (threads == 1)
            expected = shown.picture.pixels;
        EXPECT_EQ(shown.picture.pixels, expected) << threads;
    }
    EXPECT_NE(expected, std::vector<Bgra>(160 * 120, opaqueBlack));
}

TEST_F(CustomWork, OnceAFrameHasGoneThroughNothingIsAllocated) {
    struct CNothing final : IMappedRowsVisitor {
        HRESULT visit(const MappedRows&) override { return S_OK; }
    };
    CNothing nothing;
    const auto device = opened(1);
    const auto path = [&] {
        HRESULT result = S_OK;
        for (int i = 0; i < 12; ++i) {
            const float left = i < 4 ? 0.1F : 0.02F * static_cast<float>(i); // at rest, then moving
            const HRESULT next = show(*device, frame, left, nothing);
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
}

TEST_F(CustomWork, MemoryForTablesIsHeldByViewsThroughTablesOnly) {
    const auto device = opened(1);
    CRowsCopy shown;
    frame.uploadTo(*device);
    convertYv12(*device);
    const Pass copy = passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(0));
    ASSERT_EQ(device->draw(copy), S_OK);
    ASSERT_EQ(device->readBack(shown), S_OK);
    const int before = CountedMemory::held;
    ASSERT_EQ(show(*device, frame, 0.0F, shown), S_OK);
    EXPECT_EQ(CountedMemory::held.load(), before + tables + 1) << "a block for each, and one for all";
    ASSERT_EQ(device->draw(copy), S_OK);
    ASSERT_EQ(device->readBack(shown), S_OK);
    EXPECT_EQ(CountedMemory::held.load(), before);
}

TEST_F(CustomWork, WithoutMemoryItSaysSoAndDrawsTheNextFrame) {
    CRowsCopy expected;
    ASSERT_EQ(show(*opened(2), frame, 0.0F, expected), S_OK);
    int failures = 0;
    for (int spare = 0; spare < 40; ++spare) {
        const auto device = opened(2);
        CountedMemory::limit = CountedMemory::taken + spare;
        CRowsCopy shown;
        const HRESULT result = show(*device, frame, 0.0F, shown);
        CountedMemory::limit = 1 << 30;
        if (SUCCEEDED(result)) {
            EXPECT_EQ(shown.picture.pixels, expected.picture.pixels);
            break;
        }
        EXPECT_EQ(result, E_OUTOFMEMORY);
        ++failures;
        ASSERT_EQ(show(*device, frame, 0.0F, shown), S_OK);
        EXPECT_EQ(shown.picture.pixels, expected.picture.pixels);
    }
    EXPECT_GE(failures, tables + 1);
    EXPECT_LT(failures, 40);
}

} // namespace
} // namespace tarvo::render::software
