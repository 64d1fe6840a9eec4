#include "render/reference/PixelPrograms.h"

#include "geometry/Projection.h"
#include "render/reference/Sampler.h"

namespace tarvo::render::reference {
namespace {

using geometry::InputPosition;

constexpr Colour opaqueBlackColour{0.0F, 0.0F, 0.0F, 1.0F};

Colour sampleAt(const DewarpConstants& constants, const Picture& source, InputPosition<float> position) {
    return sampleBilinear(source, position.x / constants.size[0], position.y / constants.size[1]);
}

Colour sampleOr(Colour outside, const DewarpConstants& constants, const Picture& source,
                InputPosition<float> position) {
    return geometry::isInsideInput(constants, position) ? sampleAt(constants, source, position) : outside;
}

} // namespace

Colour plainCopyProgram(const Picture& source, float u, float v) {
    return sampleBilinear(source, u, v);
}

Colour singleViewProgram(const DewarpConstants& constants, const Picture& source, float u, float v) {
    const float* clear = constants.clearColor;
    return sampleOr({clear[0], clear[1], clear[2], clear[3]}, constants, source,
                    geometry::projectSingleView(constants, u, v));
}

Colour panoramaWallProgram(const DewarpConstants& constants, const Picture& source, float u, float v) {
    // Deliberately without a test: beyond the frame its edge pixels go on.
    return sampleAt(constants, source, geometry::projectPanoramaWall(constants, u, v));
}

Colour panoramaCeilingProgram(const DewarpConstants& constants, const Picture& source, float u, float v) {
    return sampleOr(opaqueBlackColour, constants, source, geometry::projectPanoramaCeiling(constants, u, v));
}

Colour panoramaDeskProgram(const DewarpConstants& constants, const Picture& source, float u, float v) {
    return sampleOr(opaqueBlackColour, constants, source, geometry::projectPanoramaDesk(constants, u, v));
}

Colour excludeRegionProgram(const ExcludeConstants& constants, const Picture& source, float u, float v) {
    const auto [left, top, right, bottom] = constants.excludeRect;
    const bool isExcluded = u >= left && u <= right && v >= top && v <= bottom;
    return isExcluded ? opaqueBlackColour : sampleBilinear(source, u, v);
}

Colour overviewRegionProgram(float vertexColour) {
    return {1.0F, 0.0F, 0.0F, vertexColour};
}

} // namespace tarvo::render::reference
