#include "tests/apps/video/VideoTest.h"

#include <gtest/gtest.h>

#include <string>

namespace tarvo::apps {
namespace {

class NoOtherFiles : public CVideoTest {};

TEST_F(NoOtherFiles, areNamed) {
    writeBytes(file("in.y4m"), noiseClip(16, 16, 1));
    writeBytes(file("in.mp4"), "something");
    writeBytes(file("444.y4m"), "YUV4MPEG2 W16 H16 C444\nFRAME\n" + std::string(768, 'x'));
    for (const char* const input : {"in.mp4", "444.y4m"}) {
        expectFailure(video(fileText(input), fileText("out.y4m")), 1,
                      std::string(input) +
                          ": this build of the program knows no other videos than YUV4MPEG2");
    }
    expectFailure(video(fileText("in.y4m"), fileText("out.mp4")), 1, "out.mp4: this build");
}

} // namespace
} // namespace tarvo::apps
