#pragma once

#include "render/software/kernels/RowKernels.h"

#include <span>

namespace tarvo::render::software {

/// One of the ways to make rows, to be used only where detectInstructionSet() is at least what it needs.
struct RowVariant {
    const char* name;
    InstructionSet needs;
    const RowKernels* kernels;
};

/// All there are, the plain one first.
std::span<const RowVariant> rowVariants();

/// The variant for this processor: of its highest level and, where there are several of that, the one that
/// samples faster. That is tried out once per process, in less than a millisecond: what gathering costs
/// depends on the processor's make and on its microcode, and nobody can be asked. Any thread.
const RowKernels& rowKernels();

/// Whichever of two samples a block faster, the first when neither does.
const RowKernels& fasterRows(const RowKernels& first, const RowKernels& second);

} // namespace tarvo::render::software
