#pragma once

#include "platform/InterfaceTypes.h"

#include <cstring>
#include <type_traits>
#include <utility>

namespace tarvo::com {

/// Owns the format block and the reference of a DMO_MEDIA_TYPE. Copies can fail and therefore have names.
class CMediaType {
public:
    CMediaType() = default;
    CMediaType(CMediaType&& other) noexcept : m_type(other.detach()) {}
    CMediaType& operator=(CMediaType&& other) noexcept {
        CMediaType moved(std::move(other));
        std::swap(m_type, moved.m_type);
        return *this;
    }
    ~CMediaType() { reset(); }

    const DMO_MEDIA_TYPE& get() const noexcept { return m_type; }
    const DMO_MEDIA_TYPE* operator->() const noexcept { return &m_type; }
    /// For changing single fields; the owned ones are not to be overwritten.
    DMO_MEDIA_TYPE& fields() noexcept { return m_type; }

    void reset() noexcept {
        MoFreeMediaType(&m_type);
        m_type = DMO_MEDIA_TYPE{};
    }

    /// Becomes a copy of another; E_OUTOFMEMORY leaves it as it was. The other may be its own.
    HRESULT assign(const DMO_MEDIA_TYPE& other) noexcept {
        DMO_MEDIA_TYPE copy{};
        const HRESULT result = MoCopyMediaType(&copy, &other);
        if (SUCCEEDED(result))
            attach(copy);
        return result;
    }

    /// Stores a copy in an out parameter, whose old contents are not freed: callers give them away
    /// uninitialised.
    HRESULT copyTo(DMO_MEDIA_TYPE* target) const noexcept { return MoCopyMediaType(target, &m_type); }

    /// Sets the format: a new block with a copy of the record. E_OUTOFMEMORY leaves the old one.
    template<class Format>
    HRESULT setFormat(REFGUID formatType, const Format& format) noexcept {
        static_assert(std::is_trivially_copyable_v<Format>);
        void* block = CoTaskMemAlloc(sizeof(Format));
        if (block == nullptr)
            return E_OUTOFMEMORY;
        // Copied first: the record may lie in the old block.
        std::memcpy(block, &format, sizeof(Format));
        CoTaskMemFree(m_type.pbFormat);
        m_type.pbFormat = static_cast<BYTE*>(block);
        m_type.cbFormat = sizeof(Format);
        m_type.formattype = formatType;
        return S_OK;
    }

    /// The format block as a record, null if it is of another format or too short.
    template<class Format>
    const Format* format(REFGUID formatType) const noexcept {
        static_assert(std::is_trivially_copyable_v<Format>);
        if (m_type.formattype != formatType || m_type.pbFormat == nullptr || m_type.cbFormat < sizeof(Format))
            return nullptr;
        return reinterpret_cast<const Format*>(m_type.pbFormat);
    }

    /// Takes over what the record owns.
    void attach(const DMO_MEDIA_TYPE& type) noexcept {
        DMO_MEDIA_TYPE old = std::exchange(m_type, type);
        MoFreeMediaType(&old);
    }
    /// Hands over to the caller what the record owns.
    [[nodiscard]] DMO_MEDIA_TYPE detach() noexcept { return std::exchange(m_type, DMO_MEDIA_TYPE{}); }

private:
    DMO_MEDIA_TYPE m_type{};
};

} // namespace tarvo::com
