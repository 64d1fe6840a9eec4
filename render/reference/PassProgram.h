#pragma once

#include "render/Pass.h"
#include "render/reference/Colour.h"
#include "render/reference/Rasteriser.h"
#include "render/reference/Surfaces.h"

#include <functional>

namespace tarvo::render::reference {

/// A pixel program together with everything that a pass feeds it.
using PixelProgram = std::function<Colour(const Fragment&)>;

/// The pass's program with its pictures and constants; it looks at `surfaces`, which stay as they are while
/// it is used. Empty when the pass does not feed the program what it reads: a picture of the right kind in
/// each of its slots, a record of at least its length in its constant slot, and a target as large as the
/// input for the programs that convert it. The vertex program draws no pixels.
PixelProgram programOf(const Pass& pass, const CSurfaces& surfaces);

} // namespace tarvo::render::reference
