#include "render/software/ProgramNeeds.h"

#include "render/software/kernels/Blending.h"

#include <algorithm>

namespace tarvo::render::software {

ProgramNeeds needsOf(ShaderProgram program) {
    constexpr std::size_t dewarp = sizeof(DewarpConstants);
    switch (program) {
    case ShaderProgram::singleView:
        return {true, ConstantSlot::dewarp, dewarp, &RowKernels::singleView, true, true};
    case ShaderProgram::panoramaWall:
        return {true, ConstantSlot::dewarp, dewarp, &RowKernels::panoramaWall, true, false};
    case ShaderProgram::panoramaCeiling:
        return {true, ConstantSlot::dewarp, dewarp, &RowKernels::panoramaCeiling, true, true};
    case ShaderProgram::panoramaDesk:
        return {true, ConstantSlot::dewarp, dewarp, &RowKernels::panoramaDesk, true, true};
    case ShaderProgram::customTransform:
        return {true, ConstantSlot::custom, sizeof(CustomTransformConstants), &RowKernels::customTransform};
    case ShaderProgram::customVirtualPtz:
        return {true, ConstantSlot::custom, sizeof(VirtualPtzConstants), &RowKernels::customVirtualPtz};
    case ShaderProgram::excludeRegion:
        return {false, ConstantSlot::exclude, sizeof(ExcludeConstants), &RowKernels::excludeRegion};
    case ShaderProgram::yuy2ToRgb:
        return {false, ConstantSlot::width, sizeof(Yuy2Constants), nullptr};
    case ShaderProgram::plainCopy:
        return {false, ConstantSlot::none, 0, &RowKernels::plainCopy};
    case ShaderProgram::yv12ToRgb:
    case ShaderProgram::overviewRegion:
    case ShaderProgram::vertex:
        break;
    }
    return {false, ConstantSlot::none, 0, nullptr};
}

bool isCustom(ShaderProgram program) {
    return needsOf(program).slot == ConstantSlot::custom;
}

int layersOf(const RecordBytes& record) {
    // Both records begin alike.
    static_assert(offsetof(CustomTransformConstants, numberOfTables) ==
                  offsetof(VirtualPtzConstants, numberOfTables));
    const std::uint32_t tables = recordAs<CustomTransformConstants>(record).numberOfTables;
    return static_cast<int>(std::min<std::uint32_t>(tables, mostLayers));
}

RecordBytes recordFrom(std::span<const std::byte> constants, std::size_t size) {
    RecordBytes record;
    std::copy_n(constants.begin(), size, record.bytes.begin());
    record.size = size;
    return record;
}

Bgra outsideColour(ShaderProgram program, const RecordBytes& record) {
    if (program != ShaderProgram::singleView)
        return opaqueBlack;
    const auto constants = recordAs<DewarpConstants>(record);
    const float* c = constants.clearColor;
    return storedColour({c[0], c[1], c[2], c[3]});
}

} // namespace tarvo::render::software
