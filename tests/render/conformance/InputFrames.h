#pragma once

#include "render/FrameFormat.h"
#include "render/Picture.h"
#include "tests/render/conformance/FrameCase.h"

#include <cstddef>
#include <vector>

namespace tarvo::render::conformance {

/// A frame as it comes in.
struct InputFrame {
    InputFormat format;
    std::vector<std::byte> bytes;
};

/// The drawn room as a camera of the mounting sees it, blurred: places that two devices compute a hair apart
/// then show nearly the same colour, so that what is left to compare is the place.
const Picture& roomPicture(geometry::TiltOrientation mounting, int width, int height);

/// Any bytes, alpha too, always the same for a seed.
Picture randomPicture(int width, int height, unsigned seed);

/// How frames of a kind lie in memory. Padded rows are larger than their pixels; those of YUY2 never are.
InputFormat inputFormat(FrameKind kind, int width, int height, bool isPadded);

/// A picture as a frame of that kind. Bytes that belong to no pixel have a value that shows.
InputFrame inputFrame(FrameKind kind, const Picture& picture, bool isPadded);

/// A YV12 or YUY2 frame of random bytes.
InputFrame randomYuvFrame(FrameKind kind, int width, int height, unsigned seed);

} // namespace tarvo::render::conformance
