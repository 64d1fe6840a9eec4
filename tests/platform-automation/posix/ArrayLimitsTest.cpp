// Sizes that do not fit the fields that hold them. Only the native implementation promises to notice all of
// them.

#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <array>

namespace tarvo::platform {
namespace {

TEST(ArrayLimits, refuseMoreBytesThanCanBeCounted) {
    EXPECT_EQ(SafeArrayCreateVector(VT_R8, 0, 0x20000000U), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0x7FFFFFFFU), nullptr);
    std::array<SAFEARRAYBOUND, 3> bounds{};
    for (SAFEARRAYBOUND& bound : bounds)
        bound.cElements = 0x10000;
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, bounds.data()), nullptr) << "2^32 bytes";
    EXPECT_EQ(SafeArrayCreate(VT_I4, 3, bounds.data()), nullptr);
}

TEST(ArrayLimits, refuseAnUpperBoundBeyondTheIndices) {
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 2147483647, 2), nullptr);
    SAFEARRAY* last = SafeArrayCreateVector(VT_UI1, 2147483647, 1);
    ASSERT_NE(last, nullptr);
    LONG limit = 0;
    EXPECT_EQ(SafeArrayGetUBound(last, 1, &limit), S_OK);
    EXPECT_EQ(limit, 2147483647);
    BYTE value = 3;
    EXPECT_EQ(SafeArrayPutElement(last, &limit, &value), S_OK);
    EXPECT_EQ(SafeArrayDestroy(last), S_OK);
}

TEST(ArrayLimits, refuseMoreDimensionsThanCanBeCounted) {
    std::array<SAFEARRAYBOUND, 2> bounds{};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 0x10000, bounds.data()), nullptr);
}

TEST(ArrayLimits, refuseTheLockAfterTheLast) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 1);
    ASSERT_NE(array, nullptr);
    for (int i = 0; i < 65535; ++i)
        ASSERT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    for (int i = 0; i < 65535; ++i)
        ASSERT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

} // namespace
} // namespace tarvo::platform
