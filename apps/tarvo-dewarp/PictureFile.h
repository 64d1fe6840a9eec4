#pragma once

#include "render/Picture.h"

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarvo::apps {

/// A file that cannot be read or written; the text names the file and the reason.
class FileError : public std::runtime_error {
public:
    FileError(const std::filesystem::path& path, const std::string& reason);
};

/// The path that a UTF-8 text names.
std::filesystem::path pathFromText(const std::string& text);

/// Reads a PNG, JPEG or binary PGM or PPM file, with sides of 1 to maxPictureSide; 16-bit samples lose their
/// lower half. The picture is opaque: an alpha channel is ignored. Throws FileError, std::bad_alloc.
render::Picture readPicture(const std::filesystem::path& path);

/// Finds out before the work is done whether a picture could go there. Throws FileError when the path is a
/// directory or in one that does not exist.
void checkTarget(const std::filesystem::path& path);

/// Writes the picture's colours, without its alpha, as PNG. An existing file is replaced, but only by a whole
/// picture: whatever fails leaves the target as it was. Throws FileError, std::bad_alloc.
void writePng(const std::filesystem::path& path, const render::Picture& picture);

} // namespace tarvo::apps
