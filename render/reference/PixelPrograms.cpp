#include "render/reference/PixelPrograms.h"

#include "geometry/Projection.h"

namespace tarvo::render::reference {
namespace {

using geometry::DewarpConstants;
using geometry::InputPosition;
using geometry::PanoramaMode;

Colour sampleAt(const DewarpConstants& constants, const Picture& source, InputPosition<float> position) {
    return sampleBilinear(source, position.x / constants.size[0], position.y / constants.size[1]);
}

Colour sampleOr(Colour outside, const DewarpConstants& constants, const Picture& source,
                InputPosition<float> position) {
    return geometry::isInsideInput(constants, position) ? sampleAt(constants, source, position) : outside;
}

} // namespace

Colour defaultProgram(const Picture& source, float u, float v) {
    return sampleBilinear(source, u, v);
}

Colour dewarpProgram(PanoramaMode mode, const DewarpConstants& constants, const Picture& source, float u,
                     float v) {
    constexpr Colour opaqueBlackColour{0.0F, 0.0F, 0.0F, 1.0F};
    switch (mode) {
    case PanoramaMode::ceiling:
        return sampleOr(opaqueBlackColour, constants, source,
                        geometry::projectPanoramaCeiling(constants, u, v));
    case PanoramaMode::desk:
        return sampleOr(opaqueBlackColour, constants, source, geometry::projectPanoramaDesk(constants, u, v));
    case PanoramaMode::wall:
        // Deliberately without a test: beyond the frame its edge pixels go on.
        return sampleAt(constants, source, geometry::projectPanoramaWall(constants, u, v));
    case PanoramaMode::singleView:
        break;
    }
    const float* clear = constants.clearColor;
    return sampleOr({clear[0], clear[1], clear[2], clear[3]}, constants, source,
                    geometry::projectSingleView(constants, u, v));
}

Colour excludeRegionProgram(const geometry::ExcludeArea& area, const Picture& source, float u, float v) {
    const bool isExcluded = u >= static_cast<float>(area.left) && u <= static_cast<float>(area.right) &&
                            v >= static_cast<float>(area.top) && v <= static_cast<float>(area.bottom);
    return isExcluded ? Colour{0.0F, 0.0F, 0.0F, 1.0F} : sampleBilinear(source, u, v);
}

Colour overviewRegionProgram(float vertexColour) {
    return {1.0F, 0.0F, 0.0F, vertexColour};
}

} // namespace tarvo::render::reference
