#include "dshow/PinType.h"

#include <cstring>
#include <utility>

namespace tarvo::dshow {

namespace {

void freeContents(AM_MEDIA_TYPE& type) noexcept {
    CoTaskMemFree(type.pbFormat);
    if (type.pUnk != nullptr)
        type.pUnk->Release();
}

/// Does not free what `target` held.
HRESULT copyInto(AM_MEDIA_TYPE& target, const AM_MEDIA_TYPE& source) noexcept {
    BYTE* block = nullptr;
    const ULONG size = source.pbFormat != nullptr ? source.cbFormat : 0;
    if (size != 0) {
        block = static_cast<BYTE*>(CoTaskMemAlloc(size));
        if (block == nullptr)
            return E_OUTOFMEMORY;
        std::memcpy(block, source.pbFormat, size);
    }
    target = source;
    target.pbFormat = block;
    target.cbFormat = size;
    if (target.pUnk != nullptr)
        target.pUnk->AddRef();
    return S_OK;
}

} // namespace

CPinType& CPinType::operator=(CPinType&& other) noexcept {
    CPinType moved(std::move(other));
    std::swap(m_type, moved.m_type);
    return *this;
}

void CPinType::reset() noexcept {
    AM_MEDIA_TYPE old = detach();
    freeContents(old);
}

HRESULT CPinType::assign(const AM_MEDIA_TYPE& other) noexcept {
    AM_MEDIA_TYPE copy{};
    const HRESULT result = copyInto(copy, other);
    if (SUCCEEDED(result)) {
        reset();
        m_type = copy;
    }
    return result;
}

HRESULT CPinType::copyTo(AM_MEDIA_TYPE* target) const noexcept {
    return target != nullptr ? copyInto(*target, m_type) : E_POINTER;
}

AM_MEDIA_TYPE* CPinType::put() noexcept {
    reset();
    return &m_type;
}

void CPinType::attachAllocated(AM_MEDIA_TYPE* type) noexcept {
    reset();
    if (type == nullptr)
        return;
    m_type = *type;
    CoTaskMemFree(type);
}

AM_MEDIA_TYPE* CPinType::allocateCopy() const noexcept {
    auto* copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (copy != nullptr && FAILED(copyInto(*copy, m_type))) {
        CoTaskMemFree(copy);
        return nullptr;
    }
    return copy;
}

void CPinType::freeAllocated(AM_MEDIA_TYPE* type) noexcept {
    if (type == nullptr)
        return;
    freeContents(*type);
    CoTaskMemFree(type);
}

AM_MEDIA_TYPE CPinType::detach() noexcept {
    return std::exchange(m_type, AM_MEDIA_TYPE{});
}

} // namespace tarvo::dshow
