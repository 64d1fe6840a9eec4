#pragma once

#include "com/ClassFactory.h"
#include "module/MediaObject.h"

#include <cstdint>
#include <span>

namespace tarvo::module {

/// A component category that a class implements or requires.
struct ComponentCategory {
    enum class Relation { implemented, required };

    Relation relation;
    GUID id;
};

/// A creatable class and what is registered about it.
struct ModuleClass {
    com::ClassEntry entry;
    /// Id of its registration script, a resource of type REGISTRY. In it, %CLSID%, %TYPELIB% and %MODULE%
    /// stand for the class, the type library and the module's path.
    std::uint16_t script;
    std::span<const ComponentCategory> categories;
};

struct ModuleContents {
    std::span<const ModuleClass> classes;
    MediaObject mediaObject;
    /// Id of the type library.
    GUID typeLibrary;
};

/// What this module holds. Each module defines it for itself, in the source that knows its classes; what it
/// names lasts as long as the module.
const ModuleContents& moduleContents() noexcept;

/// The lookup of DllGetClassObject over the module's classes; as com::getClassObject.
HRESULT getClassObject(const ModuleContents& contents, REFCLSID id, REFIID iid, void** object) noexcept;

} // namespace tarvo::module
