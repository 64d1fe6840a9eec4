#pragma once

#include "platform/InterfaceTypes.h"

#include <limits>
#include <new>
#include <string_view>
#include <utility>

namespace tarvo::com {

/// Texts of the interfaces, in 16-bit characters on every system.
using OleStringView = std::basic_string_view<OLECHAR>;

/// Owns a BSTR, null or not; null and empty are the same text.
class CBStr {
public:
    CBStr() = default;
    /// Copies the text, zeros in it too; std::bad_alloc without memory.
    explicit CBStr(OleStringView text) {
        if (text.size() <= std::numeric_limits<UINT>::max())
            m_text = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        if (m_text == nullptr)
            throw std::bad_alloc();
    }
    CBStr(const CBStr& other) : CBStr() {
        if (other.m_text == nullptr)
            return;
        // By bytes, for their number may be odd.
        m_text =
            SysAllocStringByteLen(reinterpret_cast<LPCSTR>(other.m_text), SysStringByteLen(other.m_text));
        if (m_text == nullptr)
            throw std::bad_alloc();
    }
    CBStr(CBStr&& other) noexcept : m_text(other.detach()) {}
    ~CBStr() { reset(); }
    CBStr& operator=(CBStr other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }

    BSTR get() const noexcept { return m_text; }
    OleStringView view() const noexcept {
        return m_text != nullptr ? OleStringView(m_text, SysStringLen(m_text)) : OleStringView();
    }

    void reset() noexcept { SysFreeString(std::exchange(m_text, nullptr)); }
    /// Where a function shall store a new text; the old one is freed first.
    BSTR* put() noexcept {
        reset();
        return &m_text;
    }
    /// Takes over a text.
    void attach(BSTR text) noexcept {
        reset();
        m_text = text;
    }
    /// Hands the text over to the caller.
    [[nodiscard]] BSTR detach() noexcept { return std::exchange(m_text, nullptr); }

private:
    BSTR m_text = nullptr;
};

} // namespace tarvo::com
