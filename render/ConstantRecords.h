#pragma once

#include "geometry/DewarpConstants.h"

#include <cstddef>
#include <cstdint>

namespace tarvo::render {

// What the shader programs are given besides pictures, laid out as the GPU reads it: whole registers of
// 16 bytes, no field across two of them, padding spelled out.

/// Of the vertex program, slot b0 of the vertex stage.
struct VertexConstants {
    /// What positions are multiplied with, as row vectors from the left; one column after the other.
    float worldViewProjection[16];
};

/// What every pass draws with: pictures count their rows downward, clip space counts upward. A mirror is its
/// own transpose, so the order of its elements makes no difference.
inline constexpr VertexConstants mirroredRows{{1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

/// Of the projections of the fisheye picture, slot b0 of the pixel stage.
using DewarpConstants = geometry::DewarpConstants;

/// Of the exclude area's program, slot b1.
struct ExcludeConstants {
    float excludeRect[4]; ///< left, top, right, bottom in texture coordinates
};

/// Of the YUY2 conversion, slot b3.
struct Yuy2Constants {
    std::uint32_t width; ///< of the input, pixels
    std::uint32_t padding[3];
};

/// Of the custom view with digital zoom, slot b4.
struct CustomTransformConstants {
    float lookupRectangle[4]; ///< one table between the centres of its outer cells: x, y, width, height
    float viewRect[4];        ///< the cut-out shown: x, y, width, height in fractions of the table
    float projectionRect[4];  ///< the same rectangle with its letter-box bars
    std::uint32_t numberOfTables;
    float tableHeight; ///< 1 / numberOfTables
    float padding[2];
};

/// Of the custom view with virtual PTZ, slot b4. Angles are radians.
struct VirtualPtzConstants {
    float lookupRectangle[4]; ///< this and the next four as in CustomTransformConstants
    float viewRect[4];        ///< not read
    float projectionRect[4];  ///< not read
    std::uint32_t numberOfTables;
    float tableHeight;
    float inputFov[2];   ///< the panorama's horizontal and vertical field of view
    float outputAR;      ///< output width / height
    float panTiltFov[3]; ///< pan, tilt, field of view
    float pitchRoll[2];  ///< of the camera that took the panorama
    float effectLevel;   ///< 0 … 1
    float padding;
};

static_assert(sizeof(VertexConstants) == 64);
static_assert(offsetof(VertexConstants, worldViewProjection) == 0);

// DewarpConstants is checked where it is declared.

static_assert(sizeof(ExcludeConstants) == 16);
static_assert(offsetof(ExcludeConstants, excludeRect) == 0);

static_assert(sizeof(Yuy2Constants) == 16);
static_assert(offsetof(Yuy2Constants, width) == 0);
static_assert(offsetof(Yuy2Constants, padding) == 4);

static_assert(sizeof(CustomTransformConstants) == 64);
static_assert(offsetof(CustomTransformConstants, lookupRectangle) == 0);
static_assert(offsetof(CustomTransformConstants, viewRect) == 16);
static_assert(offsetof(CustomTransformConstants, projectionRect) == 32);
static_assert(offsetof(CustomTransformConstants, numberOfTables) == 48);
static_assert(offsetof(CustomTransformConstants, tableHeight) == 52);
static_assert(offsetof(CustomTransformConstants, padding) == 56);

static_assert(sizeof(VirtualPtzConstants) == 96);
static_assert(offsetof(VirtualPtzConstants, lookupRectangle) == 0);
static_assert(offsetof(VirtualPtzConstants, viewRect) == 16);
static_assert(offsetof(VirtualPtzConstants, projectionRect) == 32);
static_assert(offsetof(VirtualPtzConstants, numberOfTables) == 48);
static_assert(offsetof(VirtualPtzConstants, tableHeight) == 52);
static_assert(offsetof(VirtualPtzConstants, inputFov) == 56);
static_assert(offsetof(VirtualPtzConstants, outputAR) == 64);
static_assert(offsetof(VirtualPtzConstants, panTiltFov) == 68);
static_assert(offsetof(VirtualPtzConstants, pitchRoll) == 80);
static_assert(offsetof(VirtualPtzConstants, effectLevel) == 88);
static_assert(offsetof(VirtualPtzConstants, padding) == 92);

} // namespace tarvo::render
