#include "geometry/OutputSize.h"

#include <gtest/gtest.h>

namespace tarvo::geometry {
namespace {

OutputSizeRequest requestFor(std::uint32_t width, std::uint32_t height,
                             ViewType viewType = ViewType::single) {
    OutputSizeRequest request;
    request.input = {width, height};
    request.viewType = viewType;
    return request;
}

OutputSizeRequest wanting(OutputSizeRequest request, std::uint32_t width, std::uint32_t height) {
    request.wanted = {width, height};
    request.isWantedSet = true;
    return request;
}

TEST(OutputSize, unsetSizeIs1024Wide) {
    EXPECT_EQ(deriveOutputSize(requestFor(2048, 1536)), (PictureSize{1024, 768}));
    EXPECT_EQ(deriveOutputSize(requestFor(2592, 1944)), (PictureSize{1024, 768}));
    EXPECT_EQ(deriveOutputSize(requestFor(1000, 333)), (PictureSize{1024, 340})); // 340.99 → 340
    EXPECT_EQ(deriveOutputSize(requestFor(1000, 334)), (PictureSize{1024, 342})); // 342.0
    EXPECT_EQ(deriveOutputSize(requestFor(1024, 333)), (PictureSize{1024, 334})); // made even
}

TEST(OutputSize, panoramasDeriveTheirHeight) {
    EXPECT_EQ(deriveOutputSize(requestFor(2048, 1536, ViewType::panoramaSingle)), (PictureSize{1024, 384}));
    EXPECT_EQ(deriveOutputSize(requestFor(2048, 1536, ViewType::panoramaDouble)), (PictureSize{1024, 768}));
    OutputSizeRequest request = wanting(requestFor(2048, 1536, ViewType::panoramaSingle), 1001, 0);
    EXPECT_EQ(deriveOutputSize(request),
              (PictureSize{1001, 375})); // 1001 · 67.5 / 180 = 375.4, not made even
}

TEST(OutputSize, optionTakesTheInputsWidth) {
    OutputSizeRequest request = requestFor(2048, 1536);
    request.options = 2;
    EXPECT_EQ(deriveOutputSize(request), (PictureSize{2048, 1152}));
    request = wanting(request, 640, 480); // the option goes before
    EXPECT_EQ(deriveOutputSize(request), (PictureSize{2048, 1152}));
}

TEST(OutputSize, missingSideFollowsTheInput) {
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720), 800, 0)), (PictureSize{800, 450}));
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720), 0, 450)), (PictureSize{800, 450}));
}

TEST(OutputSize, bothSidesAreMadeEven) {
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720), 801, 601)), (PictureSize{802, 602}));
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720, ViewType::panoramaSingle), 801, 601)),
              (PictureSize{802, 602}));
}

TEST(OutputSize, bothSidesSetToZeroMeanTheInputs) {
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1281, 721), 0, 0)), (PictureSize{1281, 721}));
}

TEST(OutputSize, customViewFollowsItsTables) {
    OutputSizeRequest request = requestFor(1280, 720, ViewType::custom);
    EXPECT_EQ(deriveOutputSize(request), (PictureSize{1280, 720})); // no tables
    request.customAspect = 2.0F;
    EXPECT_EQ(deriveOutputSize(request), (PictureSize{1440, 720}));
    EXPECT_EQ(deriveOutputSize(wanting(request, 0, 301)), (PictureSize{602, 301}));
    EXPECT_EQ(deriveOutputSize(wanting(request, 301, 0)), (PictureSize{301, 150}));
    EXPECT_EQ(deriveOutputSize(wanting(request, 301, 301)), (PictureSize{302, 302}));
}

TEST(OutputSize, derivedSidesAreMadeEven) {
    OutputSizeRequest wide = requestFor(1002, 750);
    wide.options = 2;
    EXPECT_EQ(deriveOutputSize(wide), (PictureSize{1002, 564}));                                  // 563
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720), 802, 0)), (PictureSize{802, 452})); // 451
    EXPECT_EQ(deriveOutputSize(wanting(requestFor(1280, 720), 0, 452)), (PictureSize{804, 452})); // 803
    OutputSizeRequest custom = requestFor(1280, 720, ViewType::custom);
    custom.customAspect = 1.5F;
    EXPECT_EQ(deriveOutputSize(wanting(custom, 0, 301)), (PictureSize{452, 301})); // 451
}

} // namespace
} // namespace tarvo::geometry
