#include "tests/transform/StreamingFixture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarvo::transform {
namespace {

TEST_F(Streaming, bypassGivesTheInputAsItIs) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    const auto picture = patternRgb(32, 24);
    const Delivered frame = host.through(picture, 5'000'000, 400'000);
    EXPECT_EQ(frame.result, S_OK);
    EXPECT_EQ(frame.bytes, picture);
    EXPECT_EQ(frame.time, 5'000'000);
    EXPECT_EQ(frame.duration, 400'000);
    EXPECT_EQ(frame.status, DWORD{DMO_OUTPUT_DATA_BUFFERF_SYNCPOINT | DMO_OUTPUT_DATA_BUFFERF_TIME |
                                  DMO_OUTPUT_DATA_BUFFERF_TIMELENGTH});
}

TEST_F(Streaming, keepsTheDirectionsOfRowsApart) {
    const auto picture = patternRgb(32, 24);
    for (const int inputSign : {1, -1}) {
        for (const int outputSign : {1, -1}) {
            CTransformHost host;
            ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
            host.transform->put_OutputWidth(32);
            host.transform->put_OutputHeight(24);
            ASSERT_EQ(host.setInput(rgbType(32, 24 * inputSign)), S_OK);
            ASSERT_EQ(host.setOutput(rgbType(32, 24 * outputSign)), S_OK);
            const auto expected = inputSign == outputSign ? picture : upsideDown(picture, 32 * 4);
            EXPECT_EQ(host.through(picture).bytes, expected) << inputSign << " " << outputSign;
        }
    }
}

TEST_F(Streaming, mayBeGivenTheSameMemoryForInputAndOutput) {
    // Turned upside down, so that every row is written over one that another is drawn from.
    constexpr int height = 96;
    CTransformHost host(CTransformHost::Device::own);
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(height);
    ASSERT_EQ(host.setInput(rgbType(32, height)), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -height)), S_OK);
    CFakeBuffer buffer(std::size_t{32} * 4 * height);
    for (int number = 0; number < 3; ++number) {
        const auto picture = patternRgb(32, height, number);
        buffer.bytes = picture;
        buffer.length = static_cast<DWORD>(picture.size());
        ASSERT_EQ(host.input(buffer, number * 400'000), S_OK);
        Delivered frame;
        ASSERT_EQ(host.output(buffer, frame), S_OK);
        EXPECT_EQ(buffer.bytes, upsideDown(picture, 32 * 4)) << number;
    }
}

TEST_F(Streaming, aDewarpedFrameIsNotTheInputAndNotBlack) {
    CTransformHost host;
    host.negotiateRgb(64, 48, 32, 24);
    const std::vector<std::uint8_t> grey(64 * 48 * 4, 200);
    const Delivered frame = host.through(grey);
    ASSERT_EQ(frame.result, S_OK);
    // What looks straight ahead sees the picture's middle.
    const std::size_t middle = (12 * 32 + 16) * 4;
    EXPECT_EQ(frame.bytes[middle], 200);
    EXPECT_EQ(frame.bytes[middle + 2], 200);
}

TEST_F(Streaming, readsNoFurtherThanAFrameGoes) {
    // The rows that are missing are black; the sanitizer sees to the rest.
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    auto picture = patternRgb(32, 24);
    picture.resize(12 * 32 * 4);
    const Delivered frame = host.through(picture);
    ASSERT_EQ(frame.result, S_OK);
    EXPECT_TRUE(std::equal(picture.begin(), picture.end(), frame.bytes.begin()));
    EXPECT_TRUE(std::all_of(frame.bytes.begin() + 12 * 32 * 4, frame.bytes.end(),
                            [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(Streaming, takesFramesOfATypeThatDoesNotSayHowLargeTheyAre) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    VideoType type = rgbType(32, -24);
    type.imageBytes = 0;
    ASSERT_EQ(host.setInput(type), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -24)), S_OK);
    const auto picture = patternRgb(32, 24);
    EXPECT_EQ(host.through(picture).bytes, picture);
}

TEST_F(Streaming, survivesTypesThatLieAboutTheOutput) {
    CTransformHost host;
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
    for (const std::uint32_t bytes : {0U, 1U, 24U, 32U * 24, 4U * 32 * 24 * 3}) {
        VideoType type = rgbType(32, -24);
        type.imageBytes = bytes;
        ASSERT_EQ(host.setOutput(type), S_OK) << bytes;
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK) << bytes;
        type.subtype = &MEDIASUBTYPE_YV12;
        ASSERT_EQ(host.setOutput(type), S_OK) << bytes;
        const HRESULT expected = bytes / 24 * 8 / 12 >= 2 ? S_OK : E_FAIL;
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, expected) << bytes;
    }
    VideoType flat = rgbType(32, 0);
    EXPECT_EQ(host.setOutput(flat), typeIsNotAccepted);
}

TEST_F(Streaming, deliversYv12) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
    VideoType type = yv12Input(32, 24);
    ASSERT_EQ(host.setOutput(type), S_OK);
    const std::vector<std::uint8_t> white(32 * 24 * 4, 255);
    const Delivered frame = host.through(white);
    ASSERT_EQ(frame.result, S_OK);
    ASSERT_EQ(frame.bytes.size(), 32U * 24 * 3 / 2);
    // (16843 + 33030 + 6423) · 255 + 0x108000 in sixteenths of 2^20 is 235; the chroma of grey is 128.
    EXPECT_TRUE(std::all_of(frame.bytes.begin(), frame.bytes.begin() + 32 * 24,
                            [](std::uint8_t byte) { return byte == 235; }));
    EXPECT_TRUE(std::all_of(frame.bytes.begin() + 32 * 24, frame.bytes.end(),
                            [](std::uint8_t byte) { return byte == 128; }));
}

TEST_F(Streaming, takesYv12AndYuy2) {
    // Grey has its luma in both.
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    std::vector<std::uint8_t> planar(32 * 24 * 3 / 2, 128);
    std::fill_n(planar.begin(), 32 * 24, std::uint8_t{100});
    ASSERT_EQ(host.setInput(yv12Input(32, 24)), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -24)), S_OK);
    EXPECT_NEAR(host.through(planar).bytes[4 * 500], 100, 1);

    VideoType type = rgbType(32, 24);
    type.subtype = &MEDIASUBTYPE_YUY2;
    type.imageBytes = 32 * 24 * 2;
    ASSERT_EQ(host.setInput(type), S_OK) << "while the stream runs";
    std::vector<std::uint8_t> packed;
    for (int i = 0; i < 32 * 24; ++i) {
        packed.push_back(60);
        packed.push_back(128);
    }
    EXPECT_NEAR(host.through(packed).bytes[4 * 500], 60, 1);
}

} // namespace
} // namespace tarvo::transform
