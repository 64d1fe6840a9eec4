#pragma once

#include "platform/InterfaceTypes.h"

#include <cstddef>

namespace tarvo::platform {

/// What an element of a SAFEARRAY owns, and so how it is copied and cleared.
enum class ElementKind { plain, text, interfacePointer, variant };

ElementKind elementKind(const SAFEARRAY& array);

/// Copies an element into memory that owns nothing yet; `bytes` is the size of an element. A failed copy
/// leaves the target owning nothing.
HRESULT copyElement(ElementKind kind, void* target, const void* source, std::size_t bytes);

/// Frees what an element owns; the memory then owns nothing.
HRESULT clearElement(ElementKind kind, void* element);

/// Frees what the first `count` elements own.
void clearElements(SAFEARRAY& array, std::size_t count);

} // namespace tarvo::platform
