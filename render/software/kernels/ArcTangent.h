#pragma once

#include <algorithm>
#include <cmath>

namespace tarvo::render::software {

/// Arc tangent of 0 to 1, good to 2e-8: formula 4.4.49 of Abramowitz and Stegun, as the shader programs take
/// it.
inline float arcTangentOfUnit(float x) {
    const float s = x * x;
    float sum = 0.0028662257F;
    sum = sum * s - 0.0161657367F;
    sum = sum * s + 0.0429096138F;
    sum = sum * s - 0.0752896400F;
    sum = sum * s + 0.1065626393F;
    sum = sum * s - 0.1420889944F;
    sum = sum * s + 0.1999355085F;
    sum = sum * s - 0.3333314528F;
    return x + x * s * sum;
}

/// The angle of (x, y) against the x axis, −π to π; that of the origin is 0.
inline float arcTangent(float y, float x) {
    constexpr float pi = 3.14159265F;
    const float sizeX = std::abs(x);
    const float sizeY = std::abs(y);
    const float larger = std::max(sizeX, sizeY);
    float angle = arcTangentOfUnit(std::min(sizeX, sizeY) / (larger > 0.0F ? larger : 1.0F));
    angle = sizeY > sizeX ? 0.5F * pi - angle : angle;
    angle = x < 0.0F ? pi - angle : angle;
    return y < 0.0F ? -angle : angle;
}

/// Arc sine of what should lie within −1 … 1, but for rounding.
inline float arcSine(float x) {
    const float sine = std::clamp(x, -1.0F, 1.0F);
    return arcTangent(sine, std::sqrt((1.0F - sine) * (1.0F + sine)));
}

} // namespace tarvo::render::software
