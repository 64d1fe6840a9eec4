#pragma once

#include "platform/InterfaceTypes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>

namespace tarvo::com {

/// Owns a SAFEARRAY, null or not.
class CSafeArray {
public:
    CSafeArray() = default;
    CSafeArray(CSafeArray&& other) noexcept : m_array(other.detach()) {}
    CSafeArray& operator=(CSafeArray&& other) noexcept {
        CSafeArray(std::move(other)).swap(*this);
        return *this;
    }
    ~CSafeArray() { reset(); }

    /// A new array of one dimension, filled with zeros; null without memory or for a type that no array
    /// holds.
    static CSafeArray vector(VARTYPE type, std::uint32_t count, std::int32_t lowerBound = 0) noexcept {
        CSafeArray made;
        made.m_array = SafeArrayCreateVector(type, lowerBound, count);
        return made;
    }

    SAFEARRAY* get() const noexcept { return m_array; }
    explicit operator bool() const noexcept { return m_array != nullptr; }

    /// A locked array is not destroyed but lost, which is better than to free memory in use.
    void reset() noexcept { SafeArrayDestroy(std::exchange(m_array, nullptr)); }
    /// Where a function shall store a new array; the old one is destroyed first.
    SAFEARRAY** put() noexcept {
        reset();
        return &m_array;
    }
    void attach(SAFEARRAY* array) noexcept {
        reset();
        m_array = array;
    }
    [[nodiscard]] SAFEARRAY* detach() noexcept { return std::exchange(m_array, nullptr); }

private:
    void swap(CSafeArray& other) noexcept { std::swap(m_array, other.m_array); }

    SAFEARRAY* m_array = nullptr;
};

/// The type of elements that are Ts in memory. BOOL is not here: it is a short that only looks like one.
template<class T>
inline constexpr VARTYPE elementTypeOf = VT_EMPTY;
template<>
inline constexpr VARTYPE elementTypeOf<std::int8_t> = VT_I1;
template<>
inline constexpr VARTYPE elementTypeOf<std::uint8_t> = VT_UI1;
template<>
inline constexpr VARTYPE elementTypeOf<std::int16_t> = VT_I2;
template<>
inline constexpr VARTYPE elementTypeOf<std::uint16_t> = VT_UI2;
template<>
inline constexpr VARTYPE elementTypeOf<std::int32_t> = VT_I4;
template<>
inline constexpr VARTYPE elementTypeOf<std::uint32_t> = VT_UI4;
template<>
inline constexpr VARTYPE elementTypeOf<std::int64_t> = VT_I8;
template<>
inline constexpr VARTYPE elementTypeOf<std::uint64_t> = VT_UI8;
template<>
inline constexpr VARTYPE elementTypeOf<float> = VT_R4;
template<>
inline constexpr VARTYPE elementTypeOf<double> = VT_R8;
template<>
inline constexpr VARTYPE elementTypeOf<BSTR> = VT_BSTR;
template<>
inline constexpr VARTYPE elementTypeOf<VARIANT> = VT_VARIANT;

/// Keeps an array of one dimension locked and shows its elements for as long as it lives.
///
/// `result()` is E_POINTER without an array, DISP_E_TYPEMISMATCH for elements of another type,
/// DISP_E_BADINDEX for more than one dimension; then there are no elements.
template<class T>
class CSafeArrayAccess {
    static_assert(elementTypeOf<T> != VT_EMPTY);

public:
    explicit CSafeArrayAccess(SAFEARRAY* array) noexcept : m_result(open(array)) {}
    ~CSafeArrayAccess() {
        if (m_array != nullptr)
            SafeArrayUnaccessData(m_array);
    }
    CSafeArrayAccess(const CSafeArrayAccess&) = delete;
    CSafeArrayAccess& operator=(const CSafeArrayAccess&) = delete;

    HRESULT result() const noexcept { return m_result; }
    std::span<T> elements() const noexcept { return m_elements; }

private:
    HRESULT open(SAFEARRAY* array) noexcept {
        VARTYPE type = VT_EMPTY;
        if (array == nullptr)
            return E_POINTER;
        if (FAILED(SafeArrayGetVartype(array, &type)) || type != elementTypeOf<T> ||
            SafeArrayGetElemsize(array) != sizeof(T))
            return DISP_E_TYPEMISMATCH;
        if (SafeArrayGetDim(array) != 1)
            return DISP_E_BADINDEX;
        void* data = nullptr;
        const HRESULT result = SafeArrayAccessData(array, &data);
        if (FAILED(result))
            return result;
        m_array = array;
        m_elements = {static_cast<T*>(data), static_cast<std::size_t>(array->rgsabound[0].cElements)};
        return S_OK;
    }

    SAFEARRAY* m_array = nullptr;
    std::span<T> m_elements;
    HRESULT m_result;
};

} // namespace tarvo::com
