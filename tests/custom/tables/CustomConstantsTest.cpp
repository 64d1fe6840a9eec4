#include "custom/tables/CustomConstants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace tarvo::custom {
namespace {

using testing::ElementsAre;

constexpr BoundedRectangle wholePicture;
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(CustomConstants, ofDigitalZoom) {
    // Three tables of 8 x 4, shown as a square: the tables are twice as wide as high, so bars of half the
    // picture's height in all are added, a quarter above and a quarter below.
    const auto record = customTransformConstants({3, 8, 4}, {0.25, 0.125, 0.75, 0.5}, 1.0F);
    EXPECT_THAT(record.lookupRectangle, ElementsAre(0.0625F, 0.125F, 0.875F, 0.75F));
    EXPECT_THAT(record.viewRect, ElementsAre(0.25F, 0.125F, 0.5F, 0.375F));
    EXPECT_THAT(record.projectionRect, ElementsAre(0.0F, -0.5F, 1.0F, 2.0F));
    EXPECT_EQ(record.numberOfTables, 3U);
    EXPECT_EQ(record.tableHeight, 1.0F / 3.0F);
    EXPECT_THAT(record.padding, ElementsAre(0.0F, 0.0F));
}

TEST(CustomConstants, keepTheShapeOfTheTables) {
    // Wider output: bars left and right, the picture in the middle half.
    EXPECT_THAT(customTransformConstants({1, 8, 4}, wholePicture, 4.0F).projectionRect,
                ElementsAre(-0.5F, 0.0F, 2.0F, 1.0F));
    EXPECT_THAT(customTransformConstants({1, 8, 4}, wholePicture, 2.0F).projectionRect,
                ElementsAre(0.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_THAT(customTransformConstants({1, 8, 4}, wholePicture, 0.5F).projectionRect,
                ElementsAre(0.0F, -1.5F, 1.0F, 4.0F));
}

TEST(CustomConstants, ofVirtualPtz) {
    VirtualPtzSettings values;
    values.panoramaHorizontalFieldOfView = 360.0;
    values.panoramaVerticalFieldOfView = 90.0;
    values.cameraPitch = -30.0;
    values.cameraRoll = 7.25;
    values.effectLevel = 0.5;
    values.pan = -170.0;
    values.tilt = 12.5;
    values.fieldOfView = 60.0;
    const auto record = virtualPtzConstants({2, 4, 2}, {0.0, 0.5, 1.0, 1.0}, 1.5F, values);
    // Degrees become radians in double precision, with pi as single precision has it.
    const auto radians = [](double degrees) {
        return static_cast<float>(degrees * 3.1415927410125732 / 180.0);
    };
    EXPECT_THAT(record.lookupRectangle, ElementsAre(0.125F, 0.25F, 0.75F, 0.5F));
    EXPECT_THAT(record.viewRect, ElementsAre(0.0F, 0.5F, 1.0F, 0.5F));
    EXPECT_THAT(record.projectionRect,
                ElementsAre(0.0F, testing::FloatEq(-1.0F / 6.0F), 1.0F, testing::FloatEq(4.0F / 3.0F)));
    EXPECT_EQ(record.numberOfTables, 2U);
    EXPECT_EQ(record.tableHeight, 0.5F);
    EXPECT_THAT(record.inputFov, ElementsAre(radians(360.0), radians(90.0)));
    EXPECT_EQ(record.inputFov[0], 2.0F * 3.14159274101257324F);
    EXPECT_EQ(record.outputAR, 1.5F);
    EXPECT_THAT(record.panTiltFov, ElementsAre(radians(-170.0), radians(12.5), radians(60.0)));
    EXPECT_THAT(record.pitchRoll, ElementsAre(radians(-30.0), radians(7.25)));
    EXPECT_EQ(record.effectLevel, 0.5F);
    EXPECT_EQ(record.padding, 0.0F);
}

TEST(CustomConstants, ofBothBeginTheSame) {
    const BoundedRectangle view{0.1, 0.2, 0.3, 0.4};
    const auto zoom = customTransformConstants({9, 33, 21}, view, 1.77F);
    const auto ptz = virtualPtzConstants({9, 33, 21}, view, 1.77F, {});
    EXPECT_EQ(std::memcmp(&zoom, &ptz, 56), 0);
}

TEST(CustomConstants, takeAnyValue) {
    const double huge = std::numeric_limits<double>::max();
    const auto zoom = customTransformConstants({1, 2, 2}, {huge, -infinite, NAN, -huge}, 1.0F);
    constexpr float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(zoom.viewRect[0], largest);
    EXPECT_EQ(zoom.viewRect[1], -largest);
    EXPECT_TRUE(std::isnan(zoom.viewRect[2]));
    VirtualPtzSettings values;
    values.pan = -infinite;
    values.tilt = NAN;
    const auto ptz = virtualPtzConstants({1, 2, 2}, wholePicture, 1.0F, values);
    EXPECT_EQ(ptz.panTiltFov[0], -largest);
    EXPECT_TRUE(std::isnan(ptz.panTiltFov[1]));
}

TEST(CustomConstants, ofNoTablesHoldNothingThatIsNoNumber) {
    for (const TableDimensions dimensions : {TableDimensions{1, 0, 0}, {0, 4, 4}, {1, 4, 0}, {1, 0, 4}}) {
        const auto record = customTransformConstants(dimensions, wholePicture, 1.0F);
        EXPECT_THAT(record.lookupRectangle, ElementsAre(0.0F, 0.0F, 0.0F, 0.0F));
        EXPECT_EQ(record.numberOfTables, 0U);
        EXPECT_EQ(record.tableHeight, 0.0F);
    }
}

} // namespace
} // namespace tarvo::custom
