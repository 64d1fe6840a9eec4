#pragma once

// The rows that need no vector instructions of their own: plain loops, which a compiler turns into vectors of
// whatever width it may use. Every file that is compiled for one instruction set includes them and so has its
// own: all of it is local to the including file, and nothing of the standard library is called that could
// come along as an inline function, end up in the program in its version for that set, and run on processors
// without it. The same operations in the same order give the same bits at any width, since no compiler may
// reorder or contract them here.

#include "render/ConstantRecords.h"
#include "render/software/kernels/ArcTangent.h"
#include "render/software/kernels/RowKernels.h"
#include "render/software/kernels/SineAndCosine.h"

#include <math.h> // NOLINT(modernize-deprecated-headers): <cmath> would bring inline functions

namespace tarvo::render::software {
namespace {

constexpr float halfPi = 1.57079633F;
constexpr float nowhere = __builtin_nanf("");

void interpolate(const LinearRow& row, int first, int count, float* __restrict values) {
    const double begin = row.atLeftEdge;
    const double step = row.perColumn;
    for (int i = 0; i < count; ++i)
        values[i] = static_cast<float>(begin + step * (static_cast<double>(first + i) + 0.5));
}

/// The lens, and the way from its image to the pixels of the sampled picture.
struct Lens {
    float profile[3];
    float centreX;
    float centreY;
    float width;
    float height;
    float scaleX;
    float scaleY;

    Lens(const DewarpConstants& c, const PositionRow& positions)
        : profile{c.lensProfile[0], c.lensProfile[1], c.lensProfile[2]}, centreX(c.imageCenter[0]),
          centreY(c.imageCenter[1]), width(c.size[0]), height(c.size[1]), scaleX(positions.width / c.size[0]),
          scaleY(positions.height / c.size[1]) {}

    /// Distance from the image centre of a ray `theta` off the axis.
    [[gnu::always_inline]] float radius(float theta) const {
        return ((profile[0] * theta + profile[1]) * theta + profile[2]) * theta;
    }
};

const DewarpConstants& record(const void* constants) {
    return *static_cast<const DewarpConstants*>(constants);
}

struct Turn {
    float sine;
    float cosine;

    /// The cosine from the sine, never negative, as the shader programs take it: an angle beyond a right one
    /// behaves as its mirror, which is accepted.
    explicit Turn(float angle) : sine(::sinf(angle)) {
        const float square = 1.0F - sine * sine;
        cosine = ::sqrtf(square > 0.0F ? square : 0.0F);
    }
};

/// A coordinate that runs linearly over the view.
struct Plane {
    float across;
    float down;
    float constant;

    [[gnu::always_inline]] float at(float x, float y) const { return across * x + down * y + constant; }
};

Plane combined(float a, const Plane& first, float b, const Plane& second) {
    return {a * first.across + b * second.across, a * first.down + b * second.down,
            a * first.constant + b * second.constant};
}

/// The ray of a place of the single view in the frame of the lens.
///
/// The ray's angle off the view's axis has the tangent t = distance · tan(fov / 2) / (height / 2) and the
/// ray's azimuth is λ₀ − atan2(y, −x) for a place (x, y) from the centre, so that the ray, stretched to z =
/// 1, is (t cos λ, t sin λ, 1): linear in x and y. Rotations keep it linear, and the last one, about z, is no
/// more than an addition to the azimuth. So three dot products replace every sine and cosine.
struct ViewRays {
    Plane x;
    Plane y;
    Plane z;

    explicit ViewRays(const DewarpConstants& c) {
        const float tangent = c.tangentOfFieldOfView / (c.size[1] * 0.5F);
        const float sine = ::sinf(c.lambdaOffset);
        const float cosine = ::cosf(c.lambdaOffset);
        x = {-tangent * cosine, tangent * sine, 0.0F};
        y = {-tangent * sine, -tangent * cosine, 0.0F};
        z = {0.0F, 0.0F, 1.0F};
        const Turn aboutX(c.rotateData[0]);
        const Plane turnedY = combined(aboutX.cosine, y, aboutX.sine, z);
        z = combined(aboutX.cosine, z, -aboutX.sine, y);
        y = turnedY;
        const Turn aboutY(c.rotateData[1]);
        const Plane turnedX = combined(aboutY.cosine, x, aboutY.sine, z);
        z = combined(aboutY.cosine, z, -aboutY.sine, x);
        x = turnedX;
        const float sineZ = ::sinf(c.rotateData[2]);
        const float cosineZ = ::cosf(c.rotateData[2]);
        const Plane spunX = combined(cosineZ, x, -sineZ, y);
        y = combined(sineZ, x, cosineZ, y);
        x = spunX;
    }
};

/// What the image of a ray is away from the image centre, divided by the ray's own x and y.
///
/// The polar angle is the arc tangent of both legs, which loses no digits anywhere; one division serves it
/// and the scale.
[[gnu::always_inline]] inline float imageScale(const Lens& lens, float x, float y, float z) {
    // On the axis the scale does not matter, since x and y are 0.
    constexpr float leastAcross = 1e-12F;
    const float length = __builtin_sqrtf(x * x + y * y);
    const float across = length > leastAcross ? length : leastAcross;
    const float along = __builtin_fabsf(z);
    const float larger = across > along ? across : along;
    const float smaller = across > along ? along : across;
    const float inverse = 1.0F / (larger * across);
    const float tangent = smaller * (inverse * across);
    const float angle = tangent * arcTangentRatio(tangent * tangent);
    const float acute = across > along ? halfPi - angle : angle;
    const float theta = z < 0.0F ? 2.0F * halfPi - acute : acute;
    return lens.radius(theta) * (inverse * larger);
}

void singleView(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const Lens lens(record(constants), positions);
    const ViewRays rays(record(constants));
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        const float fromCentreX = u[i] * lens.width - lens.width * 0.5F;
        const float fromCentreY = v[i] * lens.height - lens.height * 0.5F;
        const float x = rays.x.at(fromCentreX, fromCentreY);
        const float y = rays.y.at(fromCentreX, fromCentreY);
        const float z = rays.z.at(fromCentreX, fromCentreY);
        const float scale = imageScale(lens, x, y, z);
        targetX[i] = (lens.centreX + scale * x) * lens.scaleX;
        targetY[i] = (lens.centreY + scale * y) * lens.scaleY;
    }
}

void panoramaWall(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const DewarpConstants& c = record(constants);
    const Lens lens(c, positions);
    const float panOffset = c.panoramaRectAngles[0];
    const float width = c.panoramaRectAngles[2];
    const float height = c.panoramaRectAngles[3];
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        // Both angles from the middle of what the lens looks at, where sine and cosine change places: the
        // polar angle from the horizon, the azimuth from straight ahead.
        const SineAndCosine elevation = sineAndCosine(v[i] * height - 0.5F * height);
        const SineAndCosine azimuth = sineAndCosine(u[i] * width + panOffset);
        const float x = elevation.cosine * azimuth.sine;
        const float y = elevation.sine;
        const float z = elevation.cosine * azimuth.cosine;
        const float scale = imageScale(lens, x, y, z);
        // Deliberately without a test: beyond the frame its edge pixels go on.
        const float imageX = (lens.centreX + scale * x) * lens.scaleX;
        const float imageY = (lens.centreY + scale * y) * lens.scaleY;
        targetX[i] = imageX == imageX ? imageX : 0.0F;
        targetY[i] = imageY == imageY ? imageY : 0.0F;
    }
}

void panoramaCeiling(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const Lens lens(record(constants), positions);
    const float* const angles = record(constants).panoramaRectAngles;
    const float begin = angles[0] - halfPi;
    const float width = angles[2];
    const float height = 2.0F * angles[3];
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        // The strip's rows are circles around the image centre.
        const bool isLower = v[i] > 0.5F;
        const float down = isLower ? v[i] - 0.5F : v[i];
        const float start = begin + (isLower ? width : 0.0F);
        const float radius = lens.radius(halfPi - down * height);
        const SineAndCosine lambda = sineAndCosine(start + u[i] * width);
        targetX[i] = (lens.centreX + radius * lambda.cosine) * lens.scaleX;
        targetY[i] = (lens.centreY + radius * lambda.sine) * lens.scaleY;
    }
}

void panoramaDesk(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const Lens lens(record(constants), positions);
    const float* const angles = record(constants).panoramaRectAngles;
    const float begin = -angles[0] - halfPi;
    const float width = angles[2];
    const float height = 2.0F * angles[3];
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    for (int i = 0; i < places.count; ++i) {
        const bool isLower = v[i] > 0.5F;
        const float down = isLower ? v[i] : v[i] + 0.5F;
        const float start = begin - (isLower ? width : 0.0F);
        const float radius = lens.radius(halfPi + (down - 1.0F) * height);
        const SineAndCosine lambda = sineAndCosine(start - u[i] * width);
        targetX[i] = (lens.centreX + radius * lambda.cosine) * lens.scaleX;
        targetY[i] = (lens.centreY + radius * lambda.sine) * lens.scaleY;
    }
}

/// The picture as it is, scaled to the drawn area; no record. Beyond the edges its edge pixels go on: what is
/// no number falls to the edge as well.
void plainCopy(const void* /*constants*/, const PlaceRow& places, const PositionRow& positions) {
    const float* __restrict const u = places.u;
    const float* __restrict const v = places.v;
    float* __restrict const targetX = positions.x;
    float* __restrict const targetY = positions.y;
    const float width = positions.width;
    const float height = positions.height;
    for (int i = 0; i < places.count; ++i) {
        targetX[i] = u[i] > 0.0F ? u[i] * width : 0.0F;
        targetY[i] = v[i] > 0.0F ? v[i] * height : 0.0F;
    }
}

/// The picture, with nothing to look at inside the exclude area, whose four edges belong to it; the record is
/// ExcludeConstants, the outside colour opaque black.
void excludeRegion(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const float* const area = static_cast<const ExcludeConstants*>(constants)->excludeRect;
    plainCopy(constants, places, positions);
    for (int i = 0; i < places.count; ++i) {
        const float u = places.u[i];
        const float v = places.v[i];
        if (u >= area[0] && u <= area[2] && v >= area[1] && v <= area[3])
            positions.x[i] = nowhere;
    }
}

/// Whether third differences say that parabolas come near enough.
inline bool suitsParabolas(const float* knots) {
    // 72 √3 / 2^3 is 15.6, and half of that is on the safe side: 15.6 / 128 / 2.
    constexpr float most = 0.06F;
    int rough = 0;
    for (int i = 0; i + 3 < knotCount; ++i) {
        const float third = (knots[i + 3] - knots[i]) - 3.0F * (knots[i + 2] - knots[i + 1]);
        rough += ((third > -most) & (third < most)) ? 0 : 1;
    }
    return rough == 0;
}

/// Whether fourth differences say that cubics do.
inline bool suitsCubics(const float* knots) {
    // 384 / 9 is 42.7, and half of that is on the safe side: 42.7 / 128 / 2.
    constexpr float most = 0.16F;
    int rough = 0;
    for (int i = 0; i + 4 < knotCount; ++i) {
        const float fourth =
            (knots[i] + knots[i + 4]) - 4.0F * (knots[i + 1] + knots[i + 3]) + 6.0F * knots[i + 2];
        rough += ((fourth > -most) & (fourth < most)) ? 0 : 1;
    }
    return rough == 0;
}

inline void spreadParabolas(const float* knots, int count, float* __restrict values) {
    constexpr int stretch = 2 * knotDistance;
    constexpr float unit = 1.0F / stretch;
    for (int begin = 0; begin < count; begin += stretch) {
        const float* const p = knots + 1 + begin / knotDistance;
        const float first = p[0];
        const float slope = 4.0F * p[1] - 3.0F * p[0] - p[2];
        const float bend = 2.0F * (p[0] + p[2]) - 4.0F * p[1];
        for (int i = 0; i < stretch; ++i) {
            const float t = static_cast<float>(i) * unit;
            values[begin + i] = first + t * (slope + t * bend);
        }
    }
}

/// The slopes at the second and the third of four points at −1, 0, 1 and 2, of the cubic through them.
inline float slopeAtSecond(const float* p) {
    return (6.0F * p[2] - 3.0F * p[1] - 2.0F * p[0] - p[3]) * (1.0F / 6.0F);
}
inline float slopeAtThird(const float* p) {
    return (p[0] - 6.0F * p[1] + 3.0F * p[2] + 2.0F * p[3]) * (1.0F / 6.0F);
}

inline void spreadCubics(const float* knots, int count, float* __restrict values) {
    constexpr float unit = 1.0F / knotDistance;
    const int padded = (count + 2 * knotDistance - 1) / (2 * knotDistance) * (2 * knotDistance);
    for (int begin = 0; begin < padded; begin += knotDistance) {
        const float* const p = knots + begin / knotDistance;
        const float first = p[1];
        const float slope = slopeAtSecond(p);
        const float bend = 0.5F * (p[0] + p[2]) - p[1];
        const float twist = ((p[3] - p[0]) - 3.0F * (p[2] - p[1])) * (1.0F / 6.0F);
        for (int i = 0; i < knotDistance; ++i) {
            const float t = static_cast<float>(i) * unit;
            values[begin + i] = first + t * (slope + t * (bend + t * twist));
        }
    }
}

bool spread(const float* knotsX, const float* knotsY, int count, float* x, float* y) {
    if (suitsParabolas(knotsX) && suitsParabolas(knotsY)) {
        spreadParabolas(knotsX, count, x);
        spreadParabolas(knotsY, count, y);
        return true;
    }
    if (!suitsCubics(knotsX) || !suitsCubics(knotsY))
        return false;
    spreadCubics(knotsX, count, x);
    spreadCubics(knotsY, count, y);
    return true;
}

void widen(const float* knots, Reach& reach) {
    float* __restrict const least = reach.least;
    float* __restrict const most = reach.most;
    for (int i = 0; i < Reach::count; ++i) {
        const float* const p = knots + i;
        const float second = p[1] + slopeAtSecond(p) * (1.0F / 3.0F);
        const float third = p[2] - slopeAtThird(p) * (1.0F / 3.0F);
        const float lowerEnd = p[1] < p[2] ? p[1] : p[2];
        const float upperEnd = p[1] < p[2] ? p[2] : p[1];
        const float lowerControl = second < third ? second : third;
        const float upperControl = second < third ? third : second;
        const float lowest = lowerControl < lowerEnd ? lowerControl : lowerEnd;
        const float highest = upperControl > upperEnd ? upperControl : upperEnd;
        least[i] = lowest < least[i] ? lowest : least[i];
        most[i] = highest > most[i] ? highest : most[i];
    }
}

} // namespace
} // namespace tarvo::render::software
