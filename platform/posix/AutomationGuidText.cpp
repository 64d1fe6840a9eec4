// Identifiers as text: {00112233-4455-6677-8899-AABBCCDDEEFF}.

#include "platform/InterfaceTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace {

using Text = std::basic_string_view<OLECHAR>;

/// Characters of the text without its terminator.
constexpr std::size_t textLength = 38;

/// For each pair of digits the byte of the record that it shows; the first three fields are stored low byte
/// first.
struct DigitPair {
    std::size_t place;
    std::size_t byte;
};
constexpr std::array<DigitPair, 16> digitPairs{{{1, 3},
                                                {3, 2},
                                                {5, 1},
                                                {7, 0},
                                                {10, 5},
                                                {12, 4},
                                                {15, 7},
                                                {17, 6},
                                                {20, 8},
                                                {22, 9},
                                                {25, 10},
                                                {27, 11},
                                                {29, 12},
                                                {31, 13},
                                                {33, 14},
                                                {35, 15}}};

std::optional<unsigned> digitValue(OLECHAR digit) {
    if (digit >= u'0' && digit <= u'9')
        return digit - u'0';
    if (digit >= u'a' && digit <= u'f')
        return digit - u'a' + 10U;
    if (digit >= u'A' && digit <= u'F')
        return digit - u'A' + 10U;
    return std::nullopt;
}

bool parse(Text text, GUID& guid) {
    if (text.size() != textLength || text[0] != u'{' || text[9] != u'-' || text[14] != u'-' ||
        text[19] != u'-' || text[24] != u'-' || text[37] != u'}')
        return false;
    GUID result{};
    auto* bytes = reinterpret_cast<std::uint8_t*>(&result);
    for (const DigitPair& pair : digitPairs) {
        const std::optional<unsigned> high = digitValue(text[pair.place]);
        const std::optional<unsigned> low = digitValue(text[pair.place + 1]);
        if (!high || !low)
            return false;
        bytes[pair.byte] = static_cast<std::uint8_t>(*high * 16 + *low);
    }
    guid = result;
    return true;
}

} // namespace

INT WINAPI StringFromGUID2(REFGUID guid, LPOLESTR text, INT size) {
    if (text == nullptr || size < static_cast<INT>(textLength) + 1)
        return 0;
    static constexpr Text pattern = u"{00000000-0000-0000-0000-000000000000}";
    pattern.copy(text, textLength);
    text[textLength] = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&guid);
    for (const DigitPair& pair : digitPairs) {
        static constexpr Text digits = u"0123456789ABCDEF";
        text[pair.place] = digits[bytes[pair.byte] / 16U];
        text[pair.place + 1] = digits[bytes[pair.byte] % 16U];
    }
    return static_cast<INT>(textLength) + 1;
}

HRESULT WINAPI CLSIDFromString(LPCOLESTR text, CLSID* guid) {
    if (guid == nullptr)
        return E_INVALIDARG;
    *guid = GUID{};
    if (text == nullptr)
        return S_OK;
    // Elsewhere names of registered classes are looked up too; there is no such list here.
    return parse(text, *guid) ? S_OK : CO_E_CLASSSTRING;
}

HRESULT WINAPI IIDFromString(LPCOLESTR text, IID* guid) {
    if (guid == nullptr)
        return E_INVALIDARG;
    *guid = GUID{};
    if (text == nullptr)
        return S_OK;
    if (Text(text).size() != textLength)
        return E_INVALIDARG;
    return parse(text, *guid) ? S_OK : CO_E_IIDSTRING;
}
