#include "module/ClassMap.h"

#include <algorithm>

namespace tarvo::module {

HRESULT getClassObject(const ModuleContents& contents, REFCLSID id, REFIID iid, void** object) noexcept {
    const auto found =
        std::ranges::find_if(contents.classes, [&id](const ModuleClass& c) { return c.entry.id == id; });
    if (found == contents.classes.end())
        return com::getClassObject({}, id, iid, object);
    return com::getClassObject({&found->entry, 1}, id, iid, object);
}

} // namespace tarvo::module
