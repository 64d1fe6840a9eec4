#pragma once

#include "apps/host/TransformProperties.h"
#include "interfaces/TarvoVideoTransform.h"

#include <array>
#include <cstdint>

namespace tarvo::apps {

// What the options of a view are read into: the public header's numbers and what a host puts.

using TarvoVideoTransformLib::CustomTransformControlType;
using TarvoVideoTransformLib::TiltOrientation;
using TarvoVideoTransformLib::ViewType;

/// A, B and C of the lens polynomial.
using LensProfile = std::array<double, 3>;

/// Edges of a rectangle as fractions of a picture.
using Edges = host::TransformProperties::Edges;

/// Pixels, or cells.
struct PictureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend constexpr bool operator==(const PictureSize&, const PictureSize&) = default;
};

} // namespace tarvo::apps
