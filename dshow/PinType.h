#pragma once

#include "platform/InterfaceTypes.h"

namespace tarvo::dshow {

/// Owns the format block and the reference of a media type of the graph. Copies can fail and therefore have
/// names.
///
/// The graph's record has the layout of the media objects' one, yet is a type of its own to the language.
class CPinType {
public:
    CPinType() = default;
    CPinType(CPinType&& other) noexcept : m_type(other.detach()) {}
    CPinType& operator=(CPinType&& other) noexcept;
    ~CPinType() { reset(); }

    const AM_MEDIA_TYPE& get() const noexcept { return m_type; }
    const AM_MEDIA_TYPE* operator->() const noexcept { return &m_type; }

    void reset() noexcept;
    /// Becomes a copy of another, which may be its own; E_OUTOFMEMORY leaves it as it was.
    HRESULT assign(const AM_MEDIA_TYPE& other) noexcept;
    /// Stores a copy in an out parameter, whose old contents are not freed.
    HRESULT copyTo(AM_MEDIA_TYPE* target) const noexcept;

    /// Where a function shall store a type; the old one is freed first.
    AM_MEDIA_TYPE* put() noexcept;
    /// Takes over a type that a function gave out, record included, as IMediaSample::GetMediaType does.
    void attachAllocated(AM_MEDIA_TYPE* type) noexcept;
    /// A copy whose record is allocated too, as enumerators give them out; null without memory.
    AM_MEDIA_TYPE* allocateCopy() const noexcept;
    /// Frees such a copy; null is nothing.
    static void freeAllocated(AM_MEDIA_TYPE* type) noexcept;

private:
    [[nodiscard]] AM_MEDIA_TYPE detach() noexcept;

    AM_MEDIA_TYPE m_type{};
};

} // namespace tarvo::dshow
