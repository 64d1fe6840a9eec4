#pragma once

// Also included by files that are compiled for one instruction set: everything is local to the including
// file, and nothing of the standard library is called that could come along as an inline function.

namespace tarvo::render::software {

/// (arctan x) / x for 0 to 1, from the square of x, good to 2e-8: formula 4.4.49 of Abramowitz and Stegun, as
/// the shader programs take it.
[[gnu::always_inline]] static inline float arcTangentRatio(float square) {
    float sum = 0.0028662257F;
    sum = sum * square - 0.0161657367F;
    sum = sum * square + 0.0429096138F;
    sum = sum * square - 0.0752896400F;
    sum = sum * square + 0.1065626393F;
    sum = sum * square - 0.1420889944F;
    sum = sum * square + 0.1999355085F;
    sum = sum * square - 0.3333314528F;
    return 1.0F + square * sum;
}

/// The angle of (x, y) against the x axis, −π to π; that of the origin is 0.
static inline float arcTangent(float y, float x) {
    constexpr float pi = 3.14159265F;
    const float sizeX = __builtin_fabsf(x);
    const float sizeY = __builtin_fabsf(y);
    const float larger = sizeX < sizeY ? sizeY : sizeX;
    const float smaller = sizeY < sizeX ? sizeY : sizeX;
    const float tangent = smaller / (larger > 0.0F ? larger : 1.0F);
    float angle = tangent * arcTangentRatio(tangent * tangent);
    angle = sizeY > sizeX ? 0.5F * pi - angle : angle;
    angle = x < 0.0F ? pi - angle : angle;
    return y < 0.0F ? -angle : angle;
}

/// Arc sine of what should lie within −1 … 1, but for rounding.
static inline float arcSine(float x) {
    const float raised = x > -1.0F ? x : -1.0F;
    const float sine = raised < 1.0F ? raised : 1.0F;
    return arcTangent(sine, __builtin_sqrtf((1.0F - sine) * (1.0F + sine)));
}

} // namespace tarvo::render::software
