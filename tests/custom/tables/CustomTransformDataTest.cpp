#include "custom/tables/CustomTransformData.h"

#include "custom/tables/CustomTransformShader.h"
#include "tests/custom/tables/Blob.h"
#include "tests/custom/tables/LoggedLines.h"
#include "tests/custom/tables/Receiver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace tarvo::custom {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CustomTransformData : public testing::Test {
protected:
    HRESULT set(std::span<const std::byte> data, std::int32_t reserved = 0) {
        return SetCustomTransformData(receiver, data, reserved, lines.objectLog());
    }

    CLoggedLines lines;
    CReceiver receiver;
};

/// Two bytes a word from the left; what is missing of a word to the end of the data is 0.
std::string headerLine(std::span<const std::byte> data) {
    std::array<int, 4> words{};
    for (std::size_t i = 0; i < 4; ++i) {
        if (2 * i + 1 < data.size())
            words[i] = std::to_integer<int>(data[2 * i]) + 256 * std::to_integer<int>(data[2 * i + 1]);
    }
    return ":_:tables: " + std::to_string(words[0]) + ", block size: " + std::to_string(words[1]) +
           " width: " + std::to_string(words[2]) + ", height " + std::to_string(words[3]) + " (0 kB)\n";
}

/// Everything of a header that is nothing, something or as much as can be.
std::vector<std::array<std::uint16_t, 4>> headers() {
    const std::array<std::uint16_t, 5> values{0, 1, 2, 32768, 65535};
    std::vector<std::array<std::uint16_t, 4>> result;
    for (const std::uint16_t tables : values) {
        for (const std::uint16_t width : values) {
            for (const std::uint16_t height : values)
                result.push_back({tables, 4711, width, height});
        }
    }
    // 1300 x 2501 x 1321 entries are 2^32 + 4: 32 bits would keep four of them, 24 bytes.
    result.push_back({1300, 0, 2501, 1321});
    return result;
}

std::vector<std::byte> dataOf(const std::array<std::uint16_t, 4>& header, std::size_t length) {
    std::vector<std::byte> data = bytesOfWords({header.begin(), header.end()});
    while (data.size() < length)
        data.push_back(static_cast<std::byte>(data.size() * 37 + 11));
    data.resize(length);
    return data;
}

TEST_F(CustomTransformData, ofEveryLengthIsJudgedWithoutLookingBeyondIt) {
    for (const auto& header : headers()) {
        for (std::size_t length = 0; length <= 64; ++length) {
            SCOPED_TRACE(testing::PrintToString(header) + " of " + std::to_string(length));
            const CExactBlock block(dataOf(header, length));
            receiver.dimensions.reset();
            const HRESULT result = set(block.bytes());
            if (length < 6) {
                EXPECT_EQ(result, E_INVALIDARG);
                EXPECT_THAT(lines.take(), ElementsAre(":E:Not enough data\n"));
            } else if (length < 8) {
                EXPECT_EQ(result, E_INVALIDARG);
                EXPECT_THAT(lines.take(), ElementsAre(headerLine(block.bytes()), ":E:Invalid data size\n"));
            } else {
                EXPECT_EQ(result, S_FALSE);
                EXPECT_THAT(lines.take(), ElementsAre(headerLine(block.bytes())));
                ASSERT_TRUE(receiver.dimensions.has_value());
                EXPECT_EQ(*receiver.dimensions, (TableDimensions{header[0], header[2], header[3]}));
                EXPECT_TRUE(std::ranges::equal(receiver.entries, block.bytes().subspan(8)));
                continue;
            }
            EXPECT_FALSE(receiver.dimensions.has_value());
        }
    }
}

TEST_F(CustomTransformData, ofEveryLengthIsTakenOnlyInTheRightSize) {
    for (const auto& header : headers()) {
        for (std::size_t length = 8; length <= 64; ++length) {
            SCOPED_TRACE(testing::PrintToString(header) + " of " + std::to_string(length));
            const CExactBlock block(dataOf(header, length));
            CCustomTransformShader shader(lines.objectLog());
            const HRESULT result = SetCustomTransformData(shader, block.bytes(), 0, lines.objectLog());
            // What these headers ask for is either far beyond 64 bytes or small enough to count in a double.
            const double words = 3.0 * header[0] * header[2] * header[3];
            if (words == static_cast<double>((length - 8) / 2)) {
                EXPECT_EQ(result, S_FALSE) << "there is no device";
                EXPECT_THAT(lines.take(), ElementsAre(headerLine(block.bytes())));
                EXPECT_EQ(shader.tableAspect().has_value(), words > 0.0);
            } else {
                EXPECT_EQ(result, E_INVALIDARG);
                EXPECT_THAT(lines.take(), ElementsAre(headerLine(block.bytes()), ":E:Invalid data size\n"));
                EXPECT_FALSE(shader.tableAspect().has_value());
            }
        }
    }
}

TEST_F(CustomTransformData, thatWouldFitOnlyIn32BitsIsRefused) {
    CCustomTransformShader shader(lines.objectLog());
    const std::vector<std::pair<std::array<std::uint16_t, 4>, std::size_t>> cases{
        {{4, 0, 32768, 32768}, 8},          // 2^32 entries of 0 bytes
        {{1300, 0, 2501, 1321}, 8 + 4 * 6}, // 2^32 + 4 entries of 24 bytes
        {{65535, 0, 65535, 65535}, 64},     // more than any memory has
        {{65535, 65535, 65535, 65535}, 6},  // breaks off before the height
    };
    for (const auto& [header, length] : cases) {
        const CExactBlock block(dataOf(header, length));
        EXPECT_EQ(SetCustomTransformData(shader, block.bytes(), 0, lines.objectLog()), E_INVALIDARG);
        EXPECT_THAT(lines.take(), ElementsAre(headerLine(block.bytes()), ":E:Invalid data size\n"));
    }
}

TEST_F(CustomTransformData, isNotLookedAtWithAReservedArgument) {
    for (const std::int32_t reserved : {1, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(set({}, reserved), E_INVALIDARG);
        EXPECT_THAT(lines.take(), ElementsAre(":E:reserved argument must be zero!\n"));
        EXPECT_EQ(SetCustomTransformData(receiver, nullptr, reserved, lines.objectLog()), E_INVALIDARG);
        EXPECT_THAT(lines.take(), ElementsAre(":E:reserved argument must be zero!\n"));
    }
}

TEST_F(CustomTransformData, isLoggedWithItsThousandsOfBytes) {
    std::vector<std::byte> data = bytesOfWords({1, 6, 20, 16});
    data.resize(1999);
    set(data);
    EXPECT_THAT(lines.take(), ElementsAre(":_:tables: 1, block size: 6 width: 20, height 16 (1 kB)\n"));
    data.resize(2000);
    set(data);
    EXPECT_THAT(lines.take(), ElementsAre(":_:tables: 1, block size: 6 width: 20, height 16 (2 kB)\n"));
}

TEST_F(CustomTransformData, hasTheReceiversResult) {
    receiver.answer = E_OUTOFMEMORY;
    EXPECT_EQ(set(bytesOfWords({0, 0, 0, 0})), E_OUTOFMEMORY);
    receiver.answer = S_OK;
    EXPECT_EQ(set(bytesOfWords({0, 0, 0, 0})), S_OK);
}

} // namespace
} // namespace tarvo::custom
