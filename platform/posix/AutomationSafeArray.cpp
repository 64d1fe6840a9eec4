// SAFEARRAY: an array that knows its bounds, the type of its elements and how often it is locked.
//
// A hidden record before the descriptor keeps the type or, for interfaces, the identifier of the interface.
// The data are one block: the leftmost index runs fastest, and its bounds are the last of the descriptor.

#include "platform/InterfaceTypes.h"
#include "platform/posix/AutomationElements.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

namespace {

using tarvo::platform::clearElements;
using tarvo::platform::copyElement;
using tarvo::platform::elementKind;

constexpr std::size_t hiddenBytes = sizeof(GUID);
constexpr ULONG maximumLocks = std::numeric_limits<USHORT>::max();

struct ElementType {
    USHORT size;
    USHORT features;
};

std::optional<ElementType> elementType(VARTYPE type) {
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return ElementType{1, FADF_HAVEVARTYPE};
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return ElementType{2, FADF_HAVEVARTYPE};
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return ElementType{4, FADF_HAVEVARTYPE};
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
        return ElementType{8, FADF_HAVEVARTYPE};
    case VT_BSTR:
        return ElementType{sizeof(BSTR), FADF_HAVEVARTYPE | FADF_BSTR};
    case VT_UNKNOWN:
        return ElementType{sizeof(IUnknown*), FADF_HAVEIID | FADF_UNKNOWN};
    case VT_DISPATCH:
        return ElementType{sizeof(IDispatch*), FADF_HAVEIID | FADF_DISPATCH};
    case VT_VARIANT:
        return ElementType{sizeof(VARIANT), FADF_HAVEVARTYPE | FADF_VARIANT};
    default:
        return std::nullopt;
    }
}

std::byte* blockOf(SAFEARRAY* array) {
    return reinterpret_cast<std::byte*>(array) - hiddenBytes;
}

VARTYPE& storedType(SAFEARRAY* array) {
    return *reinterpret_cast<VARTYPE*>(reinterpret_cast<std::byte*>(array) - sizeof(ULONG));
}

/// Number of elements, or nothing if their bytes or an index would not fit the fields that hold them.
std::optional<std::size_t> countElements(UINT dimensions, const SAFEARRAYBOUND* bounds,
                                         std::size_t elementBytes) {
    std::size_t count = 1;
    for (UINT i = 0; i < dimensions; ++i) {
        const auto last = std::int64_t{bounds[i].lLbound} + static_cast<ULONG>(bounds[i].cElements) - 1;
        if (last > std::numeric_limits<LONG>::max())
            return std::nullopt;
        // Each factor is below 2^32, so the product cannot leave 64 bits before it is compared.
        count *= static_cast<ULONG>(bounds[i].cElements);
        if (count > std::numeric_limits<ULONG>::max() / elementBytes)
            return std::nullopt;
    }
    return count;
}

std::size_t countElements(const SAFEARRAY& array) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array.cDims; ++i)
        count *= static_cast<ULONG>(array.rgsabound[i].cElements);
    return count;
}

bool hasDimension(const SAFEARRAY& array, UINT dimension) {
    return dimension >= 1 && dimension <= array.cDims;
}

/// Bounds of a dimension, counted from 1 at the left.
const SAFEARRAYBOUND& boundOf(const SAFEARRAY& array, UINT dimension) {
    return array.rgsabound[array.cDims - dimension];
}

} // namespace

SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    const std::optional<ElementType> element = elementType(type);
    if (!element || dimensions == 0 || dimensions > std::numeric_limits<USHORT>::max() || bounds == nullptr)
        return nullptr;
    const std::optional<std::size_t> count = countElements(dimensions, bounds, element->size);
    if (!count)
        return nullptr;

    const std::size_t descriptorBytes = sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    auto* block = static_cast<std::byte*>(std::calloc(1, hiddenBytes + descriptorBytes));
    if (block == nullptr)
        return nullptr;
    auto* array = new (block + hiddenBytes) SAFEARRAY{};
    array->cDims = static_cast<USHORT>(dimensions);
    array->fFeatures = element->features;
    array->cbElements = element->size;
    for (UINT i = 0; i < dimensions; ++i)
        array->rgsabound[dimensions - 1 - i] = bounds[i];
    if ((element->features & FADF_HAVEIID) != 0)
        std::memcpy(block, type == VT_DISPATCH ? &IID_IDispatch : &IID_IUnknown, sizeof(GUID));
    else
        storedType(array) = type;

    array->pvData = std::calloc(*count != 0 ? *count : 1, element->size);
    if (array->pvData == nullptr) {
        std::free(block);
        return nullptr;
    }
    return array;
}

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
    SAFEARRAYBOUND bound{};
    bound.cElements = count;
    bound.lLbound = lowerBound;
    return SafeArrayCreate(type, 1, &bound);
}

HRESULT WINAPI SafeArrayDestroyData(SAFEARRAY* array) {
    if (array == nullptr)
        return E_INVALIDARG;
    if (array->cLocks != 0)
        return DISP_E_ARRAYISLOCKED;
    if (array->pvData != nullptr)
        clearElements(*array, countElements(*array));
    std::free(array->pvData);
    array->pvData = nullptr;
    return S_OK;
}

HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr)
        return S_OK;
    const HRESULT result = SafeArrayDestroyData(array);
    if (SUCCEEDED(result))
        std::free(blockOf(array));
    return result;
}

HRESULT WINAPI SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** target) {
    if (target == nullptr)
        return E_INVALIDARG;
    *target = nullptr;
    if (source == nullptr)
        return S_OK;
    const std::size_t descriptorBytes = sizeof(SAFEARRAY) + (source->cDims - 1U) * sizeof(SAFEARRAYBOUND);
    auto* block = static_cast<std::byte*>(std::malloc(hiddenBytes + descriptorBytes));
    if (block == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(block, blockOf(source), hiddenBytes + descriptorBytes);
    auto* copy = reinterpret_cast<SAFEARRAY*>(block + hiddenBytes);
    copy->cLocks = 0;
    const std::size_t count = countElements(*source);
    // Zeros first: an array whose elements could be copied only in part must still be destroyable.
    copy->pvData = std::calloc(count != 0 ? count : 1, source->cbElements);
    if (copy->pvData == nullptr) {
        std::free(block);
        return E_OUTOFMEMORY;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t offset = i * source->cbElements;
        const HRESULT result =
            copyElement(elementKind(*source), static_cast<std::byte*>(copy->pvData) + offset,
                        static_cast<const std::byte*>(source->pvData) + offset, source->cbElements);
        if (FAILED(result)) {
            SafeArrayDestroy(copy);
            return result;
        }
    }
    *target = copy;
    return S_OK;
}

HRESULT WINAPI SafeArrayLock(SAFEARRAY* array) {
    if (array == nullptr)
        return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    if (locks.fetch_add(1) >= maximumLocks) {
        locks.fetch_sub(1);
        return E_UNEXPECTED;
    }
    return S_OK;
}

HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* array) {
    if (array == nullptr)
        return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    ULONG before = locks.load();
    do {
        if (before == 0)
            return E_UNEXPECTED;
    } while (!locks.compare_exchange_weak(before, before - 1));
    return S_OK;
}

HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr)
        return E_INVALIDARG;
    const HRESULT result = SafeArrayLock(array);
    *data = SUCCEEDED(result) ? array->pvData : nullptr;
    return result;
}

HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* array) {
    return SafeArrayUnlock(array);
}

UINT WINAPI SafeArrayGetDim(SAFEARRAY* array) {
    return array != nullptr ? array->cDims : 0;
}

UINT WINAPI SafeArrayGetElemsize(SAFEARRAY* array) {
    return array != nullptr ? array->cbElements : 0;
}

HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr)
        return E_INVALIDARG;
    if (!hasDimension(*array, dimension))
        return DISP_E_BADINDEX;
    *bound = boundOf(*array, dimension).lLbound;
    return S_OK;
}

HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr)
        return E_INVALIDARG;
    if (!hasDimension(*array, dimension))
        return DISP_E_BADINDEX;
    const SAFEARRAYBOUND& range = boundOf(*array, dimension);
    *bound = static_cast<LONG>(std::int64_t{range.lLbound} + static_cast<ULONG>(range.cElements) - 1);
    return S_OK;
}

HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (array == nullptr || type == nullptr)
        return E_INVALIDARG;
    if ((array->fFeatures & FADF_HAVEIID) != 0)
        *type = (array->fFeatures & FADF_DISPATCH) != 0 ? VT_DISPATCH : VT_UNKNOWN;
    else
        *type = storedType(array);
    return S_OK;
}

// NOLINTNEXTLINE(readability-non-const-parameter): the platform's signature
HRESULT WINAPI SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element) {
    if (array == nullptr || indices == nullptr || element == nullptr)
        return E_INVALIDARG;
    std::size_t place = 0;
    std::size_t stride = 1;
    for (UINT dimension = 1; dimension <= array->cDims; ++dimension) {
        const SAFEARRAYBOUND& range = boundOf(*array, dimension);
        const auto offset = std::int64_t{indices[dimension - 1]} - range.lLbound;
        if (offset < 0 || offset >= static_cast<ULONG>(range.cElements))
            return DISP_E_BADINDEX;
        place += static_cast<std::size_t>(offset) * stride;
        stride *= static_cast<ULONG>(range.cElements);
    }
    *element = static_cast<std::byte*>(array->pvData) + place * array->cbElements;
    return S_OK;
}
