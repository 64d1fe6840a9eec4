#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/Values.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// In what form pictures pass through the component.
struct FrameSettings {
    host::FramePixels inputFormat = host::FramePixels::rgb32;
    host::FramePixels outputFormat = host::FramePixels::rgb32;
    bool isInputBottomUp = false;
    bool isOutputBottomUp = false;
    std::optional<PictureSize> inputSize; ///< raw frames only
    std::optional<int> inputStride;       ///< raw frames only
};

/// Adds the options that describe frames; `settings` must outlive the parsing.
void addFrameOptions(CLI::App& command, FrameSettings& settings);

/// Whether the name says that the file holds the bytes of a frame: it ends in .raw.
bool isRawName(const std::filesystem::path& path);

/// A frame as a host would hand it over.
struct InputFrame {
    host::VideoFormat format;
    std::vector<std::byte> bytes;
};

/// Reads the picture or raw frame, in the format asked for. Throws UsageError when that cannot hold it or
/// when the options do not fit the file's kind, FileError, std::bad_alloc.
InputFrame readInputFrame(const std::filesystem::path& path, const FrameSettings& settings);

/// Writes a delivered frame as it is or as a PNG picture, by the file's name. Throws FileError,
/// std::bad_alloc.
void writeOutputFrame(const std::filesystem::path& path, const std::vector<std::byte>& frame,
                      const host::VideoFormat& format);

} // namespace tarvo::apps
