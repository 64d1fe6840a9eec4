#pragma once

#include "render/ConstantRecords.h"
#include "render/colour/YuvToBgra.h"
#include "render/software/Raster.h"

namespace tarvo::render::software {

// Which passes over a whole picture are known without drawing them.

/// Whether a raster is exactly the target, which has this size.
bool coversAll(const CRaster& raster, int width, int height);

/// Of one that does: whether each pixel looks at its own place.
bool isOneToOne(const CRaster& raster, int width, int height);

/// The pixels of one that covers all which lie in the exclude area.
PixelArea areaOf(const ExcludeConstants& constants, const CRaster& raster, int width, int height);

} // namespace tarvo::render::software
