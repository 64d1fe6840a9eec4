// BSTR: a text with its length in bytes in the four bytes before it and a terminator behind it.

#include "platform/InterfaceTypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

/// Before the text; twice the length field, so that the text is aligned as the allocator aligns.
constexpr std::size_t prefixBytes = 8;
constexpr UINT maximumBytes = std::numeric_limits<UINT>::max() - prefixBytes - sizeof(OLECHAR);

std::byte* blockOf(BSTR text) {
    return reinterpret_cast<std::byte*>(text) - prefixBytes;
}

BSTR textOf(std::byte* block, std::uint32_t bytes) {
    std::memcpy(block + prefixBytes - sizeof bytes, &bytes, sizeof bytes);
    // Two bytes: the terminator is a whole character, also behind an odd length.
    std::memset(block + prefixBytes + bytes, 0, sizeof(OLECHAR));
    return reinterpret_cast<BSTR>(block + prefixBytes);
}

std::size_t blockBytes(UINT bytes) {
    return prefixBytes + bytes + sizeof(OLECHAR);
}

/// A copy of `bytes` bytes of `source`, or zeros if there is no source.
BSTR allocate(const void* source, UINT bytes) {
    if (bytes > maximumBytes)
        return nullptr;
    auto* block = static_cast<std::byte*>(std::malloc(blockBytes(bytes)));
    if (block == nullptr)
        return nullptr;
    if (source != nullptr)
        std::memcpy(block + prefixBytes, source, bytes);
    else
        std::memset(block + prefixBytes, 0, bytes);
    return textOf(block, bytes);
}

bool isInside(const OLECHAR* place, BSTR text) {
    const auto start = reinterpret_cast<std::uintptr_t>(text);
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    return address >= start && address - start <= SysStringByteLen(text);
}

} // namespace

BSTR WINAPI SysAllocStringByteLen(LPCSTR text, UINT bytes) {
    return allocate(text, bytes);
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) {
    if (length > maximumBytes / sizeof(OLECHAR))
        return nullptr;
    return allocate(text, static_cast<UINT>(length * sizeof(OLECHAR)));
}

BSTR WINAPI SysAllocString(const OLECHAR* text) {
    if (text == nullptr)
        return nullptr;
    const std::size_t length = std::basic_string_view<OLECHAR>(text).size();
    if (length > maximumBytes / sizeof(OLECHAR))
        return nullptr;
    return SysAllocStringLen(text, static_cast<UINT>(length));
}

void WINAPI SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(blockOf(text));
}

UINT WINAPI SysStringByteLen(BSTR text) {
    if (text == nullptr)
        return 0;
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, blockOf(text) + prefixBytes - sizeof bytes, sizeof bytes);
    return bytes;
}

UINT WINAPI SysStringLen(BSTR text) {
    return static_cast<UINT>(SysStringByteLen(text) / sizeof(OLECHAR));
}

INT WINAPI SysReAllocString(LPBSTR target, const OLECHAR* text) {
    if (target == nullptr)
        return FALSE;
    // The copy comes first: the new text may lie inside the old one.
    BSTR copy = SysAllocString(text);
    if (copy == nullptr && text != nullptr)
        return FALSE;
    SysFreeString(*target);
    *target = copy;
    return TRUE;
}

int WINAPI SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length) {
    if (target == nullptr || length > maximumBytes / sizeof(OLECHAR))
        return FALSE;
    const auto bytes = static_cast<UINT>(length * sizeof(OLECHAR));
    if (*target != nullptr && text == nullptr) {
        // Without a new text the old one is kept as far as it fits.
        auto* block = static_cast<std::byte*>(std::realloc(blockOf(*target), blockBytes(bytes)));
        if (block == nullptr)
            return FALSE;
        *target = textOf(block, bytes);
        return TRUE;
    }
    if (*target != nullptr && isInside(text, *target) && bytes <= SysStringByteLen(*target)) {
        std::memmove(*target, text, bytes);
        *target = textOf(blockOf(*target), bytes);
        return TRUE;
    }
    BSTR copy = allocate(text, bytes);
    if (copy == nullptr)
        return FALSE;
    SysFreeString(*target);
    *target = copy;
    return TRUE;
}
