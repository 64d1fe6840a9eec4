#include "apps/tarvo-dewarp/video/VideoFiles.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/ByteTarget.h"
#include "apps/tarvo-dewarp/video/OtherFiles.h"
#include "apps/tarvo-dewarp/video/Y4mSink.h"
#include "apps/tarvo-dewarp/video/Y4mSource.h"

#include <system_error>

namespace tarvo::apps::video {
namespace {

bool isAddress(const std::string& name) {
    return name.find("://") != std::string::npos;
}

/// Throws FileError for what is no file to read from. Pipes are welcome.
void checkReadable(const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (!exists(status) || is_directory(status) || is_regular_file(status)) {
        ordinaryFileSize(path);
    }
}

} // namespace

bool isY4mName(const std::string& name) {
    return name == standardStream || endsIn(pathFromText(name), u8".y4m");
}

std::unique_ptr<IVideoSource> openVideo(const std::string& name, host::FramePixels pixels) {
    if (name != standardStream && !isAddress(name)) {
        checkReadable(pathFromText(name));
    }
    if (isY4mName(name) && !isAddress(name)) {
        const bool isYv12 = pixels == host::FramePixels::yv12;
        if (!isYv12 && (name == standardStream || !knowsOtherFiles())) {
            throw UsageError("--input-format: a YUV4MPEG2 stream is read as yv12 only" +
                             std::string(name == standardStream ? " from standard input" : " by this build"));
        }
        // Also for other pixels: what is broken gets the same messages.
        auto source = openY4m(name);
        if (source && isYv12) {
            return source;
        }
    }
    return openOtherVideo(name, pixels);
}

void checkVideoTarget(const std::string& name, host::FramePixels pixels, const std::string& encoder) {
    if (!isY4mName(name)) {
        checkOtherTarget(name, encoder);
    } else if (pixels != host::FramePixels::yv12) {
        throw UsageError("--output-format: a YUV4MPEG2 stream holds yv12 frames only");
    } else if (!encoder.empty()) {
        throw UsageError("--encoder: a YUV4MPEG2 stream is not encoded");
    }
    if (name != standardStream) {
        checkTarget(pathFromText(name));
    }
}

std::unique_ptr<IVideoSink> createVideo(const std::string& name, const VideoOutput& video,
                                        const std::string& encoder, std::ostream& standardOutput) {
    const bool isOdd = video.format.width % 2 != 0 || video.format.height % 2 != 0;
    if (video.format.pixels == host::FramePixels::yv12 && isOdd) {
        throw UsageError("the output would have " + std::to_string(video.format.width) + "x" +
                         std::to_string(video.format.height) +
                         " pixels, and a video of yv12 frames has even sides: choose another size");
    }
    if (isY4mName(name)) {
        return std::make_unique<CY4mSink>(openByteTarget(name, standardOutput), video);
    }
    return createOtherVideo(name, video, encoder);
}

} // namespace tarvo::apps::video
