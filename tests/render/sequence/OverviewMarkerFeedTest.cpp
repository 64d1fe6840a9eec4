#include "render/OverviewMarkerFeed.h"

#include "tests/render/sequence/SequenceTest.h"

#include <limits>

namespace tarvo::render {
namespace {

using geometry::OptionFlag;
using geometry::TiltOrientation;
using geometry::ViewType;
using tests::Verb;

class OverviewMarkerFeedTest : public CSequenceTest {
protected:
    OverviewMarkerFeedTest() {
        view.setTiltOrientation(TiltOrientation::ceiling);
        view.setViewType(ViewType::singleOverview);
    }
    /// How often a frame brings the device a marker.
    int markersOfFrame() {
        frame();
        return device.count(Verb::overviewMarker);
    }
    /// The middle of what the device's marker shows, in picture coordinates.
    double markerCenterX() const {
        double left = 1.0;
        double right = -1.0;
        for (const geometry::Vertex& vertex : device.markerVertices.value()) {
            left = std::min<double>(left, vertex.x);
            right = std::max<double>(right, vertex.x);
        }
        return (left + right) / 2.0;
    }
    void moveLeft(bool isLeft) {
        view.setOptions(isLeft ? static_cast<std::int32_t>(OptionFlag::overviewMapPlacementLeft) : 0);
    }
    bool isMarkerDrawn() const {
        return std::ranges::count(device.calls, ShaderProgram::overviewRegion, [](const auto& call) {
                   return call.program.value_or(ShaderProgram::vertex);
               }) == 1;
    }
};

TEST_F(OverviewMarkerFeedTest, buildsTheMarkerWhenTheDeviceIsMade) {
    ASSERT_EQ(init(), S_OK);
    EXPECT_EQ(device.count(Verb::overviewMarker), 1);
    EXPECT_EQ(markersOfFrame(), 0);
    EXPECT_TRUE(isMarkerDrawn());
}

TEST_F(OverviewMarkerFeedTest, buildsNoneForOtherViews) {
    for (const ViewType other : {ViewType::single, ViewType::quad, ViewType::panoramaSingle,
                                 ViewType::panoramaDouble, ViewType::custom}) {
        view.setViewType(other);
        device.calls.clear();
        ASSERT_EQ(init(), S_OK);
        EXPECT_EQ(device.count(Verb::overviewMarker), 0);
        EXPECT_EQ(markersOfFrame(), 0);
    }
}

TEST_F(OverviewMarkerFeedTest, buildsItWhenTheViewBecomesAnOverview) {
    view.setViewType(ViewType::single);
    ASSERT_EQ(init(), S_OK);
    view.setViewType(ViewType::singleOverview);
    EXPECT_EQ(markersOfFrame(), 1);
    EXPECT_TRUE(isMarkerDrawn());
    EXPECT_EQ(markersOfFrame(), 0);
}

TEST_F(OverviewMarkerFeedTest, buildsItAnewWhenTheViewMoves) {
    ASSERT_EQ(init(), S_OK);
    view.setPan(30.0);
    EXPECT_EQ(markersOfFrame(), 1);
    EXPECT_EQ(markersOfFrame(), 0);
    view.setFieldOfView(20.0);
    EXPECT_EQ(markersOfFrame(), 1);
    view.setEffectLevel(0.5);
    EXPECT_EQ(markersOfFrame(), 1);
    view.setPan(30.0);
    EXPECT_EQ(markersOfFrame(), 0);
}

TEST_F(OverviewMarkerFeedTest, goesWithItsDisc) {
    // Looking straight down from a ceiling the view is in the middle of the circle, and so is its marker in
    // the disc: half-size 0.5 / (4 / 3) = 0.375, so from the centre of the picture 0.625 to the right.
    view.setPtzPosition(0.0, -90.0, 30.0, false);
    ASSERT_EQ(init(), S_OK);
    EXPECT_NEAR(markerCenterX(), 0.625, 1e-3);
    moveLeft(true);
    EXPECT_EQ(markersOfFrame(), 0);
    EXPECT_NEAR(markerCenterX(), 0.625, 1e-3);
    ASSERT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(markersOfFrame(), 1);
    EXPECT_NEAR(markerCenterX(), -0.625, 1e-3);
    // The disc's middle, as the device has it.
    EXPECT_FLOAT_EQ(device.viewVertices.value()[48].x, -0.625F);

    // A disc that could not be moved keeps its marker.
    device.fail(Verb::geometry, E_FAIL);
    moveLeft(false);
    EXPECT_EQ(renderer.updateGeometry(view), E_FAIL);
    EXPECT_EQ(markersOfFrame(), 0);
    EXPECT_NEAR(markerCenterX(), -0.625, 1e-3);
}

TEST_F(OverviewMarkerFeedTest, anExcludeAreaOrAQuadsMountingIsNoReason) {
    ASSERT_EQ(init(), S_OK);
    view.setExcludeArea({0.1, 0.1, 0.5, 0.5});
    ASSERT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(markersOfFrame(), 0);
}

TEST_F(OverviewMarkerFeedTest, buildsItAnewForANewDevice) {
    ASSERT_EQ(init(), S_OK);
    renderer.close();
    device.calls.clear();
    ASSERT_EQ(init(), S_OK);
    EXPECT_EQ(device.count(Verb::overviewMarker), 1);
    EXPECT_TRUE(device.markerVertices);
}

TEST_F(OverviewMarkerFeedTest, aFailureLeavesNoneAndTheNextFrameTriesAgain) {
    ASSERT_EQ(init(), S_OK);
    device.fail(Verb::overviewMarker, E_OUTOFMEMORY);
    view.setPan(30.0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(markersOfFrame(), 1);
        EXPECT_FALSE(isMarkerDrawn());
        EXPECT_EQ(device.calls.back().verb, Verb::flush);
    }
    device.answer = nullptr;
    EXPECT_EQ(markersOfFrame(), 1);
    EXPECT_TRUE(isMarkerDrawn());
    EXPECT_EQ(markersOfFrame(), 0);
}

TEST_F(OverviewMarkerFeedTest, constantsThatAreNoNumbersAreNotSentAgainAndAgain) {
    ASSERT_EQ(device.open({}, {}), S_OK);
    COverviewMarkerFeed feed;
    feed.placeDisc({});
    DewarpConstants constants = view.parameters().constants();
    constants.lensProfile[0] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(feed.isThere());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(feed.update(device, constants), S_OK);
        EXPECT_TRUE(feed.isThere());
    }
    EXPECT_EQ(device.count(Verb::overviewMarker), 1);
    feed.forget();
    EXPECT_FALSE(feed.isThere());
}

} // namespace
} // namespace tarvo::render
