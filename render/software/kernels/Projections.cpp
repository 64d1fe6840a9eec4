#include "render/software/kernels/Projections.h"

#include "render/ConstantRecords.h"
#include "render/software/kernels/ArcTangent.h"

#include <cmath>
#include <limits>

namespace tarvo::render::software::plain {
namespace {

constexpr float halfPi = 1.57079633F;
constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();

/// The lens, and the way from its image to the pixels of the sampled picture.
class CLens {
public:
    CLens(const DewarpConstants& constants, const PositionRow& positions)
        : m_constants(constants), m_scaleX(positions.width / constants.size[0]),
          m_scaleY(positions.height / constants.size[1]) {}

    /// Distance from the image centre of a ray `theta` off the axis.
    float radius(float theta) const {
        const float* profile = m_constants.lensProfile;
        return ((profile[0] * theta + profile[1]) * theta + profile[2]) * theta;
    }

    void store(const PositionRow& positions, int i, float offsetX, float offsetY) const {
        positions.x[i] = (m_constants.imageCenter[0] + offsetX) * m_scaleX;
        positions.y[i] = (m_constants.imageCenter[1] + offsetY) * m_scaleY;
    }

    /// Only where the input has a picture; asks for what is inside, so that what is no number fails.
    void storeInside(const PositionRow& positions, int i, float offsetX, float offsetY) const {
        const float x = m_constants.imageCenter[0] + offsetX;
        const float y = m_constants.imageCenter[1] + offsetY;
        const bool isInside =
            (x >= 0.0F) & (y >= 0.0F) & (x < m_constants.size[0]) & (y < m_constants.size[1]);
        positions.x[i] = isInside ? x * m_scaleX : nowhere;
        positions.y[i] = isInside ? y * m_scaleY : nowhere;
    }

private:
    const DewarpConstants& m_constants;
    float m_scaleX;
    float m_scaleY;
};

const DewarpConstants& record(const void* constants) {
    return *static_cast<const DewarpConstants*>(constants);
}

struct Turn {
    float sine;
    float cosine;

    /// The cosine from the sine, never negative, as the shader programs take it: an angle beyond a right one
    /// behaves as its mirror, which is accepted.
    explicit Turn(float angle)
        : sine(std::sin(angle)), cosine(std::sqrt(std::max(0.0F, 1.0F - sine * sine))) {}
};

/// A vector that runs linearly over the view: at · x + down · y + origin.
struct Row {
    float across;
    float down;
    float constant;

    float at(float x, float y) const { return across * x + down * y + constant; }
};

Row combined(float a, const Row& first, float b, const Row& second) {
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
    Row x;
    Row y;
    Row z;

    explicit ViewRays(const DewarpConstants& c) {
        const float tangent = c.tangentOfFieldOfView / (c.size[1] * 0.5F);
        const float sine = std::sin(c.lambdaOffset);
        const float cosine = std::cos(c.lambdaOffset);
        x = {-tangent * cosine, tangent * sine, 0.0F};
        y = {-tangent * sine, -tangent * cosine, 0.0F};
        z = {0.0F, 0.0F, 1.0F};
        const Turn aboutX(c.rotateData[0]);
        const Row turnedY = combined(aboutX.cosine, y, aboutX.sine, z);
        z = combined(aboutX.cosine, z, -aboutX.sine, y);
        y = turnedY;
        const Turn aboutY(c.rotateData[1]);
        const Row turnedX = combined(aboutY.cosine, x, aboutY.sine, z);
        z = combined(aboutY.cosine, z, -aboutY.sine, x);
        x = turnedX;
        const float sineZ = std::sin(c.rotateData[2]);
        const float cosineZ = std::cos(c.rotateData[2]);
        const Row spunX = combined(cosineZ, x, -sineZ, y);
        y = combined(sineZ, x, cosineZ, y);
        x = spunX;
    }
};

/// What the image of a ray is away from the image centre, divided by the ray's own x and y.
float imageScale(const CLens& lens, float x, float y, float z) {
    const float across = std::sqrt(x * x + y * y);
    const float radius = lens.radius(arcTangent(across, z));
    return radius / (across > 0.0F ? across : 1.0F);
}

/// Ceiling and desk: the strip's rows are circles around the image centre.
template<typename StripOf>
void panoramaOfTwoStrips(const void* constants, const PlaceRow& places, const PositionRow& positions,
                         StripOf stripOf) {
    const DewarpConstants& c = record(constants);
    const CLens lens(c, positions);
    for (int i = 0; i < places.count; ++i) {
        const auto [theta, lambda] = stripOf(places.u[i], places.v[i]);
        const float radius = lens.radius(theta);
        lens.storeInside(positions, i, radius * std::cos(lambda), radius * std::sin(lambda));
    }
}

struct Ray {
    float theta;
    float lambda;
};

} // namespace

void singleView(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const DewarpConstants& c = record(constants);
    const CLens lens(c, positions);
    const ViewRays rays(c);
    const float width = c.size[0];
    const float height = c.size[1];
    for (int i = 0; i < places.count; ++i) {
        const float fromCentreX = places.u[i] * width - width * 0.5F;
        const float fromCentreY = places.v[i] * height - height * 0.5F;
        const float x = rays.x.at(fromCentreX, fromCentreY);
        const float y = rays.y.at(fromCentreX, fromCentreY);
        const float z = rays.z.at(fromCentreX, fromCentreY);
        const float scale = imageScale(lens, x, y, z);
        lens.storeInside(positions, i, scale * x, scale * y);
    }
}

void panoramaWall(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const DewarpConstants& c = record(constants);
    const CLens lens(c, positions);
    const float panOffset = c.panoramaRectAngles[0];
    const float width = c.panoramaRectAngles[2];
    const float height = c.panoramaRectAngles[3];
    for (int i = 0; i < places.count; ++i) {
        // Both angles from the middle of what the lens looks at, where sine and cosine change places: the
        // polar angle from the horizon, the azimuth from straight ahead.
        const float elevation = places.v[i] * height - 0.5F * height;
        const float azimuth = places.u[i] * width + panOffset;
        const float x = std::cos(elevation) * std::sin(azimuth);
        const float y = std::sin(elevation);
        const float z = std::cos(elevation) * std::cos(azimuth);
        const float scale = imageScale(lens, x, y, z);
        // Deliberately without a test: beyond the frame its edge pixels go on.
        lens.store(positions, i, scale * x, scale * y);
        positions.x[i] = positions.x[i] == positions.x[i] ? positions.x[i] : 0.0F;
        positions.y[i] = positions.y[i] == positions.y[i] ? positions.y[i] : 0.0F;
    }
}

void panoramaCeiling(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const float* angles = record(constants).panoramaRectAngles;
    panoramaOfTwoStrips(constants, places, positions, [&](float u, float v) -> Ray {
        const bool isLower = v > 0.5F;
        const float y = isLower ? v - 0.5F : v;
        const float start = angles[0] - halfPi + (isLower ? angles[2] : 0.0F);
        return {halfPi - y * (2.0F * angles[3]), start + u * angles[2]};
    });
}

void panoramaDesk(const void* constants, const PlaceRow& places, const PositionRow& positions) {
    const float* angles = record(constants).panoramaRectAngles;
    panoramaOfTwoStrips(constants, places, positions, [&](float u, float v) -> Ray {
        const bool isLower = v > 0.5F;
        const float y = isLower ? v : v + 0.5F;
        const float start = -angles[0] - halfPi - (isLower ? angles[2] : 0.0F);
        return {halfPi + (y - 1.0F) * (2.0F * angles[3]), start - u * angles[2]};
    });
}

} // namespace tarvo::render::software::plain
