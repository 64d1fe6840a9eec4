#include "apps/tarvo-dewarp/PictureFile.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::apps {
namespace {

class SceneCommand : public CAppTest {
protected:
    Picture scene(std::vector<std::string> options) const {
        SCOPED_TRACE(testing::PrintToString(options));
        options.insert(options.begin(), {"scene", fileText("scene.png")});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return readPicture(file("scene.png"));
    }
};

TEST_F(SceneCommand, hasTheSizeAskedFor) {
    const std::vector<std::pair<int, int>> sizes{{1, 1}, {1, 300}, {64, 48}, {31, 17}};
    for (const auto& [width, height] : sizes) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        const Picture fisheye = scene({"--size", size});
        EXPECT_EQ(fisheye.width, width);
        EXPECT_EQ(fisheye.height, height);
        const Picture perspective = scene({"--size", size, "--perspective", "0,0,30"});
        EXPECT_EQ(perspective.width, width);
        EXPECT_EQ(perspective.height, height);
    }
    EXPECT_THAT(names(), testing::ElementsAre("scene.png"));
}

TEST_F(SceneCommand, isBlackBeyondTheLensAndNotWithinIt) {
    // The default lens shows 100 degrees within 0.57 heights of the centre: corners are black, centre is not.
    const Picture picture = scene({"--size", "64x48"});
    EXPECT_EQ(picture.at(0, 0), opaqueBlack);
    EXPECT_EQ(picture.at(63, 47), opaqueBlack);
    EXPECT_NE(picture.at(32, 24), opaqueBlack);
    // A lens r = t / 2 that ends at 45 degrees: pi / 8 = 0.39 heights, 18.8 of 48 pixels.
    const Picture narrow = scene({"--size", "64x48", "--lens-profile", "0,0,0.5", "--max-angle", "45"});
    EXPECT_EQ(narrow.at(32 + 20, 24), opaqueBlack);
    EXPECT_NE(narrow.at(32 + 17, 24), opaqueBlack);
}

TEST_F(SceneCommand, dependsOnMountingMomentAndDirection) {
    const std::vector<std::string> size{"--size", "64x48"};
    const auto with = [&](std::vector<std::string> options) {
        options.insert(options.end(), size.begin(), size.end());
        return scene(options);
    };
    const Picture wall = with({});
    EXPECT_EQ(with({"--tilt-orientation", "undef"}).pixels, wall.pixels);
    EXPECT_GT(meanDifference(with({"--tilt-orientation", "ceiling"}), wall), 5.0);
    EXPECT_GT(meanDifference(with({"--tilt-orientation", "desk"}), wall), 5.0);
    // The ball is somewhere else after 4 seconds and back after 12.
    EXPECT_GT(meanDifference(with({"--time", "4"}), wall), 0.0);
    EXPECT_NEAR(meanDifference(with({"--time", "12"}), wall), 0.0, 0.01);
    EXPECT_GT(meanDifference(with({"--perspective", "-30,10,25"}), with({"--perspective", "30,10,25"})), 5.0);
}

} // namespace
} // namespace tarvo::apps
