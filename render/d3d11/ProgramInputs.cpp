#include "render/d3d11/ProgramInputs.h"

#include "render/ConstantRecords.h"

namespace tarvo::render::d3d11 {

ProgramInputs inputsOf(ShaderProgram program) {
    static_assert(sizeof(VirtualPtzConstants) >= sizeof(CustomTransformConstants));
    switch (program) {
    case ShaderProgram::singleView:
    case ShaderProgram::panoramaWall:
    case ShaderProgram::panoramaCeiling:
    case ShaderProgram::panoramaDesk:
        return {{true}, ConstantSlot::dewarp, sizeof(DewarpConstants)};
    case ShaderProgram::customTransform:
    case ShaderProgram::customVirtualPtz:
        return {{true, false, false, false, true}, ConstantSlot::custom, sizeof(VirtualPtzConstants)};
    case ShaderProgram::yv12ToRgb:
        return {{true, true, true}};
    case ShaderProgram::yuy2ToRgb:
        return {{false, false, false, true}};
    case ShaderProgram::excludeRegion:
    case ShaderProgram::plainCopy:
        return {{true}};
    case ShaderProgram::vertex:
    case ShaderProgram::overviewRegion:
        break;
    }
    return {};
}

} // namespace tarvo::render::d3d11
