#pragma once

#include "com/BStr.h"
#include "com/Guarded.h"
#include "platform/InterfaceTypes.h"

#include <concepts>
#include <cstdint>
#include <utility>

namespace tarvo::com {

/// Owns the value of a VARIANT. Copies throw std::bad_alloc, or CComError for a value that cannot be copied.
class CVariant {
public:
    CVariant() noexcept { VariantInit(&m_value); }
    // By exact type, so that no number is converted unasked: a bool is no number, a literal is a VT_I4.
    explicit CVariant(std::same_as<bool> auto value) noexcept : CVariant() {
        m_value.vt = VT_BOOL;
        m_value.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit CVariant(std::same_as<std::int32_t> auto value) noexcept : CVariant() {
        m_value.vt = VT_I4;
        m_value.lVal = value;
    }
    explicit CVariant(std::same_as<std::int64_t> auto value) noexcept : CVariant() {
        m_value.vt = VT_I8;
        m_value.llVal = value;
    }
    explicit CVariant(std::same_as<double> auto value) noexcept : CVariant() {
        m_value.vt = VT_R8;
        m_value.dblVal = value;
    }
    explicit CVariant(CBStr text) noexcept : CVariant() {
        m_value.vt = VT_BSTR;
        m_value.bstrVal = text.detach();
    }
    /// The two kinds of interface add a reference; null is a value too.
    explicit CVariant(IUnknown* object) noexcept : CVariant() {
        m_value.vt = VT_UNKNOWN;
        m_value.punkVal = object;
        if (object != nullptr)
            object->AddRef();
    }
    explicit CVariant(IDispatch* object) noexcept : CVariant() {
        m_value.vt = VT_DISPATCH;
        m_value.pdispVal = object;
        if (object != nullptr)
            object->AddRef();
    }
    /// A copy of somebody else's value.
    explicit CVariant(const VARIANT& value) : CVariant() {
        throwIfFailed(VariantCopy(&m_value, unchanged(value)));
    }

    CVariant(const CVariant& other) : CVariant(other.m_value) {}
    CVariant(CVariant&& other) noexcept : m_value(other.detach()) {}
    ~CVariant() { reset(); }
    CVariant& operator=(CVariant other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }

    const VARIANT& get() const noexcept { return m_value; }
    VARTYPE type() const noexcept { return m_value.vt; }
    /// The value converted to another type; DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW leaves `target` as it was.
    HRESULT convertTo(VARTYPE type, CVariant& target) const noexcept {
        return VariantChangeType(&target.m_value, unchanged(m_value), 0, type);
    }

    void reset() noexcept {
        // A locked array cannot be destroyed, and to lose it is better than to free memory in use.
        if (FAILED(VariantClear(&m_value)))
            VariantInit(&m_value);
    }
    /// Where a function shall store a new value; the old one is cleared first.
    VARIANT* put() noexcept {
        reset();
        return &m_value;
    }
    /// Takes over a value, for instance an array just made.
    void attach(const VARIANT& value) noexcept {
        reset();
        m_value = value;
    }
    /// Hands the value over to the caller.
    [[nodiscard]] VARIANT detach() noexcept {
        const VARIANT value = m_value;
        VariantInit(&m_value);
        return value;
    }

private:
    /// Some headers leave out the const of functions that do not change the value.
    static VARIANT* unchanged(const VARIANT& value) noexcept { return const_cast<VARIANT*>(&value); }

    VARIANT m_value;
};

} // namespace tarvo::com
