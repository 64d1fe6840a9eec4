#pragma once

#include "platform/InterfaceTypes.h"

#include <string_view>

// How a host gets objects of a registered module, on every system: on Windows by the system's own functions,
// elsewhere from the registry file (see platform/Registry.h) that the module's DllRegisterServer writes.
//
// The memory that crosses an interface - texts, arrays, variants, media types, task memory - belongs to both
// sides alike: natively each side has a copy of the functions over the C library's one malloc and free, so
// either may free what the other has allocated.
//
// Any thread; nothing is thrown.

namespace tarvo::support {

/// The identity of a class by its name, such as TarvoVideoTransform.DewarpingTransform with or without a
/// version, or by its own text {0ED28648-…}. CO_E_CLASSSTRING for a name that nobody has registered.
HRESULT findClass(std::string_view name, CLSID& id) noexcept;

/// Makes an object of a registered class, as part of `outer` unless that is null, and gives out its interface
/// `iid`. REGDB_E_CLASSNOTREG if nobody has registered the class; CO_E_DLLNOTFOUND and CO_E_ERRORINDLL if its
/// module is not there or is none; else what the module says.
HRESULT createInstance(const CLSID& id, IUnknown* outer, REFIID iid, void** object) noexcept;

/// The same by name.
HRESULT createInstance(std::string_view name, IUnknown* outer, REFIID iid, void** object) noexcept;

/// The same from the module in a certain file (full path, UTF-8), registered or not.
HRESULT createInstanceFrom(std::string_view modulePath, const CLSID& id, IUnknown* outer, REFIID iid,
                           void** object) noexcept;

/// Unloads modules that say nothing of them is in use. No object of theirs may be on its way to another
/// thread then. Without this call they stay until the program ends.
void freeUnusedModules() noexcept;

} // namespace tarvo::support
