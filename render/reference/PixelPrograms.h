#pragma once

#include "render/ConstantRecords.h"
#include "render/Picture.h"
#include "render/reference/Colour.h"

namespace tarvo::render::reference {

// The pixel programs, each a function for one pixel with the texture coordinate (u, v). Those of the custom
// view are in CustomPrograms.h, those that convert the input in ConversionPrograms.h.

/// The source as it is.
Colour plainCopyProgram(const Picture& source, float u, float v);

/// The projections of the fisheye picture: the rectilinear view, and the panorama of each mounting. Outside
/// the input the single view shows its clear colour, ceiling and desk show black, and on a wall the edge
/// pixels go on.
Colour singleViewProgram(const DewarpConstants& constants, const Picture& source, float u, float v);
Colour panoramaWallProgram(const DewarpConstants& constants, const Picture& source, float u, float v);
Colour panoramaCeilingProgram(const DewarpConstants& constants, const Picture& source, float u, float v);
Colour panoramaDeskProgram(const DewarpConstants& constants, const Picture& source, float u, float v);

/// The source with the exclude area painted black, its edges included.
Colour excludeRegionProgram(const ExcludeConstants& constants, const Picture& source, float u, float v);

/// Red with the vertex colour as alpha.
Colour overviewRegionProgram(float vertexColour);

} // namespace tarvo::render::reference
