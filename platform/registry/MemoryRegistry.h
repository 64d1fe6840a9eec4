#pragma once

#include "platform/registry/StoredRegistry.h"

#include <string>
#include <string_view>

namespace tarvo::platform {

/// A registry that nobody else sees and that is gone with the object; begun from the text of a registry file.
class CMemoryRegistry : private IRegistryStore, public CStoredRegistry {
public:
    explicit CMemoryRegistry(std::string_view regFile = {})
        : CStoredRegistry(static_cast<IRegistryStore&>(*this)), m_document(regFile),
          m_tree(m_document.tree()) {}

    /// The registry file that says all of it. Not while another thread changes it.
    std::string regFile() const { return m_document.bytes(); }

private:
    const CRegistryTree& tree() override { return m_tree; }

    RegistryError change(const std::function<RegistryError(CRegDocument&)>& edit) override {
        CRegDocument changed = m_document;
        const RegistryError error = edit(changed);
        if (error != registryError::success)
            return error;
        m_tree = changed.tree();
        m_document = std::move(changed);
        return registryError::success;
    }

    CRegDocument m_document;
    CRegistryTree m_tree;
};

} // namespace tarvo::platform
