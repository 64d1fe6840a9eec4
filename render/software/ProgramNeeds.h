#pragma once

#include "render/Picture.h"
#include "render/software/DrawnRange.h"

#include <cstddef>
#include <cstring>
#include <span>

namespace tarvo::render::software {

/// What a program wants besides vertices.
struct ProgramNeeds {
    bool isPrepared; ///< by prepare()
    ConstantSlot slot;
    std::size_t recordSize;
    PositionKernel RowKernels::*kernel; ///< null: it does not sample one picture by positions
    bool isProjection = false;          ///< as PositionKey says
    bool isBounded = false;             ///< likewise

    bool fits(ConstantSlot given, std::span<const std::byte> constants) const {
        return given == slot && constants.size() >= recordSize;
    }
};

ProgramNeeds needsOf(ShaderProgram program);

/// Whether it looks through tables.
bool isCustom(ShaderProgram program);

/// How many tables such a program's record makes it look through.
int layersOf(const RecordBytes& record);

/// The first `size` bytes, of which there are as many.
RecordBytes recordFrom(std::span<const std::byte> constants, std::size_t size);

template<typename Record>
Record recordAs(const RecordBytes& bytes) {
    Record record{};
    std::memcpy(&record, bytes.bytes.data(), sizeof(record));
    return record;
}

/// What the single view shows where the input ends; the other programs show black there.
Bgra outsideColour(ShaderProgram program, const RecordBytes& record);

} // namespace tarvo::render::software
