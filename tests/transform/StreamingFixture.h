#pragma once

#include "tests/transform/TransformHost.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvo::transform {

/// Frames through the object as a host streams them; its tests lie in several files, by subject.
class Streaming : public CTransformTest {};

/// The rows of a picture in the other order.
inline std::vector<std::uint8_t> upsideDown(const std::vector<std::uint8_t>& picture, std::size_t rowBytes) {
    std::vector<std::uint8_t> result;
    for (std::size_t end = picture.size(); end != 0; end -= rowBytes)
        result.insert(result.end(), picture.begin() + static_cast<std::ptrdiff_t>(end - rowBytes),
                      picture.begin() + static_cast<std::ptrdiff_t>(end));
    return result;
}

} // namespace tarvo::transform
