#pragma once

#include "apps/tarvo-dewarp/Picture.h"
#include "apps/tarvo-dewarp/WholeFile.h"

#include <filesystem>

namespace tarvo::apps {

/// Reads a PNG, JPEG or binary PGM or PPM file, with sides of 1 to maxPictureSide; 16-bit samples lose their
/// lower half. The picture is opaque: an alpha channel is ignored. Throws FileError, std::bad_alloc.
Picture readPicture(const std::filesystem::path& path);

/// Writes the picture's colours, without its alpha, as PNG. An existing file is replaced, but only by a whole
/// picture: whatever fails leaves the target as it was. Throws FileError, std::bad_alloc.
void writePng(const std::filesystem::path& path, const Picture& picture);

} // namespace tarvo::apps
