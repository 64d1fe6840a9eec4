#pragma once

// For every file that is compiled for one instruction set: see PositionRows.h.

#include "render/software/kernels/CustomPlaces.h"
#include "render/software/kernels/PositionRows.h"
#include "render/software/kernels/SampleRows.h"
#include "render/software/kernels/TableRows.h"

namespace tarvo::render::software {
namespace {

/// The table of an instruction set, which brings its own ways of packing, sampling and mixing.
constexpr RowKernels rowsWith(PackKernel pack, SampleKernel sample, MixKernel mixLayers) {
    return {interpolate, singleView,    panoramaWall,    panoramaCeiling,  panoramaDesk,
            plainCopy,   excludeRegion, customTransform, customVirtualPtz, spread,
            widen,       pack,          sample,          lookUp,           mixLayers};
}

} // namespace
} // namespace tarvo::render::software
