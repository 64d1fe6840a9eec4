#pragma once

#include "platform/InterfaceTypes.h"
#include "tests/support/GraphFakes.h"
#include "tests/support/graph/FrameSource.h"

#include <vector>

namespace tarvo::tests {

/// What a transform by itself makes of the frames, handed to it one after the other, and of the end behind
/// them: what it gives once more then is in it.
std::vector<Delivery> driveDirectly(IUnknown& transform, const AM_MEDIA_TYPE& input,
                                    const AM_MEDIA_TYPE& output, const std::vector<SourceFrame>& frames);

} // namespace tarvo::tests
