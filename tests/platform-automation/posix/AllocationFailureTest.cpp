// Every allocation of the native implementation fails in turn: the linker leads its calls here.

#include "platform/InterfaceTypes.h"
#include "tests/platform-automation/CountedObject.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

namespace {

// Allocations that still succeed; negative: all of them.
thread_local int allocationsLeft = -1;

bool mayAllocate() {
    if (allocationsLeft < 0)
        return true;
    if (allocationsLeft == 0)
        return false;
    --allocationsLeft;
    return true;
}

} // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return mayAllocate() ? __real_malloc(size) : nullptr;
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return mayAllocate() ? __real_calloc(count, size) : nullptr;
}
void* __wrap_realloc(void* memory, std::size_t size) {
    return mayAllocate() ? __real_realloc(memory, size) : nullptr;
}
}

namespace tarvo::platform {
namespace {

/// Runs `attempt`, which says whether it succeeded, with one more allocation granted each time until it does;
/// the number of attempts that failed.
template<class Attempt>
int failuresUntilSuccess(Attempt&& attempt) {
    for (int granted = 0; granted < 100; ++granted) {
        allocationsLeft = granted;
        const bool succeeded = attempt();
        allocationsLeft = -1;
        if (succeeded)
            return granted;
    }
    ADD_FAILURE() << "never succeeds";
    return -1;
}

TEST(AllocationFailure, ofTextsGivesNull) {
    EXPECT_EQ(failuresUntilSuccess([] {
                  BSTR text = SysAllocString(OLESTR("text"));
                  SysFreeString(text);
                  return text != nullptr;
              }),
              1);
}

TEST(AllocationFailure, leavesTheTextThatWasToBeReplaced) {
    BSTR text = SysAllocString(OLESTR("old"));
    allocationsLeft = 0;
    EXPECT_EQ(SysReAllocString(&text, OLESTR("the new one")), FALSE);
    EXPECT_EQ(SysReAllocStringLen(&text, OLESTR("the new one"), 11), FALSE);
    EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 1000), FALSE);
    allocationsLeft = -1;
    EXPECT_EQ(std::basic_string<OLECHAR>(text), OLESTR("old"));
    SysFreeString(text);
}

TEST(AllocationFailure, ofArraysGivesNull) {
    EXPECT_EQ(failuresUntilSuccess([] {
                  SAFEARRAY* array = SafeArrayCreateVector(VT_R8, 0, 3);
                  SafeArrayDestroy(array);
                  return array != nullptr;
              }),
              2);
}

TEST(AllocationFailure, undoesTheCopyOfAnArray) {
    CCountedObject object;
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    for (LONG i = 0; i < 3; ++i) {
        VARIANT value{};
        value.vt = i == 1 ? VT_UNKNOWN : VT_BSTR;
        if (i == 1) {
            value.punkVal = &object;
            object.AddRef();
        } else {
            value.bstrVal = SysAllocString(OLESTR("element"));
        }
        ASSERT_EQ(SafeArrayPutElement(array, &i, &value), S_OK);
        VariantClear(&value);
    }
    EXPECT_EQ(object.references(), 1U);
    EXPECT_EQ(failuresUntilSuccess([&] {
                  SAFEARRAY* copy = nullptr;
                  const HRESULT result = SafeArrayCopy(array, &copy);
                  if (SUCCEEDED(result)) {
                      EXPECT_EQ(object.references(), 2U);
                      SafeArrayDestroy(copy);
                      return true;
                  }
                  EXPECT_EQ(result, E_OUTOFMEMORY);
                  EXPECT_EQ(copy, nullptr);
                  EXPECT_EQ(object.references(), 1U);
                  return false;
              }),
              4)
        << "descriptor, data and two texts";
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.references(), 0U);
}

TEST(AllocationFailure, keepsTheElementThatWasToBeReplaced) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 1);
    BSTR text = SysAllocString(OLESTR("old"));
    LONG index = 0;
    ASSERT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    allocationsLeft = 0;
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), E_OUTOFMEMORY);
    BSTR found = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &found), E_OUTOFMEMORY);
    allocationsLeft = -1;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &found), S_OK);
    EXPECT_EQ(std::basic_string<OLECHAR>(found), OLESTR("old"));
    SysFreeString(found);
    SysFreeString(text);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(AllocationFailure, leavesTheTargetOfACopyEmpty) {
    VARIANT source{};
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocString(OLESTR("text"));
    VARIANT target{};
    allocationsLeft = 0;
    EXPECT_EQ(VariantCopy(&target, &source), E_OUTOFMEMORY);
    EXPECT_EQ(target.vt, VT_EMPTY);
    EXPECT_EQ(VariantChangeType(&target, &source, 0, VT_BSTR), E_OUTOFMEMORY);
    EXPECT_EQ(target.vt, VT_EMPTY);
    allocationsLeft = -1;
    VariantClear(&source);
}

TEST(AllocationFailure, ofMediaTypesLeavesNothingToFree) {
    CCountedObject object;
    DMO_MEDIA_TYPE type;
    ASSERT_EQ(MoInitMediaType(&type, 8), S_OK);
    std::memset(type.pbFormat, 0, 8);
    object.AddRef();
    type.pUnk = &object;
    EXPECT_EQ(failuresUntilSuccess([&] {
                  DMO_MEDIA_TYPE* copy = nullptr;
                  const HRESULT result = MoDuplicateMediaType(&copy, &type);
                  if (FAILED(result)) {
                      EXPECT_EQ(result, E_OUTOFMEMORY);
                      EXPECT_EQ(copy, nullptr);
                      EXPECT_EQ(object.references(), 1U);
                      return false;
                  }
                  return SUCCEEDED(MoDeleteMediaType(copy));
              }),
              2);
    allocationsLeft = 0;
    DMO_MEDIA_TYPE copy;
    EXPECT_EQ(MoCopyMediaType(&copy, &type), E_OUTOFMEMORY);
    EXPECT_EQ(copy.pbFormat, nullptr);
    EXPECT_EQ(copy.pUnk, nullptr);
    EXPECT_EQ(MoInitMediaType(&copy, 8), E_OUTOFMEMORY);
    allocationsLeft = -1;
    EXPECT_EQ(MoFreeMediaType(&type), S_OK);
    EXPECT_EQ(object.references(), 0U);
}

} // namespace
} // namespace tarvo::platform
