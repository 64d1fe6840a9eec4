#include "com/ClassFactory.h"

#include "com/ModuleCount.h"

#include <algorithm>

namespace tarvo::com {

HRESULT STDMETHODCALLTYPE CClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    return m_create(outer, iid, object);
}

HRESULT STDMETHODCALLTYPE CClassFactory::LockServer(BOOL lock) {
    if (lock == FALSE)
        return moduleCount().unlockServer() ? S_OK : E_UNEXPECTED;
    moduleCount().lockServer();
    return S_OK;
}

HRESULT getClassObject(std::span<const ClassEntry> classMap, REFCLSID id, REFIID iid,
                       void** object) noexcept {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    const auto entry = std::ranges::find_if(classMap, [&id](const ClassEntry& e) { return e.id == id; });
    if (entry == classMap.end())
        return CLASS_E_CLASSNOTAVAILABLE;
    return guarded([&]() -> HRESULT {
        const ComPtr<CClassFactory> factory = makeObject<CClassFactory>(entry->create);
        return factory->QueryInterface(iid, object);
    });
}

} // namespace tarvo::com
