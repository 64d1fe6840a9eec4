#include "transform/streaming/TypeNegotiation.h"

#include "tests/transform/streaming/StreamFakes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto least32 = std::numeric_limits<std::int32_t>::min();
constexpr auto most32 = std::numeric_limits<std::int32_t>::max();

VideoType input(const GUID& subtype, std::int32_t width, std::int32_t height, std::uint32_t imageBytes) {
    VideoType type;
    type.subtype = &subtype;
    type.width = width;
    type.height = height;
    type.imageBytes = imageBytes;
    type.ticksPerFrame = 333'333;
    return type;
}

TEST(InputTypeCheck, storesWhatTheTypeSays) {
    Negotiator negotiator;
    ASSERT_EQ(negotiator.checkInput(yv12Input(1280, 720, 400'000)), S_OK);
    const NegotiatedFormats formats = negotiator.negotiation.formats();
    EXPECT_STREQ(formats.inputFormat->name, "YV12");
    EXPECT_EQ(formats.inputWidth, 1280U);
    EXPECT_EQ(formats.inputHeight, 720U);
    EXPECT_EQ(formats.inputImageBytes, 1382400U);
    EXPECT_EQ(formats.inputStrideBytes, 1280U);
    EXPECT_EQ(formats.inputFrameRate, 25.0);
    EXPECT_FALSE(formats.isInputBottomUp);
    EXPECT_EQ(formats.inputAspect, 1280.0F / 720.0F);
    EXPECT_EQ(formats.renderInput(),
              (render::InputFormat{render::PixelFormat::yv12, 1280, 720, 1280, 1382400, false}));
    EXPECT_THAT(negotiator.owner.takeCalls(), ElementsAre("input", "release"));
    EXPECT_THAT(negotiator.log.takeLines(),
                ElementsAre("T:_:[7] - InternalCheckInputType - YV12:1280x720@25.0"));
}

TEST(InputTypeCheck, takesBothKindsOfHeader) {
    for (const bool isSecondKind : {false, true}) {
        Negotiator negotiator;
        VideoType type = input(MEDIASUBTYPE_YUY2, 640, 480, 640 * 480 * 2);
        type.isSecondKind = isSecondKind;
        ASSERT_EQ(negotiator.checkInput(type), S_OK);
        EXPECT_EQ(negotiator.negotiation.formats().inputStrideBytes, 1280U);
        EXPECT_THAT(negotiator.log.takeLines(),
                    ElementsAre("T:_:[7] - InternalCheckInputType - YUY2:640x480@30.0"));
    }
}

TEST(InputTypeCheck, knowsTheOrderOfRows) {
    const auto isBottomUp = [](const GUID& subtype, std::int32_t height) {
        Negotiator negotiator;
        EXPECT_EQ(negotiator.checkInput(input(subtype, 1920, height, 1920 * 1080 * 4)), S_OK);
        EXPECT_EQ(negotiator.negotiation.formats().inputHeight, 1080U);
        return negotiator.negotiation.formats().isInputBottomUp;
    };
    EXPECT_TRUE(isBottomUp(MEDIASUBTYPE_RGB32, 1080));
    EXPECT_FALSE(isBottomUp(MEDIASUBTYPE_RGB32, -1080));
    EXPECT_FALSE(isBottomUp(MEDIASUBTYPE_YV12, 1080));
    EXPECT_FALSE(isBottomUp(MEDIASUBTYPE_YUY2, 1080));
}

TEST(InputTypeCheck, refusesOtherTypesSilently) {
    Negotiator negotiator;
    EXPECT_EQ(negotiator.negotiation.checkInputType(nullptr), typeIsNotAccepted);
    com::CMediaType type = yv12Input(640, 480).make();
    type.fields().majortype = MEDIATYPE_Audio;
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type.get()), typeIsNotAccepted);
    EXPECT_EQ(negotiator.checkInput(input(MEDIASUBTYPE_RGB24, 640, 480, 640 * 480 * 3)), typeIsNotAccepted);
    type = yv12Input(640, 480).make();
    type.fields().formattype = FORMAT_MPEGVideo;
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type.get()), typeIsNotAccepted);
    EXPECT_THAT(negotiator.log.takeLines(), IsEmpty());
    EXPECT_THAT(negotiator.owner.takeCalls(), IsEmpty());
    EXPECT_EQ(negotiator.negotiation.formats().inputFormat, nullptr);
    EXPECT_EQ(negotiator.settings.inputFrameRate, 0.0);
}

/// Offers the first `bytes` of a good format block, in memory of just that size and at an odd address.
template<class Header>
HRESULT checkCutBlock(std::size_t bytes, REFGUID formatType, bool isOutput) {
    Negotiator negotiator;
    Header header{};
    // Without the size that the bitmap header claims, only the block's counts.
    header.bmiHeader.biSize = 0;
    header.bmiHeader.biWidth = 64;
    header.bmiHeader.biHeight = 48;
    header.bmiHeader.biSizeImage = 64 * 48 * 4;
    auto* block = static_cast<BYTE*>(std::malloc(bytes + 1));
    std::memcpy(block + 1, &header, bytes);
    DMO_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = MEDIASUBTYPE_RGB32;
    type.formattype = formatType;
    type.cbFormat = static_cast<ULONG>(bytes);
    type.pbFormat = block + 1;
    const HRESULT result = isOutput ? negotiator.negotiation.checkOutputType(&type)
                                    : negotiator.negotiation.checkInputType(&type);
    std::free(block);
    return result;
}

TEST(TypeCheck, neverReadsBeyondAShortBlock) {
    for (const bool isOutput : {false, true}) {
        for (std::size_t bytes = 0; bytes < sizeof(VIDEOINFOHEADER2); ++bytes)
            EXPECT_EQ(checkCutBlock<VIDEOINFOHEADER2>(bytes, FORMAT_VideoInfo2, isOutput), typeIsNotAccepted);
        for (std::size_t bytes = 0; bytes < sizeof(VIDEOINFOHEADER); ++bytes)
            EXPECT_EQ(checkCutBlock<VIDEOINFOHEADER>(bytes, FORMAT_VideoInfo, isOutput), typeIsNotAccepted);
        EXPECT_EQ(checkCutBlock<VIDEOINFOHEADER2>(sizeof(VIDEOINFOHEADER2), FORMAT_VideoInfo2, isOutput),
                  S_OK);
        EXPECT_EQ(checkCutBlock<VIDEOINFOHEADER>(sizeof(VIDEOINFOHEADER), FORMAT_VideoInfo, isOutput), S_OK);
    }
}

TEST(TypeCheck, refusesABlockThatIsNotThere) {
    Negotiator negotiator;
    DMO_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = MEDIASUBTYPE_RGB32;
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type), typeIsNotAccepted);
    type.formattype = FORMAT_VideoInfo2;
    type.cbFormat = sizeof(VIDEOINFOHEADER2);
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type), typeIsNotAccepted);
    EXPECT_EQ(negotiator.negotiation.checkOutputType(&type), typeIsNotAccepted);
}

TEST(TypeCheck, refusesABitmapHeaderThatClaimsMoreThanItsBlock) {
    Negotiator negotiator;
    com::CMediaType type = yv12Input(640, 480).make();
    auto* header = reinterpret_cast<VIDEOINFOHEADER2*>(type.fields().pbFormat);
    header->bmiHeader.biSize = 41;
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type.get()), typeIsNotAccepted);
    EXPECT_EQ(negotiator.negotiation.checkOutputType(&type.get()), typeIsNotAccepted);
    header->bmiHeader.biSize = 40;
    EXPECT_EQ(negotiator.negotiation.checkInputType(&type.get()), S_OK);
}

TEST(InputTypeCheck, refusesImagesTooSmallForTheirPicture) {
    const auto check = [](const GUID& subtype, std::int32_t width, std::int32_t height, std::uint32_t bytes) {
        Negotiator negotiator;
        return negotiator.checkInput(input(subtype, width, height, bytes));
    };
    EXPECT_EQ(check(MEDIASUBTYPE_RGB32, 640, 480, 640 * 480 * 4), S_OK);
    EXPECT_EQ(check(MEDIASUBTYPE_RGB32, 640, 480, 640 * 480 * 4 - 1), typeIsNotAccepted);
    EXPECT_EQ(check(MEDIASUBTYPE_YUY2, 640, 480, 640 * 480 * 2 - 1), typeIsNotAccepted);
    EXPECT_EQ(check(MEDIASUBTYPE_YV12, 640, 480, 640 * 480 * 3 / 2 - 1), typeIsNotAccepted);
    EXPECT_EQ(check(MEDIASUBTYPE_YV12, 641, 481, 641 * 481 + 2 * 320 * 240), S_OK);
    EXPECT_EQ(check(MEDIASUBTYPE_RGB32, 65536, 65536, 4096), typeIsNotAccepted); // 2³⁴ bytes
    EXPECT_EQ(check(MEDIASUBTYPE_RGB32, most32, most32, 1), typeIsNotAccepted);
    EXPECT_EQ(check(MEDIASUBTYPE_RGB32, 640, 480, 0), S_OK); // as is common for RGB
}

TEST(InputTypeCheck, refusesSizesThatAreNone) {
    const auto refusal = [](std::int32_t width, std::int32_t height) {
        Negotiator negotiator;
        EXPECT_EQ(negotiator.checkInput(input(MEDIASUBTYPE_RGB32, width, height, 8'294'400)),
                  typeIsNotAccepted);
        // The rate is stored all the same, nothing else is.
        EXPECT_DOUBLE_EQ(negotiator.settings.inputFrameRate, 10'000'000.0 / 333'333.0);
        EXPECT_EQ(negotiator.negotiation.formats().inputFrameRate, negotiator.settings.inputFrameRate);
        EXPECT_EQ(negotiator.negotiation.formats().inputFormat, nullptr);
        EXPECT_EQ(negotiator.settings.outputWidth, 0U);
        EXPECT_THAT(negotiator.owner.takeCalls(), IsEmpty());
        const std::vector<std::string> lines = negotiator.log.takeLines();
        return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines";
    };
    const std::string start = "T:E:[7] - InternalCheckInputType - Invalid resolution: ";
    EXPECT_EQ(refusal(0, 1080), start + "0x1080");
    EXPECT_EQ(refusal(-1920, 1080), start + "-1920x1080");
    EXPECT_EQ(refusal(1920, 0), start + "1920x0");
    EXPECT_EQ(refusal(1920, least32), start + "1920x-2147483648");
    EXPECT_EQ(refusal(least32, least32), start + "-2147483648x-2147483648");
}

TEST(InputTypeCheck, takesRatesAsTheyAre) {
    const auto rate = [](std::int64_t ticks) {
        Negotiator negotiator;
        EXPECT_EQ(negotiator.checkInput(yv12Input(640, 480, ticks)), S_OK);
        return negotiator.negotiation.formats().inputFrameRate;
    };
    EXPECT_EQ(rate(0), 0.0);
    EXPECT_EQ(rate(-333'333), 0.0);
    EXPECT_EQ(rate(std::numeric_limits<std::int64_t>::min()), 0.0);
    EXPECT_EQ(rate(1), 10'000'000.0);
    EXPECT_GT(rate(std::numeric_limits<std::int64_t>::max()), 0.0);
}

/// A negotiator whose input is 2048 × 1536 at 30 frames a second, and the output thus 1024 × 768.
struct WithInput : Negotiator {
    WithInput() {
        EXPECT_EQ(checkInput(yv12Input(2048, 1536)), S_OK);
        owner.takeCalls();
        log.takeLines();
    }
};

VideoType output(const GUID& subtype, std::uint32_t imageBytes, std::int64_t ticksPerFrame = 333'333) {
    VideoType type;
    type.subtype = &subtype;
    type.width = 1024;
    type.height = 768;
    type.imageBytes = imageBytes;
    type.ticksPerFrame = ticksPerFrame;
    type.target = {0, 0, 1024, 768};
    return type;
}

TEST(OutputTypeCheck, storesWhatTheTypeSays) {
    WithInput negotiator;
    ASSERT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_YV12, 1024 * 768 * 3 / 2)), S_OK);
    NegotiatedFormats formats = negotiator.negotiation.formats();
    EXPECT_STREQ(formats.outputFormat->name, "YV12");
    EXPECT_EQ(formats.outputImageBytes, 1179648U);
    EXPECT_EQ(formats.outputStrideBytes, 1024U);
    EXPECT_TRUE(formats.isOutputBottomUp);
    EXPECT_DOUBLE_EQ(formats.outputFrameRate, 10'000'000.0 / 333'333.0);
    EXPECT_EQ(formats.renderOutput(),
              (render::OutputFormat{render::PixelFormat::yv12, 1024, 768, 1024, false}));
    EXPECT_THAT(negotiator.owner.takeCalls(), ElementsAre("output", "cache", "image"));
    EXPECT_THAT(negotiator.log.takeLines(),
                ElementsAre("T:_:[7] - InternalCheckOutputType - YV12:1024x768@30.0 (STRIDE: 1024)"));

    ASSERT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 1024 * 768 * 4)), S_OK);
    EXPECT_EQ(negotiator.negotiation.formats().renderOutput(),
              (render::OutputFormat{render::PixelFormat::rgb32, 1024, 768, 4096, true}));
    VideoType topDown = output(MEDIASUBTYPE_RGB32, 1024 * 768 * 4);
    topDown.height = -768;
    topDown.isSecondKind = false;
    ASSERT_EQ(negotiator.checkOutput(topDown), S_OK);
    EXPECT_EQ(negotiator.negotiation.formats().renderOutput(),
              (render::OutputFormat{render::PixelFormat::rgb32, 1024, 768, 4096, false}));
}

TEST(OutputTypeCheck, isForDevicesPackedRgbBefore) {
    const WithInput negotiator;
    EXPECT_EQ(negotiator.negotiation.formats().renderOutput(),
              (render::OutputFormat{render::PixelFormat::rgb32, 1024, 768, 4096, false}));
}

TEST(OutputTypeCheck, refusesYv12WhereRgbIsForced) {
    WithInput negotiator;
    negotiator.settings.options = 4;
    EXPECT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_YV12, 1179648)), typeIsNotAccepted);
    EXPECT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 3145728)), S_OK);
    // It is offered all the same.
    for (const DWORD index : {0U, 2U}) {
        DMO_MEDIA_TYPE type{};
        ASSERT_EQ(negotiator.negotiation.offerOutputType(index, true, &type), S_OK);
        com::CMediaType owned;
        owned.attach(type);
        EXPECT_TRUE(type.subtype == MEDIASUBTYPE_YV12);
    }
}

TEST(OutputTypeCheck, judgesTheTargetsWidthAlone) {
    WithInput negotiator;
    VideoType type = output(MEDIASUBTYPE_RGB32, 3145728);
    type.target = {0, 0, 640, 480};
    EXPECT_EQ(negotiator.checkOutput(type), typeIsNotAccepted);
    EXPECT_THAT(
        negotiator.log.takeLines(),
        ElementsAre(
            "T:_:[7] - InternalCheckOutputType - RGB32:Suggested width does not match (640 != 1024)"));
    EXPECT_THAT(negotiator.owner.takeCalls(), IsEmpty());
    type.target = {least32, 0, most32, 768};
    EXPECT_EQ(negotiator.checkOutput(type), typeIsNotAccepted);
    type.target = {};
    type.width = 5;
    EXPECT_EQ(negotiator.checkOutput(type), S_OK);
    type.target = {500, 0, 20, 10};
    EXPECT_EQ(negotiator.checkOutput(type), S_OK);
    type.target = {most32, 0, least32, 768};
    EXPECT_EQ(negotiator.checkOutput(type), S_OK);
    type.target = {100, 0, 1124, 1};
    EXPECT_EQ(negotiator.checkOutput(type), S_OK);
}

TEST(OutputTypeCheck, refusesNoHeightAndBearsOddOnes) {
    WithInput negotiator;
    negotiator.settings.outputFrameRate = 12.0;
    VideoType type = output(MEDIASUBTYPE_RGB32, 3145728);
    type.height = 0;
    EXPECT_EQ(negotiator.checkOutput(type), typeIsNotAccepted);
    EXPECT_EQ(negotiator.settings.outputFrameRate, 12.0);
    EXPECT_EQ(negotiator.negotiation.formats().outputFormat, nullptr);
    type.height = least32;
    type.imageBytes = 0xFFFFFFFFU;
    EXPECT_EQ(negotiator.checkOutput(type), S_OK);
    EXPECT_EQ(negotiator.negotiation.formats().outputStrideBytes, 1U); // (2³² − 1) ÷ 2³¹
    EXPECT_FALSE(negotiator.negotiation.formats().isOutputBottomUp);
}

TEST(OutputTypeCheck, adoptsTheRateUnlessItIsLimited) {
    WithInput negotiator;
    ASSERT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 3145728, 400'000)), S_OK);
    EXPECT_EQ(negotiator.settings.outputFrameRate, 25.0);
    ASSERT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 3145728, 0)), S_OK);
    EXPECT_EQ(negotiator.settings.outputFrameRate, 0.0);
    negotiator.settings.outputFrameRate = 60.0;
    negotiator.settings.isOutputRateLimited = true;
    ASSERT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 3145728, 400'000)), S_OK);
    EXPECT_EQ(negotiator.settings.outputFrameRate, 60.0);
}

TEST(OutputTypeCheck, warnsOfRatesThatDoNotGoTogether) {
    const std::string warning = "T:_:[7] - InternalCheckOutputType - WARNING: Output frame rate not a "
                                "multiple of input frame rate";
    const auto warns = [&](std::int64_t inputTicks, double outputRate) {
        Negotiator negotiator;
        EXPECT_EQ(negotiator.checkInput(yv12Input(2048, 1536, inputTicks)), S_OK);
        negotiator.log.takeLines();
        negotiator.settings.isOutputRateLimited = true;
        negotiator.settings.outputFrameRate = outputRate;
        EXPECT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_RGB32, 3145728)), S_OK);
        const std::vector<std::string> lines = negotiator.log.takeLines();
        return lines.size() == 2 && lines[1] == warning;
    };
    EXPECT_TRUE(warns(400'000, 30.0));
    EXPECT_TRUE(warns(333'333, 25.0));
    EXPECT_FALSE(warns(400'000, 50.0));
    EXPECT_FALSE(warns(400'000, 25.0));
    EXPECT_FALSE(warns(400'000, 0.0));
    EXPECT_FALSE(warns(0, 30.0)); // nothing is known of the input
    EXPECT_TRUE(warns(400'000, std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(warns(400'000, std::numeric_limits<double>::quiet_NaN()));
}

TEST(OutputTypeCheck, refusesOtherTypesSilently) {
    WithInput negotiator;
    EXPECT_EQ(negotiator.negotiation.checkOutputType(nullptr), typeIsNotAccepted);
    EXPECT_EQ(negotiator.checkOutput(output(MEDIASUBTYPE_YUY2, 1024 * 768 * 2)), typeIsNotAccepted);
    com::CMediaType type = output(MEDIASUBTYPE_RGB32, 3145728).make();
    type.fields().majortype = MEDIATYPE_Stream;
    EXPECT_EQ(negotiator.negotiation.checkOutputType(&type.get()), typeIsNotAccepted);
    EXPECT_THAT(negotiator.log.takeLines(), IsEmpty());
    EXPECT_THAT(negotiator.owner.takeCalls(), IsEmpty());
}

} // namespace
} // namespace tarvo::transform
