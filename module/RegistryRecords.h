#pragma once

#include "module/ClassMap.h"
#include "platform/Registry.h"

#include <span>
#include <string>

// What Windows keeps in its registry about media objects and component categories, written by hand: for
// systems that have nobody else to do it. The keys are the same, so one reader serves both.

namespace tarvo::module {

/// "{D990EE14-776C-4723-BE46-3DA2F56F10B9}"
std::string guidText(const GUID& guid);

/// Records a media object, in place of what was recorded about it before; throws as COpenKey does.
void writeMediaObject(platform::IRegistry& registry, const MediaObject& object);

/// Takes the object out of a category and, with its last category, out of the record. Fails with Windows'
/// ERROR_FILE_NOT_FOUND if it is not in that category.
void removeMediaObject(platform::IRegistry& registry, const CLSID& id, const GUID& category);

/// Adds categories to a class; its key is made where absent, and they go with it.
void writeCategories(platform::IRegistry& registry, const CLSID& id,
                     std::span<const ComponentCategory> categories);

} // namespace tarvo::module
