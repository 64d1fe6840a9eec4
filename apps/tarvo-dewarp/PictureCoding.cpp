#include "apps/tarvo-dewarp/PictureCoding.h"

#include "apps/tarvo-dewarp/JpegCheck.h"
#include "apps/tarvo-dewarp/PnmPicture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>

namespace tarvo::apps {
namespace {

/// The memory of one run of stb_image_write. The library takes it for granted that growing its buffers
/// succeeds; here such a failure throws instead, and all that was allocated goes with this object.
class CEncoderMemory {
public:
    CEncoderMemory() { s_current = this; }
    ~CEncoderMemory() { s_current = nullptr; }
    CEncoderMemory(const CEncoderMemory&) = delete;
    CEncoderMemory& operator=(const CEncoderMemory&) = delete;

    static void* allocate(std::size_t size) {
        auto block = std::make_unique_for_overwrite<std::byte[]>(size);
        void* const address = block.get();
        s_current->m_blocks.emplace(address, std::move(block));
        return address;
    }

    static void* grow(void* block, std::size_t size, std::size_t grownSize) {
        void* const grown = allocate(grownSize);
        if (block != nullptr) {
            std::memcpy(grown, block, size);
            release(block);
        }
        return grown;
    }

    static void release(void* block) { s_current->m_blocks.erase(block); }

private:
    std::unordered_map<void*, std::unique_ptr<std::byte[]>> m_blocks;
    static thread_local CEncoderMemory* s_current;
};

thread_local CEncoderMemory* CEncoderMemory::s_current = nullptr;

} // namespace
} // namespace tarvo::apps

// The libraries cast what the macros below give them, which counts as ours.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"

// This file alone compiles the libraries, and only the parts it uses: a picture file that nobody needs to
// read shall not reach a decoder.
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_FAILURE_USERMSG
#define STBI_MAX_DIMENSIONS 16384
// Cleared, for a JPEG file may use tables which it never defined.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(block, size) std::realloc(block, size)
#define STBI_FREE(block) std::free(block)
#include <stb/stb_image.h>
static_assert(STBI_MAX_DIMENSIONS == tarvo::apps::maxPictureSide);

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#define STBIW_MALLOC(size) tarvo::apps::CEncoderMemory::allocate(size)
#define STBIW_REALLOC_SIZED(block, size, grownSize) tarvo::apps::CEncoderMemory::grow(block, size, grownSize)
#define STBIW_FREE(block) tarvo::apps::CEncoderMemory::release(block)
#include <stb/stb_image_write.h>
#pragma GCC diagnostic pop

namespace tarvo::apps {
namespace {

constexpr int colourChannels = 3;

bool isPng(std::span<const std::uint8_t> bytes) {
    constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    return bytes.size() >= signature.size() && std::ranges::equal(bytes.first(signature.size()), signature);
}

struct StbFree {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

Picture decodeWithStb(std::span<const std::uint8_t> bytes) {
    int width = 0;
    int height = 0;
    int channelsInFile = 0;
    const std::unique_ptr<stbi_uc, StbFree> decoded(stbi_load_from_memory(
        bytes.data(), static_cast<int>(bytes.size()), &width, &height, &channelsInFile, colourChannels));
    if (!decoded) {
        const std::string reason = stbi_failure_reason();
        if (reason == "Out of memory") {
            throw std::bad_alloc();
        }
        throw CodingError("it cannot be read as a picture: " + reason);
    }
    Picture picture(width, height);
    const stbi_uc* from = decoded.get();
    for (Bgra& pixel : picture.pixels) {
        pixel = {from[2], from[1], from[0], 255};
        from += colourChannels;
    }
    return picture;
}

} // namespace

bool beginsLikePicture(std::span<const std::uint8_t> bytes) {
    return isPng(bytes) || isJpeg(bytes) || isPnm(bytes);
}

Picture decodePicture(std::span<const std::uint8_t> bytes) {
    if (isPnm(bytes)) {
        return decodePnm(bytes);
    }
    if (isJpeg(bytes)) {
        checkJpeg(bytes);
    }
    return decodeWithStb(bytes);
}

std::vector<std::uint8_t> encodePng(const Picture& picture) {
    std::vector<std::uint8_t> colours;
    colours.reserve(picture.pixels.size() * colourChannels);
    for (const Bgra& pixel : picture.pixels) {
        colours.insert(colours.end(), {pixel.red, pixel.green, pixel.blue});
    }
    const CEncoderMemory memory;
    int length = 0;
    const unsigned char* const png =
        stbi_write_png_to_mem(colours.data(), picture.width * colourChannels, picture.width, picture.height,
                              colourChannels, &length);
    return {png, png + length};
}

} // namespace tarvo::apps
