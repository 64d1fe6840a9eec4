#include "render/reference/ConversionPrograms.h"

#include "render/colour/YuvToBgra.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <utility>

// The per-pixel programs against the rows of the colour conversion, which have hand-computed tests of their
// own.

namespace tarvo::render::reference {
namespace {

void fill(std::vector<std::uint8_t>& bytes, std::uint32_t seed) {
    std::minstd_rand random(seed + 1);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random() >> 8);
    }
}

TEST(ConversionPrograms, yv12IsWhatTheRowsGive) {
    const std::pair<int, int> sizes[] = {{2, 2}, {3, 3}, {2, 7}, {7, 2}, {64, 48}, {65, 49}, {131, 37}};
    for (const auto& [width, height] : sizes) {
        SCOPED_TRACE(testing::Message() << width << ' ' << height);
        Plane luma(width, height);
        Plane cr(width / 2, height / 2);
        Plane cb(width / 2, height / 2);
        fill(luma.texels, static_cast<std::uint32_t>(width));
        fill(cr.texels, 2);
        fill(cb.texels, 3);
        Picture rows(width, height);
        convertYv12ToBgra({width,
                           height,
                           {luma.texels.data(), cr.texels.data(), cb.texels.data()},
                           {width, width / 2, width / 2}},
                          {&rows.pixels.data()->blue, std::ptrdiff_t{width} * 4}, {0, 0, width, height},
                          colourKernels(InstructionSet::reference));
        int different = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Bgra program = toBgra(yv12Program({&luma, &cr, &cb}, x, y));
                const Bgra row = rows.at(x, y);
                different += program == row ? 0 : 1;
                ASSERT_LE(std::abs(program.blue - row.blue), 1) << x << ' ' << y;
                ASSERT_LE(std::abs(program.green - row.green), 1) << x << ' ' << y;
                ASSERT_LE(std::abs(program.red - row.red), 1) << x << ' ' << y;
                ASSERT_EQ(program.alpha, row.alpha) << x << ' ' << y;
            }
        }
        // Rows of even size are converted in whole numbers, which may round what lies next to a half
        // otherwise.
        const bool isEven = width % 2 == 0 && height % 2 == 0;
        EXPECT_LE(different, isEven ? width * height / 100 : 0);
    }
}

TEST(ConversionPrograms, yuy2IsWhatTheRowsGive) {
    // The last is short by a row and a half.
    for (const auto& [width, missing] :
         {std::pair(2, 0), std::pair(5, 0), std::pair(64, 0), std::pair(33, 100)}) {
        SCOPED_TRACE(width);
        const int height = 40;
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width * height * 2 - missing) / 4 * 4);
        fill(bytes, static_cast<std::uint32_t>(width));
        Picture rows(width, height);
        convertYuy2ToBgra({width, height, bytes.data(), bytes.size()},
                          {&rows.pixels.data()->blue, std::ptrdiff_t{width} * 4}, {0, 0, width, height},
                          colourKernels(InstructionSet::reference));
        const Yuy2Constants constants{static_cast<std::uint32_t>(width), {}};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(toBgra(yuy2Program(constants, bytes, x, y)), rows.at(x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST(ConversionPrograms, aWildWidthReadsNothingElse) {
    const std::vector<std::uint8_t> bytes{10, 20, 30, 40, 50, 60, 70, 80};
    const Bgra zeros = toBgra(yuy2Program({2, {}}, bytes, 0, 9)); // beyond the end
    EXPECT_EQ(toBgra(yuy2Program({0xFFFFFFFFU, {}}, bytes, 0, 1)), zeros);
    // Wraps around in 32 bits, as the shader program does: 2 + 1 · (2^32 − 1) is 1.
    EXPECT_EQ(toBgra(yuy2Program({0xFFFFFFFFU, {}}, bytes, 2, 1)), toBgra(yuy2Program({2, {}}, bytes, 1, 0)));
    EXPECT_NE(toBgra(yuy2Program({2, {}}, bytes, 1, 0)), zeros);
}

} // namespace
} // namespace tarvo::render::reference
