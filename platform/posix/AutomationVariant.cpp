// VARIANT: a value that knows its type. Records and user-defined types are not known here.

#include "platform/InterfaceTypes.h"

#include <cstring>

namespace {

/// Whether a value of this type may stand in a variant; `baseType` without the array and reference bits.
bool isBaseType(VARTYPE baseType) {
    switch (baseType) {
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_ERROR:
    case VT_BOOL:
    case VT_DECIMAL:
        return true;
    default:
        return false;
    }
}

bool isValid(VARTYPE type) {
    const auto base = static_cast<VARTYPE>(type & VT_TYPEMASK);
    const bool compound = (type & (VT_ARRAY | VT_BYREF)) != 0;
    if ((type & (VT_VECTOR | VT_RESERVED)) != 0)
        return false;
    if (isBaseType(base))
        return true;
    return compound ? base == VT_VARIANT : base == VT_EMPTY || base == VT_NULL;
}

/// Makes the bitwise copy `value` own what it refers to; empty if it cannot.
HRESULT own(VARIANT& value) {
    if ((value.vt & VT_ARRAY) != 0) {
        SAFEARRAY* copy = nullptr;
        const HRESULT result = SafeArrayCopy(value.parray, &copy);
        if (FAILED(result)) {
            value.vt = VT_EMPTY;
            return result;
        }
        value.parray = copy;
        return S_OK;
    }
    switch (value.vt) {
    case VT_BSTR:
        if (value.bstrVal != nullptr) {
            // By bytes: the text may hold binary data of an odd length.
            BSTR copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(value.bstrVal),
                                              SysStringByteLen(value.bstrVal));
            if (copy == nullptr) {
                value.vt = VT_EMPTY;
                return E_OUTOFMEMORY;
            }
            value.bstrVal = copy;
        }
        return S_OK;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        if (value.punkVal != nullptr)
            value.punkVal->AddRef();
        return S_OK;
    default:
        return S_OK;
    }
}

/// Bytes of a value behind a reference that is copied as it is.
std::size_t plainSize(VARTYPE type) {
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return 4;
    default:
        return 8;
    }
}

/// A bitwise copy of the value that `source`, a reference to anything but a variant, refers to.
VARIANT referredValue(const VARIANT& source) {
    VARIANT value{};
    const auto type = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (type == VT_DECIMAL) {
        // A decimal fills the variant and its own first field lies where the type stands.
        value.decVal = *source.pdecVal;
    } else {
        std::memcpy(&value.llVal, source.byref,
                    (type & VT_ARRAY) != 0 ? sizeof(SAFEARRAY*) : plainSize(type));
    }
    value.vt = type;
    return value;
}

} // namespace

void WINAPI VariantInit(VARIANT* variant) {
    variant->vt = VT_EMPTY;
}

HRESULT WINAPI VariantClear(VARIANT* variant) {
    if (variant == nullptr)
        return E_INVALIDARG;
    if (!isValid(variant->vt))
        return DISP_E_BADVARTYPE;
    if ((variant->vt & VT_BYREF) == 0) {
        if ((variant->vt & VT_ARRAY) != 0) {
            const HRESULT result = SafeArrayDestroy(variant->parray);
            if (FAILED(result))
                return result;
        } else if (variant->vt == VT_BSTR) {
            SysFreeString(variant->bstrVal);
        } else if ((variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) && variant->punkVal != nullptr) {
            // Emptied first: what the release calls may clear the same variant.
            IUnknown* const released = variant->punkVal;
            variant->vt = VT_EMPTY;
            released->Release();
            return S_OK;
        }
    }
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT WINAPI VariantCopy(VARIANTARG* target, const VARIANTARG* source) {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    if (!isValid(source->vt))
        return DISP_E_BADVARTYPE;
    if (target == source)
        return S_OK;
    const HRESULT result = VariantClear(target);
    if (FAILED(result))
        return result;
    *target = *source;
    return (source->vt & VT_BYREF) != 0 ? S_OK : own(*target);
}

HRESULT WINAPI VariantCopyInd(VARIANT* target, const VARIANTARG* source) {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    if ((source->vt & VT_BYREF) == 0)
        return VariantCopy(target, source);
    if (!isValid(source->vt) || source->byref == nullptr)
        return E_INVALIDARG;
    const VARIANT* referred = source;
    if (source->vt == (VT_BYREF | VT_VARIANT)) {
        referred = source->pvarVal;
        // A reference to a reference to a variant is one too many.
        if (!isValid(referred->vt) || referred->vt == (VT_BYREF | VT_VARIANT))
            return E_INVALIDARG;
        if ((referred->vt & VT_BYREF) != 0 && referred->byref == nullptr)
            return E_INVALIDARG;
    }
    VARIANT value = (referred->vt & VT_BYREF) != 0 ? referredValue(*referred) : *referred;
    HRESULT result = own(value);
    if (FAILED(result))
        return result;
    // Only now, for the target may be the source or own what the source refers to.
    result = VariantClear(target);
    if (FAILED(result)) {
        VariantClear(&value);
        return result;
    }
    *target = value;
    return S_OK;
}
