#include "render/reference/CustomPrograms.h"

#include "render/reference/Sampler.h"

#include <algorithm>
#include <cmath>

namespace tarvo::render::reference {
namespace {

constexpr Colour opaqueBlackColour{0.0F, 0.0F, 0.0F, 1.0F};
constexpr std::uint32_t maximumTables = 8;

/// Asks for what is inside, so that a place which is no number counts as outside.
bool isInUnitSquare(float x, float y) {
    return x >= 0.0F && y >= 0.0F && x <= 1.0F && y <= 1.0F;
}

/// The weighted sum of what the tables find at (x, y), 0 … 1 over their grid. Both records begin alike.
template<typename Constants>
Colour weightedSum(const Constants& constants, const LookupTables& tables, const Picture& source, float x,
                   float y) {
    const auto [left, top, width, height] = constants.lookupRectangle;
    const float s = x * width + left;
    float q = (y * height + top) / static_cast<float>(std::max(constants.numberOfTables, 1U));
    Colour sum = opaqueBlackColour;
    for (std::uint32_t table = 0; table < std::min(constants.numberOfTables, maximumTables); ++table) {
        const LookupEntry entry = sampleBilinear(tables, s, q);
        const Colour seen = sampleBilinear(source, entry.sourceX, entry.sourceY);
        sum.red += entry.weight * seen.red;
        sum.green += entry.weight * seen.green;
        sum.blue += entry.weight * seen.blue;
        sum.alpha += entry.weight * seen.alpha;
        q += constants.tableHeight;
    }
    return sum;
}

/// A place of the panorama in radians, latitude downward.
struct Direction {
    float longitude;
    float latitude;
};

/// The origin has no direction; it is given that of the axis.
float arcTangent(float y, float x) {
    return x == 0.0F && y == 0.0F ? 0.0F : std::atan2(y, x);
}

/// Rounding may leave a sine a hair beyond 1.
float arcSine(float sine) {
    return std::asin(std::clamp(sine, -1.0F, 1.0F));
}

/// The inverse gnomonic projection: with rho the distance from the view's centre and c = atan(rho),
///
///     longitude = pan + atan2(x sin c, rho cos t cos c + y sin t sin c)
///     latitude  = asin(y sin c cos t / rho − cos c sin t)
///
/// Here sin c / rho is taken as one number, which has a value in the centre too.
Direction rectilinearDirection(const VirtualPtzConstants& constants, float u, float v) {
    const auto [pan, tilt, fieldOfView] = constants.panTiltFov;
    const float scale = 2.0F * std::tan(fieldOfView / 2.0F);
    const float x = (u - 0.5F) * scale;
    const float y = (v - 0.5F) * scale / constants.outputAR;
    const float rho = std::sqrt(x * x + y * y);
    const float c = std::atan(rho);
    const float sinCPerRho = rho > 0.0F ? std::sin(c) / rho : 1.0F;
    return {pan + arcTangent(x * sinCPerRho, std::cos(tilt) * std::cos(c) + y * std::sin(tilt) * sinCPerRho),
            arcSine(y * sinCPerRho * std::cos(tilt) - std::cos(c) * std::sin(tilt))};
}

/// The horizontal field of view serves both coordinates, deliberately: the panorama keeps its proportions.
Direction flatDirection(const VirtualPtzConstants& constants, float u, float v) {
    return {(u - 0.5F) * constants.inputFov[0], (v - 0.5F) * constants.inputFov[0] / constants.outputAR};
}

Direction blendedDirection(const VirtualPtzConstants& constants, float u, float v) {
    const float level = constants.effectLevel;
    Direction direction = flatDirection(constants, u, v);
    if (level != 0.0F) {
        const Direction rectilinear = rectilinearDirection(constants, u, v);
        if (level == 1.0F) {
            return rectilinear;
        }
        direction = {level * rectilinear.longitude + (1.0F - level) * direction.longitude,
                     level * rectilinear.latitude + (1.0F - level) * direction.latitude};
    }
    // The flat share has to follow pan and tilt as well.
    return {direction.longitude + (1.0F - level) * constants.panTiltFov[0],
            direction.latitude - (1.0F - level) * constants.panTiltFov[1]};
}

/// Undoes the roll and the pitch of the camera that took the panorama.
Direction straightened(const VirtualPtzConstants& constants, Direction direction) {
    const auto [pitch, roll] = constants.pitchRoll;
    const float x = std::cos(direction.longitude) * std::cos(direction.latitude);
    const float y = std::sin(direction.longitude) * std::cos(direction.latitude);
    const float z = std::sin(direction.latitude);
    const float rolledY = y * std::cos(roll) - z * std::sin(roll);
    const float rolledZ = y * std::sin(roll) + z * std::cos(roll);
    const float pitchedX = x * std::cos(pitch) - rolledZ * std::sin(pitch);
    const float pitchedZ = x * std::sin(pitch) + rolledZ * std::cos(pitch);
    return {arcTangent(rolledY, pitchedX), arcSine(pitchedZ)};
}

} // namespace

Colour customTransformProgram(const CustomTransformConstants& constants, const LookupTables& tables,
                              const Picture& source, float u, float v) {
    const float* view = constants.viewRect;
    const float* projection = constants.projectionRect;
    const float x = (u * view[2] + view[0]) * projection[2] + projection[0];
    const float y = (v * view[3] + view[1]) * projection[3] + projection[1];
    return isInUnitSquare(x, y) ? weightedSum(constants, tables, source, x, y) : opaqueBlackColour;
}

Colour customVirtualPtzProgram(const VirtualPtzConstants& constants, const LookupTables& tables,
                               const Picture& source, float u, float v) {
    const Direction direction = straightened(constants, blendedDirection(constants, u, v));
    const float x = direction.longitude / constants.inputFov[0] + 0.5F;
    const float y = direction.latitude / constants.inputFov[1] + 0.5F;
    return isInUnitSquare(x, y) ? weightedSum(constants, tables, source, x, y) : opaqueBlackColour;
}

} // namespace tarvo::render::reference
