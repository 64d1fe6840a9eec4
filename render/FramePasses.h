#pragma once

#include "geometry/Enumerations.h"
#include "render/ConstantRecords.h"
#include "render/FrameFormat.h"
#include "render/Pass.h"
#include "render/Shader.h"

#include <optional>

namespace tarvo::render {

// The passes of a frame, each for itself. Records that are handed in are referred to, not copied: they stay
// until the pass is drawn.

/// The planes of YV12 input into conversionTarget.
Pass yv12ConversionPass();
/// The packed pixels of YUY2 input into conversionTarget.
Pass yuy2ConversionPass(const Yuy2Constants& constants);

/// The input into conversionTarget with the exclude area painted black.
Pass blackoutPass(const ExcludeConstants& constants);

/// What `use` draws of `source` into a quad of the output. `use` has a program.
Pass viewPass(const PixelShaderUse& use, Surface source, int firstVertex);

/// The quad of a view type that is drawn with one pass; none for the quad view and for what is no view type.
std::optional<int> viewQuad(geometry::ViewType viewType, geometry::TiltOrientation orientation);

/// `source` as it is, into a range of the output.
Pass plainCopyPass(Surface source, const DrawRange& range);

/// The marker of the viewed region over the overview disc.
Pass overviewMarkerPass();

} // namespace tarvo::render
