#include "render/FramePasses.h"

namespace tarvo::render {
namespace {

/// The slot at which the custom programs look up their tables.
constexpr std::size_t lookupSlot = 4;
constexpr std::size_t packedInputSlot = 3;

} // namespace

Pass yv12ConversionPass() {
    Pass pass;
    pass.program = ShaderProgram::yv12ToRgb;
    pass.target = Surface::conversionTarget;
    pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    pass.range = quadRange(geometry::quad::fullTarget);
    return pass;
}

Pass yuy2ConversionPass(const Yuy2Constants& constants) {
    Pass pass;
    pass.program = ShaderProgram::yuy2ToRgb;
    pass.target = Surface::conversionTarget;
    pass.textures[packedInputSlot] = Surface::packedInput;
    pass.constantSlot = ConstantSlot::width;
    pass.constants = recordBytes(constants);
    pass.range = quadRange(geometry::quad::fullTarget);
    return pass;
}

Pass blackoutPass(const ExcludeConstants& constants) {
    Pass pass;
    pass.program = ShaderProgram::excludeRegion;
    pass.target = Surface::conversionTarget;
    pass.textures[0] = Surface::inputPicture;
    pass.constantSlot = ConstantSlot::exclude;
    pass.constants = recordBytes(constants);
    pass.range = quadRange(geometry::quad::fullTarget);
    return pass;
}

Pass viewPass(const PixelShaderUse& use, Surface source, int firstVertex) {
    Pass pass;
    pass.program = *use.program;
    pass.textures[0] = source;
    if (use.readsLookup) {
        pass.textures[lookupSlot] = Surface::lookup;
    }
    pass.constantSlot = use.constantSlot;
    pass.constants = use.constants;
    pass.range = quadRange(firstVertex);
    return pass;
}

std::optional<int> viewQuad(geometry::ViewType viewType, geometry::TiltOrientation orientation) {
    switch (viewType) {
    case geometry::ViewType::single:
    case geometry::ViewType::singleOverview:
        return geometry::quad::singleView;
    case geometry::ViewType::panoramaSingle:
    case geometry::ViewType::panoramaDouble:
        return geometry::panoramaQuad(viewType, orientation);
    case geometry::ViewType::custom:
        return geometry::quad::customView;
    case geometry::ViewType::quad:
        break;
    }
    return std::nullopt;
}

Pass plainCopyPass(Surface source, const DrawRange& range) {
    Pass pass;
    pass.textures[0] = source;
    pass.range = range;
    return pass;
}

Pass overviewMarkerPass() {
    Pass pass;
    pass.program = ShaderProgram::overviewRegion;
    pass.range = overviewMarkerRange;
    pass.isBlended = true;
    return pass;
}

} // namespace tarvo::render
