#pragma once

#include <cstddef>

namespace tarvo::geometry {

/// Constants of one dewarp program, laid out as the GPU reads them (16-byte registers, no implicit padding).
struct DewarpConstants {
    float size[2];               ///< input width and height, pixels
    float imageCenter[2];        ///< lens centre in the input, pixels from the top-left corner
    float rotateData[3];         ///< rotation about x, y and z, radians
    float tangentOfFieldOfView;  ///< tangent of half the vertical view angle
    float lensProfile[3];        ///< a, b, c blended by the effect level, pixels
    float lambdaOffset;          ///< azimuth offset, radians
    float clearColor[4];         ///< red, green, blue, alpha of samples outside the input
    float panoramaRectAngles[4]; ///< pan offset, tilt offset, width, height of the panorama, radians
};

static_assert(sizeof(DewarpConstants) == 80);
static_assert(offsetof(DewarpConstants, size) == 0);
static_assert(offsetof(DewarpConstants, imageCenter) == 8);
static_assert(offsetof(DewarpConstants, rotateData) == 16);
static_assert(offsetof(DewarpConstants, tangentOfFieldOfView) == 28);
static_assert(offsetof(DewarpConstants, lensProfile) == 32);
static_assert(offsetof(DewarpConstants, lambdaOffset) == 44);
static_assert(offsetof(DewarpConstants, clearColor) == 48);
static_assert(offsetof(DewarpConstants, panoramaRectAngles) == 64);

} // namespace tarvo::geometry
