#include "render/software/kernels/CustomTransform.h"

#include "render/software/kernels/ArcTangent.h"
#include "render/software/kernels/Blending.h"
#include "render/software/kernels/LinearSampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tarvo::render::software {
namespace {

struct Place {
    float x;
    float y;

    /// Asks for what is inside, so that what is no number counts as outside.
    bool isInUnitSquare() const { return x >= 0.0F && y >= 0.0F && x <= 1.0F && y <= 1.0F; }
};

template<typename Constants>
Colour weightedSum(const Constants& c, const CustomSources& sources, Place place) {
    constexpr std::uint32_t mostTables = 8;
    const std::uint32_t count = std::min(c.numberOfTables, mostTables);
    const float s = place.x * c.lookupRectangle[2] + c.lookupRectangle[0];
    float q = (place.y * c.lookupRectangle[3] + c.lookupRectangle[1]) /
              static_cast<float>(std::max<std::uint32_t>(c.numberOfTables, 1));
    Colour sum{0.0F, 0.0F, 0.0F, 1.0F};
    for (std::uint32_t table = 0; table < count; ++table, q += c.tableHeight) {
        const CLinearSampler<std::uint16_t, 4> entry(sources.tables, sources.tablesPitch, sources.tablesWidth,
                                                     sources.tablesHeight, s, q);
        constexpr float wordUnit = 1.0F / 65535.0F;
        const CLinearSampler<std::uint8_t, 4> sample(sources.pixels, sources.pitch, sources.width,
                                                     sources.height, entry.channel(0) * wordUnit,
                                                     entry.channel(1) * wordUnit);
        const float weight = entry.channel(2) * wordUnit / 255.0F;
        sum.blue += weight * sample.channel(0);
        sum.green += weight * sample.channel(1);
        sum.red += weight * sample.channel(2);
        // The weights count for alpha too, which so grows beyond 1; storing saturates it.
        sum.alpha += weight * sample.channel(3);
    }
    return sum;
}

template<typename Constants, typename PlaceOf>
void draw(const Constants& constants, const CustomSources& sources, const PlaceRow& places,
          std::uint8_t* target, PlaceOf placeOf) {
    for (int i = 0; i < places.count; ++i, target += 4) {
        const Place place = placeOf(places.u[i], places.v[i]);
        const Bgra pixel =
            place.isInUnitSquare() ? storedColour(weightedSum(constants, sources, place)) : opaqueBlack;
        std::memcpy(target, &pixel, 4);
    }
}

/// Longitude and latitude of the panorama, radians, latitude downward.
struct Direction {
    float longitude;
    float latitude;
};

/// The virtual camera.
class CVirtualCamera {
public:
    explicit CVirtualCamera(const VirtualPtzConstants& c)
        : m_c(c), m_scale(2.0F * std::tan(0.5F * c.panTiltFov[2])), m_sinTilt(std::sin(c.panTiltFov[1])),
          m_cosTilt(std::cos(c.panTiltFov[1])), m_sinPitch(std::sin(c.pitchRoll[0])),
          m_cosPitch(std::cos(c.pitchRoll[0])), m_sinRoll(std::sin(c.pitchRoll[1])),
          m_cosRoll(std::cos(c.pitchRoll[1])) {}

    Place placeOf(float u, float v) const {
        const Direction d = straightened(blended(u, v));
        return {d.longitude / m_c.inputFov[0] + 0.5F, d.latitude / m_c.inputFov[1] + 0.5F};
    }

private:
    /// The inverse gnomonic projection with c = atan ρ, ρ the distance from the view's centre. As sin c =
    /// ρ cos c, ρ cancels out, which leaves a value in the centre too.
    Direction rectilinear(float u, float v) const {
        const float x = (u - 0.5F) * m_scale;
        const float y = (v - 0.5F) * m_scale / m_c.outputAR;
        const float cosC = 1.0F / std::sqrt(1.0F + x * x + y * y);
        return {m_c.panTiltFov[0] + arcTangent(x, m_cosTilt + y * m_sinTilt),
                arcSine((y * m_cosTilt - m_sinTilt) * cosC)};
    }

    Direction blended(float u, float v) const {
        const float level = m_c.effectLevel;
        // The horizontal field of view serves both coordinates, deliberately: the panorama keeps its
        // proportions.
        Direction d{(u - 0.5F) * m_c.inputFov[0], (v - 0.5F) * m_c.inputFov[0] / m_c.outputAR};
        if (level != 0.0F) {
            const Direction r = rectilinear(u, v);
            d = level == 1.0F ? r
                              : Direction{level * r.longitude + (1.0F - level) * d.longitude,
                                          level * r.latitude + (1.0F - level) * d.latitude};
        }
        // The flat share has to follow pan and tilt as well.
        return {d.longitude + (1.0F - level) * m_c.panTiltFov[0],
                d.latitude - (1.0F - level) * m_c.panTiltFov[1]};
    }

    /// Undoes the roll and the pitch of the camera that took the panorama.
    Direction straightened(Direction d) const {
        const float cosLatitude = std::cos(d.latitude);
        const float x = std::cos(d.longitude) * cosLatitude;
        const float y = std::sin(d.longitude) * cosLatitude;
        const float z = std::sin(d.latitude);
        const float rolledY = y * m_cosRoll - z * m_sinRoll;
        const float rolledZ = y * m_sinRoll + z * m_cosRoll;
        const float pitchedX = x * m_cosPitch - rolledZ * m_sinPitch;
        const float pitchedZ = x * m_sinPitch + rolledZ * m_cosPitch;
        return {arcTangent(rolledY, pitchedX), arcSine(pitchedZ)};
    }

    const VirtualPtzConstants& m_c;
    float m_scale;
    float m_sinTilt;
    float m_cosTilt;
    float m_sinPitch;
    float m_cosPitch;
    float m_sinRoll;
    float m_cosRoll;
};

} // namespace

void customTransform(const CustomTransformConstants& constants, const CustomSources& sources,
                     const PlaceRow& places, std::uint8_t* target) {
    const float* const view = constants.viewRect;
    const float* const projection = constants.projectionRect;
    draw(constants, sources, places, target, [&](float u, float v) -> Place {
        return {(u * view[2] + view[0]) * projection[2] + projection[0],
                (v * view[3] + view[1]) * projection[3] + projection[1]};
    });
}

void customVirtualPtz(const VirtualPtzConstants& constants, const CustomSources& sources,
                      const PlaceRow& places, std::uint8_t* target) {
    const CVirtualCamera camera(constants);
    draw(constants, sources, places, target, [&](float u, float v) { return camera.placeOf(u, v); });
}

} // namespace tarvo::render::software
