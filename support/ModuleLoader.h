#pragma once

#include "platform/InterfaceTypes.h"
#include "platform/SystemLibrary.h"

#include <map>
#include <mutex>
#include <string>

namespace tarvo::support {

/// Loads modules by path and keeps them. Any thread.
class CModuleLoader {
public:
    /// As createInstanceFrom of Creation.h; may throw std::bad_alloc.
    HRESULT createInstance(const std::string& path, const CLSID& id, IUnknown* outer, REFIID iid,
                           void** object);
    void freeUnused() noexcept;

private:
    /// DllGetClassObject of the module; null, with `result` saying why, if there is none.
    using GetClassObject = HRESULT WINAPI(REFCLSID, REFIID, void**);
    GetClassObject* load(const std::string& path, HRESULT& result);

    std::mutex m_mutex;
    std::map<std::string, platform::CSystemLibrary, std::less<>> m_modules;
    /// How many calls are inside of modules, which must not be unloaded meanwhile.
    int m_callsInside = 0;
};

/// The program's one. It lives on when the program ends: objects may do so, too.
CModuleLoader& moduleLoader();

} // namespace tarvo::support
