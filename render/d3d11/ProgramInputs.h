#pragma once

#include "render/Pass.h"

#include <array>
#include <cstddef>
#include <tuple>

namespace tarvo::render::d3d11 {

/// What a pixel program reads besides its vertices, as its source declares it.
struct ProgramInputs {
    /// By texture slot, whether the program looks at it.
    std::array<bool, std::tuple_size_v<TextureSlots>> textures{};
    /// The record of a program that draws a view, which is made with the program; none for the others.
    ConstantSlot viewRecord = ConstantSlot::none;
    /// Size of that record; either custom program's fits into theirs.
    std::size_t viewRecordBytes = 0;
};

/// Nothing for what is no pixel program.
ProgramInputs inputsOf(ShaderProgram program);

} // namespace tarvo::render::d3d11
