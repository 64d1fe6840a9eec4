#pragma once

#include "platform/registry/RegText.h"
#include "platform/registry/RegistryTree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// A registry file in memory: what its keys and values are, and changes to them that leave the rest of its
/// text - comments, foreign hives, types of values not known here - as it stands. Paths as in RegistryPath.h.
///
/// The file is read as the registry editor imports it: from top to bottom, later statements over earlier
/// ones.
class CRegDocument {
public:
    /// Takes the bytes of a file; none begin a new document.
    explicit CRegDocument(std::string_view bytes = {});

    std::string bytes() const { return encodeRegText(m_text); }
    CRegistryTree tree() const;

    void makeKey(std::string_view path);
    /// The key is made where absent.
    void setValue(std::string_view path, std::string_view name, const RegistryValue& value);
    void removeValue(std::string_view path, std::string_view name);
    /// Removes the key with all below it; the keys above stay.
    void removeKey(std::string_view path);

private:
    std::string_view lineBreak() const;
    void insertLine(std::size_t position, std::string line);
    void appendKey(std::string_view path);
    void cutKeySections(std::string_view path);

    RegText m_text;
};

} // namespace tarvo::platform
