#include "apps/tarvo-dewarp/video/Progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tarvo::apps::video {
namespace {

TEST(Progress, tellsShareSpeedAndTimeLeft) {
    // 60 of 150 frames in 1.5 s: 40 a second, 90 left take 2.25 s, which count as 3.
    EXPECT_EQ(progressText({60, 150, 1.5}),
              "[########------------]  40%  60/150 frames  40.0 fps  00:03 left");
    EXPECT_EQ(progressText({150, 150, 10.0}),
              "[####################] 100%  150/150 frames  15.0 fps  00:00 left");
    // 1 frame in 4 s, 1800 left: 7200 s.
    EXPECT_EQ(progressText({1, 1801, 4.0}),
              "[--------------------]   0%  1/1801 frames  0.2 fps  2:00:00 left");
}

TEST(Progress, doesWithoutATotal) {
    EXPECT_EQ(progressText({60, {}, 2.0}), "60 frames  30.0 fps");
    // The file told a wrong one.
    EXPECT_EQ(progressText({60, 59, 2.0}), "60 frames  30.0 fps");
    EXPECT_EQ(progressText({0, 0, 0.0}), "0 frames  0.0 fps");
}

TEST(Progress, isGoneInTheEnd) {
    std::ostringstream stream;
    std::size_t shown = 0;
    {
        CProgress progress(&stream, 10);
        progress.frameDone();
        shown = stream.str().size();
        EXPECT_THAT(stream.str(), testing::StartsWith("\r[##------------------]  10%  1/10 frames"));
    }
    // As many blanks as there were characters after the return.
    std::string cleared = "\r";
    cleared.resize(shown, ' ');
    EXPECT_EQ(stream.str().substr(shown), cleared + "\r");
}

TEST(Progress, isNotShownWithoutAStream) {
    CProgress progress(nullptr, 10);
    progress.frameDone(); // would crash
    std::ostringstream stream;
    { const CProgress unused(&stream, 10); }
    EXPECT_EQ(stream.str(), "");
}

} // namespace
} // namespace tarvo::apps::video
