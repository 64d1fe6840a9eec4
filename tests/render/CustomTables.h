#pragma once

#include "render/Picture.h"
#include "render/reference/Grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tarvo::render::reference {

inline constexpr std::uint16_t whole = 65535;

/// Its corners look at the picture's corners; since cells are mixed linearly, every place looks at itself.
inline LookupTables identityTable() {
    LookupTables tables(2, 2);
    tables.texels = {{0, 0, whole, 0}, {whole, 0, whole, 0}, {0, whole, whole, 0}, {whole, whole, whole, 0}};
    return tables;
}

/// A picture of which blue tells the column and green the row, one level a pixel; 256 × 128.
inline Picture levelRamp() {
    Picture picture(256, 128);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 9, 255};
        }
    }
    return picture;
}

/// What the ramp shows at a place, 0 … 1 over it, in levels: pixel centres lie at halves and edges go on.
inline double rampBlue(double x) {
    return std::clamp(x * 256.0 - 0.5, 0.0, 255.0);
}
inline double rampGreen(double y) {
    return std::clamp(y * 128.0 - 0.5, 0.0, 127.0);
}

/// The record of so many tables of a size, showing all of them with their own aspect.
template<typename Constants>
Constants constantsOf(int width, int height, std::uint32_t numberOfTables) {
    const auto columns = static_cast<float>(width);
    const auto rows = static_cast<float>(height);
    Constants constants{};
    const float rectangle[] = {0.5F / columns, 0.5F / rows, 1.0F - 1.0F / columns, 1.0F - 1.0F / rows};
    std::ranges::copy(rectangle, constants.lookupRectangle);
    constants.viewRect[2] = constants.viewRect[3] = 1.0F;
    constants.projectionRect[2] = constants.projectionRect[3] = 1.0F;
    constants.numberOfTables = numberOfTables;
    constants.tableHeight = 1.0F / static_cast<float>(numberOfTables);
    return constants;
}

} // namespace tarvo::render::reference
