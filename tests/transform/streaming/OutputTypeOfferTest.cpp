#include "transform/streaming/OutputTypeOffer.h"

#include "com/MediaType.h"
#include "tests/transform/streaming/StreamFakes.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace tarvo::transform {
namespace {

/// Bytes as they lie in memory, least significant first.
class CBytes {
public:
    CBytes& add(std::uint64_t value, int count) {
        for (int i = 0; i < count; ++i)
            m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return *this;
    }
    CBytes& words(std::initializer_list<std::uint32_t> values) {
        for (const std::uint32_t value : values)
            add(value, 4);
        return *this;
    }
    const std::vector<std::uint8_t>& get() const { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
};

struct Offered {
    std::uint32_t width, height;
    std::uint64_t ticks;
    std::uint32_t aspectX, aspectY; ///< 0: the first kind of block, which has none
    std::uint16_t bits;
    std::uint32_t compression, frameBytes;
};

std::vector<std::uint8_t> expectedBlock(const Offered& offered) {
    CBytes block;
    block.words({0, 0, 0, 0});                          // rcSource
    block.words({0, 0, offered.width, offered.height}); // rcTarget
    block.words({0, 0}).add(offered.ticks, 8);          // bit rates, AvgTimePerFrame
    if (offered.aspectX != 0) // interlacing, copy protection, aspect, control, reserved
        block.words({0, 0, offered.aspectX, offered.aspectY, 0, 0});
    block.words({40, offered.width, offered.height}).add(1, 2).add(offered.bits, 2);
    block.words({offered.compression, offered.frameBytes, 0, 0, 0, 0});
    return block.get();
}

void expectType(const DMO_MEDIA_TYPE& type, const GUID& subtype, const Offered& offered) {
    EXPECT_TRUE(type.majortype == MEDIATYPE_Video);
    EXPECT_TRUE(type.subtype == subtype);
    EXPECT_EQ(type.bFixedSizeSamples, TRUE);
    EXPECT_EQ(type.bTemporalCompression, FALSE);
    EXPECT_EQ(type.lSampleSize, offered.frameBytes);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_TRUE(type.formattype == (offered.aspectX != 0 ? FORMAT_VideoInfo2 : FORMAT_VideoInfo));
    ASSERT_NE(type.pbFormat, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(type.pbFormat, type.pbFormat + type.cbFormat),
              expectedBlock(offered));
}

constexpr std::uint32_t yv12Code = 0x32315659;

TEST(OutputTypeOffer, isByteForByteAsHostsKnowIt) {
    Negotiator negotiator;
    const com::CMediaType input = yv12Input(2048, 1536, 400'000).make();
    ASSERT_EQ(negotiator.types.SetInputType(0, &input.get(), 0), S_OK);
    const std::uint32_t yv12Bytes = 1024 * 768 * 3 / 2;
    const std::uint32_t rgbBytes = 1024 * 768 * 4;
    const std::vector<Offered> expected{{1024, 768, 400'000, 4, 3, 12, yv12Code, yv12Bytes},
                                        {1024, 768, 400'000, 4, 3, 32, 0, rgbBytes},
                                        {1024, 768, 400'000, 0, 0, 12, yv12Code, yv12Bytes},
                                        {1024, 768, 400'000, 0, 0, 32, 0, rgbBytes}};
    for (DWORD i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        DMO_MEDIA_TYPE type{};
        ASSERT_EQ(negotiator.types.GetOutputType(0, i, &type), S_OK);
        com::CMediaType owned;
        owned.attach(type);
        expectType(type, i % 2 == 0 ? MEDIASUBTYPE_YV12 : MEDIASUBTYPE_RGB32, expected[i]);
    }
}

TEST(OutputTypeOffer, takesTheOutputRateBeforeTheInputs) {
    const auto ticksAt = [](double outputRate, std::int64_t inputTicks) {
        Negotiator negotiator;
        negotiator.settings.outputFrameRate = outputRate;
        EXPECT_EQ(negotiator.checkInput(yv12Input(640, 480, inputTicks)), S_OK);
        DMO_MEDIA_TYPE type{};
        EXPECT_EQ(negotiator.negotiation.offerOutputType(2, true, &type), S_OK);
        com::CMediaType owned;
        owned.attach(type);
        const auto* header = owned.format<VIDEOINFOHEADER>(FORMAT_VideoInfo);
        return header != nullptr ? header->AvgTimePerFrame : -1;
    };
    EXPECT_EQ(ticksAt(0.0, 400'000), 400'000);
    EXPECT_EQ(ticksAt(60.0, 400'000), 166'666);
    EXPECT_EQ(ticksAt(0.0, 0), 0);
    EXPECT_EQ(ticksAt(0.0, -5), 0);
    EXPECT_EQ(ticksAt(3e7, 400'000), 0);
    EXPECT_EQ(ticksAt(std::numeric_limits<double>::quiet_NaN(), 400'000), 0);
    EXPECT_EQ(ticksAt(std::numeric_limits<double>::infinity(), 400'000), 0);
    EXPECT_EQ(ticksAt(1e-300, 400'000), std::numeric_limits<std::int64_t>::max());
}

TEST(OutputTypeOffer, reducesTheAspectBySmallPrimesOnly) {
    EXPECT_EQ(reducedAspect({1024, 768}), (AspectRatio{4, 3}));
    EXPECT_EQ(reducedAspect({1920, 1080}), (AspectRatio{16, 9}));
    EXPECT_EQ(reducedAspect({2048, 1152}), (AspectRatio{16, 9}));
    EXPECT_EQ(reducedAspect({46, 92}), (AspectRatio{23, 46})); // 23 is no prime of the list
    EXPECT_EQ(reducedAspect({0, 0}), (AspectRatio{0, 0}));
    EXPECT_EQ(reducedAspect({0xFFFFFFFEU, 0xFFFFFFFEU}), (AspectRatio{0x7FFFFFFFU, 0x7FFFFFFFU}));
    for (std::uint32_t x = 1; x <= 300; ++x) {
        for (std::uint32_t y = 1; y <= 300; ++y) {
            // The largest common divisor, without its prime factors above 19.
            std::uint32_t divisor = std::gcd(x, y);
            for (std::uint32_t prime = 23; prime <= divisor; ++prime) {
                bool isPrime = true;
                for (std::uint32_t factor = 2; factor * factor <= prime; ++factor)
                    isPrime = isPrime && prime % factor != 0;
                while (isPrime && divisor % prime == 0)
                    divisor /= prime;
            }
            ASSERT_EQ(reducedAspect({x, y}), (AspectRatio{x / divisor, y / divisor})) << x << ':' << y;
        }
    }
}

TEST(OutputTypeOffer, neverClaimsASizeThatTheFieldCannotHold) {
    DMO_MEDIA_TYPE type{};
    ASSERT_EQ(makeOutputType(outputFormats()[1], 0x7FFFFFFF, 0x7FFFFFFF, 0, true, type), S_OK);
    com::CMediaType owned;
    owned.attach(type);
    const auto* header = owned.format<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->bmiHeader.biSizeImage, 0xFFFFFFFFU);
    EXPECT_EQ(type.lSampleSize, 0xFFFFFFFFU);
}

} // namespace
} // namespace tarvo::transform
