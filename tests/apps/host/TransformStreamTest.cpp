#include "apps/host/TransformStream.h"

#include "apps/host/HostError.h"
#include "apps/host/Module.h"
#include "apps/host/TransformProperties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace tarvo::host {
namespace {

constexpr std::int32_t width = 64;
constexpr std::int32_t height = 48;

using Bytes = std::vector<std::byte>;

/// A picture in which every row and column differs from its neighbours; rows `stride` bytes apart, bytes
/// beside the pixels filled with others.
Bytes picture(std::size_t stride = 4 * width, bool isBottomUp = false) {
    Bytes bytes(stride * height, std::byte{0x5A});
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t row = isBottomUp ? height - 1 - y : y;
        for (std::size_t x = 0; x < width; ++x) {
            bytes[row * stride + 4 * x] = static_cast<std::byte>(x * 4);
            bytes[row * stride + 4 * x + 1] = static_cast<std::byte>(y * 5);
            bytes[row * stride + 4 * x + 2] = static_cast<std::byte>(x + y);
            bytes[row * stride + 4 * x + 3] = std::byte{255};
        }
    }
    return bytes;
}

/// The colours of a frame's pixels, top row first.
Bytes coloursOf(std::span<const std::byte> frame, std::size_t stride = 4 * width, bool isBottomUp = false) {
    Bytes colours;
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t row = isBottomUp ? height - 1 - y : y;
        for (std::size_t i = 0; i < 4 * width; ++i) {
            if (i % 4 != 3) {
                colours.push_back(frame[row * stride + i]);
            }
        }
    }
    return colours;
}

class HostStream : public testing::Test {
protected:
    void SetUp() override {
        VARIANT_BOOL isCapable = VARIANT_FALSE;
        ASSERT_EQ(m_transform->CheckDewarpingCapability(&isCapable), S_OK);
        if (isCapable == VARIANT_FALSE) {
            GTEST_SKIP() << "this machine cannot render";
        }
    }
    ~HostStream() override {
        m_stream.reset();
        m_transform.reset();
        EXPECT_TRUE(m_module.canUnload());
    }

    CTransformStream& stream() { return *m_stream; }

    /// The output has the input's size, so that what is not dewarped passes as it is.
    void negotiate(const VideoFormat& input, bool isBypassed = true) {
        TransformProperties properties;
        properties.outputWidth = width;
        properties.outputHeight = height;
        properties.isBypassed = isBypassed;
        putProperties(*m_transform, properties);
        stream().setInput(input);
    }

    CModule m_module{TARVO_PRODUCT_MODULE};
    com::ComPtr<IDewarpingTransform> m_transform = m_module.createTransform();
    std::optional<CTransformStream> m_stream{m_transform};
};

TEST_F(HostStream, passesPicturesInEveryOrientationAndStride) {
    const Bytes expected = coloursOf(picture());
    for (const std::uint32_t inputStride : {256U, 300U}) {
        for (const bool isInputBottomUp : {false, true}) {
            negotiate(makeVideoFormat(FramePixels::rgb32, width, isInputBottomUp ? height : -height, 400'000,
                                      inputStride));
            for (const std::uint32_t outputStride : {256U, 320U}) {
                for (const bool isOutputBottomUp : {false, true}) {
                    SCOPED_TRACE(testing::Message() << inputStride << isInputBottomUp << ' ' << outputStride
                                                    << isOutputBottomUp);
                    const VideoFormat output =
                        stream().setOutput(FramePixels::rgb32, isOutputBottomUp, outputStride);
                    EXPECT_EQ(output.frameBytes, outputStride * height);
                    EXPECT_EQ(output.height, isOutputBottomUp ? height : -height);
                    stream().putFrame(picture(inputStride, isInputBottomUp));
                    const auto frame = stream().nextFrame();
                    ASSERT_TRUE(frame);
                    ASSERT_EQ(frame->buffer->contents().size(), output.frameBytes);
                    EXPECT_EQ(coloursOf(frame->buffer->contents(), outputStride, isOutputBottomUp), expected);
                }
            }
            m_stream.reset();
            m_transform = m_module.createTransform();
            m_stream.emplace(m_transform);
        }
    }
}

TEST_F(HostStream, readsTimesAndFlags) {
    ASSERT_EQ(m_transform->put_OutputFrameRate(60.0), S_OK);
    negotiate(makeVideoFormat(FramePixels::rgb32, width, -height, 333'333));
    stream().setOutput(FramePixels::rgb32);
    EXPECT_FALSE(stream().nextFrame()) << "nothing went in";
    EXPECT_TRUE(stream().acceptsInput());
    stream().putFrame(picture(), {5'000'000, 333'333});
    EXPECT_FALSE(stream().acceptsInput());
    // 60 frames a second from 30: each lasts 10'000'000 / 60 = 166'666 ticks.
    const auto first = stream().nextFrame();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->time.start, 5'000'000);
    EXPECT_EQ(first->time.duration, 166'666);
    EXPECT_TRUE(first->isIncomplete);
    EXPECT_TRUE(stream().acceptsInput());
    const auto second = stream().nextFrame();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->time.start, 5'166'666);
    EXPECT_EQ(second->time.duration, 166'666);
    EXPECT_FALSE(second->isIncomplete);
    EXPECT_TRUE(std::ranges::equal(first->buffer->contents(), second->buffer->contents()));
    stream().flush();
    EXPECT_FALSE(stream().nextFrame()) << "flushing forgets the frame";
}

TEST_F(HostStream, leavesTimesOutThatNobodyKnows) {
    negotiate(makeVideoFormat(FramePixels::rgb32, width, -height));
    stream().setOutput(FramePixels::rgb32);
    stream().putFrame(picture());
    const auto frame = stream().nextFrame();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->time.start, std::nullopt);
    EXPECT_EQ(frame->time.duration, std::nullopt);
    EXPECT_FALSE(frame->isIncomplete);
}

TEST_F(HostStream, keepsGreysInEveryFormat) {
    // Without colour differences only luma is left, whose weight is one. But 128 of 255 lies half a step
    // above the middle, from which the conversions count: at their largest weights, 1.772 for blue and 0.344
    // + 0.714 for green, that is 0.89 steps up and 0.53 down.
    constexpr auto grey = std::byte{100};
    constexpr auto none = std::byte{128};
    for (const FramePixels pixels : {FramePixels::yv12, FramePixels::yuy2}) {
        negotiate(makeVideoFormat(pixels, width, height, 400'000));
        stream().setOutput(FramePixels::rgb32);
        Bytes input(makeVideoFormat(pixels, width, height).frameBytes, none);
        for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
            input[pixels == FramePixels::yv12 ? i : 2 * i] = grey;
        }
        stream().putFrame(input);
        const auto frame = stream().nextFrame();
        ASSERT_TRUE(frame);
        const Bytes colours = coloursOf(frame->buffer->contents());
        const auto [least, most] = std::ranges::minmax(colours);
        EXPECT_GE(least, std::byte{99});
        EXPECT_LE(most, std::byte{101});
        m_stream.reset();
        m_transform = m_module.createTransform();
        m_stream.emplace(m_transform);
    }
}

TEST_F(HostStream, namesTheStepThatIsRefused) {
    const auto expectFailure = [](HRESULT result, const char* text, auto&& step) {
        try {
            step();
            ADD_FAILURE() << "nothing failed";
        } catch (const HostError& error) {
            EXPECT_EQ(error.result(), result) << error.what();
            EXPECT_THAT(error.what(), testing::StartsWith(text));
        }
    };
    const auto refusedType = static_cast<HRESULT>(DMO_E_TYPE_NOT_ACCEPTED);
    expectFailure(refusedType, "setting the output type failed",
                  [&] { stream().setOutput(FramePixels::rgb32); });
    expectFailure(static_cast<HRESULT>(DMO_E_TYPE_NOT_SET), "opening the render device failed",
                  [&] { stream().allocate(); });
    expectFailure(static_cast<HRESULT>(DMO_E_TYPE_NOT_SET), "handing the frame in failed",
                  [&] { stream().putFrame(picture()); });
    VideoFormat empty = makeVideoFormat(FramePixels::rgb32, width, -height);
    empty.width = 0;
    expectFailure(refusedType, "setting the input type failed", [&] { stream().setInput(empty); });
    negotiate(makeVideoFormat(FramePixels::rgb32, width, -height));
    expectFailure(refusedType, "setting the output type failed",
                  [&] { stream().setOutput(FramePixels::yuy2); });
    stream().setOutput(FramePixels::rgb32);
    stream().putFrame(picture());
    expectFailure(static_cast<HRESULT>(DMO_E_NOTACCEPTING), "handing the frame in failed",
                  [&] { stream().putFrame(picture()); });
    EXPECT_TRUE(stream().nextFrame()) << "the one that was held is not lost";
}

} // namespace
} // namespace tarvo::host
