// Conversion between numbers, truth values and texts, as far as late-bound clients mix them up: whole numbers
// of every width, R4, R8, BOOL, BSTR, and EMPTY as 0 or "". Texts hold plain decimal numbers, whatever the
// locale; dates, currencies, decimals and objects are DISP_E_TYPEMISMATCH.

#include "platform/InterfaceTypes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace {

using Number = std::variant<std::int64_t, std::uint64_t, double>;

template<class T>
bool parseWhole(std::string_view text, T& value) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc{} && stop == end;
}

/// The characters of a text of ASCII characters without blanks around it; empty if there are others.
std::string narrowed(BSTR text) {
    std::string result;
    for (UINT i = 0; i < SysStringLen(text); ++i) {
        if (text[i] == 0 || text[i] > 0x7E)
            return {};
        result.push_back(static_cast<char>(text[i]));
    }
    const std::size_t first = result.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    return result.substr(first, result.find_last_not_of(" \t\r\n") - first + 1);
}

HRESULT parseNumber(BSTR source, Number& number) {
    const std::string text = narrowed(source);
    // This also keeps out the names of infinity and of what is no number.
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos)
        return DISP_E_TYPEMISMATCH;
    std::string_view digits = text;
    if (digits.starts_with('+')) {
        digits.remove_prefix(1);
        if (digits.starts_with('-'))
            return DISP_E_TYPEMISMATCH;
    }
    if (std::int64_t value = 0; parseWhole(digits, value)) {
        number = value;
        return S_OK;
    }
    if (std::uint64_t value = 0; parseWhole(digits, value)) {
        number = value;
        return S_OK;
    }
    double value = 0;
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (stop != digits.data() + digits.size())
        return DISP_E_TYPEMISMATCH;
    if (error == std::errc::result_out_of_range)
        return DISP_E_OVERFLOW;
    if (error != std::errc{})
        return DISP_E_TYPEMISMATCH;
    number = value;
    return S_OK;
}

HRESULT readNumber(const VARIANT& source, Number& number) {
    switch (source.vt) {
    case VT_EMPTY:
        number = std::int64_t{0};
        return S_OK;
    case VT_I1:
        number = static_cast<std::int64_t>(static_cast<signed char>(source.cVal));
        return S_OK;
    case VT_UI1:
        number = static_cast<std::uint64_t>(source.bVal);
        return S_OK;
    case VT_I2:
        number = static_cast<std::int64_t>(source.iVal);
        return S_OK;
    case VT_UI2:
        number = static_cast<std::uint64_t>(source.uiVal);
        return S_OK;
    case VT_I4:
    case VT_INT:
        number = static_cast<std::int64_t>(source.lVal);
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        number = static_cast<std::uint64_t>(static_cast<std::uint32_t>(source.ulVal));
        return S_OK;
    case VT_I8:
        number = static_cast<std::int64_t>(source.llVal);
        return S_OK;
    case VT_UI8:
        number = static_cast<std::uint64_t>(source.ullVal);
        return S_OK;
    case VT_R4:
        number = static_cast<double>(source.fltVal);
        return S_OK;
    case VT_R8:
        number = source.dblVal;
        return S_OK;
    case VT_BOOL:
        number = static_cast<std::int64_t>(source.boolVal);
        return S_OK;
    case VT_BSTR:
        return parseNumber(source.bstrVal, number);
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

/// Halves go to the even neighbour.
template<class T>
HRESULT writeWhole(const Number& number, T& target) {
    using Limits = std::numeric_limits<T>;
    bool fits = false;
    if (const auto* whole = std::get_if<std::int64_t>(&number)) {
        fits = std::in_range<T>(*whole);
        target = static_cast<T>(*whole);
    } else if (const auto* natural = std::get_if<std::uint64_t>(&number)) {
        fits = std::in_range<T>(*natural);
        target = static_cast<T>(*natural);
    } else {
        const double rounded = std::nearbyint(std::get<double>(number));
        // A power of two in every type, so exact where the largest value itself is not.
        const double end = std::ldexp(1.0, Limits::digits);
        fits = rounded >= static_cast<double>(Limits::min()) && rounded < end;
        target = fits ? static_cast<T>(rounded) : T{};
    }
    return fits ? S_OK : DISP_E_OVERFLOW;
}

double asDouble(const Number& number) {
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

HRESULT writeNumber(const Number& number, VARIANT& target, VARTYPE type) {
    switch (type) {
    case VT_I1: {
        std::int8_t value = 0;
        const HRESULT result = writeWhole(number, value);
        target.cVal = static_cast<decltype(target.cVal)>(value);
        return result;
    }
    case VT_UI1:
        return writeWhole(number, target.bVal);
    case VT_I2:
        return writeWhole(number, target.iVal);
    case VT_UI2:
        return writeWhole(number, target.uiVal);
    case VT_I4:
    case VT_INT:
        return writeWhole(number, target.lVal);
    case VT_UI4:
    case VT_UINT:
        return writeWhole(number, target.ulVal);
    case VT_I8:
        return writeWhole(number, target.llVal);
    case VT_UI8:
        return writeWhole(number, target.ullVal);
    case VT_R4: {
        const double value = asDouble(number);
        if (std::isfinite(value) && std::abs(value) > static_cast<double>(std::numeric_limits<float>::max()))
            return DISP_E_OVERFLOW;
        target.fltVal = static_cast<float>(value);
        return S_OK;
    }
    case VT_R8:
        target.dblVal = asDouble(number);
        return S_OK;
    case VT_BOOL:
        target.boolVal = asDouble(number) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

/// Truth has all bits set in every whole type, the unsigned ones too.
HRESULT writeTruth(VARIANT_BOOL truth, VARIANT& target, VARTYPE type) {
    switch (type) {
    case VT_UI1:
        target.bVal = static_cast<BYTE>(truth);
        return S_OK;
    case VT_UI2:
        target.uiVal = static_cast<USHORT>(truth);
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        target.ulVal = static_cast<ULONG>(truth);
        return S_OK;
    case VT_UI8:
        target.ullVal = static_cast<ULONGLONG>(truth);
        return S_OK;
    default:
        return writeNumber(static_cast<std::int64_t>(truth), target, type);
    }
}

HRESULT writeText(const VARIANT& source, const Number& number, USHORT flags, VARIANT& target) {
    std::string text;
    if (source.vt == VT_EMPTY) {
        text = {};
    } else if (source.vt == VT_BOOL && (flags & VARIANT_ALPHABOOL) != 0) {
        text = source.boolVal != VARIANT_FALSE ? "True" : "False";
    } else if (const auto* real = std::get_if<double>(&number)) {
        // As many digits as the type holds in any case.
        std::array<char, 40> buffer{};
        const int digits = source.vt == VT_R4 ? std::numeric_limits<float>::digits10 + 1
                                              : std::numeric_limits<double>::digits10;
        const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *real,
                                                std::chars_format::general, digits);
        text.assign(buffer.data(), end);
        std::ranges::replace(text, 'e', 'E');
    } else {
        text = std::visit([](auto value) { return std::to_string(value); }, number);
    }
    BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
    if (result == nullptr)
        return E_OUTOFMEMORY;
    std::ranges::copy(text, result);
    target.bstrVal = result;
    return S_OK;
}

bool readTruthText(const VARIANT& source, VARIANT& target) {
    if (source.vt != VT_BSTR)
        return false;
    std::string text = narrowed(source.bstrVal);
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (text != "true" && text != "false")
        return false;
    target.boolVal = text == "true" ? VARIANT_TRUE : VARIANT_FALSE;
    return true;
}

HRESULT convert(const VARIANT& source, USHORT flags, VARTYPE type, VARIANT& target) {
    target.vt = VT_EMPTY;
    if (source.vt == type)
        return VariantCopy(&target, &source);
    HRESULT result = S_OK;
    if (type != VT_BOOL || !readTruthText(source, target)) {
        Number number;
        result = readNumber(source, number);
        if (SUCCEEDED(result) && type == VT_BSTR)
            result = writeText(source, number, flags, target);
        else if (SUCCEEDED(result) && source.vt == VT_BOOL)
            result = writeTruth(source.boolVal, target, type);
        else if (SUCCEEDED(result))
            result = writeNumber(number, target, type);
    }
    if (SUCCEEDED(result))
        target.vt = type;
    return result;
}

} // namespace

HRESULT WINAPI VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags, VARTYPE type) {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    VARIANT value{};
    HRESULT result = VariantCopyInd(&value, source);
    if (FAILED(result))
        return result;
    VARIANT converted{};
    try {
        result = convert(value, flags, type, converted);
    } catch (...) {
        // Only the memory of a temporary text can be missing.
        result = E_OUTOFMEMORY;
    }
    VariantClear(&value);
    if (FAILED(result))
        return result;
    // The target may be the source; a failed conversion has left it as it was.
    result = VariantClear(target);
    if (FAILED(result)) {
        VariantClear(&converted);
        return result;
    }
    *target = converted;
    return S_OK;
}
