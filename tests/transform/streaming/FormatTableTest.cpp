#include "transform/streaming/FormatTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tarvo::transform {
namespace {

/// The subtype that stands for a number: its first word, and the same rest for all of them.
GUID subtypeOf(std::uint32_t number) {
    return {number, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

std::uint32_t fourCharacters(const char* text) {
    std::uint32_t code = 0;
    std::memcpy(&code, text, 4);
    return code;
}

constexpr GUID rgb32Subtype{0xE436EB7E, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

void expectRow(const StreamFormat& row, const std::string& name, const GUID& subtype, std::uint32_t number,
               int bits, std::uint32_t compression) {
    EXPECT_EQ(row.name, name);
    EXPECT_TRUE(*row.subtype == subtype) << name;
    EXPECT_EQ(static_cast<std::uint32_t>(row.pixelFormat), number);
    EXPECT_EQ(row.bitsPerPixel, bits);
    EXPECT_EQ(row.compression, compression);
}

TEST(FormatTable, listsWhatComesInAndGoesOut) {
    const std::uint32_t yuy2 = fourCharacters("YUY2");
    const std::uint32_t yv12 = fourCharacters("YV12");
    ASSERT_EQ(inputFormats().size(), 3U);
    expectRow(inputFormats()[0], "YUY2", subtypeOf(yuy2), yuy2, 16, yuy2);
    expectRow(inputFormats()[1], "YV12", subtypeOf(yv12), yv12, 12, yv12);
    expectRow(inputFormats()[2], "RGB32", rgb32Subtype, 22, 32, 0);
    ASSERT_EQ(outputFormats().size(), 2U);
    expectRow(outputFormats()[0], "YV12", subtypeOf(yv12), yv12, 12, yv12);
    expectRow(outputFormats()[1], "RGB32", rgb32Subtype, 22, 32, 0);
}

TEST(FormatTable, findsRowsBySubtype) {
    EXPECT_EQ(findFormat(inputFormats(), rgb32Subtype), &inputFormats()[2]);
    EXPECT_EQ(findFormat(outputFormats(), subtypeOf(fourCharacters("YV12"))), &outputFormats()[0]);
    EXPECT_EQ(findFormat(outputFormats(), subtypeOf(fourCharacters("YUY2"))), nullptr);
    EXPECT_EQ(findFormat(inputFormats(), GUID{}), nullptr);
}

TEST(FormatTable, knowsTheSmallestFrame) {
    const StreamFormat& yuy2 = inputFormats()[0];
    const StreamFormat& yv12 = inputFormats()[1];
    const StreamFormat& rgb32 = inputFormats()[2];
    EXPECT_EQ(yuy2.packedFrameBytes(6, 4), 48U);
    EXPECT_EQ(yv12.packedFrameBytes(6, 4), 36U);
    EXPECT_EQ(yv12.packedFrameBytes(7, 5), 35U + 2 * 6); // chroma 3 × 2
    EXPECT_EQ(rgb32.packedFrameBytes(6, 4), 96U);
    EXPECT_EQ(rgb32.packedFrameBytes(0x7FFFFFFF, 0x7FFFFFFF), 18446744056529682436U); // 4 · (2³¹ − 1)²
}

TEST(FormatTable, derivesStrides) {
    const StreamFormat& yuy2 = inputFormats()[0];
    const StreamFormat& yv12 = inputFormats()[1];
    EXPECT_EQ(yuy2.strideBytes(1280 * 720 * 2, 720), 2560U);
    EXPECT_EQ(yv12.strideBytes(1280 * 720 * 3 / 2, 720), 1280U); // 1920 · 8 ÷ 12
    EXPECT_EQ(yv12.strideBytes(100, 7), 9U);                     // 14 · 8 ÷ 12 = 9.3
    EXPECT_EQ(yv12.strideBytes(0xFFFFFFFF, 1), 2863311530U);     // (2³² − 1) · 2 ÷ 3
    EXPECT_EQ(yuy2.strideBytes(10, 0x80000000U), 0U);
}

} // namespace
} // namespace tarvo::transform
