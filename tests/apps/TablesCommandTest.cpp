#include "apps/tarvo-dewarp/LookupTable.h"
#include "apps/tarvo-dewarp/tables/TableProjection.h"
#include "custom/tables/CustomTransformShader.h"
#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "tests/apps/AppTest.h"
#include "tests/custom/tables/LoggedLines.h"
#include "tests/geometry/TrueCamera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::apps {
namespace {

using geometry::TiltOrientation;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using tests::Mounting;
using tests::Vector;

constexpr double inputWidth = 1600.0;
constexpr double inputHeight = 1200.0;

/// Cell `index` of `count`, the outer ones on the edges: 0 … 1.
double place(int index, int count) {
    return static_cast<double>(index) / (count - 1);
}

class TablesCommand : public CAppTest {
protected:
    /// What the command makes with these options for an input of 1600 x 1200.
    LookupTable table(std::vector<std::string> options) const {
        SCOPED_TRACE(testing::PrintToString(options));
        options.insert(options.begin(), {"tables", fileText("view.tables"), "--input-size", "1600x1200"});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return decodeTable(readBytes(file("view.tables")));
    }

    /// Expects the entry to look, with all weight or none, where the camera pictures the ray.
    static void expectLooksAt(const TableEntry& entry, TiltOrientation orientation, const Vector& ray) {
        const tests::ImagePoint point = Mounting::of(orientation).image(geometry::defaultLensProfile, ray);
        const double x = inputWidth / 2 + point.x * inputHeight;
        const double y = inputHeight / 2 + point.y * inputHeight;
        const bool isInside = x >= 0 && y >= 0 && x < inputWidth && y < inputHeight;
        EXPECT_EQ(entry.weight, isInside ? 65535 : 0);
        // Rounding to the nearest is half a step; the projection's constants are of single precision.
        EXPECT_NEAR(entry.x, std::fmin(std::fmax(x / inputWidth, 0.0), 1.0) * 65535.0, 0.55);
        EXPECT_NEAR(entry.y, std::fmin(std::fmax(y / inputHeight, 0.0), 1.0) * 65535.0, 0.55);
    }
};

const std::vector<std::pair<TiltOrientation, std::string>> orientations{
    {TiltOrientation::wall, "wall"}, {TiltOrientation::ceiling, "ceiling"}, {TiltOrientation::desk, "desk"}};

TEST_F(TablesCommand, looksWhereTheRectilinearViewDoes) {
    for (const auto& [orientation, name] : orientations) {
        const double tilt = orientation == TiltOrientation::ceiling ? -35.0
                            : orientation == TiltOrientation::desk  ? 40.0
                                                                    : 5.0;
        for (const auto& [width, height] : {std::pair{9, 6}, {16, 12}, {13, 3}}) {
            SCOPED_TRACE(name + " " + std::to_string(width));
            const LookupTable made =
                table({"--grid", std::to_string(width) + "x" + std::to_string(height), "--tilt-orientation",
                       name, "--pan", "37.5", "--tilt", std::to_string(tilt), "--field-of-view", "25"});
            ASSERT_EQ(made.width, width);
            ASSERT_EQ(made.height, height);
            // A view of the input's shape is 25 degrees to its upper edge; the output shares its width.
            const double halfWidth = std::tan(tests::toRadians(25.0)) * inputWidth / inputHeight;
            const double halfHeight = halfWidth * height / width;
            for (int row = 0; row < height; ++row) {
                for (int column = 0; column < width; ++column) {
                    const Vector ray =
                        tests::viewRay(37.5, tilt, (2.0 * place(column, width) - 1.0) * halfWidth,
                                       (1.0 - 2.0 * place(row, height)) * halfHeight);
                    expectLooksAt(made.entries.at(row * width + column), orientation, ray);
                }
            }
        }
    }
}

TEST_F(TablesCommand, leavesBlackWhatTheViewDoesNotFill) {
    // Of an output of 5:9 a view of 4:3 fills 5/9 : 4/3 = 0.4167 of the height, of these nine rows the middle
    // three.
    const LookupTable made = table({"--grid", "5x9"});
    for (int row = 0; row < 9; ++row)
        EXPECT_EQ(made.entries.at(row * 5 + 2).weight, row >= 3 && row <= 5 ? 65535 : 0) << row;
}

TEST_F(TablesCommand, looksAlongTheCylinderAndTheSphere) {
    for (const auto& [orientation, name] : orientations) {
        const double tilt = orientation == TiltOrientation::ceiling ? -30.0
                            : orientation == TiltOrientation::desk  ? 30.0
                                                                    : 0.0;
        for (const bool isCylinder : {false, true}) {
            SCOPED_TRACE(name + (isCylinder ? " cylindrical" : " equirectangular"));
            const LookupTable made =
                table({"--grid", "15x7", "--tilt-orientation", name, "--projection",
                       isCylinder ? "cylindrical" : "equirectangular", "--pan", "-20",
                       "--horizontal-field-of-view", "140", "--vertical-field-of-view", "60"});
            for (int row = 0; row < 7; ++row) {
                for (int column = 0; column < 15; ++column) {
                    const double pan = -20.0 + 140.0 * (place(column, 15) - 0.5);
                    double elevation = tilt + 30.0 - 60.0 * place(row, 7);
                    if (isCylinder) {
                        const double upper = std::tan(tests::toRadians(tilt + 30.0));
                        const double lower = std::tan(tests::toRadians(tilt - 30.0));
                        elevation =
                            std::atan(upper + (lower - upper) * place(row, 7)) / tests::toRadians(1.0);
                    }
                    expectLooksAt(made.entries.at(row * 15 + column), orientation,
                                  tests::lookingAt(pan, elevation));
                }
            }
        }
    }
}

TEST_F(TablesCommand, takesNothingFromBeyondWhereTheLensRises) {
    // r = 0.5 t - 0.1 t^3 rises up to t = sqrt(0.5 / 0.3) = 74 degrees and is back at the same radius beyond.
    const LookupTable made =
        table({"--grid", "181x1", "--projection", "equirectangular", "--lens-profile", "-0.1,0,0.5"});
    for (int degrees = -90; degrees <= 90; ++degrees)
        EXPECT_EQ(made.entries.at(degrees + 90).weight, std::abs(degrees) < 74 ? 65535 : 0) << degrees;
}

TEST_F(TablesCommand, hasOneCellWithinAGridOfOne) {
    const LookupTable made = table({"--grid", "1x1"});
    ASSERT_EQ(made.entries.size(), 1U);
    // Straight ahead is the middle of the picture.
    EXPECT_EQ(made.entries[0], (TableEntry{32768, 32768, 65535}));
}

TEST_F(TablesCommand, makesWhatTheComponentTakes) {
    table({"--grid", "8x2"});
    const std::vector<std::uint8_t> bytes = readBytes(file("view.tables"));
    ASSERT_EQ(bytes.size(), 8U + 8U * 2U * 6U);
    custom::CLoggedLines lines;
    custom::CCustomTransformShader shader(lines.objectLog());
    EXPECT_EQ(custom::SetCustomTransformData(shader, std::as_bytes(std::span(bytes)), 0, lines.objectLog()),
              S_FALSE)
        << "there is no device";
    EXPECT_THAT(lines.take(),
                testing::ElementsAre(":_:tables: 1, block size: 0 width: 8, height 2 (0 kB)\n"));
    EXPECT_EQ(shader.tableAspect(), 4.0F);
}

TEST_F(TablesCommand, refusesWrongArguments) {
    struct Case {
        std::vector<std::string> options;
        std::string message;
    };
    const std::vector<Case> cases{
        {{"--projection", "fisheye"}, "one of rectilinear, cylindrical, equirectangular"},
        {{"--grid", "0x4"}, "WIDTHxHEIGHT"},
        {{"--grid", "16385x4"}, "WIDTHxHEIGHT"},
        {{"--grid", "16384x2049"}, "more than 33554432 cells"},
        {{"--input-size", "5"}, "WIDTHxHEIGHT"},
        {{"--pan", "nan"}, "a finite number of degrees"},
        {{"--lens-profile", "1,2"}, "three finite numbers"},
        {{"--horizontal-field-of-view", "90"}, "only with --projection cylindrical or equirectangular"},
        {{"--vertical-field-of-view", "90"}, "only with --projection cylindrical or equirectangular"},
        {{"--projection", "cylindrical", "--field-of-view", "30"}, "only with --projection rectilinear"},
        {{"--projection", "cylindrical", "--horizontal-field-of-view", "361"}, "from 1 to 360"},
        {{"--projection", "cylindrical", "--vertical-field-of-view", "181"}, "from 1 to 180"},
        {{"--projection", "cylindrical", "--vertical-field-of-view", "180"}, "beyond 89 degrees"},
        {{"--projection", "equirectangular", "--tilt", "-61"}, "beyond 90 degrees"},
        {{"--frobnicate"}, "not expected"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.options));
        std::vector<std::string> arguments{"tables", fileText("out.tables")};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, AllOf(StartsWith("tarvo-dewarp: "), HasSubstr(test.message)));
    }
    for (const std::string name : {"out", "out.png", ".tables", ""}) {
        const Outcome outcome = run({"tables", name});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr("a file that ends in .tables"));
    }
    EXPECT_TRUE(names().empty());
}

TEST_F(TablesCommand, leavesDirectoriesAlone) {
    std::filesystem::create_directory(file("view.tables"));
    const Outcome outcome = run({"tables", fileText("view.tables")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("it is a directory"));
    EXPECT_TRUE(std::filesystem::is_directory(file("view.tables")));
    const Outcome nowhere = run({"tables", fileText("missing/view.tables")});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_THAT(nowhere.err, HasSubstr("there is no directory"));
}

TEST_F(TablesCommand, helpsWithEveryTablesCommand) {
    for (const std::string command : {"tables", "tables-from-remap", "tables-to-remap"}) {
        const Outcome help = run({command, "--help"});
        EXPECT_EQ(help.status, 0);
        EXPECT_THAT(help.out, AllOf(HasSubstr("Usage: tarvo-dewarp " + command), HasSubstr("Example")));
    }
}

} // namespace
} // namespace tarvo::apps
