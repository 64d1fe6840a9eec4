#include "accelerator/FrameCopy.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tarvo::accelerator {
namespace {

// Of the media types, by their four letters as the system's own subtypes have them.
constexpr GUID subtypeNv12{0x3231564E, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr GUID subtypeYv12{0x32315659, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

/// Rows that follow one another at one distance.
struct Rows {
    std::int64_t offset;
    std::int64_t pitch; ///< negative: upwards
};

/// Copies as much of each row as both sides have.
void copyRows(std::span<const std::byte> input, Rows from, std::span<std::byte> output, Rows to,
              std::int64_t count) noexcept {
    const std::int64_t length = std::min(std::abs(from.pitch), std::abs(to.pitch));
    // Not for longer than there is input, however many rows a format claims.
    const auto end = static_cast<std::int64_t>(input.size());
    for (std::int64_t row = 0; length > 0 && row < count && from.offset + row * from.pitch < end; ++row) {
        const std::int64_t source = from.offset + row * from.pitch;
        const std::int64_t target = to.offset + row * to.pitch;
        const std::int64_t bytes =
            std::min({length, end - source, static_cast<std::int64_t>(output.size()) - target});
        if (bytes > 0 && target >= 0)
            std::memcpy(output.data() + target, input.data() + source, static_cast<std::size_t>(bytes));
    }
}

} // namespace

void copyFrame(std::span<const std::byte> input, const FrameFormat& inputFormat, std::span<std::byte> output,
               const FrameFormat& outputFormat) noexcept {
    const bool isTurned = inputFormat.isBottomUp != outputFormat.isBottomUp;
    if (static_cast<std::int64_t>(input.size()) == outputFormat.imageBytes && !isTurned) {
        if (const std::size_t bytes = std::min(input.size(), output.size()); bytes > 0)
            std::memcpy(output.data(), input.data(), bytes);
        return;
    }
    const std::int64_t height = inputFormat.height;
    if (height == 0)
        return;
    if (inputFormat.subtype == subtypeNv12 || inputFormat.subtype == subtypeYv12) {
        // Luma and chroma together are three halves of the luma.
        const std::int64_t from = inputFormat.imageBytes * 2 / (height * 3);
        const std::int64_t to = outputFormat.imageBytes * 2 / (height * 3);
        if (inputFormat.subtype == subtypeNv12) {
            copyRows(input, {0, from}, output, {0, to}, (3 * height + 1) / 2);
        } else {
            copyRows(input, {0, from}, output, {0, to}, height);
            copyRows(input, {height * from, from / 2}, output, {height * to, to / 2}, height);
        }
        return;
    }
    const std::int64_t from = inputFormat.imageBytes / height;
    const std::int64_t to = outputFormat.imageBytes / height;
    const Rows target = isTurned ? Rows{(height - 1) * to, -to} : Rows{0, to};
    copyRows(input, {0, from}, output, target, height);
}

} // namespace tarvo::accelerator
