#include "apps/tarvo-dewarp/video/OtherFiles.h"

#include "apps/tarvo-dewarp/video/ffmpeg/FfmpegSink.h"
#include "apps/tarvo-dewarp/video/ffmpeg/FfmpegSource.h"

namespace tarvo::apps::video {

bool knowsOtherFiles() {
    return true;
}

std::unique_ptr<IVideoSource> openOtherVideo(const std::string& name, host::FramePixels pixels) {
    return std::make_unique<ffmpeg::CFfmpegSource>(name, pixels);
}

void checkOtherTarget(const std::string& name, const std::string& encoder) {
    ffmpeg::findEncoder(name, encoder);
}

std::unique_ptr<IVideoSink> createOtherVideo(const std::string& name, const VideoOutput& video,
                                             const std::string& encoder) {
    return std::make_unique<ffmpeg::CFfmpegSink>(name, video, encoder);
}

} // namespace tarvo::apps::video
