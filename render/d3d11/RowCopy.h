#pragma once

#include "render/RenderDevice.h"

#include <cstddef>

namespace tarvo::render::d3d11 {

/// A surface while it is mapped for writing. Of each row the first `rowBytes` are its own; the memory ends
/// with those of the last row. What lies between rows is nobody's.
struct MappedSurface {
    std::byte* data = nullptr;
    std::size_t pitchBytes = 0;
    std::size_t rowBytes = 0; ///< at most the pitch
    int rowCount = 0;
};

/// Fills the surface with the rows, in a single copy where they lie as the surface does. What they do not
/// cover becomes zero; what lies between the surface's rows may be written. Nothing is read before or behind
/// the rows; between them the memory has to be readable.
void copyRows(const SourceRows& from, const MappedSurface& to);

} // namespace tarvo::render::d3d11
