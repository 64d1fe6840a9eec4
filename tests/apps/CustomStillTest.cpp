#include "apps/tarvo-dewarp/PictureFile.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace tarvo::apps {
namespace {

using testing::HasSubstr;

/// `still` with the custom view.
class CustomStill : public CAppTest {
protected:
    CustomStill() { EXPECT_EQ(run({"scene", fileText("in.png"), "--size", "320x240"}).status, 0); }

    void tables(std::vector<std::string> options) const {
        options.insert(options.begin(), {"tables", fileText("view.tables"), "--input-size", "320x240"});
        const Outcome outcome = run(options);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }

    Outcome still(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments{"still", fileText("in.png"), fileText("out.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }

    Picture picture(const std::vector<std::string>& options) const {
        const Outcome outcome = still(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return readPicture(file("out.png"));
    }

    /// The custom view of the tables.
    Picture custom(std::vector<std::string> options) const {
        options.insert(options.end(),
                       {"--view-type", "custom", "--custom-transform-data", fileText("view.tables")});
        return picture(options);
    }

    void expectSize(const std::vector<std::string>& options, int width, int height) const {
        SCOPED_TRACE(testing::PrintToString(options));
        const Picture shown = custom(options);
        EXPECT_EQ(shown.width, width);
        EXPECT_EQ(shown.height, height);
    }

    void expectRefusedTables(const std::vector<std::uint8_t>& bytes, const std::string& reason) const {
        SCOPED_TRACE(reason);
        writeBytes(file("bad.tables"), bytes);
        const Outcome outcome =
            still({"--view-type", "custom", "--custom-transform-data", fileText("bad.tables")});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, testing::AllOf(HasSubstr("bad.tables: "), HasSubstr(reason)));
        EXPECT_FALSE(std::filesystem::exists(file("out.png")));
    }
};

const std::vector<std::string> small{"--output-width", "120", "--output-height", "90"};

std::vector<std::string> with(std::vector<std::string> options, const std::vector<std::string>& more) {
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

TEST_F(CustomStill, hasTheShapeOfTheTables) {
    tables({"--grid", "30x20"});
    expectSize({}, 360, 240); // as high as the input
    expectSize({"--output-width", "60"}, 60, 40);
    expectSize({"--output-height", "20"}, 30, 20);
    expectSize({"--output-width", "31", "--output-height", "17"}, 32, 18);
    expectSize({"--output-format-16-9"}, 360, 240);
}

TEST_F(CustomStill, showsWhatTheTablesSay) {
    tables({"--grid", "80x60", "--pan", "30", "--tilt", "-10", "--field-of-view", "25"});
    const Picture shown = custom(small);
    const auto single = [&](const std::string& pan) {
        return picture(with(small, {"--pan", pan, "--tilt", "-10", "--field-of-view", "25"}));
    };
    EXPECT_LT(meanDifference(shown, single("30")), 0.5);
    EXPECT_GT(meanDifference(shown, single("33")), 5.0);
    EXPECT_GT(meanDifference(shown, picture(with(small, {"--bypass"}))), 15.0);
    EXPECT_EQ(custom(with(small, {"--bypass"})).pixels, picture(with(small, {"--bypass"})).pixels);
}

TEST_F(CustomStill, showsTheInputWithoutEffectWhateverTheTablesSay) {
    tables({"--grid", "960x720", "--pan", "30", "--field-of-view", "25"});
    const Picture full = custom(small);
    const Picture half = custom(with(small, {"--effect-level", "0.5"}));
    const Picture none = custom(with(small, {"--effect-level", "0"}));
    EXPECT_GT(meanDifference(full, half), 5.0);
    EXPECT_GT(meanDifference(half, none), 5.0);
    tables({"--grid", "960x720", "--pan", "-10", "--field-of-view", "40"});
    EXPECT_EQ(custom(with(small, {"--effect-level", "0"})).pixels, none.pixels);
    // The last cell looks a cell's width short of the edge, here a third of an input pixel.
    EXPECT_LT(meanDifference(none, picture(with(small, {"--bypass"}))), 3.0);
}

TEST_F(CustomStill, passesEveryOptionOn) {
    tables({"--projection", "equirectangular", "--grid", "90x45", "--vertical-field-of-view", "90"});
    const Picture zoom = custom(small);
    EXPECT_EQ(custom(with(small, {"--custom-transform-control-type", "digitalZoom"})).pixels, zoom.pixels);
    EXPECT_EQ(custom(with(small, {"--view-rect", "0,0,1,1"})).pixels, zoom.pixels);
    EXPECT_GT(meanDifference(custom(with(small, {"--view-rect", "0.2,0.2,0.7,0.7"})), zoom), 5.0);
    EXPECT_EQ(custom(with(small, {"--virtual-ptz-pan", "20"})).pixels, zoom.pixels)
        << "the other control's options wait for it";

    const auto ptz = with(small, {"--custom-transform-control-type", "virtualPtzFromPanorama"});
    const Picture usual = custom(ptz);
    EXPECT_GT(meanDifference(usual, zoom), 5.0);
    const std::vector<std::pair<std::string, std::string>> defaults{
        {"--virtual-ptz-pan", "0"},
        {"--virtual-ptz-tilt", "0"},
        {"--virtual-ptz-field-of-view", "90"},
        {"--virtual-ptz-panorama-horizontal-field-of-view", "180"},
        {"--virtual-ptz-panorama-vertical-field-of-view", "90"},
        {"--virtual-ptz-camera-pitch", "0"},
        {"--virtual-ptz-camera-roll", "0"},
        {"--virtual-ptz-effect-level", "1"},
    };
    for (const auto& [option, value] : defaults)
        EXPECT_EQ(custom(with(ptz, {option, value})).pixels, usual.pixels) << option;
    const std::vector<std::pair<std::string, std::string>> changes{
        {"--virtual-ptz-pan", "20"},
        {"--virtual-ptz-tilt", "-5"},
        {"--virtual-ptz-field-of-view", "60"},
        {"--virtual-ptz-panorama-horizontal-field-of-view", "150"},
        {"--virtual-ptz-panorama-vertical-field-of-view", "80"},
        {"--virtual-ptz-camera-pitch", "5"},
        {"--virtual-ptz-camera-roll", "10"},
        {"--virtual-ptz-effect-level", "0.5"},
    };
    for (const auto& [option, value] : changes)
        EXPECT_GT(meanDifference(custom(with(ptz, {option, value})), usual), 2.0) << option;
}

TEST_F(CustomStill, isASingleViewOfThePanorama) {
    // The panorama is centred on the lens axis, as the single view of a wall camera is: 4:3 and 67.4 degrees
    // wide, tan 33.7 being 4/3 of tan 26.57.
    tables({"--projection", "equirectangular", "--grid", "720x360", "--vertical-field-of-view", "90"});
    const Picture virtualView =
        custom(with(small, {"--custom-transform-control-type", "virtualPtzFromPanorama", "--virtual-ptz-pan",
                            "15", "--virtual-ptz-tilt", "-8", "--virtual-ptz-field-of-view", "67.38014"}));
    const auto single = [&](const std::string& tilt) {
        return picture(with(small, {"--pan", "15", "--tilt", tilt, "--field-of-view", "26.56505"}));
    };
    EXPECT_LT(meanDifference(virtualView, single("-8")), 0.7);
    EXPECT_GT(meanDifference(virtualView, single("-9")), 2.0);
}

TEST_F(CustomStill, drawsTheVirtualCameraBackIntoThePanorama) {
    tables({"--projection", "equirectangular", "--grid", "90x45", "--vertical-field-of-view", "90"});
    const auto view = [&](const std::vector<std::string>& options) {
        return custom(
            with(with(small, options), {"--custom-transform-control-type", "virtualPtzFromPanorama"}));
    };
    // 40 degrees wide it can turn to 70 of 90 degrees, in whatever order the options come.
    const Picture farthest = view({"--virtual-ptz-pan", "70", "--virtual-ptz-field-of-view", "40"});
    EXPECT_LT(meanDifference(view({"--virtual-ptz-pan", "85", "--virtual-ptz-field-of-view", "40",
                                   "--virtual-ptz-use-strict-border-mode"}),
                             farthest),
              0.05);
    EXPECT_LT(meanDifference(view({"--virtual-ptz-use-strict-border-mode", "--virtual-ptz-field-of-view",
                                   "40", "--virtual-ptz-pan", "85"}),
                             farthest),
              0.05);
    EXPECT_EQ(view({"--virtual-ptz-field-of-view", "300"}).pixels,
              view({"--virtual-ptz-field-of-view", "120"}).pixels);
    EXPECT_EQ(view({"--virtual-ptz-field-of-view", "-3"}).pixels,
              view({"--virtual-ptz-field-of-view", "5"}).pixels);
}

TEST_F(CustomStill, saysWhyTablesAreRefused) {
    using Bytes = std::vector<std::uint8_t>;
    expectRefusedTables(Bytes(4), "it is shorter than their 8 bytes of head");
    expectRefusedTables(Bytes(7, 1), "it is shorter than their 8 bytes of head");
    expectRefusedTables({1, 0, 0, 0, 2, 0, 3, 0}, "1 of 2x3 cells take 44 bytes, but it has 8");
    Bytes tooLong(8 + 6 + 2);
    tooLong[0] = tooLong[4] = tooLong[6] = 1;
    expectRefusedTables(tooLong, "1 of 1x1 cells take 14 bytes, but it has 16");
    expectRefusedTables(Bytes(8, 255), "65535 of 65535x65535 cells take 1688772");
    expectRefusedTables({1, 0, 0, 0, 0, 0, 3, 0}, "it holds no tables: its head says 1 of 0x3 cells");
    expectRefusedTables({}, "");
    const Outcome missing =
        still({"--view-type", "custom", "--custom-transform-data", fileText("missing.tables")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, HasSubstr("missing.tables: "));
    std::filesystem::create_directory(file("folder"));
    EXPECT_EQ(still({"--view-type", "custom", "--custom-transform-data", fileText("folder")}).status, 1);
}

} // namespace
} // namespace tarvo::apps
