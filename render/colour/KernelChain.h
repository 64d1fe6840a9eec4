#pragma once

#include "render/colour/ColourKernels.h"

namespace tarvo::render {

/// What the widest kernel answers that does anything with these arguments; 0 if none does.
template<typename Kernel, typename... Arguments>
int firstThatServes(const ColourKernels& kernels, Kernel ColourKernels::*kernel,
                    const Arguments&... arguments) {
    for (const ColourKernels* set = &kernels; set != nullptr; set = set->narrower) {
        if (const Kernel run = set->*kernel; run != nullptr) {
            if (const int done = run(arguments...); done != 0)
                return done;
        }
    }
    return 0;
}

} // namespace tarvo::render
