#pragma once

#include "apps/host/Module.h"
#include "bench/comparison/Inputs.h"

#include <cstdint>

namespace tarvo::bench {

/// What several transforms of one process do together.
struct StreamFigures {
    double framesPerSecond = 0.0;     ///< all of them together
    std::uint64_t bytesPerStream = 0; ///< memory, without the host's frames
};

/// As many transforms as that, each with a thread of its own that hands in frame after frame as fast as it
/// can. Throws host::HostError and what the frames threw.
StreamFigures measureStreams(const host::CModule& module, const Work& work, const CInputs& inputs,
                             int streams, double seconds);

} // namespace tarvo::bench
