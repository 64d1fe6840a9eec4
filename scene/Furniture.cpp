#include "scene/Furniture.h"

#include "scene/Patterns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tarvo::scene {
namespace {

constexpr double soft = 0.02;

constexpr std::array blocks{
    // the table and its legs
    Block{{-0.80, -0.50, 0.71}, {0.80, 0.50, 0.76}, Finish::wood},
    Block{{-0.76, -0.46, 0.00}, {-0.66, -0.36, 0.71}, Finish::wood},
    Block{{0.66, -0.46, 0.00}, {0.76, -0.36, 0.71}, Finish::wood},
    Block{{-0.76, 0.36, 0.00}, {-0.66, 0.46, 0.71}, Finish::wood},
    Block{{0.66, 0.36, 0.00}, {0.76, 0.46, 0.71}, Finish::wood},
    // books on the table
    Block{{0.35, 0.12, 0.76}, {0.70, 0.36, 0.82}, Finish::book},
    Block{{0.38, 0.14, 0.82}, {0.66, 0.33, 0.87}, Finish::cushion},
    // a column in the north-east
    Block{{2.25, 1.45, 0.00}, {2.65, 1.85, 3.00}, Finish::column},
    // a cabinet at the east wall
    Block{{3.45, -0.90, 0.00}, {4.00, 0.90, 0.95}, Finish::cabinet},
    // a sofa at the west wall: seat, back, arms
    Block{{-3.95, -1.60, 0.00}, {-3.05, 0.60, 0.42}, Finish::fabric},
    Block{{-3.98, -1.60, 0.42}, {-3.70, 0.60, 0.88}, Finish::fabric},
    Block{{-3.95, -1.82, 0.00}, {-3.05, -1.60, 0.64}, Finish::cushion},
    Block{{-3.95, 0.60, 0.00}, {-3.05, 0.82, 0.64}, Finish::cushion},
};

/// A shadow under something, blurred by the lamps' extent.
struct Shadow {
    Area area;
    double blur;
    double strength;
};

constexpr std::array shadows{
    Shadow{{-0.85, -0.55, 0.85, 0.55}, 0.50, 0.30}, Shadow{{2.20, 1.40, 2.70, 1.90}, 0.40, 0.45},
    Shadow{{3.35, -1.00, 4.10, 1.00}, 0.40, 0.45},  Shadow{{-4.10, -1.92, -2.95, 0.92}, 0.40, 0.45},
    Shadow{{-2.75, 1.55, -2.05, 2.25}, 0.50, 0.40},
};

/// Lighter rims show the shape of blocks whose faces are lit alike.
double rim(double u, double v, double width, double height, double rimWidth) {
    const double fromEdge = std::min({u, v, width - u, height - v});
    return 1.0 - softAbove(fromEdge, rimWidth, soft);
}

} // namespace

std::span<const Block> furniture() {
    return blocks;
}

Colour blockTexture(Finish finish, double u, double v, double width, double height) {
    switch (finish) {
    case Finish::wood: {
        const double grain = smoothNoise(u / 0.25, v / 0.03, 41);
        const double planks = softLines(v, 0.125, 0.008, soft);
        const Colour wood = (0.80 + 0.35 * grain - 0.25 * planks) * Colour{0.72, 0.48, 0.26};
        return mix(wood, {0.50, 0.31, 0.15}, 0.7 * rim(u, v, width, height, 0.03));
    }
    case Finish::fabric: {
        const double checks = 0.5 + 0.25 * (softSquareWave(u, 0.11, 0.05) + softSquareWave(v, 0.11, 0.05));
        const Colour cloth = mix({0.20, 0.28, 0.52}, {0.52, 0.62, 0.82}, checks);
        return mix(cloth, {0.88, 0.86, 0.78}, rim(u, v, width, height, 0.02));
    }
    case Finish::cushion: {
        const double stripes = 0.5 + 0.5 * softSquareWave(u, 0.07, 0.04);
        const Colour cloth = mix({0.86, 0.70, 0.22}, {0.72, 0.36, 0.16}, stripes);
        return mix(cloth, {0.40, 0.20, 0.10}, 0.8 * rim(u, v, width, height, 0.02));
    }
    case Finish::column: {
        const double spiral = 0.5 + 0.5 * softSquareWave(v + u, 0.22, 0.04);
        const Colour paint = mix({0.92, 0.90, 0.86}, {0.82, 0.22, 0.20}, spiral);
        return mix(paint, {0.30, 0.30, 0.34}, 0.8 * rim(u, v, width, height, 0.03));
    }
    case Finish::cabinet: {
        const double grain = smoothNoise(u / 0.035, v / 0.30, 42);
        const Colour wood = (0.80 + 0.35 * grain) * Colour{0.44, 0.52, 0.56};
        const double seams = std::fmax(softLines(u, 0.60, 0.025, soft), softLines(v, 0.475, 0.025, soft));
        const double knob = softLines(u - 0.30, 0.60, 0.10, soft) * softLines(v - 0.36, 0.475, 0.035, soft);
        const Colour front = mix(wood, {0.16, 0.20, 0.24}, seams);
        return mix(front, {0.92, 0.84, 0.60}, knob * softAbove(height, 0.9, 0.1));
    }
    case Finish::book: {
        const double stripe = softSpan(u, 0.05, 0.09, soft);
        const double dots = softChecker(u, v, 0.045, 0.03);
        return mix(mix({0.72, 0.12, 0.16}, {0.86, 0.30, 0.24}, dots), {0.95, 0.86, 0.55}, stripe);
    }
    }
    return {};
}

Colour globeTexture(const Vector& outward) {
    constexpr double radius = 0.45;
    constexpr double lineStep = std::numbers::pi / 8.0;
    const double latitude = std::asin(std::clamp(outward.z, -1.0, 1.0));
    const double longitude = std::atan2(outward.y, outward.x);
    const double land = 0.65 * smoothNoise(3.0 * outward.x + 20.0, 3.0 * outward.z + 2.0 * outward.y, 51) +
                        0.35 * smoothNoise(7.0 * outward.y, 7.0 * outward.z - 5.0 * outward.x, 52);
    Colour colour = mix({0.16, 0.38, 0.70}, {0.42, 0.66, 0.30}, softAbove(land, 0.52, 0.10));
    colour = mix(colour, {0.95, 0.96, 0.97}, softAbove(std::abs(outward.z), 0.90, 0.06));
    // Lines of constant width in metres: meridians draw together towards the poles and end at the ice.
    const double parallels = softLines(latitude * radius, lineStep * radius, 0.012, soft);
    const double around = radius * std::cos(latitude);
    const double meridians = softLines(longitude * around, lineStep * around, 0.012, soft) *
                             (1.0 - softAbove(std::abs(outward.z), 0.92, 0.06));
    return mix(colour, {0.92, 0.90, 0.80}, 0.7 * std::fmax(parallels, meridians));
}

Colour orangeTexture(const Vector& outward) {
    const double skin = smoothNoise(6.0 * outward.x + 9.0, 6.0 * outward.z + 4.0 * outward.y, 53);
    const Colour colour = (0.85 + 0.25 * skin) * Colour{0.98, 0.56, 0.10};
    return mix(colour, {0.25, 0.45, 0.15}, softAbove(outward.z, 0.93, 0.08));
}

Colour beachBallTexture(const Vector& outward) {
    constexpr std::array sectors{Colour{0.95, 0.95, 0.93}, Colour{0.86, 0.16, 0.16},
                                 Colour{0.95, 0.95, 0.93}, Colour{0.12, 0.36, 0.76},
                                 Colour{0.95, 0.95, 0.93}, Colour{0.96, 0.76, 0.12}};
    constexpr double sectorAngle = std::numbers::pi / 3.0;
    const double turn = std::atan2(outward.y, outward.x) / sectorAngle + 3.0; // 0 to 6 sectors
    const double fromAxis = std::hypot(outward.x, outward.y);
    const double middle = std::floor(turn) + 0.5;
    const double side = turn < middle ? -1.0 : 1.0;
    const int sector = static_cast<int>(std::floor(turn)) % 6;
    const int beside = (sector + (side < 0.0 ? 5 : 1)) % 6;
    // Half of the ramp to the neighbouring sector lies in this one.
    const double toBorder = (0.5 - std::abs(turn - middle)) * sectorAngle * fromAxis;
    const double share = softAbove(-toBorder, 0.0, 0.08);
    const Colour stripes =
        mix(sectors[static_cast<std::size_t>(sector)], sectors[static_cast<std::size_t>(beside)], share);
    return mix(stripes, {0.20, 0.60, 0.35}, softAbove(std::abs(outward.z), 0.93, 0.05));
}

double floorLight(double x, double y) {
    double light = 1.0;
    for (const Shadow& shadow : shadows) {
        light *= 1.0 - shadow.strength * softArea(x, y, shadow.area, shadow.blur);
    }
    return light;
}

} // namespace tarvo::scene
