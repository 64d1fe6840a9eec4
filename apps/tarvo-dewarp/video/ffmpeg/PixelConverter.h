#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/video/ffmpeg/Ffmpeg.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tarvo::apps::video::ffmpeg {

/// The libraries' name for the pixels of the transform's frames.
AVPixelFormat pixelFormatOf(host::FramePixels pixels);

/// How the numbers of a picture are meant.
struct ColourMeaning {
    AVColorSpace space = AVCOL_SPC_SMPTE170M; ///< how colours were made of red, green and blue
    bool isFullRange = false;                 ///< luma 0 to 255 rather than 16 to 235
};

/// The meaning that a frame declares or, where it says nothing, the usual one for its size.
ColourMeaning meaningOf(const AVFrame& frame);

/// Frames of one size from one kind of pixels to another.
class CPixelConverter {
public:
    /// The frame itself when nothing is to be done, else a converted one, good until the next call. Throws
    /// std::bad_alloc, and FileError for pixels that cannot be converted.
    const AVFrame& convert(const AVFrame& from, const ColourMeaning& fromMeaning, AVPixelFormat pixels,
                           const ColourMeaning& meaning, const std::filesystem::path& file);

private:
    Scaler m_scaler;
    Frame m_converted;
};

/// A frame of the libraries as one for the transform, of the same pixels and size.
std::vector<std::byte> packed(const AVFrame& frame, const host::VideoFormat& format);

/// The other way round, into a frame that has memory.
void unpack(std::span<const std::byte> bytes, const host::VideoFormat& format, AVFrame& frame);

/// A frame with memory. Throws std::bad_alloc.
Frame makeFrame(AVPixelFormat pixels, int width, int height);

} // namespace tarvo::apps::video::ffmpeg
