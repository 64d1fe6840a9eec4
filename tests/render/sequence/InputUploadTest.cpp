#include "render/InputUpload.h"

#include "tests/render/sequence/SequenceTest.h"

#include <cstdint>

namespace tarvo::render {
namespace {

using tests::RecordedUpload;
using tests::Verb;
using Rows = std::vector<std::vector<std::byte>>;

/// The bytes of a frame by their places, counted from 1, as countingBytes() makes them; 0 where none is.
Rows rowsAt(const std::vector<std::vector<int>>& places) {
    Rows rows;
    for (const auto& row : places) {
        std::vector<std::byte>& bytes = rows.emplace_back();
        for (const int place : row) {
            bytes.push_back(static_cast<std::byte>(place));
        }
    }
    return rows;
}

/// As above, but what lies behind the first `length` bytes is zero.
Rows rowsAt(const std::vector<std::vector<int>>& places, std::size_t length) {
    auto present = places;
    for (auto& row : present) {
        for (int& place : row) {
            place = static_cast<std::size_t>(place) <= length ? place : 0;
        }
    }
    return rowsAt(present);
}

class InputUploadTest : public testing::Test {
protected:
    InputUploadTest() { EXPECT_EQ(device.open({}, {}), S_OK); }

    /// A frame of exactly this many bytes on the heap, where a look beyond its end is noticed.
    const std::vector<RecordedUpload>& upload(const InputFormat& format, std::size_t length) {
        device.uploads.clear();
        frame = countingBytes(length);
        frame.shrink_to_fit();
        uploader.upload(device, format, frame);
        return device.uploads;
    }

    tests::CRecordingDevice device;
    CInputUpload uploader;
    std::vector<std::byte> frame;
};

TEST_F(InputUploadTest, aWholeRgb32FrameIsHandedOverAsItLies) {
    const auto& uploads = upload({PixelFormat::rgb32, 2, 3, 8, 24, false}, 24);
    ASSERT_EQ(uploads.size(), 1U);
    EXPECT_EQ(uploads[0].surface, Surface::inputPicture);
    EXPECT_EQ(uploads[0].rows.data, frame.data());
    EXPECT_EQ(uploads[0].rows.stepBytes, 8);
    EXPECT_EQ(uploads[0].contents, rowsAt({{1, 2, 3, 4, 5, 6, 7, 8},
                                           {9, 10, 11, 12, 13, 14, 15, 16},
                                           {17, 18, 19, 20, 21, 22, 23, 24}}));
}

TEST_F(InputUploadTest, bottomUpRowsAreHandedOverFromTheLastOn) {
    const auto& uploads = upload({PixelFormat::rgb32, 1, 3, 4, 12, true}, 12);
    ASSERT_EQ(uploads.size(), 1U);
    EXPECT_EQ(uploads[0].rows.data, frame.data() + 8);
    EXPECT_EQ(uploads[0].rows.stepBytes, -4);
    EXPECT_EQ(uploads[0].contents, rowsAt({{9, 10, 11, 12}, {5, 6, 7, 8}, {1, 2, 3, 4}}));
}

TEST_F(InputUploadTest, paddingBehindRgb32RowsIsLeftOut) {
    const InputFormat format{PixelFormat::rgb32, 1, 2, 7, 14, false};
    EXPECT_EQ(upload(format, 14)[0].contents, rowsAt({{1, 2, 3, 4}, {8, 9, 10, 11}}));
    // The last row's padding need not be there, and then nothing has to be made up.
    EXPECT_EQ(upload(format, 11)[0].contents, rowsAt({{1, 2, 3, 4}, {8, 9, 10, 11}}));
    EXPECT_EQ(device.uploads[0].rows.data, frame.data());
    InputFormat bottomUp = format;
    bottomUp.isBottomUp = true;
    EXPECT_EQ(upload(bottomUp, 11)[0].contents, rowsAt({{8, 9, 10, 11}, {1, 2, 3, 4}}));
}

TEST_F(InputUploadTest, aStrideShorterThanARowCutsRowsOff) {
    EXPECT_EQ(upload({PixelFormat::rgb32, 2, 2, 3, 6, false}, 6)[0].contents, rowsAt({{1, 2, 3}, {4, 5, 6}}));
    EXPECT_EQ(upload({PixelFormat::rgb32, 2, 2, 0, 16, true}, 16)[0].contents, (Rows{{}, {}}));
}

TEST_F(InputUploadTest, whatAShortRgb32FrameLacksIsZero) {
    const std::vector<std::vector<int>> topDown{{1, 2, 3, 4}, {6, 7, 8, 9}, {11, 12, 13, 14}};
    const std::vector<std::vector<int>> bottomUp{{11, 12, 13, 14}, {6, 7, 8, 9}, {1, 2, 3, 4}};
    for (std::size_t length = 0; length <= 16; ++length) {
        SCOPED_TRACE(length);
        const InputFormat format{PixelFormat::rgb32, 1, 3, 5, 15, false};
        EXPECT_EQ(upload(format, length).at(0).contents, rowsAt(topDown, length));
        InputFormat reversed = format;
        reversed.isBottomUp = true;
        EXPECT_EQ(upload(reversed, length).at(0).contents, rowsAt(bottomUp, length));
    }
}

TEST_F(InputUploadTest, aFrameLongerThanItsRowsLosesTheRest) {
    EXPECT_EQ(upload({PixelFormat::rgb32, 1, 2, 4, 8, true}, 30)[0].contents,
              rowsAt({{5, 6, 7, 8}, {1, 2, 3, 4}}));
}

TEST_F(InputUploadTest, yv12PlanesFollowOneAnother) {
    // 6×4: 24 bytes of luma, then twice 3×2.
    const auto& uploads = upload({PixelFormat::yv12, 6, 4, 6, 36, false}, 36);
    ASSERT_EQ(uploads.size(), 3U);
    EXPECT_EQ(uploads[0].surface, Surface::yPlane);
    EXPECT_EQ(
        uploads[0].contents,
        rowsAt(
            {{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}, {13, 14, 15, 16, 17, 18}, {19, 20, 21, 22, 23, 24}}));
    EXPECT_EQ(uploads[1].surface, Surface::crPlane);
    EXPECT_EQ(uploads[1].contents, rowsAt({{25, 26, 27}, {28, 29, 30}}));
    EXPECT_EQ(uploads[2].surface, Surface::cbPlane);
    EXPECT_EQ(uploads[2].contents, rowsAt({{31, 32, 33}, {34, 35, 36}}));
    EXPECT_EQ(uploads[2].rows.data, frame.data() + 30);
}

TEST_F(InputUploadTest, yv12StridesFollowFromTheSizeOfTheFrame) {
    // 4×2 in rows of 6 and 3 bytes: 12 of luma, 3 of each chroma. The stride that was named is not asked.
    const auto& uploads = upload({PixelFormat::yv12, 4, 2, 99, 18, false}, 18);
    ASSERT_EQ(uploads.size(), 3U);
    EXPECT_EQ(uploads[0].contents, rowsAt({{1, 2, 3, 4}, {7, 8, 9, 10}}));
    EXPECT_EQ(uploads[1].contents, rowsAt({{13, 14}}));
    EXPECT_EQ(uploads[2].contents, rowsAt({{16, 17}}));
}

TEST_F(InputUploadTest, yv12OfOddSizeIsDividedInWholeNumbers) {
    // 22 bytes for 5×3: 22 / 3 · 2 = 14 of luma in rows of 14 / 3 = 4, then 14 / 4 = 3 of each chroma for
    // 2×1 samples.
    const auto& uploads = upload({PixelFormat::yv12, 5, 3, 5, 22, false}, 22);
    ASSERT_EQ(uploads.size(), 3U);
    EXPECT_EQ(uploads[0].contents, rowsAt({{1, 2, 3, 4, 5}, {5, 6, 7, 8, 9}, {9, 10, 11, 12, 13}}));
    EXPECT_EQ(uploads[1].contents, rowsAt({{15, 16}}));
    EXPECT_EQ(uploads[2].contents, rowsAt({{18, 19}}));
}

TEST_F(InputUploadTest, whatAShortYv12FrameLacksIsZero) {
    for (std::size_t length = 0; length <= 18; ++length) {
        SCOPED_TRACE(length);
        const auto& uploads = upload({PixelFormat::yv12, 4, 2, 6, 18, false}, length);
        ASSERT_EQ(uploads.size(), 3U);
        EXPECT_EQ(uploads[0].contents, rowsAt({{1, 2, 3, 4}, {7, 8, 9, 10}}, length));
        EXPECT_EQ(uploads[1].contents, rowsAt({{13, 14}}, length));
        EXPECT_EQ(uploads[2].contents, rowsAt({{16, 17}}, length));
    }
}

TEST_F(InputUploadTest, aYv12FrameTooSmallForItsHeightIsHarmless) {
    // 2 / 3 · 2 = 0 bytes of luma, so no stride either: every row is the frame's first.
    const auto& uploads = upload({PixelFormat::yv12, 4, 2, 4, 2, false}, 2);
    ASSERT_EQ(uploads.size(), 3U);
    EXPECT_EQ(uploads[0].contents, rowsAt({{1, 2, 0, 0}, {1, 2, 0, 0}}));
    EXPECT_EQ(uploads[1].contents, rowsAt({{1, 2}}));
}

TEST_F(InputUploadTest, aPlaneThatFailsEndsTheFrame) {
    const InputFormat format{PixelFormat::yv12, 6, 4, 6, 36, false};
    const Surface planes[]{Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    for (std::size_t failing = 0; failing < 3; ++failing) {
        device.answer = [&](const tests::RecordedCall& call) {
            return call.verb == Verb::upload && call.to == planes[failing] ? E_FAIL : S_OK;
        };
        EXPECT_EQ(upload(format, 36).size(), failing + 1);
    }
}

TEST_F(InputUploadTest, yuy2GoesUpInOnePiece) {
    const InputFormat format{PixelFormat::yuy2, 2, 3, 8, 12, false};
    for (const std::size_t length : {0, 1, 11, 12, 13}) {
        SCOPED_TRACE(length);
        const auto& uploads = upload(format, length);
        ASSERT_EQ(uploads.size(), 1U);
        EXPECT_EQ(uploads[0].surface, Surface::packedInput);
        EXPECT_EQ(uploads[0].contents, Rows{countingBytes(std::min<std::size_t>(length, 12))});
    }
}

TEST_F(InputUploadTest, otherFormatsAreLeftAlone) {
    constexpr auto nv12 = static_cast<PixelFormat>(0x3231564E);
    EXPECT_TRUE(upload({nv12, 4, 4, 4, 24, false}, 24).empty());
    EXPECT_TRUE(upload({static_cast<PixelFormat>(0), 4, 4, 4, 24, false}, 24).empty());
}

TEST(FrameFormat, aYuy2PictureNeedsNoMoreThanItsPixels) {
    const auto bytes = [](int width, int height, std::uint32_t frameBytes) {
        return yuy2PictureBytes({PixelFormat::yuy2, width, height, 0, frameBytes, false});
    };
    EXPECT_EQ(bytes(6, 4, 48), 48U);
    EXPECT_EQ(bytes(6, 4, 47), 47U);
    EXPECT_EQ(bytes(6, 4, 0xFFFFFFFF), 48U);
    EXPECT_EQ(bytes(5, 3, 100), 32U); // 15 pixels in 8 words
    EXPECT_EQ(bytes(0x7FFFFFFF, 0x7FFFFFFF, 0xFFFFFFFF), 0xFFFFFFFFU);
}

} // namespace
} // namespace tarvo::render
