#pragma once

#include "tests/render/software/SoftwareDeviceFixture.h"

#include <cmath>
#include <type_traits>
#include <vector>

namespace tarvo::render::software {

inline constexpr std::uint16_t full = 65535;

/// A texel that looks at a fraction of the picture.
struct Texel {
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::uint16_t weight = 0;
    std::uint16_t unused = 77;
};

inline Texel lookingAt(double x, double y, int weight = full) {
    return {static_cast<std::uint16_t>(std::lround(x * 65535.0)),
            static_cast<std::uint16_t>(std::lround(y * 65535.0)), static_cast<std::uint16_t>(weight)};
}

/// The whole of so many tables of a size, in the shape of the output.
inline CustomTransformConstants wholeOf(int columns, int rows, int tables) {
    CustomTransformConstants c{};
    c.lookupRectangle[0] = 0.5F / static_cast<float>(columns);
    c.lookupRectangle[1] = 0.5F / static_cast<float>(rows);
    c.lookupRectangle[2] = 1.0F - 1.0F / static_cast<float>(columns);
    c.lookupRectangle[3] = 1.0F - 1.0F / static_cast<float>(rows);
    c.viewRect[2] = c.viewRect[3] = c.projectionRect[2] = c.projectionRect[3] = 1.0F;
    c.numberOfTables = static_cast<std::uint32_t>(tables);
    c.tableHeight = 1.0F / static_cast<float>(tables);
    return c;
}

inline HRESULT putTables(CSoftwareDevice& device, int columns, int rows, const std::vector<Texel>& texels) {
    const std::size_t rowBytes = static_cast<std::size_t>(columns) * sizeof(Texel);
    const HRESULT result = device.lookup(columns, rows);
    return FAILED(result) ? result
                          : device.upload(Surface::lookup, {std::as_bytes(std::span(texels)).data(),
                                                            static_cast<std::ptrdiff_t>(rowBytes), rowBytes,
                                                            static_cast<int>(texels.size()) / columns});
}

template<typename Constants>
HRESULT drawTables(CSoftwareDevice& device, const Constants& constants, bool isBlended = false) {
    const ShaderProgram program = std::is_same_v<Constants, VirtualPtzConstants>
                                      ? ShaderProgram::customVirtualPtz
                                      : ShaderProgram::customTransform;
    const HRESULT result = device.prepare(program, ConstantSlot::custom, recordBytes(constants));
    if (FAILED(result))
        return result;
    Pass pass = passOf(program, Surface::inputPicture, quadRange(0));
    pass.textures[4] = Surface::lookup;
    pass.constantSlot = ConstantSlot::custom;
    pass.constants = recordBytes(constants);
    pass.isBlended = isBlended;
    return device.draw(pass);
}

/// The corners of an area of the input in the corners of a grid.
inline std::vector<Texel> cornersOf(double left, double top, double right, double bottom, int weight = full) {
    return {lookingAt(left, top, weight), lookingAt(right, top, weight), lookingAt(left, bottom, weight),
            lookingAt(right, bottom, weight)};
}

} // namespace tarvo::render::software
