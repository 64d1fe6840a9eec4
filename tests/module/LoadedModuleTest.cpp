#include "tests/module/LoadedModule.h"

#include "com/Object.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using tests::CLoadedModule;

ULONG references(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

TEST(LoadedModule, makesObjectsOfItsClasses) {
    const CLoadedModule module;
    unsigned number = 1;
    for (const CLSID* id : {&CLSID_DewarpingTransform, &CLSID_AcceleratorFilter}) {
        com::ComPtr<IPersist> object;
        ASSERT_EQ(module.factoryOf(*id)->CreateInstance(nullptr, __uuidof(IPersist), object.putVoid()), S_OK);
        EXPECT_EQ(references(object.get()), 1U);
        CLSID answer{};
        EXPECT_EQ(object->GetClassID(&answer), S_OK);
        EXPECT_EQ(answer.Data1, number++);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(LoadedModule, refusesOtherClasses) {
    const CLoadedModule module;
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(module.getClassObject(LIBID_TarvoVideoTransformLib, __uuidof(IClassFactory), &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(module.getClassObject(CLSID_AcceleratorFilter, __uuidof(IClassFactory), nullptr), E_POINTER);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(LoadedModule, staysLoadedForEachOfItsUsers) {
    const CLoadedModule module;
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    com::ComPtr<IClassFactory> factory = module.factoryOf(CLSID_DewarpingTransform);
    EXPECT_EQ(module.canUnloadNow(), S_FALSE) << "a class object";
    com::ComPtr<IUnknown> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), object.putVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.reset();
    EXPECT_EQ(module.canUnloadNow(), S_FALSE) << "an object and a lock";
    object.reset();
    EXPECT_EQ(module.canUnloadNow(), S_FALSE) << "a lock";
    EXPECT_EQ(module.factoryOf(CLSID_AcceleratorFilter)->LockServer(FALSE), S_OK);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    EXPECT_EQ(module.factoryOf(CLSID_AcceleratorFilter)->LockServer(FALSE), E_UNEXPECTED);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(LoadedModule, canBeLoadedAgain) {
    for (int round = 0; round < 3; ++round) {
        const CLoadedModule module;
        com::ComPtr<IUnknown> object;
        ASSERT_EQ(module.factoryOf(CLSID_DewarpingTransform)
                      ->CreateInstance(nullptr, __uuidof(IUnknown), object.putVoid()),
                  S_OK);
    }
}

} // namespace
} // namespace tarvo::module
