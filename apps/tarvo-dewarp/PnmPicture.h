#pragma once

#include "apps/tarvo-dewarp/Picture.h"

#include <cstdint>
#include <span>

namespace tarvo::apps {

// Binary PGM and PPM are read here because stb_image takes a file that breaks off for a whole one and leaves
// samples as they are whatever the largest one is said to be.

/// True for the bytes of a binary PGM or PPM file.
bool isPnm(std::span<const std::uint8_t> bytes);

/// The first picture of such a file, its samples scaled to 0 … 255. Throws CodingError, std::bad_alloc.
Picture decodePnm(std::span<const std::uint8_t> bytes);

} // namespace tarvo::apps
