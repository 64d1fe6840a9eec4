#include "apps/tarvo-dewarp/FrameSettings.h"

#include "apps/tarvo-dewarp/FrameCoding.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/PictureFile.h"

#include <limits>
#include <span>
#include <string_view>

namespace tarvo::apps {
namespace {

using host::FramePixels;

FramePixels readInputFormat(const std::string& option, const std::string& text) {
    if (text == "rgb32") {
        return FramePixels::rgb32;
    }
    if (text == "yv12") {
        return FramePixels::yv12;
    }
    if (text == "yuy2") {
        return FramePixels::yuy2;
    }
    refuseValue(option, text, "rgb32, yv12 or yuy2");
}

FramePixels readOutputFormat(const std::string& option, const std::string& text) {
    if (text == "yuy2" || (text != "rgb32" && text != "yv12")) {
        refuseValue(option, text, "rgb32 or yv12");
    }
    return readInputFormat(option, text);
}

int readStride(const std::string& option, const std::string& text) {
    constexpr double highest = 1 << 20;
    const double stride = readNumber(option, text, 1.0, highest, "a whole number of bytes from 1 to 1048576");
    if (stride != static_cast<int>(stride)) {
        refuseValue(option, text, "a whole number of bytes from 1 to 1048576");
    }
    return static_cast<int>(stride);
}

std::string sizeText(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

/// Throws UsageError for a picture that the format has no place for.
void requireFit(FramePixels format, int width, int height) {
    if (format == FramePixels::yv12 && (width < 2 || height < 2)) {
        throw UsageError("a yv12 frame has at least 2x2 pixels, and the input has " +
                         sizeText(width, height));
    }
    if (format == FramePixels::yuy2 && width % 2 != 0) {
        throw UsageError("a yuy2 frame has an even width, and the input has " + sizeText(width, height));
    }
}

InputFrame readRawFrame(const std::filesystem::path& path, const FrameSettings& settings) {
    if (!settings.inputSize) {
        throw UsageError("a raw frame does not say its size: give --input-size WIDTHxHEIGHT");
    }
    const auto width = static_cast<int>(settings.inputSize->width);
    const auto height = static_cast<int>(settings.inputSize->height);
    requireFit(settings.inputFormat, width, height);
    const int least = leastStride(settings.inputFormat, width);
    const int stride = settings.inputStride.value_or(least);
    if (stride < least) {
        throw UsageError("--input-stride " + std::to_string(stride) + ": a row takes " +
                         std::to_string(least) + " bytes");
    }
    const std::uint64_t rows = static_cast<std::uint64_t>(stride) * settings.inputSize->height;
    const std::uint64_t expected = settings.inputFormat == FramePixels::yv12 ? rows / 2 * 3 : rows;
    if (expected > std::numeric_limits<std::int32_t>::max()) {
        throw UsageError("a frame of " + std::to_string(expected) + " bytes is too large");
    }
    if (const std::uintmax_t size = ordinaryFileSize(path); size != expected) {
        throw FileError(path, "it has " + std::to_string(size) + " bytes, and a frame of " +
                                  sizeText(width, height) + " in this format has " +
                                  std::to_string(expected));
    }
    const std::vector<std::uint8_t> bytes = readBeginning(path, static_cast<std::size_t>(expected));
    const auto begin = std::as_bytes(std::span(bytes));
    return {frameFormat(settings.inputFormat, width, height, settings.isInputBottomUp, stride),
            {begin.begin(), begin.end()}};
}

} // namespace

void addFrameOptions(CLI::App& command, FrameSettings& settings) {
    const std::string group = "Frames";
    addValue(command, "--input-format", settings.inputFormat, readInputFormat, "NAME",
             "How the component is given the input: rgb32 (default), yv12 or yuy2.")
        ->group(group);
    addValue(command, "--output-format", settings.outputFormat, readOutputFormat, "NAME",
             "How the component delivers the view: rgb32 (default) or yv12.")
        ->group(group);
    command
        .add_flag("--input-bottom-up", settings.isInputBottomUp,
                  "Hand rgb32 input over with its last row first.")
        ->group(group);
    command
        .add_flag("--output-bottom-up", settings.isOutputBottomUp,
                  "Have rgb32 output delivered with its last row first.")
        ->group(group);
    addValue(command, "--input-size", settings.inputSize, readSize, "WxH",
             "Size of a raw input frame; needed for one, and only for one.")
        ->group(group);
    addValue(command, "--input-stride", settings.inputStride, readStride, "BYTES",
             "From a row of a raw input frame to the next, for yv12 in its luma plane.\n"
             "By default rows have no padding.")
        ->group(group);
}

bool isRawName(const std::filesystem::path& path) {
    return endsIn(path, u8".raw");
}

InputFrame readInputFrame(const std::filesystem::path& path, const FrameSettings& settings) {
    if (isRawName(path)) {
        return readRawFrame(path, settings);
    }
    if (settings.inputSize || settings.inputStride) {
        throw UsageError(std::string(settings.inputSize ? "--input-size" : "--input-stride") +
                         " goes with a raw frame only, a file whose name ends in .raw");
    }
    const Picture picture = readPicture(path);
    requireFit(settings.inputFormat, picture.width, picture.height);
    const host::VideoFormat format =
        frameFormat(settings.inputFormat, picture.width, picture.height, settings.isInputBottomUp);
    return {format, encodeFrame(picture, format)};
}

void writeOutputFrame(const std::filesystem::path& path, const std::vector<std::byte>& frame,
                      const host::VideoFormat& format) {
    if (!isRawName(path)) {
        writePng(path, decodeFrame(frame, format));
        return;
    }
    // The same bytes under the type that files are written from.
    writeWholeFile(path, {reinterpret_cast<const std::uint8_t*>(frame.data()), frame.size()});
}

} // namespace tarvo::apps
