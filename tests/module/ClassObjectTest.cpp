#include "com/ModuleCount.h"
#include "tests/module/ProbeClasses.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

TEST(ClassObject, isFoundInTheModulesClasses) {
    const std::array<ModuleClass, 2> classes = probeClasses();
    for (unsigned index = 0; index < 2; ++index) {
        com::ComPtr<IClassFactory> factory;
        ASSERT_EQ(getClassObject(probeContents(classes), classes[index].entry.id, __uuidof(IClassFactory),
                                 factory.putVoid()),
                  S_OK);
        com::ComPtr<IPersist> object;
        ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(IPersist), object.putVoid()), S_OK);
        CLSID id{};
        EXPECT_EQ(object->GetClassID(&id), S_OK);
        EXPECT_EQ(id.Data1, index + 1);
    }
    EXPECT_EQ(com::moduleCount().count(), 0);
}

TEST(ClassObject, isNoneOfAnotherClass) {
    const std::array<ModuleClass, 2> classes = probeClasses();
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(getClassObject(probeContents(classes), LIBID_TarvoVideoTransformLib, __uuidof(IClassFactory),
                             &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &somewhere;
    EXPECT_EQ(getClassObject(probeContents({}), CLSID_DewarpingTransform, __uuidof(IClassFactory), &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(
        getClassObject(probeContents(classes), CLSID_DewarpingTransform, __uuidof(IClassFactory), nullptr),
        E_POINTER);
    object = &somewhere;
    EXPECT_EQ(getClassObject(probeContents(classes), CLSID_DewarpingTransform, __uuidof(IPersist), &object),
              E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

} // namespace
} // namespace tarvo::module
