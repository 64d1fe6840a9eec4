#include "render/colour/ConvertRGB32ToYV12.h"
#include "render/colour/MirrorRGB24.h"
#include "render/colour/YuvToBgra.h"
#include "tests/render/colour/Plane.h"
#include "tests/render/colour/VariantTest.h"

#include <algorithm>
#include <array>
#include <utility>

// That a variant really is one, and that it is the one which runs.

namespace tarvo::render {
namespace {

using Kernels = CVariantTest;
TARVO_FOR_ALL_VARIANTS(Kernels);

/// AVX-512 has none of its own for mirroring.
using MirrorKernels = CVariantTest;
INSTANTIATE_TEST_SUITE_P(variants, MirrorKernels,
                         testing::Values(InstructionSet::sse41, InstructionSet::avx2), variantName);

// The kernels of a variant and how often each was called, in the order of the record.
ColourKernels inner{};
std::array<int, 5> calls{};

int countedRgb32ToYv12(const RowPairToYv12& rows) {
    ++calls[0];
    return inner.rgb32ToYv12(rows);
}
std::ptrdiff_t countedSwapReversed24(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels) {
    ++calls[1];
    return inner.swapReversed24(front, backEnd, pixels);
}
std::ptrdiff_t countedSwapBytes(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes) {
    ++calls[2];
    return inner.swapBytes(first, second, bytes);
}
int countedYv12ToBgra(const Yv12Stretch& stretch) {
    ++calls[3];
    return inner.yv12ToBgra(stretch);
}
int countedYuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels) {
    ++calls[4];
    return inner.yuy2ToBgra(words, target, pixels);
}

const ColourKernels& counted(const ColourKernels& kernels) {
    static constexpr ColourKernels record{countedRgb32ToYv12, countedSwapReversed24, countedSwapBytes,
                                          countedYv12ToBgra,  countedYuy2ToBgra,     nullptr};
    inner = kernels;
    calls = {};
    return record;
}

TEST(ColourKernels, theReferenceHasNone) {
    const ColourKernels& kernels = colourKernels(InstructionSet::reference);
    EXPECT_EQ(kernels.rgb32ToYv12, nullptr);
    EXPECT_EQ(kernels.swapReversed24, nullptr);
    EXPECT_EQ(kernels.swapBytes, nullptr);
    EXPECT_EQ(kernels.yv12ToBgra, nullptr);
    EXPECT_EQ(kernels.yuy2ToBgra, nullptr);
}

TEST(ColourKernels, theProcessorsOwnLevelIsChosen) {
    EXPECT_EQ(&colourKernels(), &colourKernels(detectInstructionSet()));
}

TEST(ColourKernels, eachLevelHasItsOwnAndThoseBefore) {
    const ColourKernels& none = colourKernels(InstructionSet::reference);
    const ColourKernels& sse = colourKernels(InstructionSet::sse41);
    const ColourKernels& avx = colourKernels(InstructionSet::avx2);
    const ColourKernels& wide = colourKernels(InstructionSet::avx512);
    EXPECT_EQ(none.narrower, nullptr);
    EXPECT_EQ(sse.narrower, &none);
    EXPECT_EQ(avx.narrower, &sse);
    EXPECT_EQ(wide.narrower, &avx);
    for (const ColourKernels* kernels : {&sse, &avx, &wide}) {
        EXPECT_NE(kernels->rgb32ToYv12, nullptr);
        EXPECT_NE(kernels->rgb32ToYv12, kernels->narrower->rgb32ToYv12);
        EXPECT_NE(kernels->yv12ToBgra, nullptr);
        EXPECT_NE(kernels->yv12ToBgra, kernels->narrower->yv12ToBgra);
        EXPECT_NE(kernels->yuy2ToBgra, nullptr);
        EXPECT_NE(kernels->yuy2ToBgra, kernels->narrower->yuy2ToBgra);
    }
    for (const ColourKernels* kernels : {&sse, &avx}) {
        EXPECT_NE(kernels->swapReversed24, nullptr);
        EXPECT_NE(kernels->swapReversed24, kernels->narrower->swapReversed24);
        EXPECT_NE(kernels->swapBytes, nullptr);
        EXPECT_NE(kernels->swapBytes, kernels->narrower->swapBytes);
    }
}

TEST_P(Kernels, areCalledForRowsThatBelongTogether) {
    const ColourKernels& kernels = counted(variant());
    const CPlane picture({256, 10});
    const CPlane planes({64, 10});
    const CPlane half({32, 10});
    ConvertRGB32ToYV12(picture.first(), 256, {planes.first(), half.first(), half.row(5)}, {64, 32, 32},
                       {64, 10}, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{5, 0, 0, 0, 0}));
    convertYv12ToBgra({64, 10, {planes.first(), half.first(), half.row(5)}, {64, 32, 32}},
                      {picture.first(), 256}, {0, 2, 64, 9}, kernels);
    // Row 2, then 3 to 8, of which each two lie between the same rows of chroma.
    EXPECT_EQ(calls, (std::array<int, 5>{5, 0, 0, 2, 0}));
    convertYv12ToBgra({64, 10, {planes.first(), half.first(), half.row(5)}, {64, 32, 32}},
                      {picture.first(), 256}, {0, 0, 64, 10}, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{5, 0, 0, 5, 0})); // 0, 1 to 8, 9
    convertYuy2ToBgra({64, 5, planes.first(), 640}, {picture.first(), 256}, {0, 1, 64, 4}, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{5, 0, 0, 5, 3}));
}

TEST_P(MirrorKernels, areCalledForEachRow) {
    const ColourKernels& kernels = counted(variant());
    const CPlane picture({256, 9});
    MirrorRGB24(picture.first(), 256, {64, 9}, FlipMode::leftToRight, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{0, 9, 0, 0, 0}));
    MirrorRGB24(picture.first(), 256, {64, 9}, FlipMode::halfTurn, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{0, 14, 0, 0, 0}));
    MirrorRGB24(picture.first(), 256, {64, 9}, FlipMode::upsideDown, kernels);
    EXPECT_EQ(calls, (std::array<int, 5>{0, 14, 4, 0, 0}));
}

// What a kernel says it did stands there without anyone else's help.

TEST_P(Kernels, rgb32ToYv12DoesItsRowsItself) {
    constexpr int columns = 70;
    const CPlane white({columns * 4, 2});
    std::fill(white.content().begin(), white.content().end(), std::uint8_t{255});
    const CPlane luma({columns, 2}, guard);
    const CPlane chroma1({columns / 2, 1}, guard);
    const CPlane chroma2({columns / 2, 1}, guard);
    EXPECT_EQ(variant().rgb32ToYv12({white.row(0), white.row(1), luma.row(0), luma.row(1), chroma1.first(),
                                     chroma2.first(), columns}),
              columns);
    const auto count = [](const CPlane& plane, int value) {
        return std::count(plane.content().begin(), plane.content().end(), static_cast<std::uint8_t>(value));
    };
    EXPECT_EQ(count(luma, 235), 2 * columns);
    EXPECT_EQ(count(chroma1, 128), columns / 2);
    EXPECT_EQ(count(chroma2, 128), columns / 2);
    EXPECT_EQ(variant().rgb32ToYv12({white.row(0), white.row(1), luma.row(0), luma.row(1), chroma1.first(),
                                     chroma2.first(), 2}),
              0);
}

TEST_P(MirrorKernels, swapReversed24DoesWholeVectorsItself) {
    constexpr int pixels = 70;
    const CPlane rows({pixels * 3, 2}, guard);
    for (int i = 0; i < 2 * pixels; ++i)
        std::fill_n(rows.first() + i * 3, 3, static_cast<std::uint8_t>(i));
    const std::ptrdiff_t done = variant().swapReversed24(rows.row(0), rows.row(1) + pixels * 3, pixels);
    EXPECT_EQ(done, 64);
    for (int i = 0; i < 2 * pixels; ++i) {
        const bool isSwapped = i < done || i >= 2 * pixels - done;
        ASSERT_EQ(rows.first()[i * 3], isSwapped ? 2 * pixels - 1 - i : i);
    }
    EXPECT_EQ(variant().swapReversed24(rows.row(0), rows.row(1) + pixels * 3, 15), 0);
}

TEST_P(MirrorKernels, swapBytesDoesWholeVectorsItself) {
    const CPlane rows({100, 2}, guard);
    for (int i = 0; i < 200; ++i)
        rows.first()[i] = static_cast<std::uint8_t>(i);
    EXPECT_EQ(variant().swapBytes(rows.row(0), rows.row(1), 100), 96);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(rows.row(0)[i], i < 96 ? 100 + i : i);
        ASSERT_EQ(rows.row(1)[i], i < 96 ? i : 100 + i);
    }
    EXPECT_EQ(variant().swapBytes(rows.row(0), rows.row(1), 15), 0);
}

TEST_P(Kernels, yv12ToBgraDoesItsStretchItself) {
    constexpr int columns = 70;
    const CPlane luma({columns, 2});
    std::fill_n(luma.row(0), columns, std::uint8_t{100});
    std::fill_n(luma.row(1), columns, std::uint8_t{200});
    const CPlane chroma({columns / 2 + 2, 1});
    std::fill(chroma.content().begin(), chroma.content().end(), std::uint8_t{128});
    const std::uint8_t* const own = chroma.first() + 1;
    using Pixel = std::array<int, 4>;
    for (const bool isPair : {false, true}) {
        const CPlane target({columns * 4, 2}, guard);
        Yv12Stretch stretch{luma.row(0),   own,         own,           own,    own,
                            target.row(0), luma.row(1), target.row(1), columns};
        if (!isPair)
            stretch.nextLuma = stretch.nextTarget = nullptr;
        EXPECT_EQ(variant().yv12ToBgra(stretch), columns);
        for (int x = 0; x < columns; ++x) {
            const std::uint8_t* const first = target.row(0) + x * 4;
            const std::uint8_t* const next = target.row(1) + x * 4;
            // Half a level of chroma: 0.69 of red, −0.52 of green, 0.87 of blue.
            ASSERT_EQ((Pixel{first[0], first[1], first[2], first[3]}), (Pixel{101, 99, 101, 255}));
            ASSERT_EQ((Pixel{next[0], next[1], next[2], next[3]}),
                      isPair ? (Pixel{201, 199, 201, 255}) : (Pixel{0xA5, 0xA5, 0xA5, 0xA5}));
        }
        const auto content = target.content();
        EXPECT_EQ(std::count(content.begin(), content.end(), 0xA5), 2 * guard + (isPair ? 0 : columns * 4));
        stretch.columns = 2;
        EXPECT_EQ(variant().yv12ToBgra(stretch), 0);
    }
}

TEST_P(Kernels, yv12ToBgraMixesTheNextRowTheOtherWayRound) {
    // Cr 40 in the near row and 240 in the far one become 90 and 190, less 127.5 −37.5 and 62.5: red −51.4
    // and 85.67, green 26.18 and −43.63. Half of Cb adds 0.87 to blue and takes 0.17 of green.
    constexpr int columns = 64;
    const CPlane luma({columns, 1});
    std::fill(luma.content().begin(), luma.content().end(), std::uint8_t{100});
    const CPlane chroma({columns / 2 + 2, 3});
    for (const auto& [row, value] : {std::pair{0, 40}, {1, 240}, {2, 128}})
        std::fill_n(chroma.row(row), columns / 2 + 2, static_cast<std::uint8_t>(value));
    const CPlane target({columns * 4, 2}, guard);
    EXPECT_EQ(variant().yv12ToBgra({luma.first(), chroma.row(0) + 1, chroma.row(1) + 1, chroma.row(2) + 1,
                                    chroma.row(2) + 1, target.row(0), luma.first(), target.row(1), columns}),
              columns);
    using Pixel = std::array<int, 4>;
    for (int x = 0; x < columns; ++x) {
        const std::uint8_t* const first = target.row(0) + x * 4;
        const std::uint8_t* const next = target.row(1) + x * 4;
        ASSERT_EQ((Pixel{first[0], first[1], first[2], first[3]}), (Pixel{101, 126, 49, 255}));
        ASSERT_EQ((Pixel{next[0], next[1], next[2], next[3]}), (Pixel{101, 56, 186, 255}));
    }
}

TEST_P(Kernels, yv12ToBgraMovesFromPairToPair) {
    // Three pairs between four rows of chroma. From row to row Cr grows by 16 and Cb by 8, so near and far
    // mix to 132 + 16k and 140 + 16k, and to 130 + 8k and 134 + 8k: less 127.5 and times 1.370705 that is
    // red, times 1.732446 blue. Between the rows of Cb lies something else.
    constexpr int columns = 66;
    constexpr int pairs = 3;
    const CPlane luma({columns, 2 * pairs});
    for (int y = 0; y < 2 * pairs; ++y)
        std::fill_n(luma.row(y), columns, static_cast<std::uint8_t>(60 + 10 * y));
    constexpr int chromaColumns = columns / 2 + 2;
    const CPlane cr({chromaColumns, pairs + 1});
    const CPlane cb({chromaColumns, 2 * pairs + 2});
    std::fill(cb.content().begin(), cb.content().end(), std::uint8_t{0});
    for (int row = 0; row <= pairs; ++row) {
        std::fill_n(cr.row(row), chromaColumns, static_cast<std::uint8_t>(128 + 16 * row));
        std::fill_n(cb.row(2 * row), chromaColumns, static_cast<std::uint8_t>(128 + 8 * row));
    }
    const CPlane target({columns * 4, 2 * pairs}, guard);
    Yv12Stretch stretch{luma.row(0),   cr.row(0) + 1, cr.row(1) + 1, cb.row(0) + 1, cb.row(2) + 1,
                        target.row(0), luma.row(1),   target.row(1), columns};
    stretch.pairs = pairs;
    stretch.lumaStep = luma.row(2) - luma.row(0);
    stretch.crStep = cr.row(1) - cr.row(0);
    stretch.cbStep = cb.row(2) - cb.row(0);
    stretch.targetStep = target.row(2) - target.row(0);
    EXPECT_EQ(variant().yv12ToBgra(stretch), columns);
    for (int y = 0; y < 2 * pairs; ++y) {
        const double red = 60.0 + 10 * y + 1.370705 * (4.5 + 8.0 * (y % 2) + 16.0 * (y / 2));
        const double blue = 60.0 + 10 * y + 1.732446 * (2.5 + 4.0 * (y % 2) + 8.0 * (y / 2));
        for (int x = 0; x < columns; ++x) {
            ASSERT_NEAR(target.row(y)[x * 4], blue, 0.51) << x << ", " << y;
            ASSERT_NEAR(target.row(y)[x * 4 + 2], red, 0.51) << x << ", " << y;
        }
    }
    const auto content = target.content();
    EXPECT_EQ(std::count(content.begin(), content.begin() + guard, 0xA5), guard);
    EXPECT_EQ(std::count(content.end() - guard, content.end(), 0xA5), guard);
}

TEST_P(Kernels, yuy2ToBgraDoesItsPixelsItself) {
    constexpr int pixels = 71;
    const CPlane words({72 * 2, 1});
    std::fill(words.content().begin(), words.content().end(), std::uint8_t{128});
    const CPlane target({72 * 4, 1}, guard);
    EXPECT_EQ(variant().yuy2ToBgra(words.first(), target.first(), pixels), 70);
    for (int x = 0; x < 72; ++x) {
        const std::uint8_t* const pixel = target.first() + x * 4;
        const std::array<int, 4> expected = x < 70 ? std::array<int, 4>{128, 128, 128, 1} // 127.5
                                                   : std::array<int, 4>{0xA5, 0xA5, 0xA5, 0xA5};
        ASSERT_EQ((std::array<int, 4>{pixel[0], pixel[1], pixel[2], pixel[3]}), expected);
    }
    EXPECT_EQ(variant().yuy2ToBgra(words.first(), target.first(), 7), 0);
}

/// The least even count that a kernel, called with it, does anything about: the width of its vectors, by
/// which it can be told from a narrower one.
template<typename Kernel>
std::ptrdiff_t leastServed(Kernel kernel) {
    for (int count = 2; count < 100; count += 2) {
        if (const std::ptrdiff_t done = kernel(count); done != 0)
            return done;
    }
    return 0;
}

TEST_P(Kernels, useVectorsOfTheirOwnWidth) {
    const CPlane memory({4096, 2});
    std::uint8_t* const upper = memory.row(0);
    std::uint8_t* const lower = memory.row(1);
    const int lanes = GetParam() == InstructionSet::sse41 ? 1 : GetParam() == InstructionSet::avx2 ? 2 : 4;
    EXPECT_EQ(leastServed([&](int columns) {
                  return variant().rgb32ToYv12(
                      {upper, upper, lower, lower + 200, lower + 400, lower + 600, columns});
              }),
              16 * lanes);
    EXPECT_EQ(leastServed([&](int columns) {
                  return variant().yv12ToBgra(
                      {upper, upper + 1, upper + 1, upper + 1, upper + 1, lower, nullptr, nullptr, columns});
              }),
              lanes == 1 ? 16 : 32);
    EXPECT_EQ(leastServed([&](int pixels) { return variant().yuy2ToBgra(upper, lower, pixels); }), 8 * lanes);
}

TEST_P(MirrorKernels, useVectorsOfTheirOwnWidth) {
    const CPlane memory({4096, 2});
    std::uint8_t* const upper = memory.row(0);
    std::uint8_t* const lower = memory.row(1);
    const int width = GetParam() == InstructionSet::sse41 ? 16 : 32;
    EXPECT_EQ(leastServed([&](int pixels) { return variant().swapReversed24(upper, lower + 300, pixels); }),
              width);
    EXPECT_EQ(leastServed([&](int bytes) { return variant().swapBytes(upper, lower, bytes); }), width);
}

TEST_P(Kernels, leaveANarrowPictureToNarrowerOnes) {
    ColourKernels kernels = variant();
    kernels.narrower = &counted(colourKernels(InstructionSet::sse41));
    const CPlane picture({80, 4});
    const CPlane planes({20, 4});
    ConvertRGB32ToYV12(picture.first(), 80, {planes.first(), planes.row(2), planes.row(3)}, {20, 10, 10},
                       {20, 4}, kernels);
    convertYv12ToBgra({20, 4, {planes.first(), planes.first(), planes.first()}, {20, 10, 10}},
                      {picture.first(), 80}, {0, 0, 20, 4}, kernels);
    convertYuy2ToBgra({10, 4, planes.first(), 80}, {picture.first(), 80}, {0, 0, 10, 4}, kernels);
    // SSE4.1 itself does it at once.
    const bool isNarrow = GetParam() == InstructionSet::sse41;
    EXPECT_EQ(calls, isNarrow ? (std::array<int, 5>{}) : (std::array<int, 5>{2, 0, 0, 3, 4}));
}

} // namespace
} // namespace tarvo::render
