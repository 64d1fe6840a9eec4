// Media types of media objects: a record that owns a format block and perhaps a reference.

#include "platform/InterfaceTypes.h"

#include <cstring>

HRESULT WINAPI MoInitMediaType(DMO_MEDIA_TYPE* type, DWORD formatBytes) {
    if (type == nullptr)
        return E_POINTER;
    *type = DMO_MEDIA_TYPE{};
    // The count is signed in some headers.
    const auto bytes = static_cast<ULONG>(formatBytes);
    if (bytes == 0)
        return S_OK;
    type->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(bytes));
    if (type->pbFormat == nullptr)
        return E_OUTOFMEMORY;
    type->cbFormat = bytes;
    return S_OK;
}

HRESULT WINAPI MoFreeMediaType(DMO_MEDIA_TYPE* type) {
    if (type == nullptr)
        return E_POINTER;
    if (IUnknown* held = type->pUnk; held != nullptr) {
        type->pUnk = nullptr;
        held->Release();
    }
    CoTaskMemFree(type->pbFormat);
    type->pbFormat = nullptr;
    type->cbFormat = 0;
    return S_OK;
}

HRESULT WINAPI MoCopyMediaType(DMO_MEDIA_TYPE* target, const DMO_MEDIA_TYPE* source) {
    if (target == nullptr || source == nullptr)
        return E_POINTER;
    DMO_MEDIA_TYPE copy = *source;
    copy.pbFormat = nullptr;
    copy.cbFormat = 0;
    if (source->pbFormat != nullptr && source->cbFormat != 0) {
        copy.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(source->cbFormat));
        if (copy.pbFormat == nullptr) {
            // What stands there is not the target's to free.
            *target = DMO_MEDIA_TYPE{};
            return E_OUTOFMEMORY;
        }
        copy.cbFormat = source->cbFormat;
        std::memcpy(copy.pbFormat, source->pbFormat, source->cbFormat);
    }
    if (copy.pUnk != nullptr)
        copy.pUnk->AddRef();
    *target = copy;
    return S_OK;
}

HRESULT WINAPI MoCreateMediaType(DMO_MEDIA_TYPE** type, DWORD formatBytes) {
    if (type == nullptr)
        return E_POINTER;
    *type = nullptr;
    auto* made = static_cast<DMO_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(DMO_MEDIA_TYPE)));
    if (made == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = MoInitMediaType(made, formatBytes);
    if (FAILED(result)) {
        CoTaskMemFree(made);
        return result;
    }
    *type = made;
    return S_OK;
}

HRESULT WINAPI MoDuplicateMediaType(DMO_MEDIA_TYPE** target, const DMO_MEDIA_TYPE* source) {
    if (target == nullptr || source == nullptr)
        return E_POINTER;
    *target = nullptr;
    auto* made = static_cast<DMO_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(DMO_MEDIA_TYPE)));
    if (made == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = MoCopyMediaType(made, source);
    if (FAILED(result)) {
        CoTaskMemFree(made);
        return result;
    }
    *target = made;
    return S_OK;
}

HRESULT WINAPI MoDeleteMediaType(DMO_MEDIA_TYPE* type) {
    const HRESULT result = MoFreeMediaType(type);
    if (SUCCEEDED(result))
        CoTaskMemFree(type);
    return result;
}
