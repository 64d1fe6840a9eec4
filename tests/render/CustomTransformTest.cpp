#include "render/reference/CustomPrograms.h"
#include "tests/render/CustomTables.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::render::reference {
namespace {

using Constants = CustomTransformConstants;

constexpr Bgra red{0, 0, 255, 255};
constexpr Bgra green{0, 255, 0, 255};
constexpr Bgra white{255, 255, 255, 255};

void expectColour(const Colour& colour, double expectedRed, double expectedGreen, double expectedBlue,
                  double expectedAlpha) {
    EXPECT_NEAR(colour.red, expectedRed, 1e-4);
    EXPECT_NEAR(colour.green, expectedGreen, 1e-4);
    EXPECT_NEAR(colour.blue, expectedBlue, 1e-4);
    EXPECT_NEAR(colour.alpha, expectedAlpha, 1e-4);
}

void expectBlack(const Colour& colour) {
    expectColour(colour, 0.0, 0.0, 0.0, 1.0);
}

/// Left half red, right half green; so wide that a place a little off the middle sees one colour.
Picture halves() {
    Picture picture(200, 2, red);
    for (int y = 0; y < 2; ++y) {
        for (int x = 100; x < 200; ++x) {
            picture.at(x, y) = green;
        }
    }
    return picture;
}

TEST(CustomTransform, theIdentityTableShowsTheInput) {
    const Picture input = levelRamp();
    const LookupTables table = identityTable();
    const auto constants = constantsOf<Constants>(2, 2, 1);
    for (double v = 0.0; v <= 1.0; v += 0.0625) {
        for (double u = 0.0; u <= 1.0; u += 0.0625) {
            const Colour seen =
                customTransformProgram(constants, table, input, static_cast<float>(u), static_cast<float>(v));
            EXPECT_NEAR(seen.blue * 255.0F, rampBlue(u), 0.01);
            EXPECT_NEAR(seen.green * 255.0F, rampGreen(v), 0.01);
            EXPECT_NEAR(seen.alpha, 2.0F, 1e-5F); // opaque over opaque: added up
        }
    }
}

TEST(CustomTransform, swappedHalvesAreSwapped) {
    // Between the columns' centres u is 0, 1/3, 2/3 and 1.
    LookupTables table(4, 1);
    table.texels = {{32768, 0, whole, 0}, {whole, 0, whole, 0}, {0, 0, whole, 0}, {32768, 0, whole, 0}};
    const auto constants = constantsOf<Constants>(4, 1, 1);
    const auto at = [&](float u) { return customTransformProgram(constants, table, halves(), u, 0.5F); };
    for (const float u : {0.05F, 1.0F / 6.0F, 0.3F}) {
        expectColour(at(u), 0.0, 1.0, 0.0, 2.0);
    }
    for (const float u : {0.7F, 5.0F / 6.0F, 0.95F}) {
        expectColour(at(u), 1.0, 0.0, 0.0, 2.0);
    }
    // At 1/6 the table says 3/4.
    const Picture ramp = levelRamp();
    EXPECT_NEAR(customTransformProgram(constants, table, ramp, 1.0F / 6.0F, 0.5F).blue * 255.0F,
                rampBlue(0.75), 0.01);
}

TEST(CustomTransform, tablesAreAddedByTheirWeights) {
    LookupTables tables(1, 2);
    tables.texels = {{0, 0, 13107, 0}, {whole, 0, 45874, 0}}; // 0.2 of the left, 0.7 of the right
    const auto constants = constantsOf<Constants>(1, 1, 2);
    expectColour(customTransformProgram(constants, tables, halves(), 0.3F, 0.6F), 0.2, 0.7, 0.0, 1.9);
    tables.texels[1].weight = 0;
    expectColour(customTransformProgram(constants, tables, halves(), 0.3F, 0.6F), 0.2, 0.0, 0.0, 1.2);
    // Beyond full scale: the target saturates, not the program.
    tables.texels = {{0, 0, whole, 0}, {0, 0, whole, 0}};
    expectColour(customTransformProgram(constants, tables, halves(), 0.3F, 0.6F), 2.0, 0.0, 0.0, 3.0);
}

TEST(CustomTransform, oneTableDoesNotRunIntoTheNext) {
    // The weights say table and row: 0.1 and 0.2 the first table, 0.4 and 0.6 the second.
    LookupTables tables(1, 4);
    tables.texels = {{0, 0, 6554, 0}, {0, 0, 13107, 0}, {0, 0, 26214, 0}, {0, 0, 39321, 0}};
    const auto constants = constantsOf<Constants>(1, 2, 2);
    const Picture input(1, 1, white);
    const auto at = [&](float v) { return customTransformProgram(constants, tables, input, 0.5F, v).red; };
    EXPECT_NEAR(at(0.0F), 0.5, 1e-4);
    EXPECT_NEAR(at(1.0F), 0.8, 1e-4);
    EXPECT_NEAR(at(0.25F), 0.575, 1e-4); // 0.125 and 0.45
}

TEST(CustomTransform, atMostEightTablesCount) {
    LookupTables tables(1, 9);
    std::ranges::fill(tables.texels, LookupTexel{0, 0, 6553, 0}); // a tenth, nearly
    const Picture input(1, 1, white);
    const double tenth = 6553.0 / 65535.0;
    const auto sum = [&](std::uint32_t number) {
        return customTransformProgram(constantsOf<Constants>(1, 1, number), tables, input, 0.5F, 0.5F).blue;
    };
    EXPECT_NEAR(sum(7), 7 * tenth, 1e-5);
    EXPECT_NEAR(sum(8), 8 * tenth, 1e-5);
    EXPECT_NEAR(sum(9), 8 * tenth, 1e-5);
    EXPECT_NEAR(sum(0xFFFFFFFFU), 8 * tenth, 1e-5);
    auto none = constantsOf<Constants>(1, 1, 1);
    none.numberOfTables = 0;
    expectBlack(customTransformProgram(none, tables, input, 0.5F, 0.5F));
}

TEST(CustomTransform, barsKeepTheShapeOfTheTables) {
    // A square table in an output twice as wide as high: half the width is table.
    auto constants = constantsOf<Constants>(2, 2, 1);
    constants.projectionRect[0] = -0.5F;
    constants.projectionRect[2] = 2.0F;
    const Picture input = levelRamp();
    const LookupTables table = identityTable();
    const auto at = [&](float u, float v) { return customTransformProgram(constants, table, input, u, v); };
    expectBlack(at(0.0F, 0.5F));
    expectBlack(at(0.2499F, 0.5F));
    expectBlack(at(0.7501F, 0.5F));
    EXPECT_NEAR(at(0.25F, 0.5F).alpha, 2.0F, 1e-5F); // the edge belongs to the table
    EXPECT_NEAR(at(0.75F, 0.5F).alpha, 2.0F, 1e-5F);
    EXPECT_NEAR(at(0.375F, 0.5F).blue * 255.0F, rampBlue(0.25), 0.01);
    EXPECT_NEAR(at(0.375F, 0.0F).green * 255.0F, rampGreen(0.0), 0.01); // none above or below
    EXPECT_NEAR(at(0.375F, 1.0F).green * 255.0F, rampGreen(1.0), 0.01);
}

TEST(CustomTransform, zoomCutsOutAPartBeforeTheBars) {
    auto constants = constantsOf<Constants>(2, 2, 1);
    const float part[] = {0.5F, 0.25F, 0.25F, 0.5F}; // x 0.5 to 0.75, y 0.25 to 0.75
    std::ranges::copy(part, constants.viewRect);
    const Picture input = levelRamp();
    const LookupTables table = identityTable();
    const Colour seen = customTransformProgram(constants, table, input, 0.5F, 0.5F);
    EXPECT_NEAR(seen.blue * 255.0F, rampBlue(0.625), 0.01);
    EXPECT_NEAR(seen.green * 255.0F, rampGreen(0.5), 0.01);
    // With bars at left and right the part is 2 · (0.5 … 0.75) − 0.5 = 0.5 … 1.
    constants.projectionRect[0] = -0.5F;
    constants.projectionRect[2] = 2.0F;
    EXPECT_NEAR(customTransformProgram(constants, table, input, 0.5F, 0.5F).blue * 255.0F, rampBlue(0.75),
                0.01);
    constants.viewRect[0] = 0.8F; // past the table
    expectBlack(customTransformProgram(constants, table, input, 0.5F, 0.5F));
}

TEST(CustomTransform, placesThatAreNoNumberAreBlack) {
    auto constants = constantsOf<Constants>(2, 2, 1);
    const Picture input = levelRamp();
    const LookupTables table = identityTable();
    expectBlack(customTransformProgram(constants, table, input, NAN, 0.5F));
    expectBlack(customTransformProgram(constants, table, input, 0.5F, INFINITY));
    constants.viewRect[3] = NAN;
    expectBlack(customTransformProgram(constants, table, input, 0.5F, 0.5F));
}

} // namespace
} // namespace tarvo::render::reference
