#include "support/Creation.h"

#include "com/Guarded.h"
#include "support/ModuleLoader.h"

#include <string>

// What does not depend on who keeps the registrations.

namespace tarvo::support {

HRESULT createInstance(std::string_view name, IUnknown* outer, REFIID iid, void** object) noexcept {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    CLSID id{};
    const HRESULT result = findClass(name, id);
    return SUCCEEDED(result) ? createInstance(id, outer, iid, object) : result;
}

HRESULT createInstanceFrom(std::string_view modulePath, const CLSID& id, IUnknown* outer, REFIID iid,
                           void** object) noexcept {
    return com::guarded(
        [&] { return moduleLoader().createInstance(std::string(modulePath), id, outer, iid, object); });
}

} // namespace tarvo::support
