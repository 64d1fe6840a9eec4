#include "support/Creation.h"

#include "com/ComPtr.h"
#include "com/Variant.h"
#include "interfaces/TarvoVideoTransform.h"
#include "tests/support/RegisteredProbe.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

namespace tarvo::support {
namespace {

using com::ComPtr;
using tests::CRegisteredProbe;

/// 1 for the dewarping transform's probe, 2 for the accelerator's; 0 if it cannot say.
unsigned numberOf(IPersist* object) {
    CLSID id{};
    return object != nullptr && object->GetClassID(&id) == S_OK ? static_cast<unsigned>(id.Data1) : 0;
}

std::string probePath() {
    return std::filesystem::absolute(TARVO_PROBE_MODULE).string();
}

TEST(Creation, findsClassesByEachOfTheirNames) {
    const CRegisteredProbe registered;
    for (const char* name :
         {"TarvoVideoTransform.DewarpingTransform", "TarvoVideoTransform.DewarpingTransform.1",
          "tarvovideotransform.dewarpingtransform", "{0ED28648-4566-44E3-90B0-A35A83711240}"}) {
        CLSID id{};
        EXPECT_EQ(findClass(name, id), S_OK) << name;
        EXPECT_EQ(id, CLSID_DewarpingTransform) << name;
    }
    for (const std::string name : {"", "TarvoVideoTransform", "TarvoVideoTransform.DewarpingTransform.2",
                                   "CLSID\\{0ED28648-4566-44E3-90B0-A35A83711240}", "{0ED28648}", "{"}) {
        CLSID id = CLSID_AcceleratorFilter;
        EXPECT_EQ(findClass(name, id), CO_E_CLASSSTRING) << name;
        EXPECT_EQ(id, CLSID()) << name;
    }
    CLSID id{};
    EXPECT_EQ(findClass(std::string("TarvoVideoTransform.DewarpingTransform\0x", 40), id), CO_E_CLASSSTRING);
}

TEST(Creation, createsByIdentityAndByName) {
    const CRegisteredProbe registered;
    ComPtr<IPersist> object;
    ASSERT_EQ(createInstance(CLSID_DewarpingTransform, nullptr, __uuidof(IPersist), object.putVoid()), S_OK);
    EXPECT_EQ(numberOf(object.get()), 1U);
    ASSERT_EQ(createInstance("TarvoVideoTransform.AcceleratorFilter", nullptr, __uuidof(IPersist),
                             object.putVoid()),
              S_OK);
    EXPECT_EQ(numberOf(object.get()), 2U);
    object.reset();
    freeUnusedModules();
}

TEST(Creation, passesOnWhatTheModuleRefuses) {
    const CRegisteredProbe registered;
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(createInstance(CLSID_DewarpingTransform, nullptr, __uuidof(IDispatch), &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(createInstance(CLSID_DewarpingTransform, nullptr, __uuidof(IPersist), nullptr), E_POINTER);
    EXPECT_EQ(createInstance("TarvoVideoTransform.DewarpingTransform", nullptr, __uuidof(IPersist), nullptr),
              E_POINTER);
    EXPECT_EQ(createInstanceFrom(probePath(), CLSID_DewarpingTransform, nullptr, __uuidof(IPersist), nullptr),
              E_POINTER);
    object = &somewhere;
    EXPECT_EQ(
        createInstanceFrom(probePath(), LIBID_TarvoVideoTransformLib, nullptr, __uuidof(IPersist), &object),
        CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
}

TEST(Creation, knowsNoClassesThatAreNotRegistered) {
    CRegisteredProbe registered;
    registered.unregister();
    int somewhere = 0;
    void* object = &somewhere;
    EXPECT_EQ(createInstance(CLSID_DewarpingTransform, nullptr, __uuidof(IPersist), &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    object = &somewhere;
    EXPECT_EQ(createInstance("TarvoVideoTransform.DewarpingTransform", nullptr, __uuidof(IPersist), &object),
              CO_E_CLASSSTRING);
    EXPECT_EQ(object, nullptr);
}

TEST(Creation, createsFromAFileWithoutRegistration) {
    ComPtr<IPersist> object;
    ASSERT_EQ(createInstanceFrom(probePath(), CLSID_AcceleratorFilter, nullptr, __uuidof(IPersist),
                                 object.putVoid()),
              S_OK);
    EXPECT_EQ(numberOf(object.get()), 2U);
}

TEST(Creation, saysWhatIsWrongWithAFile) {
    const tests::CTemporaryFolder folder;
    tests::writeFile(folder / "text.so", "this is no module");
    int somewhere = 0;
    for (const std::string& path : {folder / "absent.so", folder / "text.so", folder.path(), std::string(),
                                    std::string("relative.so")}) {
        void* object = &somewhere;
        EXPECT_EQ(createInstanceFrom(path, CLSID_AcceleratorFilter, nullptr, __uuidof(IPersist), &object),
                  CO_E_DLLNOTFOUND)
            << path;
        EXPECT_EQ(object, nullptr) << path;
    }
    // A library, but no module.
    void* object = &somewhere;
    EXPECT_EQ(createInstanceFrom(std::filesystem::absolute(TARVO_PLAIN_LIBRARY).string(),
                                 CLSID_AcceleratorFilter, nullptr, __uuidof(IPersist), &object),
              CO_E_ERRORINDLL);
    EXPECT_EQ(object, nullptr);
}

TEST(Creation, keepsModulesThatAreInUse) {
    ComPtr<IPersist> object;
    ASSERT_EQ(createInstanceFrom(probePath(), CLSID_AcceleratorFilter, nullptr, __uuidof(IPersist),
                                 object.putVoid()),
              S_OK);
    freeUnusedModules();
    EXPECT_EQ(numberOf(object.get()), 2U);
    object.reset();
    freeUnusedModules();
    freeUnusedModules();
    ASSERT_EQ(createInstanceFrom(probePath(), CLSID_DewarpingTransform, nullptr, __uuidof(IPersist),
                                 object.putVoid()),
              S_OK);
    EXPECT_EQ(numberOf(object.get()), 1U);
}

TEST(Creation, exchangesMemoryWithTheModule) {
    ComPtr<IPersistFile> file;
    ASSERT_EQ(createInstanceFrom(probePath(), CLSID_DewarpingTransform, nullptr, __uuidof(IPersistFile),
                                 file.putVoid()),
              S_OK);
    LPOLESTR name = nullptr;
    ASSERT_EQ(file->GetCurFile(&name), S_OK);
    EXPECT_EQ(std::basic_string<OLECHAR>(name), OLESTR("probe"));
    CoTaskMemFree(name);

    ComPtr<IPropertyBag> bag;
    ASSERT_EQ(file->QueryInterface(__uuidof(IPropertyBag), bag.putVoid()), S_OK);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(OLESTR("the host's"));
    ASSERT_EQ(bag->Read(OLESTR("the module's"), &value, nullptr), S_OK);
    ASSERT_EQ(value.vt, VT_ARRAY | VT_BSTR);
    LONG index = 0;
    BSTR text = nullptr;
    ASSERT_EQ(SafeArrayGetElement(value.parray, &index, &text), S_OK);
    EXPECT_EQ(std::basic_string<OLECHAR>(text), OLESTR("the module's"));
    EXPECT_EQ(SysStringLen(text), 12U);
    SysFreeString(text);
    EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(Creation, servesManyThreads) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([] {
            for (int round = 0; round < 50; ++round) {
                ComPtr<IPersist> object;
                EXPECT_EQ(createInstanceFrom(probePath(), CLSID_AcceleratorFilter, nullptr,
                                             __uuidof(IPersist), object.putVoid()),
                          S_OK);
                EXPECT_EQ(numberOf(object.get()), 2U);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    freeUnusedModules();
}

} // namespace
} // namespace tarvo::support
