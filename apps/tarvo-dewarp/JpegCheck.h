#pragma once

#include <cstdint>
#include <span>

namespace tarvo::apps {

/// True when the bytes begin like a JPEG file.
bool isJpeg(std::span<const std::uint8_t> bytes);

/// Refuses with CodingError what stb_image does not notice in a JPEG file: that its end is missing, which the
/// library fills up with grey, and code tables with more entries than it has room for.
void checkJpeg(std::span<const std::uint8_t> bytes);

} // namespace tarvo::apps
