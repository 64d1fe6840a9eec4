#include "support/ModuleLoader.h"

#include "com/ComPtr.h"

#include <filesystem>
#include <utility>

namespace tarvo::support {

HRESULT CModuleLoader::createInstance(const std::string& path, const CLSID& id, IUnknown* outer, REFIID iid,
                                      void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    // What the system makes of anything else depends on folders nobody here knows.
    if (!std::filesystem::path(path).is_absolute())
        return CO_E_DLLNOTFOUND;
    HRESULT result = S_OK;
    GetClassObject* const getClassObject = load(path, result);
    if (getClassObject == nullptr)
        return result;
    {
        com::ComPtr<IClassFactory> factory;
        result = getClassObject(id, __uuidof(IClassFactory), factory.putVoid());
        if (SUCCEEDED(result))
            result = factory ? factory->CreateInstance(outer, iid, object) : CO_E_ERRORINDLL;
    }
    const std::lock_guard lock(m_mutex);
    --m_callsInside;
    return result;
}

CModuleLoader::GetClassObject* CModuleLoader::load(const std::string& path, HRESULT& result) {
    const std::lock_guard lock(m_mutex);
    auto module = m_modules.find(path);
    if (module == m_modules.end()) {
        platform::CSystemLibrary library(path.c_str());
        if (!library) {
            result = CO_E_DLLNOTFOUND;
            return nullptr;
        }
        if (library.symbol("DllGetClassObject") == nullptr) {
            result = CO_E_ERRORINDLL;
            return nullptr;
        }
        module = m_modules.emplace(path, std::move(library)).first;
    }
    ++m_callsInside;
    return module->second.function<GetClassObject>("DllGetClassObject");
}

void CModuleLoader::freeUnused() noexcept {
    const std::lock_guard lock(m_mutex);
    if (m_callsInside > 0)
        return;
    std::erase_if(m_modules, [](const auto& entry) {
        auto* const canUnload = entry.second.template function<HRESULT WINAPI()>("DllCanUnloadNow");
        return canUnload != nullptr && canUnload() == S_OK;
    });
}

CModuleLoader& moduleLoader() {
    // Never deleted: unloading modules while the program's other statics end would pull them from under
    // whoever still holds objects of theirs.
    static auto* const loader = new CModuleLoader;
    return *loader;
}

} // namespace tarvo::support
