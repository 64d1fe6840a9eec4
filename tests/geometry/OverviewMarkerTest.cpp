#include "geometry/OverviewMarker.h"

#include "geometry/DewarpParameters.h"
#include "tests/geometry/TrueCamera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace tarvo::geometry {
namespace {

constexpr OverviewPlacement disc{0.5, 0.25, 0.4, 0.3};

std::unique_ptr<OverviewMarkerVertices> markerOf(TiltOrientation orientation, float pan, float tilt,
                                                 float fieldOfView, double outputAspect, int width = 800,
                                                 int height = 600) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(width, height, defaultLensProfile);
    parameters.setTiltOrientation(orientation);
    parameters.setPanTiltFieldOfView(pan, tilt, fieldOfView);
    auto vertices = std::make_unique<OverviewMarkerVertices>();
    buildOverviewMarker(parameters.constants(), static_cast<double>(width) / height, outputAspect, disc,
                        *vertices);
    return vertices;
}

/// Twice the area of triangle i of the strip, positive when it is drawn clockwise.
double clockwiseArea(const OverviewMarkerVertices& strip, std::size_t i) {
    const Vertex& a = strip[i];
    const Vertex& b = strip[i + 1 + i % 2];
    const Vertex& c = strip[i + 2 - i % 2];
    return static_cast<double>(b.x - a.x) * static_cast<double>(c.y - a.y) -
           static_cast<double>(b.y - a.y) * static_cast<double>(c.x - a.x);
}

void expectAtDirection(const Vertex& vertex, TiltOrientation orientation, const tests::Vector& ray) {
    const auto image = tests::Mounting::of(orientation).image(defaultLensProfile, ray);
    EXPECT_NEAR(static_cast<double>(vertex.x), disc.centerX + disc.halfWidth * 2.0 * image.x, 1e-5);
    EXPECT_NEAR(static_cast<double>(vertex.y), disc.centerY + disc.halfHeight * 2.0 * image.y, 1e-5);
}

TEST(OverviewMarker, cornersLieWhereTheViewsCornersAreSeen) {
    for (const auto orientation : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        const float tilt = orientation == TiltOrientation::ceiling ? -50.0F : 50.0F;
        const auto strip = markerOf(orientation, 35.0F, tilt, 20.0F, 4.0 / 3.0);
        const double tangent = std::tan(tests::toRadians(20.0));
        const auto corner = [&](double x, double y) {
            return tests::viewRay(35.0, static_cast<double>(tilt), x * 4.0 / 3.0 * tangent, y * tangent);
        };
        // The first strip runs to the right and begins with its lower vertex; the 47th does so too.
        expectAtDirection((*strip)[1], orientation, corner(-1.0, 1.0));
        expectAtDirection((*strip)[95], orientation, corner(1.0, 1.0));
        expectAtDirection((*strip)[46 * 96], orientation, corner(-1.0, -1.0));
        expectAtDirection((*strip)[46 * 96 + 94], orientation, corner(1.0, -1.0));
        // The second runs back to the left and begins with its upper vertex: one grid line below the top.
        expectAtDirection((*strip)[96], orientation, corner(1.0, 1.0 - 2.0 / 47.0));
        expectAtDirection((*strip)[97], orientation, corner(1.0, 1.0 - 4.0 / 47.0));
    }
}

TEST(OverviewMarker, coversOnlyWhatTheOutputShows) {
    // Twice as wide as the input's 4:3: the upper and lower half of the projection are cropped away.
    const auto strip = markerOf(TiltOrientation::ceiling, 0.0F, -60.0F, 30.0F, 8.0 / 3.0);
    const double tangent = std::tan(tests::toRadians(30.0));
    expectAtDirection((*strip)[1], TiltOrientation::ceiling,
                      tests::viewRay(0.0, -60.0, -4.0 / 3.0 * tangent, 0.5 * tangent));
    // A narrower output shows the whole projection.
    const auto whole = markerOf(TiltOrientation::ceiling, 0.0F, -60.0F, 30.0F, 1.0);
    expectAtDirection((*whole)[1], TiltOrientation::ceiling,
                      tests::viewRay(0.0, -60.0, -4.0 / 3.0 * tangent, tangent));
}

TEST(OverviewMarker, isTranslucentInsideTheCircleAndAbsentOutside) {
    const auto inside = markerOf(TiltOrientation::ceiling, 0.0F, -70.0F, 15.0F, 4.0 / 3.0);
    for (const Vertex& vertex : *inside) {
        ASSERT_EQ(vertex.colour, 0.5F);
    }
    // At tilt 0 the upper half of the view looks above the horizon, whose rays fall outside the circle.
    const auto crossing = markerOf(TiltOrientation::ceiling, 0.0F, 0.0F, 20.0F, 4.0 / 3.0);
    EXPECT_EQ((*crossing)[1].colour, 0.0F);
    EXPECT_EQ((*crossing)[46 * 96 + 48].colour, 0.5F); // the middle of the lower edge: 20 degrees below
}

TEST(OverviewMarker, everyTriangleOfTheGridIsClockwiseOrEmpty) {
    for (const auto orientation : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        const float tilt = orientation == TiltOrientation::ceiling ? -40.0F : 40.0F;
        const auto strip = markerOf(orientation, 20.0F, tilt, 30.0F, 4.0 / 3.0);
        double area = 0.0;
        double outline = 0.0;
        for (std::size_t i = 0; i + 2 < strip->size(); ++i) {
            const bool isJunction = i % 96 >= 94; // from one row of cells to the next
            const double twice = clockwiseArea(*strip, i);
            if (!isJunction) {
                ASSERT_GT(twice, 0.0) << i;
                area += twice / 2.0;
            } else if (twice > 0.0) {
                area += twice / 2.0;
            }
        }
        // The area inside the outline, walked once around: top, right, bottom and left side of the grid.
        std::vector<Vertex> around;
        for (std::size_t c = 0; c < 48; ++c) {
            around.push_back((*strip)[2 * c + 1]);
        }
        for (std::size_t row = 1; row < 47; ++row) {
            const bool runsRight = row % 2 == 0;
            around.push_back((*strip)[row * 96 + (runsRight ? 95 : 0)]);
        }
        for (std::size_t c = 48; c-- > 0;) {
            around.push_back((*strip)[46 * 96 + 2 * c]);
        }
        for (std::size_t row = 46; row >= 1; --row) {
            const bool runsRight = row % 2 == 0;
            around.push_back((*strip)[row * 96 + (runsRight ? 1 : 94)]);
        }
        for (std::size_t i = 0; i < around.size(); ++i) {
            const Vertex& p = around[i];
            const Vertex& q = around[(i + 1) % around.size()];
            outline += (static_cast<double>(p.x) * static_cast<double>(q.y) -
                        static_cast<double>(q.x) * static_cast<double>(p.y)) /
                       2.0;
        }
        // What the turns between the rows add along an inward edge is a sliver of the grid's coarseness.
        EXPECT_NEAR(area / outline, 1.0, 2e-3);
    }
}

TEST(OverviewMarker, fitsTheDiscOfAHighPictureToo) {
    const auto strip = markerOf(TiltOrientation::wall, 30.0F, 20.0F, 20.0F, 1.0, 600, 800);
    const double tangent = std::tan(tests::toRadians(20.0));
    const double visible = 0.75; // the square output crops the view of the high input
    expectAtDirection((*strip)[1], TiltOrientation::wall,
                      tests::viewRay(30.0, 20.0, -0.75 * tangent, visible * tangent));
}

} // namespace
} // namespace tarvo::geometry
