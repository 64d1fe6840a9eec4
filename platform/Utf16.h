#pragma once

#include <string>
#include <string_view>

namespace tarvo::platform {

/// UTF-16 in the machine's byte order. An unpaired surrogate of UTF-16 becomes three bytes that utf16FromUtf8
/// turns back into it, so that nothing is lost on the way; bytes that are no UTF-8 become U+FFFD.
std::u16string utf16FromUtf8(std::string_view text);
std::string utf8FromUtf16(std::u16string_view text);

/// The same with UTF-16 as bytes, the lower one of each unit first; a last odd byte is no unit.
std::string utf16BytesFromUtf8(std::string_view text);
std::string utf8FromUtf16Bytes(std::string_view bytes);

} // namespace tarvo::platform
