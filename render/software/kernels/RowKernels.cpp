#include "render/software/kernels/RowKernels.h"

#include "render/software/kernels/ExcludeRegion.h"
#include "render/software/kernels/PlainCopy.h"
#include "render/software/kernels/Projections.h"
#include "render/software/kernels/Sampling.h"

namespace tarvo::render::software {

const RowKernels& rowKernels() {
    static constexpr RowKernels reference{
        plain::singleView,   plain::panoramaWall, plain::panoramaCeiling,
        plain::panoramaDesk, plain::plainCopy,    plain::excludeRegion,
        plain::pack,         plain::sample,
    };
    return reference;
}

} // namespace tarvo::render::software
