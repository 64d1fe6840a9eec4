#include "render/colour/ConvertRGB32ToYV12.h"

#include "tests/render/colour/Plane.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace tarvo::render {
namespace {

using Bytes = std::array<std::uint8_t, 4>;

/// A picture of 2×2 and what it becomes: luma of the rows one after the other, then both chromas.
std::array<int, 6> converted(const std::array<Bytes, 4>& pixels) {
    std::array<std::uint8_t, 16> source{};
    for (std::size_t i = 0; i < 16; ++i)
        source[i] = pixels[i / 4][i % 4];
    std::array<std::uint8_t, 6> result{};
    EXPECT_EQ(ConvertRGB32ToYV12(source.data(), 8, {result.data(), result.data() + 4, result.data() + 5},
                                 {2, 1, 1}, {2, 2}),
              ImageStatus::done);
    return {result[0], result[1], result[2], result[3], result[4], result[5]};
}

std::array<int, 6> uniform(Bytes pixel) {
    return converted({pixel, pixel, pixel, pixel});
}

using Expected = std::array<int, 6>;

TEST(ConvertRGB32ToYV12, theStatusNumbersStand) {
    EXPECT_EQ(static_cast<int>(ImageStatus::done), 0);
    EXPECT_EQ(static_cast<int>(ImageStatus::oddSize), 35);
    EXPECT_EQ(static_cast<int>(ImageStatus::nullPointer), -8);
    EXPECT_EQ(static_cast<int>(ImageStatus::badSize), -6);
    EXPECT_EQ(static_cast<int>(ImageStatus::badFlipMode), -21);
}

TEST(ConvertRGB32ToYV12, greysHaveNoChroma) {
    // 56296·255 + 0x108000 = 15436824 = 235.5 · 65536; chroma 128.125.
    EXPECT_EQ(uniform({255, 255, 255, 0}), (Expected{235, 235, 235, 235, 128, 128}));
    EXPECT_EQ(uniform({0, 0, 0, 255}), (Expected{16, 16, 16, 16, 128, 128}));
    // 56296·100 + 0x108000 = 6710944 = 102.4 · 65536
    EXPECT_EQ(uniform({100, 100, 100, 7}), (Expected{102, 102, 102, 102, 128, 128}));
}

TEST(ConvertRGB32ToYV12, theFirstByteHasTheLargerWeight) {
    // Luma 5376309/65536 = 82.04; chroma 62932600/2^18 = 240.07 and 23694220/2^18 = 90.39.
    EXPECT_EQ(uniform({255, 0, 0, 0}), (Expected{82, 82, 82, 82, 240, 90}));
    // Luma 9503994/65536 = 145.02; chroma 8987860/2^18 = 34.29 and 14134780/2^18 = 53.92: not rounded up.
    EXPECT_EQ(uniform({0, 255, 0, 0}), (Expected{145, 145, 145, 145, 34, 53}));
    // Luma 2719209/65536 = 41.49; chroma 28841140/2^18 = 110.02 and 240.07.
    EXPECT_EQ(uniform({0, 0, 255, 0}), (Expected{41, 41, 41, 41, 110, 240}));
}

TEST(ConvertRGB32ToYV12, chromaIsThatOfTheWholeBlockAndLumaOfEachPixel) {
    // S = (200, 40, 10): chroma 1 (5754000 − 964680 − 46530 + 33587200)/2^18 = 146.2,
    // chroma 2 (−1939800 − 762840 + 287700 + 33587200)/2^18 = 118.9.
    // Luma: (3368600 + 1081344)/65536 = 67.9; (1321200 + …)/65536 = 36.6; (64230 + …)/65536 = 17.4; 16.5.
    EXPECT_EQ(converted({Bytes{200, 0, 0, 0}, Bytes{0, 40, 0, 0}, Bytes{0, 0, 10, 0}, Bytes{0, 0, 0, 0}}),
              (Expected{67, 36, 17, 16, 146, 118}));
}

TEST(ConvertRGB32ToYV12, aNullPointerIsNamedFirst) {
    std::array<std::uint8_t, 64> memory{};
    std::uint8_t* const some = memory.data();
    constexpr std::array<std::ptrdiff_t, 3> steps{8, 4, 4};
    for (const ImageRegion region :
         {ImageRegion{4, 4}, ImageRegion{0, -1}, ImageRegion{INT32_MAX, INT32_MAX}}) {
        EXPECT_EQ(ConvertRGB32ToYV12(nullptr, 16, {some, some, some}, steps, region),
                  ImageStatus::nullPointer);
        EXPECT_EQ(ConvertRGB32ToYV12(some, 16, {nullptr, some, some}, steps, region),
                  ImageStatus::nullPointer);
        EXPECT_EQ(ConvertRGB32ToYV12(some, 16, {some, nullptr, some}, steps, region),
                  ImageStatus::nullPointer);
        EXPECT_EQ(ConvertRGB32ToYV12(some, 16, {some, some, nullptr}, steps, region),
                  ImageStatus::nullPointer);
    }
    EXPECT_EQ(memory, (std::array<std::uint8_t, 64>{}));
}

TEST(ConvertRGB32ToYV12, tooSmallASizeChangesNothing) {
    const std::array<std::uint8_t, 64> source{};
    std::array<std::uint8_t, 64> memory{};
    std::uint8_t* const some = memory.data();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    for (const ImageRegion region :
         {ImageRegion{1, 2}, ImageRegion{2, 1}, ImageRegion{0, 0}, ImageRegion{0, 4}, ImageRegion{4, 0},
          ImageRegion{-2, 2}, ImageRegion{2, -2}, ImageRegion{least, least}, ImageRegion{most, 1},
          ImageRegion{1, most}, ImageRegion{least, most}, ImageRegion{most, least}}) {
        EXPECT_EQ(ConvertRGB32ToYV12(source.data(), 8, {some, some + 16, some + 32}, {2, 1, 1}, region),
                  ImageStatus::badSize)
            << region.width << " × " << region.height;
    }
    EXPECT_EQ(memory, (std::array<std::uint8_t, 64>{}));
}

TEST(ConvertRGB32ToYV12, anOddLastColumnAndRowStayUnwritten) {
    for (const ImageRegion region : {ImageRegion{5, 4}, ImageRegion{4, 3}, ImageRegion{7, 3}}) {
        const CPlane source({region.width * 4, region.height});
        for (std::uint8_t& byte : source.content())
            byte = 255;
        const CPlane luma({region.width, region.height}, guard);
        const CPlane chroma1({region.width, region.height}, guard);
        const CPlane chroma2({region.width, region.height}, guard);
        EXPECT_EQ(ConvertRGB32ToYV12(source.first(), source.step(),
                                     {luma.first(), chroma1.first(), chroma2.first()},
                                     {luma.step(), chroma1.step(), chroma2.step()}, region),
                  ImageStatus::oddSize);
        const auto count = [](const CPlane& plane, int value) {
            const auto bytes = plane.content();
            return std::count(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(value));
        };
        const int blocks = (region.width / 2) * (region.height / 2);
        EXPECT_EQ(count(luma, 235), 4 * blocks);
        EXPECT_EQ(count(chroma1, 128), blocks);
        EXPECT_EQ(count(chroma2, 128), blocks);
        for (const CPlane* plane : {&luma, &chroma1, &chroma2}) {
            const auto untouched = static_cast<std::ptrdiff_t>(plane->content().size()) -
                                   (plane == &luma ? 4 : 1) * static_cast<std::ptrdiff_t>(blocks);
            EXPECT_EQ(count(*plane, 0xA5), untouched);
        }
    }
}

TEST(ConvertRGB32ToYV12, aStepMayExceedTheRangeOfAnInt) {
    constexpr std::size_t step = (std::size_t{1} << 31) + 64;
    // Two rows more than two gigabytes apart; the memory between is never touched, nor then provided.
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> source(
        static_cast<std::uint8_t*>(std::calloc(step + 8, 1)), &std::free);
    if (source == nullptr)
        GTEST_SKIP() << "no address space";
    for (std::size_t i = 0; i < 8; ++i)
        source.get()[step + i] = 255;
    std::array<std::uint8_t, 6> result{};
    const std::array<std::uint8_t*, 3> planes{result.data(), result.data() + 4, result.data() + 5};
    EXPECT_EQ(ConvertRGB32ToYV12(source.get(), step, planes, {2, 1, 1}, {2, 2}), ImageStatus::done);
    EXPECT_EQ(result, (std::array<std::uint8_t, 6>{16, 16, 235, 235, 128, 128}));
    // And backwards.
    EXPECT_EQ(ConvertRGB32ToYV12(source.get() + step, -static_cast<std::ptrdiff_t>(step), planes, {2, 1, 1},
                                 {2, 2}),
              ImageStatus::done);
    EXPECT_EQ(result, (std::array<std::uint8_t, 6>{235, 235, 16, 16, 128, 128}));
}

} // namespace
} // namespace tarvo::render
