#include "render/software/kernels/ExcludeRegion.h"

#include "render/ConstantRecords.h"
#include "render/software/kernels/PlainCopy.h"

#include <limits>

namespace tarvo::render::software::plain {

void excludeRegion(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const float* const area = static_cast<const ExcludeConstants*>(constants)->excludeRect;
    plainCopy(constants, places, positions);
    for (int i = 0; i < places.count; ++i) {
        const float u = places.u[i];
        const float v = places.v[i];
        if (u >= area[0] && u <= area[2] && v >= area[1] && v <= area[3])
            positions.x[i] = std::numeric_limits<float>::quiet_NaN();
    }
}

} // namespace tarvo::render::software::plain
