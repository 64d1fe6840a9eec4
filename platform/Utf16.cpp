#include "platform/Utf16.h"

#include <cstddef>

namespace tarvo::platform {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xDC00;
}

bool isLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c < 0xE000;
}

/// What the first byte of a sequence says: how many follow, and the smallest code point that needs so many.
struct Lead {
    int following;
    char32_t bits;
    char32_t minimum;
};

Lead leadOf(unsigned char byte) {
    if (byte < 0x80)
        return {0, byte, 0};
    if ((byte & 0xE0) == 0xC0)
        return {1, byte & 0x1FU, 0x80};
    if ((byte & 0xF0) == 0xE0)
        return {2, byte & 0x0FU, 0x800};
    if ((byte & 0xF8) == 0xF0)
        return {3, byte & 0x07U, 0x10000};
    return {-1, 0, 0};
}

/// Reads one code point; a byte that begins none is read as U+FFFD alone.
char32_t readCodePoint(std::string_view text, std::size_t& position) {
    const Lead lead = leadOf(static_cast<unsigned char>(text[position]));
    std::size_t next = position + 1;
    char32_t codePoint = lead.bits;
    for (int i = 0; i < lead.following; ++i, ++next) {
        if (next >= text.size() || (static_cast<unsigned char>(text[next]) & 0xC0) != 0x80) {
            ++position;
            return replacement;
        }
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(text[next]) & 0x3FU);
    }
    if (lead.following < 0 || codePoint < lead.minimum || codePoint > 0x10FFFF) {
        ++position;
        return replacement;
    }
    position = next;
    return codePoint;
}

void appendUtf8(std::string& result, char32_t c) {
    if (c < 0x80) {
        result += static_cast<char>(c);
        return;
    }
    if (c < 0x800) {
        result += static_cast<char>(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            result += static_cast<char>(0xE0 | (c >> 12));
        } else {
            result += static_cast<char>(0xF0 | (c >> 18));
            result += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        }
        result += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    }
    result += static_cast<char>(0x80 | (c & 0x3F));
}

} // namespace

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t c = readCodePoint(text, position);
        if (c < 0x10000) {
            result += static_cast<char16_t>(c);
        } else {
            result += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            result += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (isHighSurrogate(c) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            ++i;
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i] - 0xDC00U);
        }
        appendUtf8(result, c);
    }
    return result;
}

std::string utf16BytesFromUtf8(std::string_view text) {
    std::string bytes;
    for (const char16_t unit : utf16FromUtf8(text)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string utf8FromUtf16Bytes(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                       (static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return utf8FromUtf16(units);
}

} // namespace tarvo::platform
