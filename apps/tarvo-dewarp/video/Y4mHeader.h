#pragma once

#include "apps/tarvo-dewarp/video/FrameRate.h"

#include <istream>
#include <string>
#include <string_view>

namespace tarvo::apps::video {

/// The first line of a YUV4MPEG2 stream.
struct Y4mHeader {
    int width = 0;
    int height = 0;
    FrameRate rate;                  ///< 25 where the stream does not know
    std::string colourSpace = "420"; ///< how the planes are made, as the stream says it

    /// Three planes of bytes, those of the colours at half the size: what a YV12 frame is made of.
    bool isYv12() const;
};

/// The longest line that is read, bytes.
inline constexpr std::size_t maxY4mLine = 1024;

/// A line without its end, or as much of it as there is, to be judged by `stream.eof()`. Throws CodingError
/// for one that is too long.
std::string readY4mLine(std::istream& stream);

/// Throws CodingError, which says what is wrong.
Y4mHeader parseY4mHeader(std::string_view line);

/// The line for frames from the transform or, with full range, for those that are made for it. No end.
std::string y4mHeaderLine(int width, int height, const FrameRate& rate, bool isFullRange);

} // namespace tarvo::apps::video
