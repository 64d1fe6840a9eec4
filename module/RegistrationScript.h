#pragma once

#include "module/ScriptScanner.h"
#include "platform/Registry.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// A registration script, in the syntax of component servers:
//
//     HKCR
//     {
//         Some.Class = s 'Its text'          a key with its default value
//         {
//             val Merit = d 2097152          a value of the key around it
//             CLSID = s '%CLSID%'
//         }
//         NoRemove CLSID                     stays when the script is taken back
//         {
//             ForceRemove {GUID}             removed whole before it is written, and when the script is taken
//             back
//         }
//         Delete Old.Class                   only ever removed
//     }
//
// Data are texts (s), numbers of 32 bits (d, decimal or 0x…) or bytes (b, hexadecimal digits). Letters of the
// script's own words and of the roots (HKCR, HKLM and their long names) may have either case.

namespace tarvo::module {

using ScriptData = std::variant<std::string, std::uint32_t, std::vector<std::byte>>;

struct ScriptValue {
    /// Empty for the default value of a key.
    std::string name;
    ScriptData data;

    bool operator==(const ScriptValue&) const = default;
};

/// A key with what the script says about it.
struct ScriptKey {
    enum class Rule {
        plain,       ///< made where absent; goes again unless somebody else put keys into it
        noRemove,    ///< made where absent, and stays
        forceRemove, ///< removed whole, then made; goes again with all that is in it
        remove       ///< removed whole
    };

    Rule rule = Rule::plain;
    std::string name;
    std::vector<ScriptValue> values;
    std::vector<ScriptKey> keys;

    bool operator==(const ScriptKey&) const = default;
};

struct ScriptRoot {
    platform::RegistryKey key = platform::noRegistryKey;
    /// Without a name, and it stays.
    ScriptKey content;

    bool operator==(const ScriptRoot&) const = default;
};

/// Reads a whole script; throws CScriptError. Names are printable ASCII and no longer than 255 characters,
/// those of keys without backslashes; keys nest up to 64 levels.
std::vector<ScriptRoot> parseRegistrationScript(std::string_view script, const Replacements& replacements);

} // namespace tarvo::module
