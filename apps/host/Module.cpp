#include "apps/host/Module.h"

#include "apps/host/HostError.h"
#include "platform/ModulePath.h"

#include <string>
#include <system_error>

namespace tarvo::host {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* moduleName = "TarvoVideoTransform.dll";
#else
constexpr const char* moduleName = "libTarvoVideoTransform.so";
#endif

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string stepOf(const fs::path& file) {
    return "loading the module \"" + textOf(file) + "\"";
}

platform::CSystemLibrary load(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) {
        throw HostError(stepOf(file), CO_E_DLLNOTFOUND, error ? error.message() : "there is no such file");
    }
    // A path, and a whole one: the system would search its own folders for a bare name.
    platform::CSystemLibrary library(textOf(fs::absolute(file).make_preferred()).c_str());
    if (!library) {
        throw HostError(stepOf(file), CO_E_ERRORINDLL, "the file is no library that this system can load");
    }
    return library;
}

} // namespace

CModule::CModule(const fs::path& file) : m_file(file), m_library(load(file)) {
    m_getClassObject = require<GetClassObject>("DllGetClassObject");
    m_canUnloadNow = require<Plain>("DllCanUnloadNow");
    m_registerServer = require<Plain>("DllRegisterServer");
    m_unregisterServer = require<Plain>("DllUnregisterServer");
}

template<class Signature>
Signature* CModule::require(const char* name) const {
    auto* const function = m_library.function<Signature>(name);
    if (function == nullptr) {
        throw HostError(stepOf(m_file), CO_E_ERRORINDLL, std::string("the library has no function ") + name);
    }
    return function;
}

bool CModule::offers(REFCLSID id) const {
    com::ComPtr<IClassFactory> factory;
    return SUCCEEDED(m_getClassObject(id, __uuidof(IClassFactory), factory.putVoid()));
}

com::ComPtr<IDewarpingTransform> CModule::createTransform() const {
    com::ComPtr<IClassFactory> factory;
    requireStep(m_getClassObject(CLSID_DewarpingTransform, __uuidof(IClassFactory), factory.putVoid()),
                "asking the module for its class");
    com::ComPtr<IDewarpingTransform> transform;
    requireStep(factory->CreateInstance(nullptr, __uuidof(IDewarpingTransform), transform.putVoid()),
                "creating the transform");
    return transform;
}

void CModule::registerServer() const {
    requireStep(m_registerServer(), "registering the module");
}

void CModule::unregisterServer() const {
    requireStep(m_unregisterServer(), "unregistering the module");
}

fs::path defaultModulePath() {
    const std::string program = platform::modulePath();
    const fs::path folder = fs::path(std::u8string(program.begin(), program.end())).parent_path();
    const fs::path beside = folder / moduleName;
    const fs::path installed = folder.parent_path() / "lib" / moduleName;
    std::error_code ignored;
    return !fs::exists(beside, ignored) && fs::exists(installed, ignored) ? installed : beside;
}

} // namespace tarvo::host
