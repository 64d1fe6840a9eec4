#include "platform/registry/RegText.h"

#include "platform/Utf16.h"

namespace tarvo::platform {
namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16Mark = "\xFF\xFE";

} // namespace

RegText decodeRegText(std::string_view bytes) {
    if (bytes.starts_with(utf8Mark))
        return {std::string(bytes.substr(utf8Mark.size())), RegText::Encoding::utf8WithMark};
    if (!bytes.starts_with(utf16Mark))
        return {std::string(bytes), RegText::Encoding::utf8};
    return {utf8FromUtf16Bytes(bytes.substr(utf16Mark.size())), RegText::Encoding::utf16LittleEndian};
}

std::string encodeRegText(const RegText& text) {
    if (text.encoding == RegText::Encoding::utf8)
        return text.text;
    if (text.encoding == RegText::Encoding::utf8WithMark)
        return std::string(utf8Mark) + text.text;
    return std::string(utf16Mark) + utf16BytesFromUtf8(text.text);
}

} // namespace tarvo::platform
