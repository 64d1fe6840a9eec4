#include "render/software/Raster.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>

namespace tarvo::render::software {
namespace {

using geometry::Vertex;

struct Point {
    double x;
    double y;

    bool isFinite() const { return std::isfinite(x) && std::isfinite(y); }
};

constexpr std::int64_t subPixels = 256;

Point pixelPosition(const Vertex& vertex, int width, int height) {
    return {(static_cast<double>(vertex.x) + 1.0) * 0.5 * width,
            (static_cast<double>(vertex.y) + 1.0) * 0.5 * height};
}

double snapped(double coordinate) {
    return std::round(coordinate * static_cast<double>(subPixels));
}

/// The first pixel whose centre lies at or behind a snapped coordinate, within 0 … size.
int firstPixel(double coordinate, int size) {
    const double pixel = std::ceil(coordinate / static_cast<double>(subPixels) - 0.5);
    return static_cast<int>(std::clamp(pixel, 0.0, static_cast<double>(size)));
}

struct GridPoint {
    std::int64_t x;
    std::int64_t y;
};

std::int64_t floorDivided(std::int64_t a, std::int64_t b) {
    return a / b - (a % b != 0 && (a < 0) != (b < 0) ? 1 : 0);
}

std::int64_t ceilDivided(std::int64_t a, std::int64_t b) {
    return -floorDivided(-a, b);
}

/// The columns of a row, as far as they are not ruled out.
struct Columns {
    std::int64_t first;
    std::int64_t end;
};

/// Takes away the columns whose centres do not belong to the inner side of an edge of a clockwise triangle.
/// All in whole numbers below 2^62: corners lie within 2^29 of the origin.
void clipToSide(Columns& columns, GridPoint from, GridPoint to, std::int64_t centreY) {
    const std::int64_t dx = to.x - from.x;
    const std::int64_t dy = to.y - from.y;
    const bool isLeftOrTop = dy < 0 || (dy == 0 && dx > 0);
    // Inside means dx·(y − from.y) − dy·(x − from.x) ≥ least.
    const std::int64_t least = isLeftOrTop ? 0 : 1;
    const std::int64_t along = dx * (centreY - from.y) - least;
    constexpr std::int64_t half = subPixels / 2;
    if (dy < 0) {
        const std::int64_t centreX = from.x + ceilDivided(-along, -dy);
        columns.first = std::max(columns.first, ceilDivided(centreX - half, subPixels));
    } else if (dy > 0) {
        const std::int64_t centreX = from.x + floorDivided(along, dy);
        columns.end = std::min(columns.end, floorDivided(centreX - half, subPixels) + 1);
    } else if (along < 0) {
        columns.end = columns.first;
    }
}

constexpr int padded(int pixels) {
    return (pixels + slotAlignment - 1) / slotAlignment * slotAlignment;
}

/// The plane through three corners.
Affine through(const std::array<Point, 3>& p, double area, double a, double b, double c) {
    const double perX = ((b - a) * (p[2].y - p[0].y) - (c - a) * (p[1].y - p[0].y)) / area;
    const double perY = ((c - a) * (p[1].x - p[0].x) - (b - a) * (p[2].x - p[0].x)) / area;
    return {a - perX * p[0].x - perY * p[0].y, perX, perY};
}

/// The plane over a rectangle whose first three corners are lower left, upper left and lower right.
Affine over(const std::array<Point, 3>& p, double lowerLeft, double upperLeft, double lowerRight) {
    const double perX = (lowerRight - lowerLeft) / (p[2].x - p[0].x);
    const double perY = (upperLeft - lowerLeft) / (p[1].y - p[0].y);
    return {lowerLeft - perX * p[0].x - perY * p[0].y, perX, perY};
}

template<typename Plane>
VertexValues valuesOf(const Vertex& a, const Vertex& b, const Vertex& c, Plane plane) {
    const auto of = [&](float Vertex::*value) {
        return plane(static_cast<double>(a.*value), static_cast<double>(b.*value),
                     static_cast<double>(c.*value));
    };
    return {of(&Vertex::u), of(&Vertex::v), of(&Vertex::colour)};
}

/// Four corners of an upright rectangle that faces the viewer, with values that run linearly over all of it.
bool isUprightRectangle(std::span<const Vertex> q) {
    const auto isFlat = [&](float Vertex::*value) {
        return q[2].*value - q[0].*value == q[3].*value - q[1].*value;
    };
    return q[0].x == q[1].x && q[2].x == q[3].x && q[0].y == q[2].y && q[1].y == q[3].y && q[0].x < q[2].x &&
           q[1].y < q[0].y && isFlat(&Vertex::u) && isFlat(&Vertex::v) && isFlat(&Vertex::colour);
}

} // namespace

void CRaster::clear() {
    m_top = m_bottom = 0;
    m_isRectangle = false;
    m_slotCount = 0;
    m_spans.clear();
    m_rowStarts.clear();
    m_values.clear();
    m_unsorted.clear();
}

void CRaster::build(std::span<const Vertex> vertices, std::span<const std::uint32_t> indices,
                    Topology topology, int width, int height) {
    clear();
    try {
        if (topology == Topology::triangleStrip && vertices.size() == 4 && isUprightRectangle(vertices) &&
            buildRectangle(vertices, width, height)) {
            return;
        }
        if (topology == Topology::triangleList) {
            for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
                addTriangle(vertices[indices[i]], vertices[indices[i + 1]], vertices[indices[i + 2]], width,
                            height);
        } else {
            for (std::size_t i = 0; i + 2 < vertices.size(); ++i) {
                // Every second triangle of a strip runs the other way round.
                const std::size_t odd = i % 2;
                addTriangle(vertices[i], vertices[i + 1 + odd], vertices[i + 2 - odd], width, height);
            }
        }
        sortIntoRows();
        assignSlots();
    } catch (...) {
        clear();
        throw;
    }
}

bool CRaster::buildRectangle(std::span<const Vertex> vertices, int width, int height) {
    std::array<Point, 3> corners{};
    for (std::size_t i = 0; i < 3; ++i) {
        corners[i] = pixelPosition(vertices[i], width, height);
        if (!corners[i].isFinite())
            return false;
    }
    const int left = firstPixel(snapped(corners[0].x), width);
    const int right = firstPixel(snapped(corners[2].x), width);
    m_top = firstPixel(snapped(corners[1].y), height);
    m_bottom = std::max(m_top, firstPixel(snapped(corners[0].y), height));
    if (left >= right)
        m_bottom = m_top;
    m_isRectangle = true;
    m_paddedWidth = padded(right - left);
    m_values.push_back(valuesOf(vertices[0], vertices[1], vertices[2],
                                [&](double a, double b, double c) { return over(corners, a, b, c); }));
    const auto rows = static_cast<std::size_t>(m_bottom - m_top);
    m_spans.assign(rows, {0, 0, static_cast<std::uint16_t>(left), static_cast<std::uint16_t>(right)});
    m_rowStarts.resize(rows + 1);
    for (std::size_t i = 0; i <= rows; ++i)
        m_rowStarts[i] = i;
    assignSlots();
    return true;
}

void CRaster::addTriangle(const Vertex& a, const Vertex& b, const Vertex& c, int width, int height) {
    const std::array<Point, 3> corners{pixelPosition(a, width, height), pixelPosition(b, width, height),
                                       pixelPosition(c, width, height)};
    constexpr double furthest = 1 << 20;
    std::array<GridPoint, 3> grid{};
    for (std::size_t i = 0; i < 3; ++i) {
        // Compared this way round, what is no number is too far.
        if (!(std::abs(corners[i].x) <= furthest && std::abs(corners[i].y) <= furthest))
            return;
        grid[i] = {static_cast<std::int64_t>(snapped(corners[i].x)),
                   static_cast<std::int64_t>(snapped(corners[i].y))};
    }
    const std::int64_t gridArea =
        (grid[1].x - grid[0].x) * (grid[2].y - grid[0].y) - (grid[1].y - grid[0].y) * (grid[2].x - grid[0].x);
    const double area = (corners[1].x - corners[0].x) * (corners[2].y - corners[0].y) -
                        (corners[1].y - corners[0].y) * (corners[2].x - corners[0].x);
    if (gridArea <= 0 || area == 0.0)
        return;
    const auto [top, bottom] = std::minmax({grid[0].y, grid[1].y, grid[2].y});
    const int firstRow = firstPixel(static_cast<double>(top), height);
    // One further than the centre rule asks for: a bottom edge exactly on a centre is the sides' to decide.
    const int endRow = std::min(firstPixel(static_cast<double>(bottom), height) + 1, height);
    const auto values = static_cast<std::int32_t>(m_values.size());
    m_values.push_back(valuesOf(a, b, c, [&](double first, double second, double third) {
        return through(corners, area, first, second, third);
    }));
    for (int y = firstRow; y < endRow; ++y) {
        const std::int64_t centreY = y * subPixels + subPixels / 2;
        Columns columns{0, width};
        clipToSide(columns, grid[0], grid[1], centreY);
        clipToSide(columns, grid[1], grid[2], centreY);
        clipToSide(columns, grid[2], grid[0], centreY);
        if (columns.first < columns.end) {
            m_unsorted.push_back({y,
                                  {0, values, static_cast<std::uint16_t>(columns.first),
                                   static_cast<std::uint16_t>(columns.end)}});
        }
    }
}

void CRaster::sortIntoRows() {
    if (m_unsorted.empty())
        return;
    const auto byRow = [](const RowSpan& a, const RowSpan& b) { return a.y < b.y; };
    const auto [first, last] = std::minmax_element(m_unsorted.begin(), m_unsorted.end(), byRow);
    m_top = first->y;
    m_bottom = last->y + 1;
    // Counting keeps the order of drawing within a row.
    m_rowStarts.assign(static_cast<std::size_t>(m_bottom - m_top) + 1, 0);
    for (const RowSpan& each : m_unsorted)
        ++m_rowStarts[static_cast<std::size_t>(each.y - m_top) + 1];
    for (std::size_t i = 1; i < m_rowStarts.size(); ++i)
        m_rowStarts[i] += m_rowStarts[i - 1];
    m_spans.resize(m_unsorted.size());
    for (const RowSpan& each : m_unsorted)
        m_spans[m_rowStarts[static_cast<std::size_t>(each.y - m_top)]++] = each.span;
    // Every start has moved to where the next row starts.
    std::copy_backward(m_rowStarts.begin(), m_rowStarts.end() - 1, m_rowStarts.end());
    m_rowStarts.front() = 0;
}

void CRaster::assignSlots() {
    std::int64_t slot = 0;
    for (Span& span : m_spans) {
        span.slot = static_cast<std::int32_t>(slot);
        slot += padded(span.right - span.left);
        // Triangles that cover a large target many times over.
        if (slot > std::numeric_limits<std::int32_t>::max() / 4)
            throw std::bad_alloc();
    }
    m_slotCount = static_cast<std::int32_t>(slot);
}

} // namespace tarvo::render::software
