#include "apps/tarvo-dewarp/PictureFile.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::apps {
namespace {

using testing::HasSubstr;

class StillCommand : public CAppTest {
protected:
    Picture still(const std::string& input, std::vector<std::string> options) const {
        SCOPED_TRACE(testing::PrintToString(options));
        options.insert(options.begin(), {"still", input, fileText("out.png")});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return readPicture(file("out.png"));
    }

    void expectSize(const std::string& input, const std::vector<std::string>& options, int width,
                    int height) const {
        const Picture picture = still(input, options);
        EXPECT_EQ(picture.width, width) << testing::PrintToString(options);
        EXPECT_EQ(picture.height, height) << testing::PrintToString(options);
    }

    Picture scene(const std::string& name, std::vector<std::string> options) const {
        options.insert(options.begin(), {"scene", fileText(name)});
        EXPECT_EQ(run(options).status, 0);
        return readPicture(file(name));
    }
};

TEST_F(StillCommand, hasTheSizeThatTheOptionsPromise) {
    const std::string input = pictureFile("in.png", 64, 48);
    expectSize(input, {}, 1024, 768);
    expectSize(input, {"--view-type", "panoramaSingle"}, 1024, 384); // 1024 / (180 / 67.5)
    expectSize(input, {"--output-format-16-9"}, 64, 36);
    expectSize(input, {"--output-format-16-9", "--output-width", "20"}, 64, 36);
    expectSize(input, {"--output-width", "40"}, 40, 30);
    expectSize(input, {"--output-height", "60"}, 80, 60);
    expectSize(input, {"--output-width", "31", "--output-height", "17"}, 32, 18);
    expectSize(input, {"--view-type", "quad", "--output-width", "40"}, 40, 30);
    expectSize(input, {"--view-type", "singleOverview", "--output-width", "40"}, 40, 30);
    // 48 / (90 / 67.5) and, the strip of twice the width being cut in two, 48 / (360 / 67.5 / 2)
    expectSize(input,
               {"--view-type", "panoramaSingle", "--panorama-field-of-view", "90", "--output-width", "48"},
               48, 36);
    expectSize(input,
               {"--view-type", "panoramaDouble", "--panorama-field-of-view", "360", "--output-width", "48"},
               48, 18);
}

TEST_F(StillCommand, takesTinyAndOddPictures) {
    const std::vector<std::pair<int, int>> sizes{{1, 1}, {1, 10000}, {10000, 1}, {3, 5}, {2, 2}};
    for (const auto& [width, height] : sizes) {
        const std::string input = pictureFile("in.png", width, height);
        for (const std::string type :
             {"single", "quad", "panoramaSingle", "panoramaDouble", "singleOverview"}) {
            expectSize(input, {"--view-type", type, "--output-width", "16", "--output-height", "12"}, 16, 12);
            expectSize(input, {"--view-type", type, "--output-width", "1", "--output-height", "1"}, 2, 2);
        }
        expectSize(input, {"--bypass", "--output-width", "16", "--output-height", "12"}, 16, 12);
    }
}

TEST_F(StillCommand, refusesAnOutputWithoutPixelsOrTooLarge) {
    const auto expectRefusal = [&](const std::string& input, std::vector<std::string> options,
                                   const std::string& message) {
        SCOPED_TRACE(message);
        options.insert(options.begin(), {"still", input, fileText("refused.png")});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr(message));
        EXPECT_THAT(outcome.err, HasSubstr("each side must be 1 to 16384"));
        EXPECT_FALSE(std::filesystem::exists(file("refused.png")));
    };
    const std::string tall = pictureFile("tall.png", 1, 10000);
    const std::string flat = pictureFile("flat.png", 10000, 1);
    const std::string usual = pictureFile("usual.png", 8, 6);
    expectRefusal(tall, {}, "would have 1024x10240000;");
    expectRefusal(tall, {"--output-height", "100"}, "would have a side of 0;");
    expectRefusal(flat, {}, "would have a side of 0;");
    expectRefusal(tall, {"--output-format-16-9"}, "leave out --output-format-16-9");
    expectRefusal(usual, {"--view-type", "panoramaSingle", "--panorama-field-of-view", "1"},
                  "would have 1024x69120;");
    expectRefusal(usual,
                  {"--view-type", "panoramaSingle", "--output-width", "2", "--panorama-field-of-view", "360"},
                  "would have a side of 0;");
}

TEST_F(StillCommand, showsWhatAPerspectiveCameraSees) {
    struct Look {
        std::string orientation;
        std::string pan;
        std::string tilt;
        std::string panBeside;
    };
    for (const Look& look : {Look{"wall", "20", "-5", "23"}, Look{"ceiling", "45", "-35", "48"},
                             Look{"desk", "-120", "30", "-117"}}) {
        SCOPED_TRACE(look.orientation);
        scene("fisheye.png", {"--size", "400x300", "--tilt-orientation", look.orientation});
        const Picture view =
            still(fileText("fisheye.png"),
                  {"--tilt-orientation", look.orientation, "--pan", look.pan, "--tilt", look.tilt,
                   "--field-of-view", "25", "--output-width", "80", "--output-height", "60"});
        const auto truth = [&](const std::string& pan, const std::string& tilt) {
            return scene("truth.png", {"--size", "80x60", "--tilt-orientation", look.orientation,
                                       "--perspective", pan + "," + tilt + ",25"});
        };
        // The view is a little softer than the truth, but a truth 3 degrees beside it is far off.
        const double difference = meanDifference(view, truth(look.pan, look.tilt));
        EXPECT_LT(3.0 * difference, meanDifference(view, truth(look.panBeside, look.tilt)));
    }
}

TEST_F(StillCommand, mayOnlyScale) {
    // 8 x 4 pixels in a square: bars above and below.
    writePng(file("white.png"), Picture(8, 4, {255, 255, 255, 255}));
    const Picture picture =
        still(fileText("white.png"), {"--bypass", "--output-width", "16", "--output-height", "16"});
    EXPECT_EQ(picture.at(8, 0), opaqueBlack);
    EXPECT_EQ(picture.at(8, 15), opaqueBlack);
    EXPECT_EQ(picture.at(0, 8), (Bgra{255, 255, 255, 255}));
    EXPECT_EQ(picture.at(15, 8), (Bgra{255, 255, 255, 255}));
}

TEST_F(StillCommand, passesEveryOptionOn) {
    scene("in.png", {"--size", "160x120"});
    const std::string input = fileText("in.png");
    const std::vector<std::string> size{"--output-width", "80", "--output-height", "60"};
    const auto with = [&](std::vector<std::string> options) {
        options.insert(options.end(), size.begin(), size.end());
        return still(input, options);
    };
    const Picture usual = with({});
    EXPECT_EQ(with({"--view-type", "single", "--tilt-orientation", "wall", "--pan", "0", "--tilt", "0",
                    "--effect-level", "1", "--lens-profile",
                    "-0.022618673741817474,0.014994083903729916,0.3681749999523163"})
                  .pixels,
              usual.pixels);
    const std::vector<std::vector<std::string>> changes{
        {"--pan", "20"},
        {"--tilt", "20"},
        {"--field-of-view", "15"},
        {"--effect-level", "0.3"},
        {"--lens-profile", "0,0,0.3"},
        {"--exclude-rect", "0.4,0.4,0.6,0.6"},
        {"--tilt-orientation", "ceiling"},
        {"--view-type", "singleOverview"},
        {"--bypass"},
    };
    for (const std::vector<std::string>& change : changes) {
        EXPECT_GT(meanDifference(with(change), usual), 1.0) << testing::PrintToString(change);
    }
    const Picture panorama = with({"--view-type", "panoramaSingle"});
    EXPECT_GT(
        meanDifference(with({"--view-type", "panoramaSingle", "--panorama-field-of-view", "120"}), panorama),
        1.0);
    EXPECT_GT(
        meanDifference(with({"--view-type", "panoramaSingle", "--panorama-pan-offset", "-60"}), panorama),
        1.0);
    const Picture overview = with({"--view-type", "singleOverview"});
    EXPECT_GT(
        meanDifference(with({"--view-type", "singleOverview", "--overview-map-placement-left"}), overview),
        1.0);
}

TEST_F(StillCommand, takesPgmAndPpm) {
    const Picture colourful = colourfulPicture(40, 30);
    std::string colours = "P6 40 30 255\n";
    std::string greys = "P5 40 30 255\n";
    Picture grey(40, 30);
    for (std::size_t i = 0; i < colourful.pixels.size(); ++i) {
        const Bgra& pixel = colourful.pixels[i];
        for (const std::uint8_t sample : {pixel.red, pixel.green, pixel.blue}) {
            colours += static_cast<char>(sample);
        }
        greys += static_cast<char>(pixel.green);
        grey.pixels[i] = {pixel.green, pixel.green, pixel.green, 255};
    }
    writeBytes(file("in.ppm"), colours);
    writeBytes(file("in.pgm"), greys);
    writePng(file("colours.png"), colourful);
    writePng(file("greys.png"), grey);
    const std::vector<std::string> size{"--output-width", "20"};
    EXPECT_EQ(still(fileText("in.ppm"), size).pixels, still(fileText("colours.png"), size).pixels);
    EXPECT_EQ(still(fileText("in.pgm"), size).pixels, still(fileText("greys.png"), size).pixels);
    EXPECT_NE(still(fileText("in.pgm"), size).pixels, still(fileText("in.ppm"), size).pixels);
}

TEST_F(StillCommand, mayReplaceItsInput) {
    const std::string input = pictureFile("out.png", 40, 30);
    expectSize(input, {"--output-width", "20"}, 20, 16); // 15 made even
    EXPECT_THAT(names(), testing::ElementsAre("out.png"));
}

} // namespace
} // namespace tarvo::apps
