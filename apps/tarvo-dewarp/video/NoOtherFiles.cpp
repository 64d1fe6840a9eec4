#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/OtherFiles.h"

namespace tarvo::apps::video {
namespace {

[[noreturn]] void refuse(const std::string& name) {
    throw FileError(pathFromText(name),
                    "this build of the program knows no other videos than YUV4MPEG2 (.y4m, or - for "
                    "standard input and output)");
}

} // namespace

bool knowsOtherFiles() {
    return false;
}

std::unique_ptr<IVideoSource> openOtherVideo(const std::string& name, host::FramePixels) {
    refuse(name);
}

void checkOtherTarget(const std::string& name, const std::string&) {
    refuse(name);
}

std::unique_ptr<IVideoSink> createOtherVideo(const std::string& name, const VideoOutput&,
                                             const std::string&) {
    refuse(name);
}

} // namespace tarvo::apps::video
