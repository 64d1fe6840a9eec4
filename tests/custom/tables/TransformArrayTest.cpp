#include "com/SafeArray.h"
#include "custom/tables/CustomTransformData.h"
#include "tests/custom/tables/Blob.h"
#include "tests/custom/tables/LoggedLines.h"
#include "tests/custom/tables/Receiver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace tarvo::custom {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// An array of the bytes whose first index is `lowerBound`.
com::CSafeArray arrayOf(const std::vector<std::byte>& bytes, std::int32_t lowerBound = 0) {
    com::CSafeArray array =
        com::CSafeArray::vector(VT_UI1, static_cast<std::uint32_t>(bytes.size()), lowerBound);
    if (array && !bytes.empty())
        std::memcpy(array.get()->pvData, bytes.data(), bytes.size());
    return array;
}

/// The same, made so that its data are a block of memory of their own; those of a vector need not be.
com::CSafeArray separateArrayOf(const std::vector<std::byte>& bytes) {
    SAFEARRAYBOUND bound{};
    bound.cElements = static_cast<ULONG>(bytes.size());
    com::CSafeArray array;
    array.attach(SafeArrayCreate(VT_UI1, 1, &bound));
    if (array)
        std::memcpy(array.get()->pvData, bytes.data(), bytes.size());
    return array;
}

const std::vector<std::byte> wholeData = bytesOfWords({1, 0, 1, 2, 10, 20, 30, 40, 50, 60});

class TransformArray : public testing::Test {
protected:
    HRESULT set(SAFEARRAY* array) {
        receiver.dimensions.reset();
        return SetCustomTransformData(receiver, array, 0, lines.objectLog());
    }

    CLoggedLines lines;
    CReceiver receiver;
};

TEST_F(TransformArray, isReadAndStaysAsItWas) {
    for (const std::int32_t lowerBound : {0, 1, -7, 2147483600}) {
        com::CSafeArray array = arrayOf(wholeData, lowerBound);
        ULONG locks = 0;
        receiver.meanwhile = [&] { locks = array.get()->cLocks; };
        EXPECT_EQ(set(array.get()), S_FALSE);
        EXPECT_GT(locks, 0U) << "is locked while it is read";
        EXPECT_THAT(lines.take(), ElementsAre(":_:tables: 1, block size: 0 width: 1, height 2 (0 kB)\n"));
        EXPECT_EQ(receiver.dimensions, (TableDimensions{1, 1, 2}));
        EXPECT_EQ(receiver.entries, bytesOfWords({10, 20, 30, 40, 50, 60}));
        EXPECT_EQ(array.get()->cLocks, 0U);
        EXPECT_EQ(std::memcmp(array.get()->pvData, wholeData.data(), wholeData.size()), 0);
        EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
    }
}

TEST_F(TransformArray, ofEveryLengthIsJudgedWithoutLookingBeyondIt) {
    for (std::size_t length = 0; length <= 64; ++length) {
        SCOPED_TRACE(length);
        com::CSafeArray array = arrayOf(std::vector<std::byte>(length, std::byte{0xFF}));
        const HRESULT result = set(array.get());
        if (length < 6) {
            EXPECT_EQ(result, E_INVALIDARG);
            EXPECT_THAT(lines.take(), ElementsAre(":E:Not enough data\n"));
        } else if (length < 8) {
            EXPECT_EQ(result, E_INVALIDARG);
            EXPECT_THAT(lines.take(),
                        ElementsAre(":_:tables: 65535, block size: 65535 width: 65535, height 0 (0 kB)\n",
                                    ":E:Invalid data size\n"));
        } else {
            EXPECT_EQ(result, S_FALSE);
            EXPECT_EQ(receiver.entries.size(), length - 8);
            EXPECT_EQ(lines.take().size(), 1U);
        }
        EXPECT_EQ(array.get()->cLocks, 0U);
        EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
    }
}

TEST_F(TransformArray, isRefusedUnlessItIsARowOfUnsignedBytes) {
    EXPECT_EQ(set(nullptr), E_INVALIDARG);
    for (const VARTYPE type : {VT_I1, VT_UI2, VT_I4, VT_VARIANT, VT_BSTR, VT_UNKNOWN, VT_DISPATCH}) {
        const com::CSafeArray array = com::CSafeArray::vector(type, 40);
        EXPECT_EQ(set(array.get()), E_INVALIDARG) << type;
        EXPECT_EQ(array.get()->cLocks, 0U);
    }
    std::array<SAFEARRAYBOUND, 2> bounds{};
    for (SAFEARRAYBOUND& bound : bounds)
        bound.cElements = 20;
    com::CSafeArray square;
    square.attach(SafeArrayCreate(VT_UI1, 2, bounds.data()));
    ASSERT_TRUE(square);
    EXPECT_EQ(set(square.get()), E_INVALIDARG);
    EXPECT_FALSE(receiver.dimensions.has_value());
    EXPECT_THAT(lines.take(), IsEmpty());
}

TEST_F(TransformArray, isRefusedWhenItSaysThatItHoldsInterfaces) {
    const com::CSafeArray array = arrayOf(wholeData);
    const USHORT features = array.get()->fFeatures;
    for (const int flag : {FADF_HAVEIID, FADF_UNKNOWN, FADF_DISPATCH}) {
        array.get()->fFeatures = static_cast<USHORT>(features | flag);
        EXPECT_EQ(set(array.get()), E_INVALIDARG);
        array.get()->fFeatures = features;
    }
    EXPECT_THAT(lines.take(), IsEmpty());
    EXPECT_FALSE(receiver.dimensions.has_value());
}

TEST_F(TransformArray, thatIsTooShortLosesItsDataAndCanStillBeDestroyed) {
    const std::vector<std::byte> five(5);
    EXPECT_EQ(separateArrayOf(five).get()->rgsabound[0].cElements, 5U);
    for (const bool isVector : {false, true}) {
        com::CSafeArray array = isVector ? arrayOf(five) : separateArrayOf(five);
        EXPECT_EQ(set(array.get()), E_INVALIDARG);
        if (!isVector) {
            EXPECT_EQ(array.get()->pvData, nullptr);
        }
        LONG last = 0;
        EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &last), S_OK);
        EXPECT_EQ(last, -1) << "there is no element left to look at";
        EXPECT_EQ(set(array.get()), E_INVALIDARG) << "a second time does no harm";
        EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
    }
}

TEST_F(TransformArray, thatIsTooShortKeepsDataThatAreLockedOrNotItsOwn) {
    com::CSafeArray array = arrayOf(bytesOfWords({7, 8}));
    ASSERT_EQ(SafeArrayLock(array.get()), S_OK);
    EXPECT_EQ(set(array.get()), E_INVALIDARG);
    EXPECT_EQ(array.get()->cLocks, 1U);
    EXPECT_EQ(array.get()->rgsabound[0].cElements, 4U);
    EXPECT_EQ(std::memcmp(array.get()->pvData, bytesOfWords({7, 8}).data(), 4), 0);
    ASSERT_EQ(SafeArrayUnlock(array.get()), S_OK);

    const USHORT features = array.get()->fFeatures;
    for (const int flag : {FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {
        array.get()->fFeatures = static_cast<USHORT>(features | flag);
        EXPECT_EQ(set(array.get()), E_INVALIDARG);
        array.get()->fFeatures = features;
        EXPECT_EQ(array.get()->rgsabound[0].cElements, 4U);
        EXPECT_EQ(std::memcmp(array.get()->pvData, bytesOfWords({7, 8}).data(), 4), 0);
    }
    EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
}

TEST_F(TransformArray, thatCannotBeLockedOnceMoreFails) {
    com::CSafeArray array = arrayOf(wholeData);
    // 65535 locks are the most; reading takes two.
    for (const ULONG locks : {65535U, 65534U}) {
        array.get()->cLocks = locks;
        EXPECT_EQ(set(array.get()), E_FAIL);
        EXPECT_THAT(lines.take(), ElementsAre(":E:Failed to access data\n"));
        EXPECT_EQ(array.get()->cLocks, locks);
        EXPECT_NE(array.get()->pvData, nullptr);
    }
    array.get()->cLocks = 65533;
    EXPECT_EQ(set(array.get()), S_FALSE);
    EXPECT_EQ(array.get()->cLocks, 65533U);
    array.get()->cLocks = 0;
    EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
}

TEST_F(TransformArray, withoutDataFails) {
    com::CSafeArray array = separateArrayOf(wholeData);
    ASSERT_EQ(SafeArrayDestroyData(array.get()), S_OK);
    EXPECT_EQ(set(array.get()), E_FAIL);
    EXPECT_THAT(lines.take(), ElementsAre(":E:Failed to access data\n"));
    EXPECT_FALSE(receiver.dimensions.has_value());
    EXPECT_EQ(array.get()->cLocks, 0U);
    EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
}

TEST_F(TransformArray, thatSomeoneElseUnlockedIsReported) {
    com::CSafeArray array = arrayOf(wholeData);
    receiver.meanwhile = [&] {
        while (SafeArrayUnlock(array.get()) == S_OK) {
        }
    };
    EXPECT_EQ(set(array.get()), S_FALSE) << "the tables have been taken all the same";
    EXPECT_THAT(lines.take(), ElementsAre(":_:tables: 1, block size: 0 width: 1, height 2 (0 kB)\n",
                                          ":E:Failed to unaccess data\n"));
    EXPECT_EQ(SafeArrayDestroy(array.detach()), S_OK);
}

} // namespace
} // namespace tarvo::custom
