#include "tests/module/ExpectedKeys.h"
#include "tests/module/LoadedModule.h"
#include "tests/module/windows/SystemSnapshot.h"
#include "tests/windows/RedirectedRegistry.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

/// The full path of a loaded library as the system spells it.
std::string loadedPath() {
    char path[MAX_PATH] = {};
    EXPECT_NE(GetModuleFileNameA(GetModuleHandleA(TARVO_PROBE_MODULE), path, MAX_PATH), 0U);
    return path;
}

TEST(ModuleRegistration, writesEverythingAndRemovesIt) {
    const CRedirectedRegistry redirected;
    const CLoadedModule module;
    const std::string path = loadedPath();
    Snapshot expected = allClassKeys(path);
    expected.merge(mediaObjectKeys());
    ASSERT_EQ(module.registerServer(), S_OK);
    Snapshot registered = systemSnapshot();
    EXPECT_EQ(withoutTypes(registered), inCapitals(expected));
    // How the rest of a type library is written is the system's business.
    const std::string library = "TYPELIB\\" + libraryId + "\\1.0";
    ASSERT_TRUE(registered.contains(library));
    EXPECT_EQ(registered[library][""], "s TarvoVideoTransform 1.0 Type Library");
    EXPECT_EQ(registered[library + "\\0\\WIN64"][""], "s " + path);
    ASSERT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(systemSnapshot(), registered) << "the second time changes nothing";

    ASSERT_EQ(module.unregisterServer(), S_OK);
    for (const auto& [left, values] : systemSnapshot()) {
        EXPECT_EQ(left.find("TARVO"), std::string::npos) << left;
        EXPECT_EQ(left.find(dewarpingId.substr(1, 36)), std::string::npos) << left;
        EXPECT_EQ(left.find(acceleratorId.substr(1, 36)), std::string::npos) << left;
        EXPECT_NE(left, library);
        EXPECT_TRUE(values.empty()) << left;
    }
    EXPECT_TRUE(systemSnapshot().contains("CLSID"));
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(ModuleRegistration, letsTheSystemFindTheMediaObject) {
    const CRedirectedRegistry redirected;
    const CLoadedModule module;
    ASSERT_EQ(module.registerServer(), S_OK);
    const DMO_PARTIAL_MEDIATYPE input{MEDIATYPE_Video, MEDIASUBTYPE_YUY2};
    const DMO_PARTIAL_MEDIATYPE output{MEDIATYPE_Video, MEDIASUBTYPE_YV12};
    com::ComPtr<IEnumDMO> found;
    ASSERT_EQ(DMOEnum(DMOCATEGORY_VIDEO_EFFECT, 0, 1, &input, 1, &output, found.put()), S_OK);
    CLSID id{};
    WCHAR* name = nullptr;
    DWORD count = 0;
    ASSERT_EQ(found->Next(1, &id, &name, &count), S_OK);
    EXPECT_EQ(id, CLSID_DewarpingTransform);
    EXPECT_STREQ(name, L"TARVO Dewarping Transform DMO");
    CoTaskMemFree(name);
    EXPECT_EQ(found->Next(1, &id, &name, &count), S_FALSE);
    EXPECT_EQ(module.unregisterServer(), S_OK);
}

TEST(ModuleRegistration, letsTheSystemCreateTheClasses) {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    {
        // The creating functions do not follow a redirection.
        const CRegistryTurn turn;
        const CLoadedModule module;
        ASSERT_EQ(module.registerServer(), S_OK);
        for (const WCHAR* name :
             {L"TarvoVideoTransform.DewarpingTransform", L"TarvoVideoTransform.DewarpingTransform.1"}) {
            CLSID id{};
            EXPECT_EQ(CLSIDFromProgID(name, &id), S_OK);
            EXPECT_EQ(id, CLSID_DewarpingTransform);
        }
        com::ComPtr<IPersist> object;
        EXPECT_EQ(CoCreateInstance(CLSID_AcceleratorFilter, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IPersist),
                                   object.putVoid()),
                  S_OK);
        CLSID answer{};
        EXPECT_TRUE(object && object->GetClassID(&answer) == S_OK);
        EXPECT_EQ(answer.Data1, 2U);
        object.reset();
        EXPECT_EQ(module.unregisterServer(), S_OK);
        CLSID id{};
        EXPECT_NE(CLSIDFromProgID(L"TarvoVideoTransform.DewarpingTransform", &id), S_OK);
    }
    CoUninitialize();
}

/// The exported names in the file's own table.
std::vector<std::string> exportedNames(const void* image) {
    const auto* const base = static_cast<const BYTE*>(image);
    const auto* const head = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto* const table = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
        base + head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    const auto* const names = reinterpret_cast<const DWORD*>(base + table->AddressOfNames);
    EXPECT_EQ(table->NumberOfNames, table->NumberOfFunctions) << "none without a name";
    std::vector<std::string> exported;
    for (DWORD index = 0; index < table->NumberOfNames; ++index)
        exported.emplace_back(reinterpret_cast<const char*>(base + names[index]));
    return exported;
}

/// The names of the libraries that the file needs, in small letters.
std::vector<std::string> importedLibraries(const void* image) {
    const auto* const base = static_cast<const BYTE*>(image);
    const auto* const head = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    std::vector<std::string> libraries;
    for (const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
             base + head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
         import->Name != 0; ++import) {
        std::string name(reinterpret_cast<const char*>(base + import->Name));
        std::ranges::transform(name, name.begin(),
                               [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
        libraries.push_back(name);
    }
    return libraries;
}

class ModuleExports : public testing::TestWithParam<const char*> {
protected:
    const void* image() const {
        const void* const image = GetModuleHandleA(GetParam());
        EXPECT_NE(image, nullptr);
        return image;
    }

    const CLoadedModule m_module{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Modules, ModuleExports, testing::Values(TARVO_PROBE_MODULE, TARVO_PRODUCT_MODULE),
                         [](const auto& parameters) { return parameters.index == 0 ? "probe" : "product"; });

TEST_P(ModuleExports, areFour) {
    ASSERT_NE(image(), nullptr);
    EXPECT_EQ(exportedNames(image()), (std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                                                "DllRegisterServer", "DllUnregisterServer"}));
}

TEST_P(ModuleExports, needNothingButTheSystem) {
    ASSERT_NE(image(), nullptr);
    // None of graphics: a system without them must be able to load the module, and be told.
    const std::vector<std::string> allowed{"advapi32.dll", "kernel32.dll", "msdmo.dll", "msvcrt.dll",
                                           "ole32.dll",    "oleaut32.dll", "user32.dll"};
    const std::vector<std::string> libraries = importedLibraries(image());
    EXPECT_FALSE(libraries.empty());
    for (const std::string& library : libraries)
        EXPECT_NE(std::ranges::find(allowed, library), allowed.end()) << library;
}

} // namespace
} // namespace tarvo::module
