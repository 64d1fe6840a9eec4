#pragma once

// For every file that is compiled for one instruction set: see PositionRows.h.

#include "render/software/kernels/PositionRows.h"

namespace tarvo::render::software {
namespace {

// The programs that look through tables: from places to those on the tables' grid, 0 … 1 over it. A place
// outside the grid is no number.

/// Stores a place of the grid. Asks for what is inside, so that what is no number counts as outside.
[[gnu::always_inline]] inline void storeGridPlace(float x, float y, bool isNumber, float& targetX,
                                                  float& targetY) {
    const bool isInside = isNumber & (x >= 0.0F) & (y >= 0.0F) & (x <= 1.0F) & (y <= 1.0F);
    targetX = isInside ? x : nowhere;
    targetY = isInside ? y : nowhere;
}

/// A cut-out of the grid, letter-boxed.
void customTransform(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const auto& c = *static_cast<const CustomTransformConstants*>(constants);
    const float viewX = c.viewRect[0];
    const float viewY = c.viewRect[1];
    const float viewWidth = c.viewRect[2];
    const float viewHeight = c.viewRect[3];
    const float left = c.projectionRect[0];
    const float top = c.projectionRect[1];
    const float width = c.projectionRect[2];
    const float height = c.projectionRect[3];
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        storeGridPlace((u[i] * viewWidth + viewX) * width + left, (v[i] * viewHeight + viewY) * height + top,
                       true, targetX[i], targetY[i]);
    }
}

/// A linear function of three coordinates.
struct LinearForm {
    float x;
    float y;
    float z;

    [[gnu::always_inline]] float at(float a, float b, float c) const { return x * a + y * b + z * c; }
    /// The same function of coordinates that are linear in three others themselves.
    LinearForm of(const LinearForm& a, const LinearForm& b, const LinearForm& c) const {
        return {at(a.x, b.x, c.x), at(a.y, b.y, c.y), at(a.z, b.z, c.z)};
    }
};

/// Undoes the roll and the pitch of the camera that took the panorama. Directions are rays whose longitude is
/// that of (x, y) and whose latitude, downward, is that of z, of any length.
struct Straightening {
    LinearForm x;
    LinearForm y;
    LinearForm z;

    explicit Straightening(const VirtualPtzConstants& c) {
        const float sinePitch = ::sinf(c.pitchRoll[0]);
        const float cosinePitch = ::cosf(c.pitchRoll[0]);
        const float sineRoll = ::sinf(c.pitchRoll[1]);
        const float cosineRoll = ::cosf(c.pitchRoll[1]);
        x = {cosinePitch, -sinePitch * sineRoll, -sinePitch * cosineRoll};
        y = {0.0F, cosineRoll, -sineRoll};
        z = {sinePitch, cosinePitch * sineRoll, cosinePitch * cosineRoll};
    }
};

/// From a ray to the panorama that the grid is.
struct Panorama {
    float perLongitude;
    float perLatitude;

    explicit Panorama(const VirtualPtzConstants& c)
        : perLongitude(1.0F / c.inputFov[0]), perLatitude(1.0F / c.inputFov[1]) {}

    [[gnu::always_inline]] void store(float x, float y, float z, float& targetX, float& targetY) const {
        const float across = x * x + y * y;
        // An arc tangent may make a number of what is none or too large; this sum does not.
        const bool isNumber = across + z * z < __builtin_inff();
        // With both legs the latitude keeps its digits towards the poles, where an arc sine loses half.
        storeGridPlace(arcTangent(y, x) * perLongitude + 0.5F,
                       arcTangent(z, __builtin_sqrtf(across)) * perLatitude + 0.5F, isNumber, targetX,
                       targetY);
    }
};

/// The inverse gnomonic projection: the ray of a place (x, y) from the view's centre, x to the right and y
/// downward in units of the distance of the plane, in the frame of pan and tilt. Its first coordinate points
/// along the pan at latitude 0. As longitude and latitude are arc tangents of its coordinates, they need no
/// angle off the view's axis at all.
struct PlaneOfView {
    float scaleX;
    float scaleY;
    LinearForm ahead; ///< of (x, y, 1), like the others
    LinearForm right{1.0F, 0.0F, 0.0F};
    LinearForm down;

    explicit PlaneOfView(const VirtualPtzConstants& c)
        : scaleX(2.0F * ::tanf(0.5F * c.panTiltFov[2])),
          scaleY(scaleX / c.outputAR), ahead{0.0F, ::sinf(c.panTiltFov[1]), ::cosf(c.panTiltFov[1])},
          down{0.0F, ::cosf(c.panTiltFov[1]), -::sinf(c.panTiltFov[1])} {}
};

/// Rotations keep a ray linear in x and y, so three dot products replace every sine and cosine.
void rectilinearPlaces(const VirtualPtzConstants& c, const PlaceRow& places, const PositionRow& positions) {
    const Panorama panorama(c);
    const PlaneOfView plane(c);
    const Straightening straight(c);
    const float sinePan = ::sinf(c.panTiltFov[0]);
    const float cosinePan = ::cosf(c.panTiltFov[0]);
    const LinearForm none{0.0F, 0.0F, 0.0F};
    const LinearForm pannedX = LinearForm{cosinePan, -sinePan, 0.0F}.of(plane.ahead, plane.right, none);
    const LinearForm pannedY = LinearForm{sinePan, cosinePan, 0.0F}.of(plane.ahead, plane.right, none);
    const LinearForm rayX = straight.x.of(pannedX, pannedY, plane.down);
    const LinearForm rayY = straight.y.of(pannedX, pannedY, plane.down);
    const LinearForm rayZ = straight.z.of(pannedX, pannedY, plane.down);
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        const float x = (u[i] - 0.5F) * plane.scaleX;
        const float y = (v[i] - 0.5F) * plane.scaleY;
        panorama.store(rayX.at(x, y, 1.0F), rayY.at(x, y, 1.0F), rayZ.at(x, y, 1.0F), targetX[i], targetY[i]);
    }
}

/// Angles that are mixed with those of the flat panorama, or the flat ones alone.
template<bool isFlat>
void blendedPlaces(const VirtualPtzConstants& c, const PlaceRow& places, const PositionRow& positions) {
    const Panorama panorama(c);
    const PlaneOfView plane(c);
    const Straightening straight(c);
    const float level = c.effectLevel;
    const float rest = 1.0F - level;
    // The horizontal field of view serves both coordinates, deliberately: the panorama keeps its proportions.
    const float flatX = rest * c.inputFov[0];
    const float flatY = rest * c.inputFov[0] / c.outputAR;
    // The flat share has to follow pan and tilt as well.
    const float firstLongitude = level * c.panTiltFov[0] + rest * c.panTiltFov[0];
    const float firstLatitude = -rest * c.panTiltFov[1];
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        const float fromCentreX = u[i] - 0.5F;
        const float fromCentreY = v[i] - 0.5F;
        float longitude = flatX * fromCentreX + firstLongitude;
        float latitude = flatY * fromCentreY + firstLatitude;
        if constexpr (!isFlat) {
            const float x = fromCentreX * plane.scaleX;
            const float y = fromCentreY * plane.scaleY;
            const float ahead = plane.ahead.at(x, y, 1.0F);
            const float down = plane.down.at(x, y, 1.0F);
            const float across = ahead * ahead + x * x;
            longitude += level * arcTangent(x, ahead);
            latitude += level * arcTangent(down, __builtin_sqrtf(across));
        }
        const SineAndCosine lambda = sineAndCosine(longitude);
        const SineAndCosine phi = sineAndCosine(latitude);
        const float rayX = lambda.cosine * phi.cosine;
        const float rayY = lambda.sine * phi.cosine;
        panorama.store(straight.x.at(rayX, rayY, phi.sine), straight.y.at(rayX, rayY, phi.sine),
                       straight.z.at(rayX, rayY, phi.sine), targetX[i], targetY[i]);
    }
}

/// A virtual camera's view of the grid, which is a panorama.
void customVirtualPtz(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const auto& c = *static_cast<const VirtualPtzConstants*>(constants);
    if (c.effectLevel == 1.0F) {
        rectilinearPlaces(c, places, positions);
    } else if (c.effectLevel == 0.0F) {
        // Which does not ask for a field of view: that may then be anything.
        blendedPlaces<true>(c, places, positions);
    } else {
        blendedPlaces<false>(c, places, positions);
    }
}

} // namespace
} // namespace tarvo::render::software
