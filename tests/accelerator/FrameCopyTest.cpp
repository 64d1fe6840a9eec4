// The copy against rows that are taken apart and put together by plain arithmetic, and with bytes around both
// buffers that must stay as they are.

#include "accelerator/FrameCopy.h"

#include "tests/support/GraphFakes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace tarvo::accelerator {
namespace {

constexpr GUID nv12{0x3231564E, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr std::uint8_t guard = 0xC7;
constexpr std::size_t guardBytes = 64;

using Bytes = std::vector<std::uint8_t>;

FrameFormat formatOf(REFGUID subtype, std::int64_t imageBytes, std::int64_t height, bool isBottomUp = false) {
    FrameFormat format;
    format.subtype = subtype;
    format.imageBytes = imageBytes;
    format.height = height;
    format.isBottomUp = isBottomUp;
    return format;
}

Bytes randomBytes(std::mt19937& random, std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// What copyFrame() makes of a target of `room` bytes, filled with the guard's value before.
Bytes copied(const Bytes& input, const FrameFormat& from, std::size_t room, const FrameFormat& to) {
    Bytes memory(room + 2 * guardBytes, guard);
    copyFrame(std::as_bytes(std::span(input)), from,
              std::as_writable_bytes(std::span(memory).subspan(guardBytes, room)), to);
    for (std::size_t i = 0; i < guardBytes; ++i) {
        EXPECT_EQ(memory[i], guard) << "before the target, byte " << i;
        EXPECT_EQ(memory[memory.size() - 1 - i], guard) << "behind the target";
    }
    return {memory.begin() + guardBytes, memory.end() - guardBytes};
}

/// One row, cut into a target at a place; both as far as they go.
void placeRow(Bytes& target, std::size_t at, const Bytes& source, std::size_t from, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i)
        target.at(at + i) = source.at(from + i);
}

TEST(FrameCopy, ofTheSameLayoutIsOneBlock) {
    std::mt19937 random(1);
    const Bytes input = randomBytes(random, 96);
    const FrameFormat format = formatOf(MEDIASUBTYPE_YUY2, 96, 4);
    EXPECT_EQ(copied(input, format, 96, format), input);
    // More room than the picture takes stays as it was.
    Bytes expected = input;
    expected.resize(100, guard);
    EXPECT_EQ(copied(input, format, 100, format), expected);
}

TEST(FrameCopy, ofPackedRowsFollowsBothPitchesAndOrders) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        const std::size_t height = 1 + random() % 9;
        const std::size_t from = 1 + random() % 40;
        const std::size_t to = 1 + random() % 40;
        const bool isTurned = random() % 2 == 0;
        const Bytes input = randomBytes(random, from * height);
        Bytes expected(to * height, guard);
        for (std::size_t row = 0; row < height; ++row) {
            const std::size_t target = isTurned ? height - 1 - row : row;
            placeRow(expected, target * to, input, row * from, std::min(from, to));
        }
        const auto subtype = round % 2 == 0 ? MEDIASUBTYPE_RGB32 : MEDIASUBTYPE_YUY2;
        EXPECT_EQ(copied(input,
                         formatOf(subtype, static_cast<std::int64_t>(from * height),
                                  static_cast<std::int64_t>(height), isTurned),
                         to * height,
                         formatOf(subtype, static_cast<std::int64_t>(to * height),
                                  static_cast<std::int64_t>(height))),
                  expected)
            << height << " rows of " << from << " to " << to << (isTurned ? ", turned" : "");
    }
}

TEST(FrameCopy, ofYv12KeepsThreePlanesApart) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        const std::size_t height = 2 * (1 + random() % 5);
        const std::size_t from = 2 * (1 + random() % 20);
        std::size_t to = 2 * (1 + random() % 20);
        if (to == from)
            to += 2;
        const Bytes input = randomBytes(random, from * height * 3 / 2);
        Bytes expected(to * height * 3 / 2, guard);
        for (std::size_t row = 0; row < height; ++row)
            placeRow(expected, row * to, input, row * from, std::min(from, to));
        for (std::size_t row = 0; row < height; ++row)
            placeRow(expected, height * to + row * (to / 2), input, height * from + row * (from / 2),
                     std::min(from, to) / 2);
        const auto rows = static_cast<std::int64_t>(height);
        // YUV has the top row first whatever the sign of the height says.
        EXPECT_EQ(copied(input,
                         formatOf(MEDIASUBTYPE_YV12, static_cast<std::int64_t>(input.size()), rows, true),
                         expected.size(),
                         formatOf(MEDIASUBTYPE_YV12, static_cast<std::int64_t>(expected.size()), rows)),
                  expected);
    }
}

TEST(FrameCopy, ofNv12CopiesAllRowsOfBothPlanes) {
    std::mt19937 random(4);
    for (const std::size_t height : {1U, 2U, 3U, 6U, 7U}) {
        const std::size_t rows = (3 * height + 1) / 2; // those whose number is below 1.5 heights
        const std::size_t from = 12;
        const std::size_t to = 20;
        const auto size = [&](std::size_t pitch) { return pitch * height * 3 / 2; };
        Bytes input = randomBytes(random, from * rows);
        Bytes expected(to * rows, guard);
        for (std::size_t row = 0; row < rows; ++row)
            placeRow(expected, row * to, input, row * from, from);
        EXPECT_EQ(
            copied(input,
                   formatOf(nv12, static_cast<std::int64_t>(size(from)), static_cast<std::int64_t>(height)),
                   expected.size(),
                   formatOf(nv12, static_cast<std::int64_t>(size(to)), static_cast<std::int64_t>(height))),
            expected)
            << height;
    }
}

TEST(FrameCopy, believesNoFormatThatClaimsMoreThanThereIs) {
    std::mt19937 random(5);
    for (const GUID& subtype : {MEDIASUBTYPE_YUY2, MEDIASUBTYPE_YV12, nv12}) {
        for (int round = 0; round < 300; ++round) {
            const Bytes input = randomBytes(random, random() % 50);
            const auto claimed = [&] {
                return static_cast<std::int64_t>(random() % 3 == 0 ? 0xFFFFFFFFU : random() % 200);
            };
            const std::int64_t height =
                random() % 4 == 0 ? 0x7FFFFFFF : static_cast<std::int64_t>(random() % 20);
            // The guards in copied() and the address sanitizer tell.
            copied(input, formatOf(subtype, claimed(), height, random() % 2 == 0), random() % 50,
                   formatOf(subtype, claimed(), height));
        }
    }
}

TEST(FrameFormat, isReadFromBothVideoFormats) {
    for (const GUID& type : {FORMAT_VideoInfo, FORMAT_VideoInfo2}) {
        const auto video = tests::typeOf({MEDIASUBTYPE_RGB32, 10, -7, 32, 280, 400'000, type});
        const auto format = readFrameFormat(video.get());
        ASSERT_TRUE(format);
        EXPECT_EQ(format->subtype, MEDIASUBTYPE_RGB32);
        EXPECT_EQ(format->imageBytes, 280);
        EXPECT_EQ(format->height, 7);
        EXPECT_FALSE(format->isBottomUp);
        EXPECT_EQ(format->frameDuration100ns, 400'000);
        AM_MEDIA_TYPE cut = video.get();
        --cut.cbFormat;
        EXPECT_FALSE(readFrameFormat(cut));
        cut.cbFormat = 0;
        EXPECT_FALSE(readFrameFormat(cut));
        cut = video.get();
        cut.pbFormat = nullptr;
        EXPECT_FALSE(readFrameFormat(cut));
    }
    EXPECT_TRUE(readFrameFormat(tests::typeOf({MEDIASUBTYPE_RGB32, 10, 7, 32, 280}).get())->isBottomUp);
    EXPECT_FALSE(
        readFrameFormat(tests::typeOf({MEDIASUBTYPE_RGB32, 4, 4, 32, 64, 0, FORMAT_MPEGVideo}).get()));
}

TEST(FrameFormat, hasTheSizeOfItsRowsWhereItSaysNone) {
    // 5 pixels of 24 bits are 15 bytes, and rows end at multiples of four.
    EXPECT_EQ(readFrameFormat(tests::typeOf({MEDIASUBTYPE_RGB24, 5, -3, 24, 0}).get())->imageBytes, 48);
}

} // namespace
} // namespace tarvo::accelerator
