// The size of the output over every view, option and way of setting it, against arithmetic of the test's own.

#include "tests/transform/streaming/StreamFakes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace tarvo::transform {
namespace {

using geometry::ViewType;

struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

std::string text(Size size) {
    return std::to_string(size.width) + 'x' + std::to_string(size.height);
}

/// One way of asking.
struct Request {
    ViewType view = ViewType::single;
    int options = 0;
    Size input;
    Size wanted; ///< as the host put it: signed
    bool isSet = false;
    double fieldOfView = 180.0;
    std::optional<float> aspect;
};

std::int64_t nextEven(std::int64_t value) {
    return value % 2 == 0 ? value : value + 1;
}

Size evenSize(Size size) {
    return {nextEven(size.width), nextEven(size.height)};
}

Size expectedCustom(const Request& request) {
    const bool hasWidth = request.wanted.width != 0;
    const bool hasHeight = request.wanted.height != 0;
    if (hasWidth && hasHeight)
        return evenSize(request.wanted);
    if (!request.aspect || *request.aspect <= 0.0F)
        return request.input;
    const double aspect = static_cast<double>(*request.aspect);
    const auto widthFor = [&](std::int64_t height) {
        return nextEven(static_cast<std::int64_t>(std::floor(static_cast<double>(height) * aspect)));
    };
    if (hasWidth) {
        const double height = std::floor(static_cast<double>(request.wanted.width) / aspect);
        return {request.wanted.width, nextEven(static_cast<std::int64_t>(height))};
    }
    const std::int64_t height = hasHeight ? request.wanted.height : request.input.height;
    return {widthFor(height), height};
}

Size expectedSize(Request request) {
    if (request.wanted.width <= 0 && request.wanted.height <= 0)
        request.wanted = {};
    if (request.view == ViewType::custom)
        return expectedCustom(request);
    const Size in = request.input;
    if ((request.options & 2) != 0)
        return {in.width, nextEven(in.width * 9 / 16)};
    const bool hasWidth = request.wanted.width != 0;
    const bool hasHeight = request.wanted.height != 0;
    if (hasWidth && hasHeight)
        return evenSize(request.wanted);
    if (request.isSet && !hasWidth && !hasHeight)
        return in;
    Size size;
    if (!request.isSet)
        size = {1024, nextEven(in.height * 1024 / in.width)};
    else if (hasWidth)
        size = {request.wanted.width, nextEven(in.height * request.wanted.width / in.width)};
    else
        size = {nextEven(in.width * request.wanted.height / in.height), request.wanted.height};
    if (request.view == ViewType::panoramaSingle || request.view == ViewType::panoramaDouble) {
        const double share = request.fieldOfView / 67.5;
        const double k = request.view == ViewType::panoramaDouble ? share * 0.5 : share;
        size.height = static_cast<std::int64_t>(std::floor(static_cast<double>(size.width) / k));
    }
    return size;
}

void put(Negotiator& negotiator, const Request& request) {
    negotiator.owner.facts = {request.view, request.fieldOfView, request.aspect};
    negotiator.settings.options = request.options;
    negotiator.settings.outputWidth = static_cast<std::uint32_t>(request.wanted.width);
    negotiator.settings.outputHeight = static_cast<std::uint32_t>(request.wanted.height);
    negotiator.settings.isOutputSizeSet = request.isSet;
}

Size outputSize(const Negotiator& negotiator) {
    return {negotiator.settings.outputWidth, negotiator.settings.outputHeight};
}

HRESULT check(Negotiator& negotiator, Size input) {
    VideoType type;
    type.subtype = &MEDIASUBTYPE_RGB32;
    type.width = static_cast<std::int32_t>(input.width);
    type.height = static_cast<std::int32_t>(input.height);
    type.imageBytes = static_cast<std::uint32_t>(input.width * input.height * 4);
    return negotiator.checkInput(type);
}

void expectSize(Negotiator& negotiator, const Request& request) {
    const Size expected = expectedSize(request);
    const std::string message = "view " + std::to_string(static_cast<int>(request.view)) + " options " +
                                std::to_string(request.options) + " input " + text(request.input) +
                                " wanted " + text(request.wanted) + (request.isSet ? " set" : "") +
                                " field of view " + std::to_string(request.fieldOfView);
    if (expected.width == 0 || expected.height == 0) {
        EXPECT_EQ(check(negotiator, request.input), typeIsNotAccepted) << message;
        return;
    }
    ASSERT_EQ(check(negotiator, request.input), S_OK) << message;
    ASSERT_EQ(text(outputSize(negotiator)), text(expected)) << message;
    const NegotiatedFormats formats = negotiator.negotiation.formats();
    ASSERT_EQ(formats.outputWidth, expected.width);
    ASSERT_EQ(formats.outputHeight, expected.height);
    ASSERT_EQ(formats.inputAspect,
              static_cast<float>(request.input.width) / static_cast<float>(request.input.height));
    ASSERT_EQ(formats.outputAspect, static_cast<float>(expected.width) / static_cast<float>(expected.height));
}

TEST(NegotiatedSize, followsEveryBranch) {
    const std::vector<Size> inputs{{2048, 1536}, {1280, 720}, {1000, 333}, {333, 1001}, {2592, 1944}, {7, 5}};
    const std::vector<std::pair<Size, bool>> wishes{
        {{0, 0}, false},    {{0, 0}, true},   {{800, 0}, true}, {{0, 450}, true},
        {{801, 601}, true}, {{801, 0}, true}, {{0, 601}, true}, {{-3, 0}, true},
        {{0, -7}, true},    {{-3, -7}, true}, {{1, 1}, true},   {{1024, 768}, false}};
    const std::vector<std::optional<float>> aspects{std::nullopt, 1.5F, 0.75F, 2.375F, 0.0F, -1.5F};
    for (int view = 0; view <= 5; ++view) {
        for (int options = 0; options < 16; ++options) {
            for (const Size& input : inputs) {
                for (const auto& [wanted, isSet] : wishes) {
                    for (const double fieldOfView : {180.0, 360.0, 67.5, 100.0, 1.0}) {
                        for (const auto& aspect : aspects) {
                            const auto viewType = static_cast<ViewType>(view);
                            if (viewType != ViewType::custom && aspect)
                                continue;
                            Negotiator negotiator;
                            const Request request{viewType, options,     input, wanted,
                                                  isSet,    fieldOfView, aspect};
                            put(negotiator, request);
                            expectSize(negotiator, request);
                            if (HasFatalFailure())
                                return;
                        }
                    }
                }
            }
        }
    }
}

TEST(NegotiatedSize, isDerivedOnceAndThenStands) {
    // What the first type derived is a size that is set for the second one.
    Negotiator negotiator;
    ASSERT_EQ(check(negotiator, {2048, 1536}), S_OK);
    EXPECT_EQ(outputSize(negotiator), (Size{1024, 768}));
    ASSERT_EQ(check(negotiator, {1280, 720}), S_OK);
    EXPECT_EQ(outputSize(negotiator), (Size{1024, 768}));

    // A panorama's height is made even by that.
    Negotiator panorama;
    panorama.owner.facts.viewType = ViewType::panoramaSingle;
    panorama.owner.facts.panoramaFieldOfViewDegrees = 200.0; // 1024 · 67.5 / 200 = 345.6
    ASSERT_EQ(check(panorama, {2048, 1536}), S_OK);
    EXPECT_EQ(outputSize(panorama), (Size{1024, 345}));
    ASSERT_EQ(check(panorama, {2048, 1536}), S_OK);
    EXPECT_EQ(outputSize(panorama), (Size{1024, 346}));
}

TEST(NegotiatedSize, isRefusedWhereNoPictureCanBe) {
    // A panorama so flat that no row is left.
    Negotiator flat;
    flat.owner.facts = {ViewType::panoramaSingle, 1e6, std::nullopt};
    EXPECT_EQ(check(flat, {2048, 1536}), typeIsNotAccepted);
    EXPECT_EQ(
        flat.log.takeLines(),
        std::vector<std::string>{"T:E:[7] - InternalCheckInputType - Invalid output resolution: 1024x0"});
    EXPECT_EQ(outputSize(flat), (Size{0, 0})); // as it was, so that better properties help
    EXPECT_EQ(flat.owner.takeCalls(), (std::vector<std::string>{"input", "release"}));
    flat.owner.facts.panoramaFieldOfViewDegrees = 180.0;
    EXPECT_EQ(check(flat, {2048, 1536}), S_OK);
    EXPECT_EQ(outputSize(flat), (Size{1024, 384}));

    // One negative side is a size that is set, and far too large.
    Negotiator negative;
    negative.settings.outputWidth = static_cast<std::uint32_t>(-5);
    negative.settings.outputHeight = 600;
    negative.settings.isOutputSizeSet = true;
    EXPECT_EQ(check(negative, {2048, 1536}), typeIsNotAccepted);

    Negotiator wide;
    wide.owner.facts.viewType = ViewType::custom;
    for (const float aspect : {1e30F, std::numeric_limits<float>::infinity()}) {
        wide.owner.facts.customAspect = aspect;
        EXPECT_EQ(check(wide, {2048, 1536}), typeIsNotAccepted) << aspect;
    }
    wide.owner.facts.customAspect = std::numeric_limits<float>::quiet_NaN(); // as if there were none
    EXPECT_EQ(check(wide, {2048, 1536}), S_OK);
    EXPECT_EQ(outputSize(wide), (Size{2048, 1536}));
}

} // namespace
} // namespace tarvo::transform
