#pragma once

// FFmpeg's libraries in C++'s hands; included by the files of this folder alone.

// Their headers are C and cast as C does.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wpedantic"
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}
#pragma GCC diagnostic pop

#include "apps/tarvo-dewarp/WholeFile.h"

#include <filesystem>
#include <memory>
#include <new>
#include <string>

namespace tarvo::apps::video::ffmpeg {

/// Calls a function of the libraries that frees what a pointer leads to and clears the pointer.
template<auto function>
struct FreeThrough {
    template<typename Object>
    void operator()(Object* object) const {
        function(&object);
    }
};

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

using Frame = std::unique_ptr<AVFrame, FreeThrough<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, FreeThrough<av_packet_free>>;
using Codec = std::unique_ptr<AVCodecContext, FreeThrough<avcodec_free_context>>;
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;

/// The object that an allocating function of the libraries gave. Throws std::bad_alloc for none.
template<typename Owner>
Owner owned(typename Owner::pointer object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return Owner(object);
}

/// The libraries' text for one of their results, which is negative.
inline std::string reasonOf(int result) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(result, text, sizeof text);
    return text;
}

/// Throws FileError when the step failed, std::bad_alloc when that was for want of memory.
inline void require(int result, const std::filesystem::path& file, const std::string& step) {
    if (result == AVERROR(ENOMEM)) {
        throw std::bad_alloc();
    }
    if (result < 0) {
        throw FileError(file, step + ": " + reasonOf(result));
    }
}

inline constexpr AVRational tickLength{1, 10'000'000};

} // namespace tarvo::apps::video::ffmpeg
