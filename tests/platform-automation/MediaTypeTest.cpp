#include "platform/InterfaceTypes.h"
#include "tests/platform-automation/CountedObject.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tarvo::platform {
namespace {

TEST(MediaType, beginsEmpty) {
    DMO_MEDIA_TYPE type;
    std::memset(&type, 0xCD, sizeof type);
    ASSERT_EQ(MoInitMediaType(&type, 0), S_OK);
    EXPECT_EQ(type.majortype, GUID_NULL);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.cbFormat, 0U);
    EXPECT_EQ(MoFreeMediaType(&type), S_OK);
}

TEST(MediaType, beginsWithRoomForAFormat) {
    DMO_MEDIA_TYPE type;
    ASSERT_EQ(MoInitMediaType(&type, 7), S_OK);
    EXPECT_EQ(type.cbFormat, 7U);
    ASSERT_NE(type.pbFormat, nullptr);
    std::memset(type.pbFormat, 1, 7);
    EXPECT_EQ(MoFreeMediaType(&type), S_OK);
    EXPECT_EQ(type.pbFormat, nullptr);
}

TEST(MediaType, isCopiedWithItsFormatAndReference) {
    CCountedObject object;
    DMO_MEDIA_TYPE type;
    ASSERT_EQ(MoInitMediaType(&type, 4), S_OK);
    std::memcpy(type.pbFormat, "YV12", 4);
    type.majortype = __uuidof(IUnknown);
    type.lSampleSize = 42;
    object.AddRef();
    type.pUnk = &object;

    DMO_MEDIA_TYPE copy;
    ASSERT_EQ(MoCopyMediaType(&copy, &type), S_OK);
    EXPECT_EQ(copy.majortype, __uuidof(IUnknown));
    EXPECT_EQ(copy.lSampleSize, 42U);
    EXPECT_EQ(object.references(), 2U);
    ASSERT_NE(copy.pbFormat, type.pbFormat);
    ASSERT_EQ(copy.cbFormat, 4U);
    EXPECT_EQ(std::memcmp(copy.pbFormat, "YV12", 4), 0);

    EXPECT_EQ(MoFreeMediaType(&copy), S_OK);
    EXPECT_EQ(copy.pUnk, nullptr);
    EXPECT_EQ(object.references(), 1U);
    EXPECT_EQ(std::memcmp(type.pbFormat, "YV12", 4), 0);
    EXPECT_EQ(MoFreeMediaType(&type), S_OK);
    EXPECT_EQ(object.references(), 0U);
}

TEST(MediaType, isMadeAndDuplicatedOnItsOwn) {
    DMO_MEDIA_TYPE* type = nullptr;
    ASSERT_EQ(MoCreateMediaType(&type, 3), S_OK);
    ASSERT_NE(type, nullptr);
    std::memcpy(type->pbFormat, "abc", 3);
    DMO_MEDIA_TYPE* copy = nullptr;
    ASSERT_EQ(MoDuplicateMediaType(&copy, type), S_OK);
    EXPECT_EQ(MoDeleteMediaType(type), S_OK);
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->cbFormat, 3U);
    EXPECT_EQ(std::memcmp(copy->pbFormat, "abc", 3), 0);
    EXPECT_EQ(MoDeleteMediaType(copy), S_OK);
}

TEST(MediaType, refusesNull) {
    DMO_MEDIA_TYPE type{};
    EXPECT_EQ(MoInitMediaType(nullptr, 0), E_POINTER);
    EXPECT_EQ(MoFreeMediaType(nullptr), E_POINTER);
    EXPECT_EQ(MoCopyMediaType(nullptr, &type), E_POINTER);
    EXPECT_EQ(MoCopyMediaType(&type, nullptr), E_POINTER);
    EXPECT_EQ(MoCreateMediaType(nullptr, 0), E_POINTER);
    EXPECT_EQ(MoDuplicateMediaType(nullptr, &type), E_POINTER);
}

} // namespace
} // namespace tarvo::platform
