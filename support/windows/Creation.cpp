#include "support/Creation.h"

#include "com/Guarded.h"
#include "platform/Utf16.h"
#include "support/ModuleLoader.h"

#include <string>

namespace tarvo::support {

HRESULT findClass(std::string_view name, CLSID& id) noexcept {
    id = {};
    return com::guarded([&]() -> HRESULT {
        if (name.empty() || name.find('\0') != std::string_view::npos)
            return CO_E_CLASSSTRING;
        const std::u16string wide = platform::utf16FromUtf8(name);
        const std::basic_string<OLECHAR> text(wide.begin(), wide.end());
        const HRESULT result = CLSIDFromString(text.c_str(), &id);
        if (SUCCEEDED(result))
            return result;
        // The beginning of an identity may have been stored, and what makes a name unknown has several
        // results.
        id = {};
        return result == E_OUTOFMEMORY ? result : CO_E_CLASSSTRING;
    });
}

HRESULT createInstance(const CLSID& id, IUnknown* outer, REFIID iid, void** object) noexcept {
    return CoCreateInstance(id, outer, CLSCTX_INPROC_SERVER, iid, object);
}

void freeUnusedModules() noexcept {
    CoFreeUnusedLibraries();
    moduleLoader().freeUnused();
}

} // namespace tarvo::support
