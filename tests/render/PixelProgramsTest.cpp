#include "render/reference/PixelPrograms.h"

#include "geometry/DewarpParameters.h"

#include <gtest/gtest.h>

namespace tarvo::render::reference {
namespace {

using geometry::CDewarpParameters;
using geometry::PanoramaMode;
using geometry::TiltOrientation;

constexpr Bgra white{255, 255, 255, 255};

CDewarpParameters parametersOf(TiltOrientation orientation, geometry::LensProfile lens, PanoramaMode mode) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(64, 48, lens);
    parameters.setTiltOrientation(orientation);
    parameters.selectPanoramaMode(mode);
    parameters.setPanoramaRectangle({180.0, 60.0, -90.0, 0.0});
    return parameters;
}

/// The projection of a mode.
Colour dewarpProgram(PanoramaMode mode, const DewarpConstants& constants, const Picture& source, float u,
                     float v) {
    switch (mode) {
    case PanoramaMode::wall:
        return panoramaWallProgram(constants, source, u, v);
    case PanoramaMode::ceiling:
        return panoramaCeilingProgram(constants, source, u, v);
    case PanoramaMode::desk:
        return panoramaDeskProgram(constants, source, u, v);
    case PanoramaMode::singleView:
        break;
    }
    return singleViewProgram(constants, source, u, v);
}

void expectColour(const Colour& colour, float level) {
    EXPECT_NEAR(colour.red, level, 1e-6F);
    EXPECT_NEAR(colour.green, level, 1e-6F);
    EXPECT_NEAR(colour.blue, level, 1e-6F);
    EXPECT_EQ(colour.alpha, 1.0F);
}

TEST(PixelPrograms, outsideTheFrameASingleViewShowsItsClearColour) {
    // A lens so long that 30 degrees off the axis leave the frame; the wall camera looks there.
    const Picture input(64, 48, white);
    CDewarpParameters parameters =
        parametersOf(TiltOrientation::wall, {0.0F, 0.0F, 2.0F}, PanoramaMode::singleView);
    parameters.setPanTiltFieldOfView(0.0F, 0.0F, 30.0F);
    expectColour(dewarpProgram(PanoramaMode::singleView, parameters.constants(), input, 0.5F, 0.5F), 1.0F);
    expectColour(dewarpProgram(PanoramaMode::singleView, parameters.constants(), input, 0.5F, 0.0F), 0.0F);
    geometry::DewarpConstants constants = parameters.constants();
    constants.clearColor[0] = 0.25F;
    EXPECT_EQ(dewarpProgram(PanoramaMode::singleView, constants, input, 0.5F, 0.0F).red, 0.25F);
}

TEST(PixelPrograms, ceilingAndDeskPanoramasAreBlackOutsideTheFrameWhateverTheClearColour) {
    const Picture input(64, 48, white);
    const geometry::LensProfile lens{0.0F, 0.0F, 0.5F}; // the horizon lies beyond the frame
    for (const auto mode : {PanoramaMode::ceiling, PanoramaMode::desk}) {
        const auto orientation =
            mode == PanoramaMode::ceiling ? TiltOrientation::ceiling : TiltOrientation::desk;
        geometry::DewarpConstants constants = parametersOf(orientation, lens, mode).constants();
        constants.clearColor[0] = 0.25F;
        const float horizon = mode == PanoramaMode::ceiling ? 0.01F : 0.49F;
        const float deep = mode == PanoramaMode::ceiling ? 0.49F : 0.01F;
        // Straight ahead is up in the picture: 0.5 · π/2 = 0.785 heights is outside, 30 degrees (0.262)
        // inside.
        expectColour(dewarpProgram(mode, constants, input, 0.5F, horizon), 0.0F);
        expectColour(dewarpProgram(mode, constants, input, 0.5F, deep), 1.0F);
    }
}

TEST(PixelPrograms, wallPanoramaNeverShowsTheClearColour) {
    const Picture input(64, 48, white);
    const geometry::DewarpConstants constants =
        parametersOf(TiltOrientation::wall, {0.0F, 0.0F, 0.5F}, PanoramaMode::wall).constants();
    for (float v = 0.0F; v <= 1.0F; v += 0.125F) {
        for (float u = 0.0F; u <= 1.0F; u += 0.125F) {
            expectColour(dewarpProgram(PanoramaMode::wall, constants, input, u, v), 1.0F);
        }
    }
}

TEST(PixelPrograms, excludeAreaIncludesItsEdges) {
    const Picture input(8, 8, white);
    const ExcludeConstants area{{0.25F, 0.5F, 0.75F, 1.0F}};
    expectColour(excludeRegionProgram(area, input, 0.25F, 0.5F), 0.0F);
    expectColour(excludeRegionProgram(area, input, 0.75F, 1.0F), 0.0F);
    expectColour(excludeRegionProgram(area, input, 0.5F, 0.7F), 0.0F);
    expectColour(excludeRegionProgram(area, input, 0.24F, 0.7F), 1.0F);
    expectColour(excludeRegionProgram(area, input, 0.76F, 0.7F), 1.0F);
    expectColour(excludeRegionProgram(area, input, 0.5F, 0.49F), 1.0F);
}

TEST(PixelPrograms, overviewRegionIsRedWithTheVertexAlpha) {
    const Colour colour = overviewRegionProgram(0.375F);
    EXPECT_EQ(colour.red, 1.0F);
    EXPECT_EQ(colour.green, 0.0F);
    EXPECT_EQ(colour.blue, 0.0F);
    EXPECT_EQ(colour.alpha, 0.375F);
}

} // namespace
} // namespace tarvo::render::reference
