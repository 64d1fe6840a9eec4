#include "com/ClassFactory.h"

#include "com/ModuleCount.h"
#include "tests/com/FailingNew.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <array>

namespace tarvo::com {
namespace {

constexpr CLSID sampleClass = {0x11111111, 0, 0, {}};
constexpr CLSID extendedClass = {0x22222222, 0, 0, {}};
constexpr CLSID unknownClass = {0x33333333, 0, 0, {}};
constexpr std::array<ClassEntry, 2> classMap{
    {{sampleClass, &createInstance<CSample>}, {extendedClass, &createInstance<CExtended>}}};

ComPtr<IClassFactory> factoryOf(const CLSID& id) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(getClassObject(classMap, id, __uuidof(IClassFactory), factory.putVoid()), S_OK);
    return factory;
}

TEST(ClassMap, findsItsClassesAndNoOther) {
    EXPECT_TRUE(factoryOf(sampleClass));
    EXPECT_TRUE(factoryOf(extendedClass));
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(getClassObject(classMap, unknownClass, __uuidof(IClassFactory), &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(getClassObject({}, sampleClass, __uuidof(IClassFactory), &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(moduleCount().count(), 0);
}

TEST(ClassMap, needsAPlaceForTheAnswer) {
    EXPECT_EQ(getClassObject(classMap, sampleClass, __uuidof(IClassFactory), nullptr), E_POINTER);
}

TEST(ClassMap, survivesMissingMemory) {
    int somewhere = 0;
    void* object = &somewhere;
    const CFailingNew failing(0);
    EXPECT_EQ(getClassObject(classMap, sampleClass, __uuidof(IClassFactory), &object), E_OUTOFMEMORY);
    EXPECT_EQ(object, nullptr);
}

TEST(ClassFactory, answersToIClassFactory) {
    const ComPtr<IClassFactory> factory = factoryOf(sampleClass);
    EXPECT_EQ(answerFor<IClassFactory>(factory.get()), factory.get());
    EXPECT_NE(answerFor<IUnknown>(factory.get()), nullptr);
    EXPECT_EQ(answerFor<IPersist>(factory.get()), nullptr);
    EXPECT_EQ(references(factory.get()), 1U);
    void* object = nullptr;
    EXPECT_EQ(getClassObject(classMap, sampleClass, __uuidof(IPersist), &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

TEST(ClassFactory, makesObjects) {
    const ComPtr<IClassFactory> factory = factoryOf(extendedClass);
    ComPtr<ISupportErrorInfo> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(ISupportErrorInfo), object.putVoid()), S_OK);
    EXPECT_EQ(references(object.get()), 1U);
    EXPECT_EQ(CLiving::count(), 1);
    object.reset();
    EXPECT_EQ(CLiving::count(), 0);
    void* other = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IDispatch), &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
}

TEST(ClassFactory, makesPartsOfOtherObjects) {
    const ComPtr<CExtended> outer = makeObject<CExtended>();
    ComPtr<IUnknown> inner;
    EXPECT_EQ(factoryOf(sampleClass)
                  ->CreateInstance(outer->controllingUnknown(), __uuidof(IUnknown), inner.putVoid()),
              S_OK);
    EXPECT_EQ(references(inner.get()), 1U);
    EXPECT_EQ(references(outer->controllingUnknown()), 1U) << "the part does not hold the whole";
    inner.reset();
    EXPECT_EQ(CLiving::count(), 1);

    void* object = nullptr;
    EXPECT_EQ(
        factoryOf(sampleClass)->CreateInstance(outer->controllingUnknown(), __uuidof(IPersist), &object),
        CLASS_E_NOAGGREGATION);
    EXPECT_EQ(
        factoryOf(extendedClass)->CreateInstance(outer->controllingUnknown(), __uuidof(IUnknown), &object),
        CLASS_E_NOAGGREGATION);
}

TEST(ClassFactory, countsForTheModule) {
    ComPtr<IClassFactory> factory = factoryOf(sampleClass);
    EXPECT_EQ(moduleCount().count(), 1) << "the factory itself";
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(moduleCount().count(), 3);
    factory.reset();
    EXPECT_EQ(moduleCount().canUnload(), S_FALSE) << "locks outlive the factory";
    factory = factoryOf(sampleClass);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory.reset();
    EXPECT_EQ(moduleCount().canUnload(), S_OK);
}

TEST(ModuleCount, unlockWithoutLockIsRefusedAndUnloadsNothing) {
    CModuleCount count;
    count.addObject();
    EXPECT_FALSE(count.unlockServer());
    EXPECT_EQ(count.canUnload(), S_FALSE);
    count.lockServer();
    count.removeObject();
    EXPECT_EQ(count.canUnload(), S_FALSE);
    EXPECT_TRUE(count.unlockServer());
    EXPECT_EQ(count.canUnload(), S_OK);
    EXPECT_FALSE(count.unlockServer());
    EXPECT_EQ(count.canUnload(), S_OK);
}

} // namespace
} // namespace tarvo::com
