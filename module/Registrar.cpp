#include "module/Registrar.h"

#include "com/Guarded.h"
#include "module/OpenKey.h"
#include "module/RegistrationScript.h"

#include <string>
#include <variant>
#include <vector>

namespace tarvo::module {
namespace {

using platform::IRegistry;
using platform::RegistryKey;
using Rule = ScriptKey::Rule;

/// Sets a value by the type of its data.
struct ValueSetter {
    IRegistry& registry;
    RegistryKey key;
    const std::string& name;

    platform::RegistryError operator()(const std::string& text) const {
        return registry.setString(key, name, text);
    }
    platform::RegistryError operator()(std::uint32_t number) const {
        return registry.setDword(key, name, number);
    }
    platform::RegistryError operator()(const std::vector<std::byte>& bytes) const {
        return registry.setBinary(key, name, bytes.data(), bytes.size());
    }
};

class CWriter {
public:
    explicit CWriter(IRegistry& registry) : m_registry(registry) {}

    void writeKey(RegistryKey parent, const ScriptKey& key) const {
        if (key.rule == Rule::forceRemove || key.rule == Rule::remove)
            throwUnlessGone(m_registry.deleteTree(parent, key.name));
        if (key.rule == Rule::remove)
            return;
        const COpenKey open = COpenKey::create(m_registry, parent, key.name);
        writeContent(open.get(), key);
    }

    void writeContent(RegistryKey open, const ScriptKey& key) const {
        for (const ScriptValue& value : key.values)
            throwIfRegistryFailed(std::visit(ValueSetter{m_registry, open, value.name}, value.data));
        for (const ScriptKey& below : key.keys)
            writeKey(open, below);
    }

private:
    IRegistry& m_registry;
};

class CRemover {
public:
    explicit CRemover(IRegistry& registry) : m_registry(registry) {}

    void removeKey(RegistryKey parent, const ScriptKey& key) const {
        switch (key.rule) {
        case Rule::remove:
            return;
        case Rule::forceRemove:
            throwUnlessGone(m_registry.deleteTree(parent, key.name));
            return;
        case Rule::plain:
        case Rule::noRemove:
            break;
        }
        bool isEmpty = false;
        {
            COpenKey open = COpenKey::open(m_registry, parent, key.name);
            if (!open)
                return;
            // Only values ask for the right to write.
            if (!key.values.empty())
                open = COpenKey::create(m_registry, parent, key.name);
            removeContent(open.get(), key);
            std::vector<std::string> left;
            throwIfRegistryFailed(m_registry.subkeys(open.get(), left));
            isEmpty = left.empty();
        }
        if (key.rule == Rule::plain && isEmpty)
            throwUnlessGone(m_registry.deleteKey(parent, key.name));
    }

    void removeContent(RegistryKey open, const ScriptKey& key) const {
        for (const ScriptKey& below : key.keys)
            removeKey(open, below);
        for (const ScriptValue& value : key.values)
            throwUnlessGone(m_registry.deleteValue(open, value.name));
    }

private:
    IRegistry& m_registry;
};

void removeAll(IRegistry& registry, const std::vector<ScriptRoot>& roots) {
    for (const ScriptRoot& root : roots)
        CRemover(registry).removeContent(root.key, root.content);
}

} // namespace

HRESULT CRegistrar::registerScript(std::string_view script, const Replacements& replacements) noexcept {
    return com::guarded([&]() -> HRESULT {
        const std::vector<ScriptRoot> roots = parseRegistrationScript(script, replacements);
        const HRESULT result = com::guarded([&] {
            for (const ScriptRoot& root : roots)
                CWriter(m_registry).writeContent(root.key, root.content);
        });
        // The first failure is the one to report, whatever becomes of this.
        if (FAILED(result))
            com::guarded([&] { removeAll(m_registry, roots); });
        return result;
    });
}

HRESULT CRegistrar::unregisterScript(std::string_view script, const Replacements& replacements) noexcept {
    return com::guarded([&] { removeAll(m_registry, parseRegistrationScript(script, replacements)); });
}

} // namespace tarvo::module
