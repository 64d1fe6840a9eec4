#pragma once

#include "apps/tarvo-dewarp/Picture.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace tarvo::apps {

/// Largest side of a picture that is read or written, pixels.
inline constexpr int maxPictureSide = 16384;

/// Bytes that are no whole picture; the text says what is wrong with them.
class CodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// As many bytes of a file are enough to tell what it is.
inline constexpr std::size_t pictureSignatureLength = 8;

/// True when the bytes could begin a PNG, JPEG, binary PGM or binary PPM file.
bool beginsLikePicture(std::span<const std::uint8_t> bytes);

/// The picture in the bytes of such a file, opaque. Throws CodingError, std::bad_alloc.
Picture decodePicture(std::span<const std::uint8_t> bytes);

/// The bytes of a PNG file with the picture's colours. Throws std::bad_alloc.
std::vector<std::uint8_t> encodePng(const Picture& picture);

} // namespace tarvo::apps
