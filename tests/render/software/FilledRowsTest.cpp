#include "render/OutputDelivery.h"
#include "tests/render/software/CustomViewFixture.h"
#include "tests/render/software/SoftwareDeviceFixture.h"

#include <memory>
#include <mutex>

namespace tarvo::render::software {
namespace {

constexpr int width = 160;
constexpr int height = 120;
constexpr std::byte unwritten{0xCD};

/// A frame of RGB32 in memory that ends with its last pixel.
struct HostFrame {
    int width;
    int height;
    std::size_t stride;
    bool isBottomUp;
    std::size_t before; ///< bytes before the first row, for addresses that nothing divides
    std::size_t size;
    std::unique_ptr<std::byte[]> memory;

    HostFrame(int theWidth, int theHeight, std::size_t padding, bool isTurned, std::size_t shift = 0)
        : width(theWidth), height(theHeight), stride(rowBytes() + padding), isBottomUp(isTurned),
          before(shift), size(stride * static_cast<std::size_t>(height - 1) + rowBytes()),
          memory(new std::byte[before + size]) {
        std::fill_n(memory.get(), before + size, unwritten);
    }

    std::size_t rowBytes() const { return static_cast<std::size_t>(width) * 4; }
    std::span<std::byte> bytes() const { return {memory.get() + before, size}; }
    std::byte* row(int y) const {
        return bytes().data() + static_cast<std::size_t>(isBottomUp ? height - 1 - y : y) * stride;
    }
    OutputFormat format() const {
        return {PixelFormat::rgb32, width, height, static_cast<std::uint32_t>(stride), isBottomUp};
    }
    bool isUntouched() const {
        return std::count(memory.get(), memory.get() + before + size, unwritten) ==
               static_cast<std::ptrdiff_t>(before + size);
    }
    void expectToShow(const Picture& picture) const {
        std::vector<std::byte> expected(before + size, unwritten);
        for (int y = 0; y < height; ++y) {
            const auto place = static_cast<std::size_t>(row(y) - memory.get());
            std::memcpy(expected.data() + place, &picture.pixels[static_cast<std::size_t>(y * width)],
                        rowBytes());
        }
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), memory.get()));
    }
};

/// Wants rows in a frame of its own.
struct CRowsWanted : IMappedRowsVisitor {
    explicit CRowsWanted(const HostFrame& theFrame)
        : frame(theFrame), visits(static_cast<std::size_t>(theFrame.height)) {}
    const HostFrame& frame;
    bool takesAlone = true;
    int asked = 0;
    std::vector<int> visits;
    bool hasSeenRows = false;
    bool hasSeenPicture = false;
    std::mutex lock;

    bool takesRowsAlone() const override { return takesAlone; }
    WritableRows rowsToFill(int w, int h) noexcept override {
        EXPECT_EQ(w, frame.width);
        EXPECT_EQ(h, frame.height);
        ++asked;
        const auto step = static_cast<std::ptrdiff_t>(frame.stride);
        return {frame.row(0), frame.isBottomUp ? -step : step};
    }
    void rowsFinished(const MappedRows& rows, int first, int end) noexcept override {
        const std::lock_guard guard(lock);
        EXPECT_EQ(rows.width, frame.width);
        EXPECT_EQ(rows.height, frame.height);
        hasSeenRows = hasSeenRows || rows.data != nullptr;
        for (int y = first; y < end; ++y)
            ++visits[static_cast<std::size_t>(y)];
    }
    HRESULT visit(const MappedRows& rows) override {
        hasSeenPicture = rows.data != nullptr;
        return S_OK;
    }
};

class FilledRows : public SoftwareDevice {
protected:
    void openBoth(PixelFormat format, int outputWidth, int outputHeight) {
        openFor(format, width, height, outputWidth, outputHeight);
        ASSERT_EQ(
            plainDevice.open(inputOf(format, width, height), software::outputOf(outputWidth, outputHeight)),
            S_OK);
        ASSERT_EQ(plainDevice.geometry(quads(), {}), S_OK);
    }
    /// A turned view and, over its lower right quarter, the frame as it is; what is drawn is in both devices.
    void frame(PixelFormat format, unsigned seed, bool isBlended = false) {
        device.keepInput();
        plainDevice.keepInput();
        pixels = noisePicture(width, height, seed);
        for (CSoftwareDevice* const each : {&device, &plainDevice}) {
            if (format == PixelFormat::yv12) {
                Yv12Frame(width, height, seed).uploadTo(*each);
                convertYv12(*each);
            } else {
                SourceRows rows = rowsOf(pixels);
                rows.isLent = each == &device;
                EXPECT_EQ(each->upload(Surface::inputPicture, rows), S_OK);
            }
            each->clear(Surface::outputTarget, greyClear);
            const DewarpConstants constants =
                singleViewConstants(width, height, 0.2F, 0.3F * static_cast<float>(seed));
            EXPECT_EQ(each->prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)),
                      S_OK);
            Pass view = passOf(ShaderProgram::singleView, Surface::inputPicture, quadRange(4));
            view.constantSlot = ConstantSlot::dewarp;
            view.constants = recordBytes(constants);
            EXPECT_EQ(each->draw(view), S_OK);
            Pass quarter = passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(8));
            quarter.isBlended = isBlended;
            EXPECT_EQ(each->draw(quarter), S_OK);
        }
    }

    Picture pixels;
    CSoftwareDevice plainDevice{diagnostics::ObjectLog{log, 8}};
};

TEST_F(FilledRows, AreThoseOfThePictureWhereTheyAreWanted) {
    for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12}) {
        for (const auto& [w, h] : {std::pair{37, 21}, {1, 1}, {64, 32}, {131, 50}}) {
            openBoth(format, w, h);
            unsigned seed = 0;
            for (const std::size_t padding : {0U, 1U, 12U, 64U}) {
                for (const bool isBottomUp : {false, true}) {
                    SCOPED_TRACE(std::to_string(w) + " " + std::to_string(padding));
                    const HostFrame host(w, h, padding, isBottomUp, seed % 5);
                    CRowsWanted wanted(host);
                    frame(format, ++seed);
                    ASSERT_EQ(device.readBack(wanted), S_OK);
                    EXPECT_EQ(wanted.asked, 1);
                    EXPECT_EQ(wanted.visits, std::vector<int>(static_cast<std::size_t>(h), 1));
                    EXPECT_FALSE(wanted.hasSeenRows);
                    EXPECT_FALSE(wanted.hasSeenPicture);
                    host.expectToShow(outputOf(plainDevice));
                }
            }
        }
    }
}

TEST_F(FilledRows, AreDrawnAgainForWhoAsksLater) {
    for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12}) {
        openBoth(format, 37, 21);
        for (unsigned seed = 1; seed < 6; ++seed) {
            const HostFrame host(37, 21, 0, false);
            CRowsWanted wanted(host);
            frame(format, seed);
            ASSERT_EQ(device.readBack(wanted), S_OK);
            // After a question the next picture is drawn into memory.
            EXPECT_EQ(wanted.asked, seed % 2 != 0 ? 1 : 0);
            const Picture expected = outputOf(plainDevice);
            if (seed % 2 != 0) {
                host.expectToShow(expected);
                std::fill_n(host.bytes().data(), host.size, unwritten);
                EXPECT_EQ(outputOf(device).pixels, expected.pixels) << "whatever the host did to its frame";
                EXPECT_TRUE(host.isUntouched());
            }
        }
    }
}

TEST_F(FilledRows, WhatIsReadAgainIsDrawnInTheCache) {
    openBoth(PixelFormat::yv12, 37, 21);
    const HostFrame host(37, 21, 0, false);
    CRowsWanted blended(host);
    frame(PixelFormat::yv12, 1, true);
    ASSERT_EQ(device.readBack(blended), S_OK);
    EXPECT_EQ(blended.asked, 0);
    EXPECT_TRUE(blended.hasSeenRows);
    EXPECT_FALSE(blended.hasSeenPicture);

    ASSERT_EQ(putTables(device, 2, 2, cornersOf(0.1, 0.1, 0.9, 0.9)), S_OK);
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(drawTables(device, wholeOf(2, 2, 1)), S_OK);
    CRowsWanted seenThroughTables(host);
    ASSERT_EQ(device.readBack(seenThroughTables), S_OK);
    EXPECT_EQ(seenThroughTables.asked, 0);
    EXPECT_TRUE(seenThroughTables.hasSeenRows);
}

TEST_F(FilledRows, WhoWantsThePictureIsNotAsked) {
    openBoth(PixelFormat::rgb32, 37, 21);
    const HostFrame host(37, 21, 0, false);
    CRowsWanted wanted(host);
    wanted.takesAlone = false;
    frame(PixelFormat::rgb32, 1);
    ASSERT_EQ(device.readBack(wanted), S_OK);
    EXPECT_EQ(wanted.asked, 0);
    EXPECT_TRUE(wanted.hasSeenRows);
    EXPECT_TRUE(wanted.hasSeenPicture);
}

TEST_F(FilledRows, AreDelivered) {
    const diagnostics::ObjectLog objectLog{log, 7};
    for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12}) {
        openBoth(format, 37, 21);
        unsigned seed = 0;
        for (const bool isBlended : {false, true}) {
            for (const bool isBottomUp : {false, true}) {
                for (const std::size_t padding : {0U, 4U, 7U}) {
                    const HostFrame host(37, 21, padding, isBottomUp, seed % 3);
                    const OutputFormat output = host.format();
                    COutputDelivery delivery(output, host.bytes(), nullptr, objectLog);
                    frame(format, ++seed, isBlended);
                    ASSERT_EQ(device.readBack(delivery), S_OK);
                    const Picture expected = outputOf(plainDevice);
                    if (!isBlended) {
                        host.expectToShow(expected);
                        continue;
                    }
                    // Rows from the cache bring along some of what lies behind them.
                    for (int y = 0; y < 21; ++y)
                        EXPECT_EQ(std::memcmp(host.row(y), &expected.pixels[static_cast<std::size_t>(y) * 37],
                                              host.rowBytes()),
                                  0);
                }
            }
        }
    }
}

TEST_F(FilledRows, OfAFrameThatIsTooShortAreNotDelivered) {
    const diagnostics::ObjectLog objectLog{log, 7};
    openBoth(PixelFormat::rgb32, 37, 21);
    for (const bool isBottomUp : {false, true}) {
        for (unsigned seed = 1; seed < 3; ++seed) {
            const HostFrame host(37, 21, 4, isBottomUp);
            const OutputFormat output = host.format();
            COutputDelivery delivery(output, host.bytes().first(host.size - 1), nullptr, objectLog);
            frame(PixelFormat::rgb32, seed);
            EXPECT_EQ(device.readBack(delivery), E_FAIL);
            EXPECT_TRUE(host.isUntouched());
        }
    }
    EXPECT_EQ(outputOf(device).pixels, outputOf(plainDevice).pixels);
}

} // namespace
} // namespace tarvo::render::software
