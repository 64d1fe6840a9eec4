#pragma once

#include "module/ScriptScanner.h"
#include "platform/InterfaceTypes.h"
#include "platform/Registry.h"

#include <string_view>

namespace tarvo::module {

/// Carries registration scripts (see RegistrationScript.h) out, and takes them back. A script that cannot be
/// read changes nothing and gives the result of CScriptError; a registry that fails gives its error number as
/// an HRESULT.
class CRegistrar {
public:
    /// The registry must outlive the registrar.
    explicit CRegistrar(platform::IRegistry& registry) noexcept : m_registry(registry) {}

    /// Writes what the script says. If the registry fails halfway, what the script would have written is
    /// taken back: no class shall be half there.
    HRESULT registerScript(std::string_view script, const Replacements& replacements) noexcept;

    /// Removes what the script would write: the values it names, the keys it makes unless they are marked
    /// NoRemove or hold keys of others. What is not there needs no removing.
    HRESULT unregisterScript(std::string_view script, const Replacements& replacements) noexcept;

private:
    platform::IRegistry& m_registry;
};

} // namespace tarvo::module
