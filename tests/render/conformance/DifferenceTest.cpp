// That the comparison finds what it is there to find.

#include "diagnostics/Log.h"
#include "render/reference/ReferenceDevice.h"
#include "tests/render/conformance/Comparison.h"

#include <cmath>
#include <numbers>

namespace tarvo::render::conformance {
namespace {

Picture rampWithSquare() {
    Picture picture(40, 30, opaqueBlack);
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            const auto level = static_cast<std::uint8_t>(10 + x);
            picture.at(x, y) = {level, level, level, 255};
        }
    }
    for (int y = 10; y < 20; ++y) {
        for (int x = 10; x < 20; ++x) {
            picture.at(x, y) = {200, 0, 0, 255};
        }
    }
    return picture;
}

TEST(Difference, masksBothSidesOfHardEdgesOnly) {
    const Picture picture = rampWithSquare();
    const std::vector<bool> mask = edgeMask(picture);
    int count = 0;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            const bool isNear = x >= 9 && x <= 20 && y >= 9 && y <= 20;
            const bool isDeep = x >= 11 && x <= 18 && y >= 11 && y <= 18;
            EXPECT_EQ(mask[static_cast<std::size_t>(y * 40 + x)], isNear && !isDeep) << x << ' ' << y;
            count += isNear && !isDeep ? 1 : 0;
        }
    }
    EXPECT_EQ(count, 12 * 12 - 8 * 8);
    EXPECT_DOUBLE_EQ(differenceOf(picture, picture, mask).maskedShare, 80.0 / 1200.0);
}

TEST(Difference, masksTheBorderOfTheClearColour) {
    Picture picture(10, 4, opaqueBlack);
    for (int y = 0; y < 4; ++y) {
        for (int x = 5; x < 10; ++x) {
            picture.at(x, y) = {4, 4, 4, 255};
        }
    }
    const std::vector<bool> mask = edgeMask(picture);
    for (std::size_t i = 0; i < mask.size(); ++i) {
        EXPECT_EQ(mask[i], i % 10 == 4 || i % 10 == 5) << i;
    }
}

TEST(Difference, tellsWorstAndMeanOfWhatIsNotMasked) {
    const Picture picture = rampWithSquare();
    Picture other = picture;
    other.at(30, 25).green = static_cast<std::uint8_t>(other.at(30, 25).green + 6);
    other.at(10, 10).blue = 0;
    const Difference difference = differenceOf(picture, other, edgeMask(picture));
    EXPECT_EQ(difference.worst, 6);
    EXPECT_EQ(difference.x, 30);
    EXPECT_EQ(difference.y, 25);
    EXPECT_EQ(difference.worstMasked, 200);
    EXPECT_DOUBLE_EQ(difference.mean, 6.0 / (3.0 * 1120.0));
    other.at(3, 3).alpha = 254;
    EXPECT_EQ(differenceOf(rampWithSquare(), other).worst, 200);
}

// A view that is aimed half an output pixel aside, the reference against itself, must not pass for the same.
TEST(Difference, findsAnAimHalfAPixelAside) {
    CRig rig(
        std::make_unique<reference::CReferenceDevice>(diagnostics::ObjectLog{diagnostics::moduleLog, 1}));
    for (const auto mounting : {geometry::TiltOrientation::wall, geometry::TiltOrientation::ceiling,
                                geometry::TiltOrientation::desk}) {
        FrameCase frameCase;
        frameCase.mounting = mounting;
        frameCase.isAimedWide = true;
        SCOPED_TRACE(frameCase.name());
        const InputFrame frame = inputFrame(FrameKind::rgb32, roomPicture(mounting, 120, 90), false);
        const Rendered straight = rig.render(frameCase, frame);
        // In the middle of the view 60 pixels are 4/3 of the tangent of its field of view.
        const double fieldOfView = static_cast<double>(frameCase.view().parameters().fieldOfView());
        const double radiansPerDegree = std::numbers::pi / 180.0;
        frameCase.panAsideDegrees =
            0.5 * 4.0 / 3.0 * std::tan(fieldOfView * radiansPerDegree) / 60.0 / radiansPerDegree;
        const Rendered aside = rig.render(frameCase, frame);
        ASSERT_EQ(straight.result, S_OK);
        ASSERT_EQ(aside.result, S_OK);
        const Difference difference =
            differenceOf(straight.picture, aside.picture, edgeMask(straight.picture));
        EXPECT_GT(difference.worst, 2 * dewarpWorst);
        EXPECT_GT(difference.mean, 2 * dewarpMean);
    }
}

} // namespace
} // namespace tarvo::render::conformance
