#include "tests/custom/view/RenderedView.h"

#include <algorithm>
#include <array>
#include <cmath>

// Several tables: each output pixel is the weighted sum of what they look at.

namespace tarvo::custom {
namespace {

using render::Bgra;
using render::Picture;

class Blending : public RenderedView {};
TARVO_ON_EVERY_DEVICE(Blending);

// Two pictures side by side in one input: the left one shows the scene from 0 to 0.6 of its width, the right
// one from 0.4 to 1. Between 0.45 and 0.55 the first fades out while the second fades in.
constexpr double covered = 0.6;
constexpr int halfWidth = 300;
constexpr int inputHeight = 120;
constexpr int gridColumns = 101;
constexpr int gridRows = 5;

double firstWeight(double x) {
    return std::clamp((0.55 - x) / 0.1, 0.0, 1.0);
}

std::vector<std::uint16_t> tablesOfTwoHalves() {
    std::vector<std::uint16_t> words;
    for (const bool isFirst : {true, false}) {
        for (int row = 0; row < gridRows; ++row) {
            for (int column = 0; column < gridColumns; ++column) {
                const double x = column / (gridColumns - 1.0);
                const double y = row / (gridRows - 1.0);
                if (isFirst)
                    append(words, {std::min(x / covered, 1.0) / 2.0, y, firstWeight(x)});
                else
                    append(words, {0.5 + std::max((x - 1.0 + covered) / covered, 0.0) / 2.0, y,
                                   1.0 - firstWeight(x)});
            }
        }
    }
    return words;
}

/// Pixel centres of the left or right half as places in the scene.
double sceneAt(int column) {
    const bool isFirst = column < halfWidth;
    const double inHalf = (column % halfWidth + 0.5) / halfWidth;
    return isFirst ? inHalf * covered : 1.0 - covered + inHalf * covered;
}

TEST_P(Blending, joinsTwoPicturesOfOneSceneSeamlessly) {
    Picture input(2 * halfWidth, inputHeight);
    const auto blue = [](double x) { return 20.0 + 200.0 * x; };
    const auto green = [](double y) { return 30.0 + 150.0 * y; };
    for (int y = 0; y < input.height; ++y) {
        for (int x = 0; x < input.width; ++x)
            input.at(x, y) = {static_cast<std::uint8_t>(std::lround(blue(sceneAt(x)))),
                              static_cast<std::uint8_t>(std::lround(green((y + 0.5) / inputHeight))), 77,
                              255};
    }
    setTables({2, gridColumns, gridRows}, tablesOfTwoHalves());
    shader.setEffectLevel(1.0F);
    // Of the tables' shape, so that there are no bars.
    const Picture output = custom(input, 2 * gridColumns, 2 * gridRows);
    for (int y = 0; y < output.height; ++y) {
        for (int x = 0; x < output.width; ++x) {
            const Bgra& pixel = output.at(x, y);
            // The input's rounding, the output's, and 16-bit weights that miss their sum by a hair. At the
            // outermost pixels half an input pixel is missing, a quarter of a level.
            ASSERT_NEAR(pixel.blue, blue((x + 0.5) / output.width), 1.3) << x << ' ' << y;
            ASSERT_NEAR(pixel.green, green((y + 0.5) / output.height), 1.8) << x << ' ' << y;
            ASSERT_NEAR(pixel.red, 77, 1) << x << ' ' << y;
        }
    }
}

TEST_P(Blending, fadesFromOnePictureToTheOther) {
    Picture input(2 * halfWidth, inputHeight, {200, 0, 0, 255});
    for (int y = 0; y < input.height; ++y) {
        for (int x = halfWidth; x < input.width; ++x)
            input.at(x, y) = {40, 100, 0, 255};
    }
    setTables({2, gridColumns, gridRows}, tablesOfTwoHalves());
    const Picture output = custom(input, 2 * gridColumns, 2 * gridRows);
    for (int x = 0; x < output.width; ++x) {
        // The grid's first cell is the output's left edge, its last one the right edge.
        const double first = firstWeight((x + 0.5) / output.width);
        const Bgra& pixel = output.at(x, output.height / 2);
        ASSERT_NEAR(pixel.blue, 200.0 * first + 40.0 * (1.0 - first), 1.0) << x;
        ASSERT_NEAR(pixel.green, 100.0 * (1.0 - first), 1.0) << x;
    }
}

/// Nine patches side by side, 16 pixels each; the ninth is white.
Picture patches() {
    Picture picture(9 * 16, 16);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int patch = x / 16;
            picture.at(x, y) = patch == 8 ? Bgra{255, 255, 255, 255}
                                          : Bgra{static_cast<std::uint8_t>(20 + 25 * patch),
                                                 static_cast<std::uint8_t>(240 - 30 * patch),
                                                 static_cast<std::uint8_t>(patch % 2 == 0 ? 160 : 40), 255};
        }
    }
    return picture;
}

/// Table `t` looks at the middle of patch `t`, with a weight of its own.
std::vector<std::uint16_t> tablesOfPatches(const std::vector<double>& weights) {
    std::vector<std::uint16_t> words;
    for (std::size_t table = 0; table < weights.size(); ++table) {
        for (int cell = 0; cell < 4; ++cell)
            append(words, {(static_cast<double>(table) + 0.5) / 9.0, 0.5, weights[table]});
    }
    return words;
}

void expectEverywhere(const Picture& picture, double blue, double green, double red) {
    for (const Bgra& pixel : picture.pixels) {
        ASSERT_NEAR(pixel.blue, blue, 0.6);
        ASSERT_NEAR(pixel.green, green, 0.6);
        ASSERT_NEAR(pixel.red, red, 0.6);
    }
}

const std::vector<double> eightWeights{0.05, 0.1, 0.15, 0.2, 0.05, 0.25, 0.125, 0.075};

/// What eight tables of these weights see: by patch, blue 20 + 25 k, green 240 − 30 k, red 160 or 40.
std::array<double, 3> weightedPatches() {
    std::array<double, 3> sums{};
    for (int k = 0; k < 8; ++k) {
        const double weight = eightWeights[static_cast<std::size_t>(k)];
        sums[0] += weight * (20 + 25 * k);
        sums[1] += weight * (240 - 30 * k);
        sums[2] += weight * (k % 2 == 0 ? 160 : 40);
    }
    return sums;
}

TEST_P(Blending, sumsEightTables) {
    setTables({8, 2, 2}, tablesOfPatches(eightWeights));
    const auto [blue, green, red] = weightedPatches();
    expectEverywhere(custom(patches(), 12, 12), blue, green, red);
}

TEST_P(Blending, doesNotReadTheNinthTable) {
    std::vector<double> weights = eightWeights;
    weights.push_back(1.0); // would make everything white
    setTables({9, 2, 2}, tablesOfPatches(weights));
    const auto [blue, green, red] = weightedPatches();
    expectEverywhere(custom(patches(), 12, 12), blue, green, red);
}

} // namespace
} // namespace tarvo::custom
