#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace tarvo::platform {
namespace {

using Text = std::basic_string<OLECHAR>;

constexpr GUID sample = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
const Text sampleText = OLESTR("{00112233-4455-6677-8899-AABBCCDDEEFF}");

TEST(GuidText, isWrittenInCapitals) {
    std::array<OLECHAR, 40> text{};
    EXPECT_EQ(StringFromGUID2(sample, text.data(), 40), 39) << "characters with the terminator";
    EXPECT_EQ(Text(text.data()), sampleText);
}

TEST(GuidText, needsRoomForItsTerminator) {
    std::array<OLECHAR, 39> text{};
    EXPECT_EQ(StringFromGUID2(sample, text.data(), 38), 0);
    EXPECT_EQ(StringFromGUID2(sample, text.data(), 39), 39);
    EXPECT_EQ(Text(text.data()), sampleText);
}

TEST(GuidText, isReadInBothCases) {
    GUID guid{};
    EXPECT_EQ(IIDFromString(sampleText.c_str(), &guid), S_OK);
    EXPECT_EQ(guid, sample);
    guid = {};
    EXPECT_EQ(CLSIDFromString(OLESTR("{00112233-4455-6677-8899-aabbccddeeff}"), &guid), S_OK);
    EXPECT_EQ(guid, sample);
}

TEST(GuidText, ofNoTextIsTheNullOne) {
    GUID guid = sample;
    EXPECT_EQ(IIDFromString(nullptr, &guid), S_OK);
    EXPECT_EQ(guid, GUID_NULL);
    guid = sample;
    EXPECT_EQ(CLSIDFromString(nullptr, &guid), S_OK);
    EXPECT_EQ(guid, GUID_NULL);
}

TEST(GuidText, ofTheWrongShapeIsRefused) {
    GUID guid{};
    EXPECT_EQ(IIDFromString(OLESTR("{0011}"), &guid), E_INVALIDARG);
    EXPECT_EQ(IIDFromString(OLESTR("(00112233-4455-6677-8899-AABBCCDDEEFF)"), &guid), CO_E_IIDSTRING);
    EXPECT_EQ(IIDFromString(OLESTR("{0011223G-4455-6677-8899-AABBCCDDEEFF}"), &guid), CO_E_IIDSTRING);
    EXPECT_EQ(IIDFromString(OLESTR("{00112233+4455-6677-8899-AABBCCDDEEFF}"), &guid), CO_E_IIDSTRING);
    EXPECT_EQ(CLSIDFromString(OLESTR("{00112233-4455"), &guid), CO_E_CLASSSTRING);
}

} // namespace
} // namespace tarvo::platform
