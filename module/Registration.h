#pragma once

#include "module/ClassMap.h"
#include "platform/InterfaceTypes.h"
#include "platform/Registry.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tarvo::module {

/// What registration needs of the system and of the module's own file. Nothing throws except where said.
class IRegistrationServices {
public:
    virtual ~IRegistrationServices() = default;

    virtual HRESULT registerMediaObject(const MediaObject& object) noexcept = 0;
    virtual HRESULT unregisterMediaObject(const CLSID& id, const GUID& category) noexcept = 0;

    virtual HRESULT registerCategories(const CLSID& id,
                                       std::span<const ComponentCategory> categories) noexcept = 0;

    /// The type library that the module carries as its resource 1.
    virtual HRESULT registerTypeLibrary() noexcept = 0;
    virtual HRESULT unregisterTypeLibrary() noexcept = 0;

    /// Where the registration scripts are carried out.
    virtual platform::IRegistry& registry() noexcept = 0;
    /// The text of a registration script; empty if the module has none of this id.
    virtual std::string_view script(std::uint16_t id) noexcept = 0;
    /// The module's full path, UTF-8; empty if the system cannot tell. May throw std::bad_alloc.
    virtual std::string modulePath() = 0;
};

/// The work of DllRegisterServer. In this order:
///
/// 1. The media object's record. Whether that succeeds does not matter: it only helps others to find it.
/// 2. For each class its script, then its categories. The first failure ends it all and is the result.
/// 3. The type library, whose result is the result.
///
/// Doing it again leaves the same keys.
HRESULT registerModule(const ModuleContents& contents, IRegistrationServices& services) noexcept;

/// The work of DllUnregisterServer. A failure to take the media object back ends it at once. Then the
/// classes' scripts are taken back, and with their keys the categories, up to the first failure, and the type
/// library; all of this once more if it gives TYPE_E_REGISTRYACCESS.
HRESULT unregisterModule(const ModuleContents& contents, IRegistrationServices& services) noexcept;

/// The system's own. The registry is platform::systemRegistry(), scripts and type library are resources of
/// the module that this is linked into. Natively there are no type libraries, so there is nothing to
/// register.
IRegistrationServices& systemRegistrationServices() noexcept;

} // namespace tarvo::module
