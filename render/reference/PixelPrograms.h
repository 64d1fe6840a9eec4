#pragma once

#include "geometry/DewarpConstants.h"
#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"
#include "render/Picture.h"
#include "render/reference/Sampler.h"

namespace tarvo::render::reference {

/// The pixel programs, each for one pixel with the texture coordinate (u, v).

/// Plain copy.
Colour defaultProgram(const Picture& source, float u, float v);

/// A projection of the fisheye picture: the single view or the panorama of a mounting.
Colour dewarpProgram(geometry::PanoramaMode mode, const geometry::DewarpConstants& constants,
                     const Picture& source, float u, float v);

/// The input with the exclude area painted black, its edges included.
Colour excludeRegionProgram(const geometry::ExcludeArea& area, const Picture& source, float u, float v);

/// Red with the vertex colour as alpha.
Colour overviewRegionProgram(float vertexColour);

} // namespace tarvo::render::reference
