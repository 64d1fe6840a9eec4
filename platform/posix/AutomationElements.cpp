#include "platform/posix/AutomationElements.h"

#include <array>
#include <cstring>

namespace tarvo::platform {

ElementKind elementKind(const SAFEARRAY& array) {
    if ((array.fFeatures & FADF_BSTR) != 0)
        return ElementKind::text;
    if ((array.fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0)
        return ElementKind::interfacePointer;
    if ((array.fFeatures & FADF_VARIANT) != 0)
        return ElementKind::variant;
    return ElementKind::plain;
}

HRESULT copyElement(ElementKind kind, void* target, const void* source, std::size_t bytes) {
    switch (kind) {
    case ElementKind::text: {
        BSTR text = *static_cast<const BSTR*>(source);
        BSTR copy = nullptr;
        if (text != nullptr) {
            copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
            if (copy == nullptr)
                return E_OUTOFMEMORY;
        }
        *static_cast<BSTR*>(target) = copy;
        return S_OK;
    }
    case ElementKind::interfacePointer: {
        IUnknown* pointer = *static_cast<IUnknown* const*>(source);
        if (pointer != nullptr)
            pointer->AddRef();
        *static_cast<IUnknown**>(target) = pointer;
        return S_OK;
    }
    case ElementKind::variant: {
        auto* variant = static_cast<VARIANT*>(target);
        VariantInit(variant);
        return VariantCopy(variant, static_cast<const VARIANT*>(source));
    }
    case ElementKind::plain:
        break;
    }
    std::memcpy(target, source, bytes);
    return S_OK;
}

HRESULT clearElement(ElementKind kind, void* element) {
    switch (kind) {
    case ElementKind::text: {
        auto* text = static_cast<BSTR*>(element);
        SysFreeString(*text);
        *text = nullptr;
        return S_OK;
    }
    case ElementKind::interfacePointer: {
        auto* place = static_cast<IUnknown**>(element);
        IUnknown* pointer = *place;
        *place = nullptr;
        if (pointer != nullptr)
            pointer->Release();
        return S_OK;
    }
    case ElementKind::variant:
        return VariantClear(static_cast<VARIANT*>(element));
    case ElementKind::plain:
        break;
    }
    return S_OK;
}

void clearElements(SAFEARRAY& array, std::size_t count) {
    const ElementKind kind = elementKind(array);
    if (kind == ElementKind::plain)
        return;
    for (std::size_t i = 0; i < count; ++i)
        clearElement(kind, static_cast<std::byte*>(array.pvData) + i * array.cbElements);
}

} // namespace tarvo::platform

using tarvo::platform::clearElement;
using tarvo::platform::copyElement;
using tarvo::platform::ElementKind;
using tarvo::platform::elementKind;

HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr || value == nullptr)
        return E_INVALIDARG;
    HRESULT result = SafeArrayLock(array);
    if (FAILED(result))
        return result;
    void* element = nullptr;
    result = SafeArrayPtrOfIndex(array, indices, &element);
    if (SUCCEEDED(result))
        result = copyElement(elementKind(*array), value, element, array->cbElements);
    SafeArrayUnlock(array);
    return result;
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr)
        return E_INVALIDARG;
    const ElementKind kind = elementKind(*array);
    const bool byPointer = kind == ElementKind::text || kind == ElementKind::interfacePointer;
    if (value == nullptr && !byPointer)
        return E_INVALIDARG;
    HRESULT result = SafeArrayLock(array);
    if (FAILED(result))
        return result;
    void* element = nullptr;
    result = SafeArrayPtrOfIndex(array, indices, &element);
    if (SUCCEEDED(result)) {
        // Texts and interfaces are handed over themselves, everything else by its address. The copy comes
        // first, for the value may be what the element owns.
        alignas(VARIANT) std::array<std::byte, sizeof(VARIANT)> copy{};
        result = copyElement(kind, copy.data(), byPointer ? &value : value, array->cbElements);
        if (SUCCEEDED(result)) {
            result = clearElement(kind, element);
            if (SUCCEEDED(result))
                std::memcpy(element, copy.data(), array->cbElements);
            else
                clearElement(kind, copy.data());
        }
    }
    SafeArrayUnlock(array);
    return result;
}
