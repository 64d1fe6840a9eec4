#include "apps/tarvo-dewarp/program/TarvoDewarp.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

namespace tarvo::apps {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct Refused {
    std::string option;
    std::string value;
    std::string allowed;
};

const std::vector<Refused> refusedViewValues{
    {"--view-type", "sideways", "single, quad, panoramaSingle, panoramaDouble, singleOverview"},
    {"--view-type", "Single", "single, quad"},
    {"--view-type", "0", "single, quad"},
    {"--view-type", "", "single, quad"},
    {"--tilt-orientation", "floor", "undef, wall, ceiling, desk"},
    {"--pan", "left", "a finite number of degrees"},
    {"--pan", "12deg", "a finite number of degrees"},
    {"--pan", " 12", "a finite number of degrees"},
    {"--pan", "", "a finite number of degrees"},
    {"--pan", "nan", "a finite number of degrees"},
    {"--pan", "-inf", "a finite number of degrees"},
    {"--pan", "+-3", "a finite number of degrees"},
    {"--pan", "--tilt", "a finite number of degrees"},
    {"--tilt", "inf", "a finite number of degrees"},
    {"--tilt", "1e400", "a finite number of degrees"},
    {"--tilt", "1e39", "a finite number of degrees"},
    {"--field-of-view", "NaN", "a finite number of degrees"},
    {"--effect-level", "1.01", "a number from 0 to 1"},
    {"--effect-level", "-0.01", "a number from 0 to 1"},
    {"--effect-level", "nan", "a number from 0 to 1"},
    {"--lens-profile", "1,2", "three finite numbers"},
    {"--lens-profile", "1,2,3,4", "three finite numbers"},
    {"--lens-profile", "1,,3", "three finite numbers"},
    {"--lens-profile", "1;2;3", "three finite numbers"},
    {"--lens-profile", "0,0,inf", "three finite numbers"},
    {"--lens-profile", "-1e39,0,0", "three finite numbers"},
    {"--output-width", "0", "a whole number of pixels from 1 to 16384"},
    {"--output-width", "100000", "a whole number of pixels from 1 to 16384"},
    {"--output-width", "99999999999999999999", "a whole number of pixels from 1 to 16384"},
    {"--output-width", "-5", "a whole number of pixels from 1 to 16384"},
    {"--output-width", "640.5", "a whole number of pixels from 1 to 16384"},
    {"--output-height", "0", "a whole number of pixels from 1 to 16384"},
    {"--output-height", "16385", "a whole number of pixels from 1 to 16384"},
    {"--output-height", "tall", "a whole number of pixels from 1 to 16384"},
    {"--panorama-field-of-view", "0.5", "a number of degrees from 1 to 360"},
    {"--panorama-field-of-view", "361", "a number of degrees from 1 to 360"},
    {"--panorama-field-of-view", "nan", "a number of degrees from 1 to 360"},
    {"--panorama-pan-offset", "-nan", "a finite number of degrees"},
    {"--exclude-rect", "0,0,1", "LEFT,TOP,RIGHT,BOTTOM"},
    {"--exclude-rect", "0.6,0,0.5,1", "LEFT at most RIGHT"},
    {"--exclude-rect", "0,0.6,1,0.5", "TOP at most BOTTOM"},
    {"--exclude-rect", "-0.1,0,0.5,1", "each a number from 0 to 1"},
    {"--exclude-rect", "0,0,0.5,1.5", "each a number from 0 to 1"},
    {"--exclude-rect", "0,0,nan,1", "each a number from 0 to 1"},
};

const std::vector<Refused> refusedCustomValues{
    {"--custom-transform-control-type", "zoom", "one of digitalZoom, virtualPtzFromPanorama"},
    {"--custom-transform-control-type", "1", "one of digitalZoom, virtualPtzFromPanorama"},
    {"--view-rect", "0,0,1", "LEFT,TOP,RIGHT,BOTTOM"},
    {"--view-rect", "0,0,1,1,1", "LEFT,TOP,RIGHT,BOTTOM"},
    {"--view-rect", "0.5,0,0.5,1", "LEFT less than RIGHT"},
    {"--view-rect", "0,0.5,1,0.4", "TOP less than BOTTOM"},
    {"--view-rect", "-0.1,0,0.5,1", "each a number from 0 to 1"},
    {"--view-rect", "0,0,nan,1", "each a number from 0 to 1"},
    {"--virtual-ptz-pan", "nan", "a finite number of degrees"},
    {"--virtual-ptz-pan", "1e39", "a finite number of degrees"},
    {"--virtual-ptz-tilt", "up", "a finite number of degrees"},
    {"--virtual-ptz-field-of-view", "inf", "a finite number of degrees"},
    {"--virtual-ptz-panorama-horizontal-field-of-view", "0", "a number of degrees from 1 to 360"},
    {"--virtual-ptz-panorama-horizontal-field-of-view", "361", "a number of degrees from 1 to 360"},
    {"--virtual-ptz-panorama-vertical-field-of-view", "181", "a number of degrees from 1 to 180"},
    {"--virtual-ptz-panorama-vertical-field-of-view", "-90", "a number of degrees from 1 to 180"},
    {"--virtual-ptz-camera-pitch", "", "a finite number of degrees"},
    {"--virtual-ptz-camera-roll", "-inf", "a finite number of degrees"},
    {"--virtual-ptz-effect-level", "1.5", "a number from 0 to 1"},
    {"--virtual-ptz-effect-level", "nan", "a number from 0 to 1"},
};

void expectRefusal(std::vector<std::string> command, const Refused& refused, bool isTied) {
    if (isTied) {
        command.push_back(refused.option + "=" + refused.value);
    } else {
        command.insert(command.end(), {refused.option, refused.value});
    }
    SCOPED_TRACE(testing::PrintToString(command));
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err,
                AllOf(StartsWith("tarvo-dewarp: " + refused.option + ": \"" + refused.value + "\" "),
                      HasSubstr(refused.allowed)));
    EXPECT_THAT(outcome.out, IsEmpty());
}

// The input does not exist, which would be exit status 1: the arguments are judged before any file is
// touched.
TEST(Arguments, ofAViewAreRefusedWithNameValueAndWhatIsAllowed) {
    for (const Refused& refused : refusedViewValues) {
        expectRefusal({"still", "no-such-file.png", "out.png"}, refused, false);
        expectRefusal({"still", "no-such-file.png", "out.png"}, refused, true);
        expectRefusal({"map-point", "0.5", "0.5"}, refused, false);
    }
}

TEST(Arguments, ofACustomViewAreRefused) {
    const std::vector<std::string> still{
        "still",     "no-such-file.png", "out.png", "--custom-transform-data",
        "no.tables", "--view-type",      "custom"};
    for (const Refused& refused : refusedCustomValues) {
        expectRefusal(still, refused, false);
        expectRefusal(still, refused, true);
    }
    expectRefusal({"map-point", "0.5", "0.5"},
                  {"--view-type", "custom", "needs lookup tables, which this command cannot take"}, false);
    expectRefusal({"still", "no-such-file.png", "out.png"},
                  {"--view-type", "custom", "needs lookup tables; give --custom-transform-data FILE"}, false);
    const Outcome other =
        run({"still", "no-such-file.png", "out.png", "--custom-transform-data", "no.tables"});
    EXPECT_EQ(other.status, 2);
    EXPECT_THAT(other.err, HasSubstr("--custom-transform-data has a meaning only with --view-type custom"));
}

TEST(Arguments, ofMapPointAreRefused) {
    for (const std::string size :
         {"0x5", "5x0", "640", "640x", "x480", "640x480x2", "640X480", "16385x2", "-4x4"}) {
        expectRefusal({"map-point", "0.5", "0.5"},
                      {"--input-size", size, "WIDTHxHEIGHT, such as 640x480, each a whole number of pixels"},
                      false);
    }
    for (const std::string place : {"1.5", "-5", "nan", "inf", "middle", ""}) {
        const Outcome x = run({"map-point", place, "0.5"});
        EXPECT_EQ(x.status, 2);
        EXPECT_EQ(x.err, "tarvo-dewarp: X: \"" + place + "\" is not allowed; give a number from 0 to 1\n");
        const Outcome y = run({"map-point", "0.5", place});
        EXPECT_EQ(y.status, 2);
        EXPECT_EQ(y.err, "tarvo-dewarp: Y: \"" + place + "\" is not allowed; give a number from 0 to 1\n");
    }
}

TEST(Arguments, ofASceneAreRefused) {
    const std::vector<Refused> values{
        {"--size", "0x0", "each a whole number of pixels from 1 to 16384"},
        {"--size", "100000x100", "each a whole number of pixels from 1 to 16384"},
        {"--tilt-orientation", "roof", "undef, wall, ceiling, desk"},
        {"--time", "noon", "a number of seconds from -1000000 to 1000000"},
        {"--time", "inf", "a number of seconds from -1000000 to 1000000"},
        {"--time", "1e7", "a number of seconds from -1000000 to 1000000"},
        {"--max-angle", "0", "a number of degrees from 1 to 180"},
        {"--max-angle", "180.5", "a number of degrees from 1 to 180"},
        {"--lens-profile", "0,0", "three finite numbers"},
        {"--lens-profile", "0,0,0", "rises at the picture's centre"},
        {"--lens-profile", "0,0,-0.3", "rises at the picture's centre"},
        {"--perspective", "1,2", "FIELD-OF-VIEW from 1 to 89"},
        {"--perspective", "0,0,90", "FIELD-OF-VIEW from 1 to 89"},
        {"--perspective", "0,0,0.5", "FIELD-OF-VIEW from 1 to 89"},
        {"--perspective", "0,91,30", "TILT from -90 to 90"},
        {"--perspective", "-361,0,30", "PAN from -360 to 360"},
        {"--perspective", "nan,0,30", "PAN from -360 to 360"},
    };
    for (const Refused& refused : values) {
        expectRefusal({"scene", "no-such-directory/out.png"}, refused, false);
        expectRefusal({"scene", "no-such-directory/out.png"}, refused, true);
    }
}

TEST(Arguments, wantAnOutputThatEndsInPng) {
    for (const std::string name : {"out.jpg", "out", ".png", "png", "out.png.bak", ""}) {
        const std::string message =
            "OUTPUT: \"" + name + "\" is not allowed; give the name of a file that ends in .png";
        const Outcome still = run({"still", "no-such-file.png", name});
        EXPECT_EQ(still.status, 2);
        EXPECT_THAT(still.err, HasSubstr(message));
        const Outcome scene = run({"scene", name});
        EXPECT_EQ(scene.status, 2);
        EXPECT_THAT(scene.err, HasSubstr(message));
    }
}

TEST(Arguments, thatFitNoCommandAreUsageErrors) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const std::vector<Case> cases{
        {{},
         "no command was given; give still, video, map-point, scene, tables, tables-from-remap, "
         "tables-to-remap, info, "
         "register or unregister"},
        {{""}, "\"\" is no command"},
        {{"stil"},
         "\"stil\" is no command; give still, video, map-point, scene, tables, tables-from-remap, "
         "tables-to-remap, info, register or unregister"},
        {{"--frobnicate"}, "tarvo-dewarp --help"},
        {{"still"}, "INPUT is required; see tarvo-dewarp still --help"},
        {{"still", "in.png"}, "OUTPUT is required"},
        {{"still", "in.png", "out.png", "more.png"}, "not expected: more.png"},
        {{"still", "in.png", "out.png", "--frobnicate"}, "not expected: --frobnicate"},
        {{"still", "in.png", "out.png", "-x"}, "\"-x\" is no option"},
        {{"still", "in.png", "out.png", "--pan"}, "--pan: 1 required"},
        {{"still", "in.png", "out.png", "--pan", "1", "--pan", "2"}, "--pan: "},
        {{"still", "in.png", "out.png", "--bypass=perhaps"}, "--bypass"},
        {{"still", "in.png", "out.png", "--size", "4x3"}, "not expected: "},
        {{"map-point", "0.5"}, "Y is required; see tarvo-dewarp map-point --help"},
        {{"map-point", "-inf", "0.5"}, "\"-inf\""},
        {{"map-point", "0.5", "0.5", "--bypass"}, "not expected: --bypass"},
        {{"map-point", "0.5", "0.5", "--to-overview", "--ignore-overview-map"}, "excludes"},
        {{"scene"}, "OUTPUT is required"},
        {{"scene", "o.png", "--perspective", "0,0,30", "--max-angle", "90"}, "excludes --perspective"},
        {{"scene", "o.png", "--perspective", "0,0,30", "--lens-profile", "0,0,0.3"},
         "excludes --perspective"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.arguments));
        const Outcome outcome = run(test.arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, AllOf(StartsWith("tarvo-dewarp: "), HasSubstr(test.message)));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
}

TEST(Arguments, askForHelpAndVersion) {
    const Outcome all = run({"--help"});
    EXPECT_EQ(all.status, 0);
    EXPECT_THAT(all.out, AllOf(HasSubstr("still"), HasSubstr("map-point"), HasSubstr("scene")));
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, "tarvo-dewarp 1.0\n");
    for (const std::string command : {"still", "map-point", "scene"}) {
        for (const std::string option : {"--help", "-h"}) {
            const Outcome help = run({command, option});
            EXPECT_EQ(help.status, 0);
            EXPECT_THAT(help.err, IsEmpty());
            EXPECT_THAT(help.out, AllOf(HasSubstr("Usage: tarvo-dewarp " + command), HasSubstr("Example"),
                                        HasSubstr("--tilt-orientation"), HasSubstr("DEGREES")));
        }
    }
}

TEST(Arguments, mayHaveAPlusOrADashBeforeTheNumber) {
    const Outcome outcome =
        run({"map-point", "0.5", "0.5", "--tilt-orientation", "wall", "--pan", "-.5", "--tilt", "+7"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "pan -0.500000 tilt 7.000000\n");
}

TEST(Arguments, withAResultThatCannotBePrintedFail) {
    // A stream without buffer accepts nothing.
    std::ostream closed(nullptr);
    std::ostringstream err;
    const std::vector<std::string> arguments{"map-point", "0.5", "0.5"};
    EXPECT_EQ(runTarvoDewarp(arguments, closed, err), exitFailure);
    EXPECT_THAT(err.str(), HasSubstr("cannot be printed"));
}

} // namespace
} // namespace tarvo::apps
