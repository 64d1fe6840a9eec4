#include "apps/host/VideoFormat.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace tarvo::host {
namespace {

TEST(VideoFormat, hasTheBytesThatRowsTake) {
    EXPECT_EQ(makeVideoFormat(FramePixels::rgb32, 640, -480).frameBytes, 1'228'800U);
    EXPECT_EQ(makeVideoFormat(FramePixels::rgb32, 3, 5).frameBytes, 60U);
    EXPECT_EQ(makeVideoFormat(FramePixels::rgb32, 3, 5, 0, 16).frameBytes, 80U);
    EXPECT_EQ(makeVideoFormat(FramePixels::yuy2, 640, 480).frameBytes, 614'400U);
    EXPECT_EQ(makeVideoFormat(FramePixels::yuy2, 5, 2).frameBytes, 24U) << "three pairs a row";
    EXPECT_EQ(makeVideoFormat(FramePixels::yv12, 64, 48).frameBytes, 4'608U);
    EXPECT_EQ(makeVideoFormat(FramePixels::yv12, 5, 4).frameBytes, 36U) << "rows of six";
    EXPECT_EQ(makeVideoFormat(FramePixels::yv12, 64, 48, 0, 80).frameBytes, 5'760U);
    // Just below 2 GiB, and the first that is not.
    EXPECT_EQ(makeVideoFormat(FramePixels::rgb32, 536'870'911, 1).frameBytes, 2'147'483'644U);
    EXPECT_THROW(makeVideoFormat(FramePixels::rgb32, 536'870'912, 1), std::invalid_argument);
}

TEST(VideoFormat, refusesWhatIsNoFrame) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    for (const FramePixels pixels : {FramePixels::yv12, FramePixels::yuy2, FramePixels::rgb32}) {
        EXPECT_THROW(makeVideoFormat(pixels, 0, 10), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, -4, 10), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, 4, 0), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, most, most), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, most, least), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, 1, least), std::invalid_argument);
        EXPECT_THROW(makeVideoFormat(pixels, 8, 8, 0, 2), std::invalid_argument) << "no room for a row";
        EXPECT_THROW(makeVideoFormat(pixels, 8, 8, 0, 0xFFFFFFFEU), std::invalid_argument);
    }
    EXPECT_THROW(makeVideoFormat(FramePixels::yv12, 8, 8, 0, 9), std::invalid_argument);
}

TEST(VideoFormat, becomesAMediaType) {
    const auto type = mediaTypeOf(makeVideoFormat(FramePixels::yv12, 64, 48, 400'000, 80));
    EXPECT_EQ(type->majortype, MEDIATYPE_Video);
    EXPECT_EQ(type->subtype, MEDIASUBTYPE_YV12);
    EXPECT_EQ(type->lSampleSize, 5'760U);
    const auto* const header = type.format<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->AvgTimePerFrame, 400'000);
    EXPECT_EQ(header->rcTarget.right, 64);
    EXPECT_EQ(header->rcTarget.bottom, 48);
    EXPECT_EQ(header->bmiHeader.biSize, 40U);
    EXPECT_EQ(header->bmiHeader.biWidth, 64);
    EXPECT_EQ(header->bmiHeader.biHeight, 48);
    EXPECT_EQ(header->bmiHeader.biPlanes, 1);
    EXPECT_EQ(header->bmiHeader.biBitCount, 12);
    EXPECT_EQ(header->bmiHeader.biCompression, 0x32315659U) << "YV12, first letter in the lowest byte";
    EXPECT_EQ(header->bmiHeader.biSizeImage, 5'760U);

    const auto topDown = mediaTypeOf(makeVideoFormat(FramePixels::rgb32, 8, -6));
    const auto* const rgb = topDown.format<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    ASSERT_NE(rgb, nullptr);
    EXPECT_EQ(rgb->bmiHeader.biHeight, -6);
    EXPECT_EQ(rgb->rcTarget.bottom, 6);
    EXPECT_EQ(rgb->bmiHeader.biCompression, 0U);
}

TEST(VideoFormat, isReadFromTheSubtype) {
    for (const FramePixels pixels : {FramePixels::yv12, FramePixels::yuy2, FramePixels::rgb32}) {
        EXPECT_EQ(pixelsOf(mediaTypeOf(makeVideoFormat(pixels, 8, 8)).get()), pixels);
    }
    EXPECT_EQ(pixelsOf(DMO_MEDIA_TYPE{}), std::nullopt);
}

} // namespace
} // namespace tarvo::host
