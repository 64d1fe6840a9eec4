#include "geometry/ViewLayout.h"

#include "geometry/Angles.h"

#include <algorithm>
#include <cmath>

namespace tarvo::geometry {
namespace {

struct Range {
    double low;
    double high;
};

constexpr Range whole{-1.0, 1.0};
constexpr Range unit{0.0, 1.0};

constexpr Range symmetric(double half) {
    return {-half, half};
}

Vertex vertex(double x, double y, double u, double v) {
    return {static_cast<float>(x), static_cast<float>(y), 0.0F, 1.0F,
            static_cast<float>(u), static_cast<float>(v)};
}

void placeQuad(ViewVertices& vertices, int first, Range x, Range y, Range v = unit) {
    Vertex* out = vertices.data() + first;
    out[0] = vertex(x.low, y.high, 0.0, v.high);
    out[1] = vertex(x.low, y.low, 0.0, v.low);
    out[2] = vertex(x.high, y.high, 1.0, v.high);
    out[3] = vertex(x.high, y.low, 1.0, v.low);
}

void placePanoramas(ViewVertices& vertices, const ViewLayout& layout) {
    // One degree is as high as it is wide: the share of the height that a strip of full width takes.
    const double strip = layout.outputAspect * layout.panorama.heightDegrees / layout.panorama.widthDegrees;
    placeQuad(vertices, quad::panoramaSingle, whole, symmetric(strip), {0.0, 0.5});
    placeQuad(vertices, quad::panoramaSingleWall, whole, symmetric(strip));

    const double stacked = 2.0 * strip;
    const double halfWidth = stacked >= 1.0 ? 1.0 / stacked : 1.0;
    const double halfHeight = stacked >= 1.0 ? 1.0 : stacked;
    placeQuad(vertices, quad::panoramaDouble, symmetric(halfWidth), symmetric(halfHeight));
    placeQuad(vertices, quad::panoramaDoubleWall, symmetric(halfWidth), {-halfHeight, 0.0});
}

void placeQuadrants(ViewVertices& vertices, const ViewLayout& layout) {
    const bool isWall = layout.orientation == TiltOrientation::wall;
    // Square pixels: across its quadrant a sub-view always spans the width of the projection, so v spans what
    // the quadrant's aspect leaves of the height.
    const double ratio = layout.inputAspect / layout.outputAspect;
    const double half = isWall ? ratio : 0.5 * ratio;
    const Range v{0.5 - half, 0.5 + half};
    const Range left{-1.0, 0.0};
    const Range right{0.0, 1.0};
    const Range upper = isWall ? whole : Range{-1.0, 0.0};
    const Range lower{0.0, 1.0};
    placeQuad(vertices, quad::firstQuadrant, left, upper, v);
    placeQuad(vertices, quad::firstQuadrant + 4, right, upper, v);
    placeQuad(vertices, quad::firstQuadrant + 8, left, lower, v);
    placeQuad(vertices, quad::firstQuadrant + 12, right, lower, v);
}

void placeOverviewDisc(ViewVertices& vertices, const ViewLayout& layout) {
    const OverviewPlacement disc = overviewPlacement(layout.outputAspect, layout.isOverviewLeft);
    Vertex* out = vertices.data() + overviewDiscBaseVertex;
    out[0] = vertex(disc.centerX, disc.centerY, 0.5, 0.5);
    for (int k = 1; k <= overviewDiscTriangleCount + 1; ++k) {
        const double angle = k * piSingle / (overviewDiscTriangleCount / 2);
        const double cosine = std::cos(angle);
        const double sine = std::sin(angle);
        out[k] = vertex(disc.centerX + disc.halfWidth * cosine, disc.centerY + disc.halfHeight * sine,
                        0.5 + 0.5 * cosine / layout.inputAspect, 0.5 + 0.5 * sine);
    }
}

} // namespace

OverviewPlacement overviewPlacement(double outputAspect, bool isLeft) {
    const double halfWidth = outputAspect >= 1.0 ? 0.5 / outputAspect : 0.5;
    const double halfHeight = outputAspect >= 1.0 ? 0.5 : 0.5 * outputAspect;
    return {isLeft ? halfWidth - 1.0 : 1.0 - halfWidth, 1.0 - halfHeight, halfWidth, halfHeight};
}

ViewVertices buildViewVertices(const ViewLayout& layout) {
    const double inputAspect = layout.inputAspect;
    const double outputAspect = layout.outputAspect;
    ViewVertices vertices{};
    if (layout.viewType == ViewType::custom) {
        placeQuad(vertices, quad::customView, whole, whole);
    } else {
        placeQuad(vertices, quad::customView, symmetric(std::min(1.0, inputAspect / outputAspect)),
                  symmetric(std::min(1.0, outputAspect / inputAspect)));
    }
    const double singleHalfHeight = outputAspect / inputAspect;
    placeQuad(vertices, quad::singleView, whole, symmetric(singleHalfHeight));
    placePanoramas(vertices, layout);
    placeQuadrants(vertices, layout);

    const ExcludeArea area = layout.excludeArea.clipped();
    placeQuad(vertices, quad::excludeArea, {2.0 * area.left - 1.0, 2.0 * area.right - 1.0},
              {singleHalfHeight * (2.0 * area.top - 1.0), singleHalfHeight * (2.0 * area.bottom - 1.0)});
    placeQuad(vertices, quad::fullTarget, whole, whole);
    placeOverviewDisc(vertices, layout);
    return vertices;
}

OverviewDiscIndices overviewDiscIndices() {
    OverviewDiscIndices indices{};
    for (std::uint32_t k = 0; k < overviewDiscTriangleCount; ++k) {
        // Clockwise in the delivered picture, the side that is drawn.
        indices[3 * k] = 0;
        indices[3 * k + 1] = k + 1;
        indices[3 * k + 2] = k + 2;
    }
    return indices;
}

} // namespace tarvo::geometry
