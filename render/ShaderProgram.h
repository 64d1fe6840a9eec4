#pragma once

#include "geometry/Enumerations.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarvo::render {

/// The programs that draw every pass: one for vertices, the others for pixels.
enum class ShaderProgram {
    singleView,       ///< rectilinear view of the fisheye picture
    panoramaWall,     ///< its panorama for a camera on a wall
    panoramaCeiling,  ///< on a ceiling
    panoramaDesk,     ///< on a desk
    customTransform,  ///< custom tables with digital zoom
    customVirtualPtz, ///< custom tables with virtual PTZ
    yv12ToRgb,        ///< conversion of YV12 input
    yuy2ToRgb,        ///< conversion of YUY2 input
    excludeRegion,    ///< the input with the exclude area painted black
    vertex,           ///< the vertex program
    overviewRegion,   ///< the marker in the overview
    plainCopy,        ///< the input as it is
};

/// Where a program's bytecode lies: type and id of the resource, for findModuleResource().
struct ShaderResource {
    ShaderProgram program;
    std::uint16_t id;
    const char* type;
    std::string_view sourceName; ///< of its file in Resources/Shaders/src, without the extension
};

/// Every program in the order of the enumeration. cmake/Shaders.cmake embeds the same.
inline constexpr std::array<ShaderResource, 12> shaderResources{{
    {ShaderProgram::singleView, 214, "PS", "PixelShaderDewarping"},
    {ShaderProgram::panoramaWall, 216, "PS", "PanoramaWallPS"},
    {ShaderProgram::panoramaCeiling, 217, "PS", "PanoramaCeilingPS"},
    {ShaderProgram::panoramaDesk, 218, "PS", "PanoramaDeskPS"},
    {ShaderProgram::customTransform, 220, "PS", "CustomTransformPS"},
    {ShaderProgram::customVirtualPtz, 222, "PS", "CustomTransformPanoramaVirtualPtzPS"},
    {ShaderProgram::yv12ToRgb, 223, "PS", "YV12PS"},
    {ShaderProgram::yuy2ToRgb, 224, "PS", "YUY2PS"},
    {ShaderProgram::excludeRegion, 225, "PS", "ExcludeRegionPS"},
    {ShaderProgram::vertex, 227, "VS", "VertexShader"},
    {ShaderProgram::overviewRegion, 228, "PS", "OverviewRegionPS"},
    {ShaderProgram::plainCopy, 229, "PS", "DefaultPS"},
}};

constexpr const ShaderResource& shaderResource(ShaderProgram program) {
    return shaderResources[static_cast<std::size_t>(program)];
}

static_assert([] {
    for (std::size_t i = 0; i < shaderResources.size(); ++i) {
        if (shaderResources[i].program != static_cast<ShaderProgram>(i))
            return false;
    }
    return true;
}());

/// The program that evaluates a projection of the fisheye picture.
constexpr ShaderProgram dewarpProgramOf(geometry::PanoramaMode mode) {
    switch (mode) {
    case geometry::PanoramaMode::ceiling:
        return ShaderProgram::panoramaCeiling;
    case geometry::PanoramaMode::desk:
        return ShaderProgram::panoramaDesk;
    case geometry::PanoramaMode::wall:
        return ShaderProgram::panoramaWall;
    case geometry::PanoramaMode::singleView:
        break;
    }
    return ShaderProgram::singleView;
}

} // namespace tarvo::render
