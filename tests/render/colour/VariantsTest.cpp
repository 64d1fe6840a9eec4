#include "render/colour/ConvertRGB32ToYV12.h"
#include "render/colour/MirrorRGB24.h"
#include "render/colour/YuvToBgra.h"
#include "tests/render/colour/Plane.h"
#include "tests/render/colour/VariantTest.h"

#include <algorithm>
#include <random>
#include <vector>

// Every instruction set gives the reference's bytes, in the pictures and around them.

namespace tarvo::render {
namespace {

using Variants = CVariantTest;
TARVO_FOR_ALL_VARIANTS(Variants);

class CRandom {
public:
    explicit CRandom(std::uint32_t seed) : m_engine(seed) {}

    /// least … most
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(m_engine); }
    bool coin() { return number(0, 1) != 0; }

    PlaneShape shape(int rowBytes, int rows, int alignment) {
        return {rowBytes, rows, coin() ? 0 : number(1, 100), coin(), alignment};
    }
    PlaneShape shape(int rowBytes, int rows) { return shape(rowBytes, rows, number(0, 63)); }

    PixelArea area(int width, int height) {
        const int left = coin() ? 0 : number(0, width - 1);
        const int top = coin() ? 0 : number(0, height - 1);
        return {left, top, coin() ? width : number(left, width), coin() ? height : number(top, height)};
    }

private:
    std::mt19937 m_engine;
};

/// Calls `check(width, height, alignment)` for every width from `least` to 70 with every alignment, the
/// heights taking turns.
template<typename Check>
void forSizesAndAlignments(int least, Check check) {
    for (int width = least; width <= 70; ++width) {
        for (int alignment = 0; alignment < 64; ++alignment)
            ASSERT_NO_FATAL_FAILURE(check(width, least + (width + alignment) % 4, alignment))
                << "width " << width << ", alignment " << alignment;
    }
    for (int height = least; height <= 70; ++height)
        ASSERT_NO_FATAL_FAILURE(check(71 + height, height, height % 64)) << "height " << height;
}

/// Two of the same, one for the reference and one for the variant.
struct PlanePair {
    CPlane expected;
    CPlane actual;

    PlanePair(const PlaneShape& shape, std::uint32_t seed) : expected(shape, guard), actual(shape, guard) {
        expected.fill(seed);
        actual.fill(seed);
    }
    bool areSame() const { return sameContent(expected, actual); }
};

TEST_P(Variants, convertRGB32ToYV12) {
    CRandom random(1);
    forSizesAndAlignments(2, [&](int width, int height, int alignment) {
        const CPlane source(random.shape(width * 4, height, alignment));
        source.fill(static_cast<std::uint32_t>(width * 64 + alignment));
        // As large as the source's rows: what becomes of the odd ones is compared too.
        const PlanePair luma(random.shape(width, height, (alignment * 7 + width) % 64), 1);
        const PlanePair chroma1(random.shape((width + 1) / 2, (height + 1) / 2), 2);
        const PlanePair chroma2(random.shape((width + 1) / 2, (height + 1) / 2), 3);
        const auto convert = [&](CPlane PlanePair::*which, const ColourKernels& kernels) {
            return ConvertRGB32ToYV12(
                source.first(), source.step(),
                {(luma.*which).first(), (chroma1.*which).first(), (chroma2.*which).first()},
                {(luma.*which).step(), (chroma1.*which).step(), (chroma2.*which).step()}, {width, height},
                kernels);
        };
        ASSERT_EQ(convert(&PlanePair::actual, variant()), convert(&PlanePair::expected, reference()));
        ASSERT_TRUE(luma.areSame());
        ASSERT_TRUE(chroma1.areSame());
        ASSERT_TRUE(chroma2.areSame());
    });
}

TEST_P(Variants, convertRGB32ToYV12TakesNoByteBehindItsRows) {
    // Tight memory on both sides, for the address sanitizer.
    for (int width = 2; width <= 140; ++width) {
        const CPlane source({width * 4, 2});
        source.fill(static_cast<std::uint32_t>(width));
        const CPlane luma({width, 2});
        const CPlane chroma1({width / 2, 1});
        const CPlane chroma2({width / 2, 1});
        const ImageStatus status = ConvertRGB32ToYV12(source.first(), source.step(),
                                                      {luma.first(), chroma1.first(), chroma2.first()},
                                                      {luma.step(), 0, 0}, {width, 2}, variant());
        ASSERT_EQ(status, width % 2 == 0 ? ImageStatus::done : ImageStatus::oddSize);
    }
}

TEST_P(Variants, mirrorRGB24) {
    CRandom random(2);
    forSizesAndAlignments(1, [&](int width, int height, int alignment) {
        for (const FlipMode mode : {FlipMode::upsideDown, FlipMode::leftToRight, FlipMode::halfTurn}) {
            const PlanePair image(random.shape(width * 3, height, alignment),
                                  static_cast<std::uint32_t>(width));
            const ImageStatus expected = MirrorRGB24(image.expected.first(), image.expected.step(),
                                                     {width, height}, mode, reference());
            ASSERT_EQ(
                MirrorRGB24(image.actual.first(), image.actual.step(), {width, height}, mode, variant()),
                expected);
            ASSERT_TRUE(image.areSame()) << "mode " << static_cast<int>(mode);
        }
    });
}

TEST_P(Variants, mirrorRGB24TakesNoByteBehindItsRows) {
    for (int width = 2; width <= 140; ++width) {
        for (const FlipMode mode : {FlipMode::upsideDown, FlipMode::leftToRight, FlipMode::halfTurn}) {
            const CPlane image({width * 3, 3});
            image.fill(static_cast<std::uint32_t>(width));
            ASSERT_EQ(MirrorRGB24(image.first(), image.step(), {width, 3}, mode, variant()),
                      ImageStatus::done);
        }
    }
}

/// The planes of a YV12 picture at random places in tight memory.
struct Yv12Memory {
    CPlane luma;
    CPlane cr;
    CPlane cb;
    Yv12Source source;

    Yv12Memory(CRandom& random, int width, int height)
        : luma(random.shape(width, height)), cr(random.shape(width / 2, height / 2)),
          cb(random.shape(width / 2, height / 2)), source{width,
                                                          height,
                                                          {luma.first(), cr.first(), cb.first()},
                                                          {luma.step(), cr.step(), cb.step()}} {}

    void fill(std::uint32_t seed) const {
        luma.fill(seed);
        cr.fill(seed + 1000);
        cb.fill(seed + 2000);
    }
};

TEST_P(Variants, yv12ToBgra) {
    CRandom random(3);
    forSizesAndAlignments(2, [&](int width, int height, int alignment) {
        const Yv12Memory picture(random, width, height);
        picture.fill(static_cast<std::uint32_t>(width * 64 + alignment));
        const PlanePair target(random.shape(width * 4, height, alignment), 1);
        const PixelArea area = random.area(width, height);
        const BgraTarget expected{target.expected.first(), target.expected.step()};
        const BgraTarget actual{target.actual.first(), target.actual.step()};
        convertYv12ToBgra(picture.source, expected, area, reference());
        convertYv12ToBgra(picture.source, actual, area, variant());
        ASSERT_TRUE(target.areSame());
    });
}

TEST_P(Variants, yv12ToBgraOfManyColours) {
    // Noise: every weighted sum of chroma, 0 … 4080, comes many times.
    const Yv12Source noise{1024, 1024, {}, {1024, 512, 512}};
    for (std::uint32_t round = 0; round < 4; ++round) {
        const CPlane luma({1024, 1024});
        const CPlane cr({512, 512});
        const CPlane cb({512, 512});
        luma.fill(round);
        cr.fill(round + 10);
        cb.fill(round + 20);
        Yv12Source source = noise;
        source.planes = {luma.first(), cr.first(), cb.first()};
        const PlanePair target({4096, 1024}, round);
        convertYv12ToBgra(source, {target.expected.first(), 4096}, {0, 0, 1024, 1024}, reference());
        convertYv12ToBgra(source, {target.actual.first(), 4096}, {0, 0, 1024, 1024}, variant());
        ASSERT_TRUE(target.areSame());
    }
}

TEST_P(Variants, yv12ToBgraOfEveryPairOfChroma) {
    // Each pair as a picture of one chroma; the luma runs through all levels.
    constexpr int width = 260;
    std::vector<std::uint8_t> luma(static_cast<std::size_t>(width) * 2);
    for (std::size_t i = 0; i < luma.size(); ++i)
        luma[i] = static_cast<std::uint8_t>(i % width);
    const PlanePair target({width * 4, 1}, 1);
    std::vector<std::uint8_t> cr(width / 2);
    std::vector<std::uint8_t> cb(width / 2);
    const Yv12Source source{width, 2, {luma.data(), cr.data(), cb.data()}, {width, 0, 0}};
    for (int a = 0; a < 256; ++a) {
        std::fill(cr.begin(), cr.end(), static_cast<std::uint8_t>(a));
        for (int b = 0; b < 256; ++b) {
            std::fill(cb.begin(), cb.end(), static_cast<std::uint8_t>(b));
            convertYv12ToBgra(source, {target.expected.first(), target.expected.step()}, {0, 0, width, 1},
                              reference());
            convertYv12ToBgra(source, {target.actual.first(), target.actual.step()}, {0, 0, width, 1},
                              variant());
            ASSERT_TRUE(target.areSame()) << a << ", " << b;
        }
    }
}

TEST_P(Variants, yuy2ToBgra) {
    CRandom random(4);
    forSizesAndAlignments(1, [&](int width, int height, int alignment) {
        const int pixels = width * height;
        const int words = random.coin() ? (pixels + 1) / 2 : random.number(0, (pixels + 1) / 2);
        // A row of at least one byte, as a plane has no empty rows; the source may still be empty.
        const int length = words * 4 + random.number(0, 3);
        const CPlane buffer(random.shape(std::max(length, 1), 1));
        buffer.fill(static_cast<std::uint32_t>(width * 64 + alignment));
        const Yuy2Source source{width, height, buffer.first(), static_cast<std::size_t>(length)};
        const PlanePair target(random.shape(width * 4, height, alignment), 1);
        const PixelArea area = random.area(width, height);
        const BgraTarget expected{target.expected.first(), target.expected.step()};
        const BgraTarget actual{target.actual.first(), target.actual.step()};
        convertYuy2ToBgra(source, expected, area, reference());
        convertYuy2ToBgra(source, actual, area, variant());
        ASSERT_TRUE(target.areSame());
    });
}

TEST_P(Variants, yuy2ToBgraOfEveryColour) {
    // All levels of luma as the first and as the second pixel of a word, for each pair of chroma.
    constexpr int width = 512;
    std::vector<std::uint8_t> words(static_cast<std::size_t>(width) * 2);
    const PlanePair target({width * 4, 1}, 1);
    const Yuy2Source source{width, 1, words.data(), words.size()};
    for (int chroma = 0; chroma < 65536; ++chroma) {
        for (std::size_t i = 0; i < words.size(); i += 4) {
            words[i] = static_cast<std::uint8_t>(i / 4);
            words[i + 1] = static_cast<std::uint8_t>(chroma & 0xFF);
            words[i + 2] = static_cast<std::uint8_t>(255 - i / 4);
            words[i + 3] = static_cast<std::uint8_t>(chroma >> 8);
        }
        convertYuy2ToBgra(source, {target.expected.first(), 0}, {0, 0, width, 1}, reference());
        convertYuy2ToBgra(source, {target.actual.first(), 0}, {0, 0, width, 1}, variant());
        ASSERT_TRUE(target.areSame()) << "U " << (chroma & 0xFF) << ", V " << (chroma >> 8);
    }
}

/// Cuts a picture into tiles of all kinds of sizes.
template<typename Convert>
void inTiles(int width, int height, Convert convert) {
    for (int top = 0, rows = 1; top < height; top += rows, ++rows) {
        for (int left = 0, columns = 1; left < width; left += columns, columns += 3)
            convert(PixelArea{left, top, left + columns, std::min(top + rows, height)});
    }
}

TEST_P(Variants, tilesTogetherAreTheWhole) {
    CRandom random(5);
    for (const auto& [width, height] : {std::pair{640, 20}, {641, 21}}) {
        const Yv12Memory picture(random, width, height);
        picture.fill(1);
        const PlanePair yv12({width * 4, height}, 2);
        convertYv12ToBgra(picture.source, {yv12.expected.first(), yv12.expected.step()},
                          {0, 0, width, height}, variant());
        inTiles(width, height, [&](const PixelArea& tile) {
            convertYv12ToBgra(picture.source, {yv12.actual.first(), yv12.actual.step()}, tile, variant());
        });
        EXPECT_TRUE(yv12.areSame());

        const CPlane buffer({(width * height + 1) / 2 * 4, 1});
        buffer.fill(3);
        const Yuy2Source source{width, height, buffer.first(), buffer.content().size()};
        const PlanePair yuy2({width * 4, height}, 4);
        convertYuy2ToBgra(source, {yuy2.expected.first(), yuy2.expected.step()}, {0, 0, width, height},
                          variant());
        inTiles(width, height, [&](const PixelArea& tile) {
            convertYuy2ToBgra(source, {yuy2.actual.first(), yuy2.actual.step()}, tile, variant());
        });
        EXPECT_TRUE(yuy2.areSame());
    }
}

} // namespace
} // namespace tarvo::render
