#include "apps/tarvo-render/TarvoRender.h"

#include "apps/tarvo-dewarp/PictureFile.h"
#include "apps/tarvo-render/RenderDevices.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tarvo::apps {
namespace {

class TarvoRender : public CAppTest {
protected:
    Outcome render(const std::vector<std::string>& arguments) const {
        std::ostringstream out;
        std::ostringstream err;
        const int status = runTarvoRender(arguments, out, err);
        return {status, out.str(), err.str()};
    }
};

TEST_F(TarvoRender, everyDeviceShowsTheSameView) {
    ASSERT_EQ(run({"scene", fileText("scene.png"), "--size", "160x120"}).status, 0);
    std::vector<Picture> pictures;
    for (const std::string device : {"software", "reference"}) {
        const Outcome outcome =
            render({"still", fileText("scene.png"), fileText("out.png"), "--device", device, "--pan", "20",
                    "--output-width", "64", "--output-height", "48"});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        pictures.push_back(readPicture(file("out.png")));
    }
    EXPECT_LE(meanDifference(pictures[0], pictures[1]), 0.1);
}

TEST_F(TarvoRender, refusesADeviceThatThereIsNot) {
    const std::string input = pictureFile("in.png", 8, 6);
    const Outcome outcome = render({"still", input, fileText("out.png"), "--device", "vulkan"});
    EXPECT_EQ(outcome.status, exitUsage);
    EXPECT_THAT(outcome.err, testing::HasSubstr(deviceNames()));
    EXPECT_FALSE(std::filesystem::exists(file("out.png")));
}

} // namespace
} // namespace tarvo::apps
