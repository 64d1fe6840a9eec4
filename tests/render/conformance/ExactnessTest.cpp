// What leaves no room, or one level of it: copies, conversions and blending, each alone. Their inputs may be
// anything, since nothing is looked at beside its place.

#include "tests/render/conformance/Comparison.h"

#include <array>
#include <tuple>

namespace tarvo::render::conformance {
namespace {

constexpr std::array<FrameSizes, 3> oneToOneSizes{
    FrameSizes{120, 90, 120, 90}, {101, 75, 101, 75}, {64, 33, 64, 33}};

FrameCase bypassCase(FrameKind input, const FrameSizes& sizes, bool isPadded) {
    FrameCase frameCase;
    frameCase.shown = Shown::bypass;
    frameCase.input = input;
    frameCase.sizes = sizes;
    frameCase.isInputPadded = isPadded;
    return frameCase;
}

class Exactness : public testing::TestWithParam<DeviceUnderTest> {
protected:
    /// Renders on both, and compares without a mask.
    void expectWithin(int tolerance, const char* figure, const FrameCase& frameCase,
                      const InputFrame& frame) {
        SCOPED_TRACE(frameCase.name());
        comparison.render(frameCase, frame);
        ASSERT_FALSE(HasFatalFailure());
        const Difference difference =
            differenceOf(comparison.reference().picture, comparison.device().picture);
        EXPECT_LE(difference.worst, tolerance) << "at " << difference.x << ", " << difference.y;
        recordFigures(GetParam().name, figure, difference);
    }

    CComparison comparison{GetParam()};
};

TEST_P(Exactness, rgb32IsCopied) {
    unsigned seed = 1;
    for (const FrameSizes& sizes : oneToOneSizes) {
        const Picture picture = randomPicture(sizes.inputWidth, sizes.inputHeight, ++seed);
        for (const FrameKind kind : {FrameKind::rgb32, FrameKind::rgb32BottomUp}) {
            for (const bool isPadded : {false, true}) {
                expectWithin(exact, "copy 1:1", bypassCase(kind, sizes, isPadded),
                             inputFrame(kind, picture, isPadded));
                EXPECT_TRUE(comparison.device().picture.pixels == picture.pixels);
            }
        }
    }
}

TEST_P(Exactness, yuy2IsConverted) {
    unsigned seed = 10;
    for (const FrameSizes& sizes : oneToOneSizes) {
        expectWithin(exact, "YUY2 to RGB", bypassCase(FrameKind::yuy2, sizes, false),
                     randomYuvFrame(FrameKind::yuy2, sizes.inputWidth, sizes.inputHeight, ++seed));
    }
}

TEST_P(Exactness, yv12IsConverted) {
    for (const FrameSizes& sizes : oneToOneSizes) {
        for (const auto mounting : {geometry::TiltOrientation::wall, geometry::TiltOrientation::desk}) {
            for (const bool isPadded : {false, true}) {
                const Picture& picture = roomPicture(mounting, sizes.inputWidth, sizes.inputHeight);
                expectWithin(oneLevel, "YV12 to RGB", bypassCase(FrameKind::yv12, sizes, isPadded),
                             inputFrame(FrameKind::yv12, picture, isPadded));
            }
        }
    }
}

// The input is as large as the output and the area's edges are those of even pixels: it is pasted where it
// was.
TEST_P(Exactness, yv12OfAnyBytesIsConverted) {
    unsigned seed = 30;
    for (const FrameSizes& sizes : oneToOneSizes) {
        expectWithin(oneLevel, "YV12 to RGB", bypassCase(FrameKind::yv12, sizes, false),
                     randomYuvFrame(FrameKind::yv12, sizes.inputWidth, sizes.inputHeight, ++seed));
    }
}

// The input is as large as the output and the area's edges are those of even pixels: it is pasted where it
// was.
TEST_P(Exactness, theExcludeAreaIsPasted) {
    constexpr int width = 128;
    constexpr int height = 64;
    struct Area {
        int left, top, right, bottom;
    };
    unsigned seed = 20;
    for (const Area& area : {Area{16, 8, 80, 40}, Area{0, 32, 64, 64}, Area{0, 0, width, height}}) {
        FrameCase frameCase;
        frameCase.sizes = {width, height, width, height};
        frameCase.area =
            geometry::ExcludeArea{area.left / 128.0, area.top / 64.0, area.right / 128.0, area.bottom / 64.0};
        const Picture picture = randomPicture(width, height, ++seed);
        SCOPED_TRACE(seed);
        comparison.render(frameCase, inputFrame(FrameKind::rgb32, picture, false));
        ASSERT_FALSE(HasFatalFailure());
        for (const Rendered* rendered : {&comparison.reference(), &comparison.device()}) {
            int differing = 0;
            for (int y = area.top; y < area.bottom; ++y) {
                for (int x = area.left; x < area.right; ++x) {
                    differing += rendered->picture.at(x, y) == picture.at(x, y) ? 0 : 1;
                }
            }
            EXPECT_EQ(differing, 0);
        }
        Difference difference;
        if (area.right == width && area.bottom == height && area.left == 0 && area.top == 0) {
            difference = differenceOf(comparison.reference().picture, comparison.device().picture);
            EXPECT_EQ(difference.worst, exact);
            recordFigures(GetParam().name, "exclude area 1:1", difference);
        }
    }
}

// The bars beside a picture that is scaled into the output, above it, and nothing at all.
TEST_P(Exactness, clearedPixelsAreBlack) {
    for (const FrameSizes& sizes : {FrameSizes{96, 96, 128, 64}, FrameSizes{128, 64, 96, 96}}) {
        FrameCase frameCase = bypassCase(FrameKind::rgb32, sizes, false);
        SCOPED_TRACE(frameCase.name());
        Picture white(sizes.inputWidth, sizes.inputHeight, {255, 255, 255, 7});
        comparison.render(frameCase, inputFrame(FrameKind::rgb32, white, false));
        ASSERT_FALSE(HasFatalFailure());
        for (const Rendered* rendered : {&comparison.reference(), &comparison.device()}) {
            const Picture& shown = rendered->picture;
            // The square fills the middle half of 128 × 64: columns 32 to 95. The other way round the picture
            // fills 48 rows of 96: 24 to 71.
            int wrong = 0;
            for (int y = 0; y < shown.height; ++y) {
                for (int x = 0; x < shown.width; ++x) {
                    const bool isBar = shown.width == 128 ? x < 32 || x >= 96 : y < 24 || y >= 72;
                    wrong += shown.at(x, y) == (isBar ? opaqueBlack : Bgra{255, 255, 255, 7}) ? 0 : 1;
                }
            }
            EXPECT_EQ(wrong, 0);
        }
        recordFigures(GetParam().name, "clear",
                      differenceOf(comparison.reference().picture, comparison.device().picture));
    }
}

// Of an input of one colour disc and view have that colour, so that nothing but the marker's blending
// differs.
TEST_P(Exactness, theMarkerIsBlended) {
    for (const Bgra& colour : {Bgra{40, 90, 200, 255}, Bgra{255, 255, 255, 255}, Bgra{3, 250, 17, 255}}) {
        for (const bool isLeft : {false, true}) {
            FrameCase frameCase;
            frameCase.shown = Shown::singleOverview;
            frameCase.sizes = {128, 96, 133, 97};
            frameCase.isOverviewLeft = isLeft;
            SCOPED_TRACE(frameCase.name());
            comparison.render(frameCase, inputFrame(FrameKind::rgb32, Picture(128, 96, colour), false));
            ASSERT_FALSE(HasFatalFailure());
            const Picture& reference = comparison.reference().picture;
            const std::vector<bool> mask = edgeMask(reference);
            const Difference difference = differenceOf(reference, comparison.device().picture, mask);
            EXPECT_LE(difference.worst, oneLevel) << "at " << difference.x << ", " << difference.y;
            EXPECT_LE(difference.maskedShare, largestMaskedShare);
            recordFigures(GetParam().name, "overview marker", difference);
            // Half of it red: the marker's alpha is 1/2 wherever the lens sees something.
            int blendedCount = 0;
            for (std::size_t i = 0; i < reference.pixels.size(); ++i) {
                const Bgra& pixel = reference.pixels[i];
                blendedCount += !mask[i] && std::abs(pixel.red - (colour.red + 255) / 2) <= 1 &&
                                        std::abs(pixel.green - colour.green / 2) <= 1 &&
                                        std::abs(pixel.blue - colour.blue / 2) <= 1
                                    ? 1
                                    : 0;
            }
            EXPECT_GT(blendedCount, 100);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(On, Exactness, testing::ValuesIn(devicesUnderTest()), deviceTestName);

} // namespace
} // namespace tarvo::render::conformance
