#include "com/Object.h"
#include "tests/com/FailingNew.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace tarvo::com {
namespace {

TEST(Creation, givesOutTheInterfaceAskedForWithOneReference) {
    void* object = nullptr;
    ASSERT_EQ(createInstance<CSample>(nullptr, __uuidof(IPersist), &object), S_OK);
    auto* persist = static_cast<IPersist*>(object);
    EXPECT_EQ(references(persist), 1U);
    EXPECT_EQ(CLiving::count(), 1);
    EXPECT_EQ(persist->Release(), 0U);
    EXPECT_EQ(CLiving::count(), 0);
}

TEST(Creation, leavesNothingIfTheInterfaceIsMissing) {
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(createInstance<CSample>(nullptr, __uuidof(IDispatch), &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CLiving::count(), 0);
    EXPECT_EQ(moduleCount().count(), 0);
}

TEST(Creation, needsAPlaceForTheObject) {
    EXPECT_EQ(createInstance<CSample>(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(CLiving::count(), 0);
}

template<class Thrown>
class CFailing : public CObject<IObjectWithSite> {
public:
    CFailing() { throw Thrown(E_ACCESSDENIED); }
    STDMETHODIMP SetSite(IUnknown*) override { return S_OK; }
    STDMETHODIMP GetSite(REFIID, void**) override { return E_FAIL; }

private:
    CLiving m_living;
};

struct NoMemory : std::bad_alloc {
    explicit NoMemory(HRESULT) {}
};
struct SomeError : std::runtime_error {
    explicit SomeError(HRESULT) : std::runtime_error("some error") {}
};
struct NoStandardError {
    explicit NoStandardError(HRESULT) {}
};

template<class Thrown>
HRESULT resultOfThrowing() {
    int somewhere = 0;
    void* object = &somewhere;
    const HRESULT result = createInstance<CFailing<Thrown>>(nullptr, __uuidof(IUnknown), &object);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CLiving::count(), 0);
    EXPECT_EQ(moduleCount().count(), 0);
    return result;
}

TEST(Creation, turnsExceptionsIntoResults) {
    EXPECT_EQ(resultOfThrowing<NoMemory>(), E_OUTOFMEMORY);
    EXPECT_EQ(resultOfThrowing<CComError>(), E_ACCESSDENIED);
    EXPECT_EQ(resultOfThrowing<SomeError>(), E_FAIL);
    EXPECT_EQ(resultOfThrowing<NoStandardError>(), E_UNEXPECTED);
}

TEST(Creation, survivesEveryMissingAllocation) {
    const int failures = failuresUntilSuccess([](int granted) {
        void* object = nullptr;
        HRESULT result = S_OK;
        {
            const CFailingNew failing(granted);
            result = createInstance<COuter>(nullptr, __uuidof(IPersist), &object);
        }
        if (SUCCEEDED(result)) {
            EXPECT_EQ(static_cast<IPersist*>(object)->Release(), 0U);
            return true;
        }
        EXPECT_EQ(result, E_OUTOFMEMORY);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(CLiving::count(), 0);
        EXPECT_EQ(moduleCount().count(), 0);
        return false;
    });
    EXPECT_EQ(failures, 2) << "the outer and the inner object";
    EXPECT_EQ(CLiving::count(), 0);
}

} // namespace
} // namespace tarvo::com
