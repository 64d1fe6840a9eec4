#include "render/reference/PassProgram.h"

#include "render/reference/ConstantBytes.h"
#include "render/reference/ConversionPrograms.h"
#include "render/reference/CustomPrograms.h"
#include "render/reference/PixelPrograms.h"

#include <array>
#include <cstddef>
#include <optional>

namespace tarvo::render::reference {
namespace {

template<typename Record>
std::optional<Record> recordOf(const Pass& pass, ConstantSlot slot) {
    return pass.constantSlot == slot ? readRecord<Record>(pass.constants) : std::nullopt;
}

PixelProgram plainCopyOf(const Pass& pass, const CSurfaces& surfaces) {
    const Picture* const source = surfaces.picture(pass.textures[0]);
    if (source == nullptr) {
        return {};
    }
    return [source](const Fragment& f) { return plainCopyProgram(*source, f.u, f.v); };
}

/// A program that reads a record and one picture.
template<typename Record>
PixelProgram pictureProgram(Colour (*program)(const Record&, const Picture&, float, float), ConstantSlot slot,
                            const Pass& pass, const CSurfaces& surfaces) {
    const std::optional<Record> constants = recordOf<Record>(pass, slot);
    const Picture* const source = surfaces.picture(pass.textures[0]);
    if (!constants || source == nullptr) {
        return {};
    }
    return [program, constants = *constants, source](const Fragment& f) {
        return program(constants, *source, f.u, f.v);
    };
}

/// A program that also reads the custom tables.
template<typename Record>
PixelProgram tableProgram(Colour (*program)(const Record&, const LookupTables&, const Picture&, float, float),
                          const Pass& pass, const CSurfaces& surfaces) {
    const std::optional<Record> constants = recordOf<Record>(pass, ConstantSlot::custom);
    const Picture* const source = surfaces.picture(pass.textures[0]);
    const LookupTables* const tables = surfaces.lookup(pass.textures[4]);
    if (!constants || source == nullptr || tables == nullptr) {
        return {};
    }
    return [program, constants = *constants, tables, source](const Fragment& f) {
        return program(constants, *tables, *source, f.u, f.v);
    };
}

PixelProgram yv12Of(const Pass& pass, const CSurfaces& surfaces) {
    const std::array<const Plane*, 3> planes{
        surfaces.plane(pass.textures[0]), surfaces.plane(pass.textures[1]), surfaces.plane(pass.textures[2])};
    for (const Plane* plane : planes) {
        if (plane == nullptr) {
            return {};
        }
    }
    // Which is also what keeps the pixel's place inside the luma plane.
    if (pass.target != Surface::conversionTarget || pass.textures[0] != Surface::yPlane) {
        return {};
    }
    return [planes](const Fragment& f) { return yv12Program(planes, f.x, f.y); };
}

PixelProgram yuy2Of(const Pass& pass, const CSurfaces& surfaces) {
    const auto constants = recordOf<Yuy2Constants>(pass, ConstantSlot::width);
    const auto bytes = surfaces.packedBytes(pass.textures[3]);
    if (!constants || bytes.empty() || pass.target != Surface::conversionTarget) {
        return {};
    }
    return [constants = *constants, bytes](const Fragment& f) {
        return yuy2Program(constants, bytes, f.x, f.y);
    };
}

} // namespace

PixelProgram programOf(const Pass& pass, const CSurfaces& surfaces) {
    switch (pass.program) {
    case ShaderProgram::singleView:
        return pictureProgram(singleViewProgram, ConstantSlot::dewarp, pass, surfaces);
    case ShaderProgram::panoramaWall:
        return pictureProgram(panoramaWallProgram, ConstantSlot::dewarp, pass, surfaces);
    case ShaderProgram::panoramaCeiling:
        return pictureProgram(panoramaCeilingProgram, ConstantSlot::dewarp, pass, surfaces);
    case ShaderProgram::panoramaDesk:
        return pictureProgram(panoramaDeskProgram, ConstantSlot::dewarp, pass, surfaces);
    case ShaderProgram::customTransform:
        return tableProgram(customTransformProgram, pass, surfaces);
    case ShaderProgram::customVirtualPtz:
        return tableProgram(customVirtualPtzProgram, pass, surfaces);
    case ShaderProgram::yv12ToRgb:
        return yv12Of(pass, surfaces);
    case ShaderProgram::yuy2ToRgb:
        return yuy2Of(pass, surfaces);
    case ShaderProgram::excludeRegion:
        return pictureProgram(excludeRegionProgram, ConstantSlot::exclude, pass, surfaces);
    case ShaderProgram::overviewRegion:
        return [](const Fragment& f) { return overviewRegionProgram(f.colour); };
    case ShaderProgram::plainCopy:
        return plainCopyOf(pass, surfaces);
    case ShaderProgram::vertex:
        break;
    }
    return {};
}

} // namespace tarvo::render::reference
