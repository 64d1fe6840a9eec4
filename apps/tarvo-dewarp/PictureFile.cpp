#include "apps/tarvo-dewarp/PictureFile.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tarvo::apps {
namespace {

/// All bytes of a file that begins like a picture.
std::vector<std::uint8_t> readPictureBytes(const std::filesystem::path& path) {
    const std::uintmax_t size = ordinaryFileSize(path);
    // A look at the beginning spares reading gigabytes of something else.
    const auto begun = static_cast<std::size_t>(std::min<std::uintmax_t>(size, pictureSignatureLength));
    if (!beginsLikePicture(readBeginning(path, begun))) {
        throw FileError(path, "it is not a PNG, JPEG, binary PGM or binary PPM picture");
    }
    if (size > std::numeric_limits<int>::max()) {
        throw FileError(path, "it is larger than any picture that can be read");
    }
    return readBeginning(path, static_cast<std::size_t>(size));
}

} // namespace

Picture readPicture(const std::filesystem::path& path) {
    const std::vector<std::uint8_t> bytes = readPictureBytes(path);
    try {
        return decodePicture(bytes);
    } catch (const CodingError& error) {
        throw FileError(path, error.what());
    }
}

void writePng(const std::filesystem::path& path, const Picture& picture) {
    checkTarget(path);
    writeWholeFile(path, encodePng(picture));
}

} // namespace tarvo::apps
