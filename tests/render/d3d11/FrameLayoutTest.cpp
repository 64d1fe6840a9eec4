// Frames whose rows lie otherwise than the driver's do, and whose sizes are odd.

#include "tests/render/d3d11/RendererFixture.h"

#include <algorithm>

namespace tarvo::render::d3d11 {
namespace {

/// 1, 2, 3 … 251, 1 …: no byte is zero.
std::vector<std::byte> counted(std::size_t size) {
    std::vector<std::byte> result(size);
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<std::byte>(i % 251 + 1);
    return result;
}

/// `count` rows of `length` bytes, the first at `first`.
std::vector<std::byte> rowsOf(const std::vector<std::byte>& bytes, std::size_t first, std::ptrdiff_t step,
                              std::size_t length, int count) {
    std::vector<std::byte> result;
    for (int row = 0; row < count; ++row) {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(first) + row * step;
        result.insert(result.end(), begin, begin + static_cast<std::ptrdiff_t>(length));
    }
    return result;
}

/// By how many bytes the driver's rows are longer than their pixels. Some make its pitch the frame's stride:
/// 8 that of the RGB32 frames, 1 that of the planes.
class FrameLayout : public CRendererTest, public testing::WithParamInterface<std::size_t> {
protected:
    FrameLayout() { fake.extraPitchBytes = GetParam(); }

    void upload(const InputFormat& format, const OutputFormat& frameFormat = smallOutput) {
        start(format, frameFormat);
        inputFrame = counted(format.frameBytes);
        inputFrame.shrink_to_fit();
        ASSERT_EQ(renderer->UploadInputFrame(inputFrame), S_OK);
    }

    static constexpr OutputFormat smallOutput{PixelFormat::rgb32, 5, 3, 20, false};
};

TEST_P(FrameLayout, paddedRgb32RowsGoIntoTheTexture) {
    // 5 × 3 pixels in rows of 20 bytes at every 28th; the last row's padding is not there.
    upload({PixelFormat::rgb32, 5, 3, 28, 2 * 28 + 20, false});
    EXPECT_EQ(fake.contents("texture2"), rowsOf(inputFrame, 0, 28, 20, 3));
}

TEST_P(FrameLayout, paddedRgb32RowsAreTurned) {
    upload({PixelFormat::rgb32, 5, 3, 28, 84, true});
    EXPECT_EQ(fake.contents("texture2"), rowsOf(inputFrame, 56, -28, 20, 3));
}

TEST_P(FrameLayout, rowsThatAreShorterThanTheirPixelsEndInZeros) {
    // 18 bytes of 20.
    upload({PixelFormat::rgb32, 5, 3, 18, 54, false});
    std::vector<std::byte> expected;
    for (std::ptrdiff_t row = 0; row < 3; ++row) {
        expected.insert(expected.end(), inputFrame.begin() + row * 18, inputFrame.begin() + (row + 1) * 18);
        expected.insert(expected.end(), 2, std::byte{0});
    }
    EXPECT_EQ(fake.contents("texture2"), expected);
}

TEST_P(FrameLayout, planesOfAnOddSizeGoIntoTheirTextures) {
    // 7 × 5 pixels in 60 bytes: two thirds, 40, are luma, five rows of 8. Chroma has 3 × 2 pixels in rows of
    // 4; its planes take a quarter of luma, 10 bytes each.
    upload({PixelFormat::yv12, 7, 5, 8, 60, false});
    EXPECT_EQ(fake.contents("texture6"), rowsOf(inputFrame, 0, 8, 7, 5));
    EXPECT_EQ(fake.contents("texture7"), rowsOf(inputFrame, 40, 4, 3, 2));
    EXPECT_EQ(fake.contents("texture8"), rowsOf(inputFrame, 50, 4, 3, 2));
}

TEST_P(FrameLayout, packedPixelsAreOneRowWhateverTheirStride) {
    // 5 × 3 pixels: their rows would take 10 bytes, and here they lie 14 apart; 42 bytes are ten and a half
    // words.
    upload({PixelFormat::yuy2, 5, 3, 14, 42, false});
    std::vector<std::byte> expected = inputFrame;
    expected.resize(44);
    EXPECT_EQ(fake.contents("buffer0"), expected);
}

TEST_P(FrameLayout, thePictureReadBackLiesAsTheOutputWants) {
    upload({PixelFormat::rgb32, 5, 3, 20, 60, false});
    const std::vector<std::byte> picture = counted(60);
    fake.setContents("texture0", picture);
    for (const std::uint32_t stride : {20U, 21U, 28U, 32U}) {
        for (const bool isBottomUp : {false, true}) {
            SCOPED_TRACE(testing::Message() << stride << isBottomUp);
            renderer->setOutputFormat({PixelFormat::rgb32, 5, 3, stride, isBottomUp});
            // No room behind the last pixel, as a sanitizer would tell.
            std::vector<std::byte> frameOut(2 * stride + 20, std::byte{0});
            frameOut.shrink_to_fit();
            ASSERT_EQ(renderer->ReadBackOutputFrame(frameOut, nullptr), S_OK);
            const auto step = static_cast<std::ptrdiff_t>(stride);
            EXPECT_EQ(rowsOf(frameOut, isBottomUp ? 2 * stride : 0, isBottomUp ? -step : step, 20, 3),
                      picture);
        }
    }
}

TEST_P(FrameLayout, thePictureReadBackIsConvertedFromItsPitch) {
    upload({PixelFormat::rgb32, 5, 3, 20, 60, false});
    // Bytes 255, 0, 0 of every pixel: luma (16843·255 + 0x108000) >> 16 = 82; of the planes behind it, the
    // first (−9699·1020 + 0x2008000) >> 18 = 90 and the second (28770·1020 + 0x2008000) >> 18 = 240.
    std::vector<std::byte> picture(60);
    for (std::size_t i = 0; i < picture.size(); i += 4)
        picture[i] = std::byte{255};
    fake.setContents("texture0", picture);
    renderer->setOutputFormat({PixelFormat::yv12, 5, 3, 6, false});
    std::vector<std::byte> frameOut(27, std::byte{1});
    ASSERT_EQ(renderer->ReadBackOutputFrame(frameOut, nullptr), S_OK);
    // Two rows of four pixels, six apart, the odd ones left alone; chroma from 18 and from 18 + 18/4 on.
    std::vector<std::byte> expected(27, std::byte{1});
    std::fill_n(expected.begin(), 4, std::byte{82});
    std::fill_n(expected.begin() + 6, 4, std::byte{82});
    std::fill_n(expected.begin() + 18, 2, std::byte{90});
    std::fill_n(expected.begin() + 22, 2, std::byte{240});
    EXPECT_EQ(frameOut, expected);
}

INSTANTIATE_TEST_SUITE_P(ExtraPitch, FrameLayout, testing::Values(0, 1, 8, 12));

TEST_F(CRendererTest, targetsOfOddSizesAreDrawnAsAWhole) {
    start({PixelFormat::yv12, 7, 5, 8, 60, false}, {PixelFormat::rgb32, 5, 3, 20, false});
    fake.takeCalls();
    ASSERT_EQ(frame(), S_OK);
    const std::vector<std::string> calls = fake.takeCalls();
    EXPECT_EQ(std::ranges::count(calls, "RSSetViewports 0 0 7 5 depth 0 0"), 1);
    EXPECT_EQ(std::ranges::count(calls, "RSSetViewports 0 0 5 3 depth 0 0"), 1);
}

} // namespace
} // namespace tarvo::render::d3d11
