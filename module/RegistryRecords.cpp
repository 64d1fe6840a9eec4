#include "module/RegistryRecords.h"

#include "module/OpenKey.h"
#include "platform/Utf16.h"

#include <string_view>
#include <vector>

namespace tarvo::module {
namespace {

using platform::classesRoot;
using platform::IRegistry;

constexpr std::string_view objectsPath = "DirectShow\\MediaObjects\\";
constexpr std::string_view categoriesPath = "DirectShow\\MediaObjects\\Categories";

/// Media objects are filed by names without braces.
std::string bareGuidText(const GUID& guid) {
    const std::string text = guidText(guid);
    return text.substr(1, text.size() - 2);
}

std::string objectPath(const CLSID& id) {
    return std::string(objectsPath) + bareGuidText(id);
}

std::string placePath(std::string_view category, const CLSID& id) {
    return std::string(categoriesPath) + '\\' + std::string(category) + '\\' + bareGuidText(id);
}

void setTypes(IRegistry& registry, const COpenKey& key, std::string_view name,
              std::span<const DMO_PARTIAL_MEDIATYPE> types) {
    throwIfRegistryFailed(registry.setBinary(key.get(), name, types.data(), types.size_bytes()));
}

bool isInSomeCategory(IRegistry& registry, const CLSID& id) {
    const COpenKey categories = COpenKey::open(registry, classesRoot, std::string(categoriesPath));
    std::vector<std::string> names;
    if (categories)
        throwIfRegistryFailed(registry.subkeys(categories.get(), names));
    for (const std::string& category : names) {
        if (COpenKey::open(registry, classesRoot, placePath(category, id)))
            return true;
    }
    return false;
}

} // namespace

std::string guidText(const GUID& guid) {
    OLECHAR text[39] = {};
    StringFromGUID2(guid, text, 39);
    return platform::utf8FromUtf16(std::u16string(text, text + 38));
}

void writeMediaObject(IRegistry& registry, const MediaObject& object) {
    const std::string path = objectPath(object.id);
    throwUnlessGone(registry.deleteTree(classesRoot, path));
    const COpenKey key = COpenKey::create(registry, classesRoot, path);
    const std::basic_string_view<OLECHAR> name(object.name);
    throwIfRegistryFailed(
        registry.setString(key.get(), "", platform::utf8FromUtf16(std::u16string(name.begin(), name.end()))));
    setTypes(registry, key, "InputTypes", object.inputs);
    setTypes(registry, key, "OutputTypes", object.outputs);
    if ((object.flags & DMO_REGISTERF_IS_KEYED) != 0)
        COpenKey::create(registry, key.get(), "Keyed");
    COpenKey::create(registry, classesRoot, placePath(bareGuidText(object.category), object.id));
}

void removeMediaObject(IRegistry& registry, const CLSID& id, const GUID& category) {
    throwIfRegistryFailed(registry.deleteTree(classesRoot, placePath(bareGuidText(category), id)));
    if (!isInSomeCategory(registry, id))
        throwUnlessGone(registry.deleteTree(classesRoot, objectPath(id)));
}

void writeCategories(IRegistry& registry, const CLSID& id, std::span<const ComponentCategory> categories) {
    for (const ComponentCategory& category : categories) {
        const bool isImplemented = category.relation == ComponentCategory::Relation::implemented;
        COpenKey::create(registry, classesRoot,
                         "CLSID\\" + guidText(id) +
                             (isImplemented ? "\\Implemented Categories\\" : "\\Required Categories\\") +
                             guidText(category.id));
    }
}

} // namespace tarvo::module
