#include "apps/tarvo-dewarp/tables/TableProjection.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "geometry/Projection.h"
#include "geometry/ViewState.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace tarvo::apps {
namespace {

using geometry::TiltOrientation;
using Position = geometry::InputPosition<double>;

constexpr double defaultHorizontal = 180.0;
constexpr double defaultVertical = 60.0;

constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

std::uint16_t fraction(double part, double whole) {
    // Written so that what is no number becomes 0.
    const double scaled = part / whole * 65535.0;
    return static_cast<std::uint16_t>(scaled > 0.0 ? std::lround(std::min(scaled, 65535.0)) : 0);
}

/// `isSeen` says whether the input has a picture of it that belongs there.
TableEntry entryAt(Position position, geometry::PictureSize input, bool isSeen) {
    const double width = input.width;
    const double height = input.height;
    const bool isInside = position.x >= 0.0 && position.y >= 0.0 && position.x < width && position.y < height;
    return {fraction(position.x, width), fraction(position.y, height),
            isInside && isSeen ? fullWeight : std::uint16_t{0}};
}

/// Cell `index` of `count` as a place between the outer ones, 0 … 1.
double place(int index, int count) {
    return count > 1 ? static_cast<double>(index) / (count - 1) : 0.5;
}

template<typename EntryAt>
LookupTable fillTable(const TableView& view, EntryAt at) {
    LookupTable table{static_cast<int>(view.grid.width), static_cast<int>(view.grid.height), {}};
    table.entries.reserve(static_cast<std::size_t>(view.grid.width) * view.grid.height);
    for (int row = 0; row < table.height; ++row) {
        for (int column = 0; column < table.width; ++column)
            table.entries.push_back(at(place(column, table.width), place(row, table.height)));
    }
    return table;
}

LookupTable makeRectilinear(const TableView& view) {
    geometry::CViewState state;
    state.setLensProfile(view.lensProfile);
    state.setTiltOrientation(view.tiltOrientation);
    state.setInputSize(static_cast<int>(view.input.width), static_cast<int>(view.input.height));
    state.setOutputSize(static_cast<int>(view.grid.width), static_cast<int>(view.grid.height));
    if (view.panDegrees)
        state.setPan(*view.panDegrees);
    if (view.tiltDegrees)
        state.setTilt(*view.tiltDegrees);
    if (view.fieldOfViewDegrees)
        state.setFieldOfView(*view.fieldOfViewDegrees);
    const geometry::DewarpConstants constants = state.parameters().constants();

    // The projection has the input's shape and spans the output's width; what that leaves of its height, or
    // what of the output it cannot fill, follows from the two shapes.
    const double inputAspect = static_cast<double>(view.input.width) / view.input.height;
    const double outputAspect = static_cast<double>(view.grid.width) / view.grid.height;
    return fillTable(view, [&](double u, double down) {
        const double v = 0.5 + (down - 0.5) * inputAspect / outputAspect;
        return entryAt(geometry::projectSingleView(constants, u, v), view.input, v >= 0.0 && v <= 1.0);
    });
}

struct Vector {
    double east;
    double north;
    double up;
};

constexpr double dot(Vector a, Vector b) {
    return a.east * b.east + a.north * b.north + a.up * b.up;
}

/// Where the lens and the picture's right and lower side point to.
struct Axes {
    Vector lens;
    Vector right;
    Vector down;
};

Axes axesOf(TiltOrientation orientation) {
    switch (orientation) {
    case TiltOrientation::ceiling:
        return {{0, 0, -1}, {1, 0, 0}, {0, -1, 0}};
    case TiltOrientation::desk:
        return {{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}};
    default:
        return {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}};
    }
}

/// Up to which angle off the lens axis the radius rises. Beyond, two directions would share a place. Sampled:
/// a thousandth of a half turn is finer than any lens is known at its rim.
double risingAngle(const geometry::LensProfile& lens) {
    constexpr int steps = 1000;
    for (int i = 0; i < steps; ++i) {
        const double angle = std::numbers::pi * i / steps;
        const double slope = 3.0 * static_cast<double>(lens.a) * angle * angle +
                             2.0 * static_cast<double>(lens.b) * angle + static_cast<double>(lens.c);
        if (!(slope > 0.0))
            return angle;
    }
    return std::numbers::pi;
}

TableEntry entryOf(const TableView& view, const Axes& axes, double limit, Vector direction) {
    const double x = dot(direction, axes.right);
    const double y = dot(direction, axes.down);
    const double across = std::hypot(x, y);
    const double angle = std::atan2(across, dot(direction, axes.lens));
    const double radius = geometry::lensRadius(view.lensProfile, angle) * view.input.height;
    const double scale = across > 0.0 ? radius / across : 0.0;
    return entryAt({0.5 * view.input.width + x * scale, 0.5 * view.input.height + y * scale}, view.input,
                   angle < limit);
}

double defaultTilt(TiltOrientation orientation, double vertical) {
    switch (orientation) {
    case TiltOrientation::ceiling:
        return -0.5 * vertical;
    case TiltOrientation::desk:
        return 0.5 * vertical;
    default:
        return 0.0;
    }
}

LookupTable makePanorama(const TableView& view) {
    const bool isCylinder = view.projection == TableProjection::cylindrical;
    const double horizontal = view.horizontalFieldOfViewDegrees.value_or(defaultHorizontal);
    const double vertical = view.verticalFieldOfViewDegrees.value_or(defaultVertical);
    const double pan = view.panDegrees.value_or(0.0);
    const double tilt = view.tiltDegrees.value_or(defaultTilt(view.tiltOrientation, vertical));
    const double limit = isCylinder ? 89.0 : 90.0;
    const double highest = tilt + 0.5 * vertical;
    const double lowest = tilt - 0.5 * vertical;
    if (highest > limit || lowest < -limit) {
        throw UsageError("with this --tilt and --vertical-field-of-view the picture would reach beyond " +
                         std::string(isCylinder ? "89" : "90") + " degrees above or below the horizon");
    }
    const Axes axes = axesOf(view.tiltOrientation);
    const double rising = risingAngle(view.lensProfile);
    const auto elevation = [&](double down) {
        if (!isCylinder)
            return radians(std::lerp(highest, lowest, down));
        return std::atan(std::lerp(std::tan(radians(highest)), std::tan(radians(lowest)), down));
    };
    return fillTable(view, [&](double across, double down) {
        const double azimuth = radians(pan + (across - 0.5) * horizontal);
        const double e = elevation(down);
        return entryOf(view, axes, rising,
                       {std::cos(e) * std::sin(azimuth), std::cos(e) * std::cos(azimuth), std::sin(e)});
    });
}

void refuseOption(bool isGiven, const char* option, const char* otherProjections) {
    if (isGiven)
        throw UsageError(std::string(option) + " has a meaning only with --projection " + otherProjections);
}

} // namespace

LookupTable makeTable(const TableView& view) {
    if (std::uint64_t{view.grid.width} * view.grid.height > maxTableCells) {
        throw UsageError("--grid: more than " + std::to_string(maxTableCells) + " cells are not allowed");
    }
    if (view.projection == TableProjection::rectilinear) {
        const char* const others = "cylindrical or equirectangular";
        refuseOption(view.horizontalFieldOfViewDegrees.has_value(), "--horizontal-field-of-view", others);
        refuseOption(view.verticalFieldOfViewDegrees.has_value(), "--vertical-field-of-view", others);
        return makeRectilinear(view);
    }
    refuseOption(view.fieldOfViewDegrees.has_value(), "--field-of-view", "rectilinear");
    return makePanorama(view);
}

} // namespace tarvo::apps
