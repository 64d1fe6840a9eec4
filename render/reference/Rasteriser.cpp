#include "render/reference/Rasteriser.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarvo::render::reference {
namespace {

using geometry::Vertex;

struct Point {
    double x;
    double y;

    bool isFinite() const { return std::isfinite(x) && std::isfinite(y); }
};

constexpr double subPixels = 256.0;

/// Twice the signed area of a, b, c; positive when they run clockwise (y points down). Exact for the snapped
/// corners of any real target: whole numbers well below 2^26 before the multiplication.
double cross(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

Point pixelPosition(const Vertex& vertex, int width, int height) {
    return {(static_cast<double>(vertex.x) + 1.0) * 0.5 * width,
            (static_cast<double>(vertex.y) + 1.0) * 0.5 * height};
}

Point snapped(Point p) {
    return {std::round(p.x * subPixels), std::round(p.y * subPixels)};
}

/// A side of a clockwise triangle in snapped coordinates.
struct Side {
    Point from;
    Point to;

    bool owns(Point centre) const {
        const double side = cross(from, to, centre);
        return side > 0.0 || (side == 0.0 && isLeftOrTop());
    }

    bool isLeftOrTop() const { return to.y < from.y || (to.y == from.y && to.x > from.x); }
};

/// Pixels whose centre may lie between two snapped coordinates, clipped to the target.
struct PixelRange {
    int first;
    int end;
};

PixelRange pixelRange(double low, double high, int size) {
    const double limit = size;
    return {static_cast<int>(std::clamp(std::floor(low / subPixels), 0.0, limit)),
            static_cast<int>(std::clamp(std::ceil(high / subPixels), 0.0, limit))};
}

/// A value that runs linearly over the triangle.
class Interpolation {
public:
    explicit Interpolation(const std::array<Point, 3>& corners)
        : m_corners(corners), m_area(cross(corners[0], corners[1], corners[2])) {}

    bool isDegenerate() const { return m_area == 0.0; }

    std::array<double, 3> weightsAt(Point p) const {
        const double second = cross(m_corners[2], m_corners[0], p) / m_area;
        const double third = cross(m_corners[0], m_corners[1], p) / m_area;
        return {1.0 - second - third, second, third};
    }

private:
    std::array<Point, 3> m_corners;
    double m_area;
};

void rasteriseTriangle(const std::array<const Vertex*, 3>& vertices, int width, int height,
                       const FragmentVisitor& visit) {
    std::array<Point, 3> corners{};
    std::array<Point, 3> grid{};
    for (std::size_t i = 0; i < 3; ++i) {
        corners[i] = pixelPosition(*vertices[i], width, height);
        if (!corners[i].isFinite()) {
            return;
        }
        grid[i] = snapped(corners[i]);
    }
    const Interpolation interpolation(corners);
    if (cross(grid[0], grid[1], grid[2]) <= 0.0 || interpolation.isDegenerate()) {
        return;
    }
    const std::array<Side, 3> sides{Side{grid[0], grid[1]}, Side{grid[1], grid[2]}, Side{grid[2], grid[0]}};
    const auto [left, right] = std::minmax({grid[0].x, grid[1].x, grid[2].x});
    const auto [top, bottom] = std::minmax({grid[0].y, grid[1].y, grid[2].y});
    const PixelRange columns = pixelRange(left, right, width);
    const PixelRange rows = pixelRange(top, bottom, height);

    const auto blend = [&vertices](const std::array<double, 3>& weights, float Vertex::*value) {
        double sum = 0.0;
        for (std::size_t i = 0; i < 3; ++i) {
            sum += weights[i] * static_cast<double>(vertices[i]->*value);
        }
        return static_cast<float>(sum);
    };
    for (int y = rows.first; y < rows.end; ++y) {
        for (int x = columns.first; x < columns.end; ++x) {
            const Point centre{(x + 0.5) * subPixels, (y + 0.5) * subPixels};
            if (!std::all_of(sides.begin(), sides.end(), [&](const Side& s) { return s.owns(centre); })) {
                continue;
            }
            const auto weights = interpolation.weightsAt({x + 0.5, y + 0.5});
            visit({x, y, blend(weights, &Vertex::colour), blend(weights, &Vertex::u),
                   blend(weights, &Vertex::v)});
        }
    }
}

} // namespace

void rasteriseStrip(std::span<const Vertex> vertices, int width, int height, const FragmentVisitor& visit) {
    for (std::size_t i = 0; i + 2 < vertices.size(); ++i) {
        // Every second triangle of a strip runs the other way round.
        const std::size_t odd = i % 2;
        rasteriseTriangle({&vertices[i], &vertices[i + 1 + odd], &vertices[i + 2 - odd]}, width, height,
                          visit);
    }
}

void rasteriseList(std::span<const Vertex> vertices, std::span<const std::uint32_t> indices, int width,
                   int height, const FragmentVisitor& visit) {
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        rasteriseTriangle({&vertices[indices[i]], &vertices[indices[i + 1]], &vertices[indices[i + 2]]},
                          width, height, visit);
    }
}

} // namespace tarvo::render::reference
