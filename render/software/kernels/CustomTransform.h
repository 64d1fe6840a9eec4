#pragma once

#include "render/ConstantRecords.h"
#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software {

/// What the custom programs sample: a picture, and the tables one below the other, four 16-bit channels a
/// texel of which red and green are the place in the picture and blue is the weight. Neither is empty.
struct CustomSources {
    const std::uint8_t* pixels;
    std::ptrdiff_t pitch;
    int width;
    int height;
    const std::uint8_t* tables;
    std::ptrdiff_t tablesPitch;
    int tablesWidth;
    int tablesHeight;
};

/// The weighted sum of what the tables find at each place, opaque black outside their grid. At most 8 tables
/// count. The first shows a cut-out of the grid, letter-boxed; the second a virtual camera's view of it, the
/// grid being a panorama.
void customTransform(const CustomTransformConstants& constants, const CustomSources& sources,
                     const PlaceRow& places, std::uint8_t* target);
void customVirtualPtz(const VirtualPtzConstants& constants, const CustomSources& sources,
                      const PlaceRow& places, std::uint8_t* target);

} // namespace tarvo::render::software
