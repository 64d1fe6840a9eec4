#include "geometry/ViewLayout.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::geometry {
namespace {

constexpr float tolerance = 1e-6F;

ViewLayout layoutOf(double inputAspect, double outputAspect,
                    TiltOrientation orientation = TiltOrientation::ceiling) {
    ViewLayout layout;
    layout.inputAspect = inputAspect;
    layout.outputAspect = outputAspect;
    layout.orientation = orientation;
    layout.panorama = derivePanoramaRectangle(orientation, 180.0, -90.0, outputAspect);
    return layout;
}

struct Rectangle {
    float left;
    float top;
    float right;
    float bottom;
};

/// A quad's four vertices in the order left-lower, left-upper, right-lower, right-upper.
void expectQuad(const ViewVertices& vertices, int first, Rectangle place, float vTop = 0.0F,
                float vBottom = 1.0F) {
    SCOPED_TRACE(testing::Message() << "quad at " << first);
    const Vertex* v = vertices.data() + first;
    const float x[] = {place.left, place.left, place.right, place.right};
    const float y[] = {place.bottom, place.top, place.bottom, place.top};
    const float s[] = {0.0F, 0.0F, 1.0F, 1.0F};
    const float t[] = {vBottom, vTop, vBottom, vTop};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(v[i].x, x[i], tolerance) << i;
        EXPECT_NEAR(v[i].y, y[i], tolerance) << i;
        EXPECT_EQ(v[i].z, 0.0F);
        EXPECT_EQ(v[i].colour, 1.0F);
        EXPECT_NEAR(v[i].u, s[i], tolerance) << i;
        EXPECT_NEAR(v[i].v, t[i], tolerance) << i;
    }
}

TEST(ViewLayout, equalAspectsFillThePictureExactly) {
    const ViewVertices vertices = buildViewVertices(layoutOf(4.0 / 3.0, 4.0 / 3.0));
    expectQuad(vertices, quad::singleView, {-1, -1, 1, 1});
    EXPECT_EQ(vertices[quad::singleView].y, 1.0F);
    EXPECT_EQ(vertices[quad::singleView + 1].y, -1.0F);
}

TEST(ViewLayout, widerOutputCropsTheSingleViewAndANarrowerLeavesBars) {
    expectQuad(buildViewVertices(layoutOf(1.0, 1.5)), quad::singleView, {-1, -1.5F, 1, 1.5F});
    expectQuad(buildViewVertices(layoutOf(2.0, 1.0)), quad::singleView, {-1, -0.5F, 1, 0.5F});
}

TEST(ViewLayout, plainCopyIsLetterBoxed) {
    expectQuad(buildViewVertices(layoutOf(1.0, 1.6)), quad::customView, {-0.625F, -1, 0.625F, 1});
    expectQuad(buildViewVertices(layoutOf(2.0, 1.0)), quad::customView, {-1, -0.5F, 1, 0.5F});
    ViewLayout custom = layoutOf(1.0, 1.6);
    custom.viewType = ViewType::custom;
    expectQuad(buildViewVertices(custom), quad::customView, {-1, -1, 1, 1});
}

TEST(ViewLayout, cappedPanoramaFillsTheMiddleHalf) {
    // 180 degrees over 4:3 would be 135 high; capped to 67.5 it takes 4/3 · 67.5 / 180 = 0.5 of the height.
    const ViewVertices vertices = buildViewVertices(layoutOf(4.0 / 3.0, 4.0 / 3.0));
    expectQuad(vertices, quad::panoramaSingle, {-1, -0.5F, 1, 0.5F}, 0.0F, 0.5F);
    expectQuad(vertices, quad::panoramaDouble, {-1, -1, 1, 1}); // two of them fill the picture
}

TEST(ViewLayout, wallPanoramaIsOneStripWithItsOwnCap) {
    // 4/3 · 100 / 180 = 20/27; stacked 40/27, so the double panorama is narrowed to 27/40.
    const ViewVertices vertices = buildViewVertices(layoutOf(4.0 / 3.0, 4.0 / 3.0, TiltOrientation::wall));
    expectQuad(vertices, quad::panoramaSingleWall, {-1, -20.0F / 27.0F, 1, 20.0F / 27.0F});
    expectQuad(vertices, quad::panoramaDoubleWall, {-0.675F, -1, 0.675F, 0});
}

TEST(ViewLayout, flatDoublePanoramaKeepsTheWidth) {
    ViewLayout layout = layoutOf(1.0, 1.0);
    layout.panorama = {300.0, 60.0, 0.0, 0.0}; // one strip takes 0.2 of the height, two 0.4
    expectQuad(buildViewVertices(layout), quad::panoramaDouble, {-1, -0.4F, 1, 0.4F});
}

TEST(ViewLayout, quadrantsKeepSquarePixels) {
    const ViewVertices vertices = buildViewVertices(layoutOf(4.0 / 3.0, 16.0 / 9.0));
    // Ai / Ao = 0.75: v runs over the middle three quarters
    expectQuad(vertices, 24, {-1, -1, 0, 0}, 0.125F, 0.875F);
    expectQuad(vertices, 28, {0, -1, 1, 0}, 0.125F, 0.875F);
    expectQuad(vertices, 32, {-1, 0, 0, 1}, 0.125F, 0.875F);
    expectQuad(vertices, 36, {0, 0, 1, 1}, 0.125F, 0.875F);
}

TEST(ViewLayout, wallHasTwoHighQuadrants) {
    const ViewVertices vertices = buildViewVertices(layoutOf(4.0 / 3.0, 16.0 / 9.0, TiltOrientation::wall));
    expectQuad(vertices, 24, {-1, -1, 0, 1}, -0.25F, 1.25F);
    expectQuad(vertices, 28, {0, -1, 1, 1}, -0.25F, 1.25F);
    EXPECT_EQ(quadrantCount(TiltOrientation::wall), 2);
    EXPECT_EQ(quadrantCount(TiltOrientation::ceiling), 4);
    EXPECT_EQ(quadrantCount(TiltOrientation::desk), 4);
}

TEST(ViewLayout, excludeAreaLiesWithinTheSingleView) {
    ViewLayout layout = layoutOf(2.0, 1.0); // the single view takes half the height
    layout.excludeArea = {0.25, 0.5, 0.75, 1.0};
    expectQuad(buildViewVertices(layout), quad::excludeArea, {-0.5F, 0.0F, 0.5F, 0.5F});
    expectQuad(buildViewVertices(layout), quad::fullTarget, {-1, -1, 1, 1});
}

TEST(ViewLayout, overviewDiscSitsInABottomCorner) {
    // Ao = 2: half as high as the picture and a quarter of its width.
    const OverviewPlacement right = overviewPlacement(2.0, false);
    EXPECT_DOUBLE_EQ(right.halfWidth, 0.25);
    EXPECT_DOUBLE_EQ(right.halfHeight, 0.5);
    EXPECT_DOUBLE_EQ(right.centerX, 0.75);
    EXPECT_DOUBLE_EQ(right.centerY, 0.5);
    const OverviewPlacement left = overviewPlacement(0.5, true);
    EXPECT_DOUBLE_EQ(left.halfWidth, 0.5);
    EXPECT_DOUBLE_EQ(left.halfHeight, 0.25);
    EXPECT_DOUBLE_EQ(left.centerX, -0.5);
    EXPECT_DOUBLE_EQ(left.centerY, 0.75);
}

TEST(ViewLayout, overviewDiscShowsTheWholeCircle) {
    ViewLayout layout = layoutOf(4.0 / 3.0, 2.0);
    layout.isOverviewLeft = true;
    const ViewVertices vertices = buildViewVertices(layout);
    const Vertex& centre = vertices[48];
    EXPECT_EQ(centre.x, -0.75F);
    EXPECT_EQ(centre.y, 0.5F);
    EXPECT_EQ(centre.u, 0.5F);
    EXPECT_EQ(centre.v, 0.5F);
    // k = 16 is a quarter turn: straight down, at the picture's bottom edge and at the lower edge of the
    // input.
    EXPECT_NEAR(vertices[48 + 16].x, -0.75F, tolerance);
    EXPECT_NEAR(vertices[48 + 16].y, 1.0F, tolerance);
    EXPECT_NEAR(vertices[48 + 16].u, 0.5F, tolerance);
    EXPECT_NEAR(vertices[48 + 16].v, 1.0F, tolerance);
    // k = 64 is the full turn: right of the centre, half an input height away: 0.5 / (4/3) of the width.
    EXPECT_NEAR(vertices[48 + 64].x, -0.5F, tolerance);
    EXPECT_NEAR(vertices[48 + 64].y, 0.5F, tolerance);
    EXPECT_NEAR(vertices[48 + 64].u, 0.875F, tolerance);
    EXPECT_NEAR(vertices[48 + 64].v, 0.5F, tolerance);
    EXPECT_NEAR(vertices[48 + 65].x, vertices[48 + 1].x, tolerance);
    EXPECT_NEAR(vertices[48 + 65].y, vertices[48 + 1].y, tolerance);
}

TEST(ViewLayout, overviewTrianglesAreClockwiseAndMakeTheDisc) {
    const OverviewDiscIndices indices = overviewDiscIndices();
    ViewLayout layout = layoutOf(1.0, 1.0);
    const ViewVertices vertices = buildViewVertices(layout);
    double area = 0.0;
    for (std::size_t i = 0; i < indices.size(); i += 3) {
        ASSERT_LT(indices[i + 2], 66U);
        const Vertex& a = vertices[48 + indices[i]];
        const Vertex& b = vertices[48 + indices[i + 1]];
        const Vertex& c = vertices[48 + indices[i + 2]];
        const double twice = static_cast<double>((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x));
        EXPECT_GT(twice, 0.0) << i; // y points down: positive is clockwise
        area += twice / 2.0;
    }
    EXPECT_NEAR(area, 0.25 * 32.0 * std::sin(3.14159265358979 / 32.0), 1e-5); // 64-gon of radius 1/2
}

TEST(ViewLayout, panoramaQuadFollowsTheMounting) {
    EXPECT_EQ(panoramaQuad(ViewType::panoramaSingle, TiltOrientation::ceiling), 8);
    EXPECT_EQ(panoramaQuad(ViewType::panoramaSingle, TiltOrientation::desk), 8);
    EXPECT_EQ(panoramaQuad(ViewType::panoramaSingle, TiltOrientation::wall), 16);
    EXPECT_EQ(panoramaQuad(ViewType::panoramaDouble, TiltOrientation::ceiling), 12);
    EXPECT_EQ(panoramaQuad(ViewType::panoramaDouble, TiltOrientation::wall), 20);
}

} // namespace
} // namespace tarvo::geometry
