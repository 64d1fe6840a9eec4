#include "tests/custom/view/RenderedView.h"

#include <algorithm>

// The effect level through the whole sequence: what is expected follows from where a cell looks at a level,
// over a picture in which blue tells the column and green the row.

namespace tarvo::custom {
namespace {

using render::Picture;

constexpr int inputWidth = 200;
constexpr int inputHeight = 100;
constexpr int gridWidth = 8;
constexpr int gridHeight = 4;

class EffectLevel : public RenderedView {
protected:
    EffectLevel() : input(inputWidth, inputHeight) {
        for (int y = 0; y < inputHeight; ++y) {
            for (int x = 0; x < inputWidth; ++x)
                input.at(x, y) = {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(2 * y), 0, 255};
        }
    }

    /// Blue and green, in levels, at a place of the input, 0 … 1 over it: pixel centres lie at halves.
    static double blueAt(double x) { return std::clamp(x * inputWidth - 0.5, 0.0, inputWidth - 1.0); }
    static double greenAt(double y) {
        return 2.0 * std::clamp(y * inputHeight - 0.5, 0.0, inputHeight - 1.0);
    }

    void setCells(const Cell& cell) {
        std::vector<std::uint16_t> words;
        for (int i = 0; i < gridWidth * gridHeight; ++i)
            append(words, cell);
        setTables({1, gridWidth, gridHeight}, words);
    }

    /// Renders at an effect level and expects that the output, between its corners, looks from one place of
    /// the input to another, with a weight.
    void expectSpan(float level, double left, double right, double top, double bottom, double weight) {
        SCOPED_TRACE(level);
        shader.setEffectLevel(level);
        const Picture output = custom(input, 64, 32);
        for (int y = 0; y < output.height; ++y) {
            for (int x = 0; x < output.width; ++x) {
                const double u = (x + 0.5) / output.width;
                const double v = (y + 0.5) / output.height;
                const render::Bgra& pixel = output.at(x, y);
                // Rounding of the result is half a level, that of the tables' places a fiftieth.
                ASSERT_NEAR(pixel.blue, weight * blueAt(left + u * (right - left)), 0.6) << x << ' ' << y;
                ASSERT_NEAR(pixel.green, weight * greenAt(top + v * (bottom - top)), 0.6) << x << ' ' << y;
                ASSERT_EQ(pixel.red, 0);
            }
        }
    }

    Picture input;
};
TARVO_ON_EVERY_DEVICE(EffectLevel);

// Without effect cell k of n looks at k / n, and so the last one short of the right edge.
constexpr double lastColumn = (gridWidth - 1.0) / gridWidth;
constexpr double lastRow = (gridHeight - 1.0) / gridHeight;

TEST_P(EffectLevel, blendsBetweenTheInputAndTheTables) {
    // All cells look at one place.
    setCells({0.6, 0.2, 1.0});
    expectSpan(0.0F, 0.0, lastColumn, 0.0, lastRow, 1.0);
    expectSpan(0.3F, 0.3 * 0.6, 0.7 * lastColumn + 0.3 * 0.6, 0.3 * 0.2, 0.7 * lastRow + 0.3 * 0.2, 1.0);
    expectSpan(1.0F, 0.6, 0.6, 0.2, 0.2, 1.0);
}

TEST_P(EffectLevel, letsCellsOfLittleWeightGainIt) {
    // At 0.3 the weight is 0.7 of one table's share of the whole and 0.3 of its own.
    setCells({0.6, 0.2, 0.2});
    expectSpan(0.0F, 0.0, lastColumn, 0.0, lastRow, 1.0);
    expectSpan(0.3F, 0.3 * 0.6, 0.7 * lastColumn + 0.3 * 0.6, 0.3 * 0.2, 0.7 * lastRow + 0.3 * 0.2,
               0.7 + 0.3 * 0.2);
    expectSpan(1.0F, 0.6, 0.6, 0.2, 0.2, 0.2);
}

TEST_P(EffectLevel, keepsCellsWithoutWeightInTheirPlace) {
    setCells({0.6, 0.2, 0.0});
    expectSpan(0.0F, 0.0, lastColumn, 0.0, lastRow, 1.0);
    expectSpan(0.3F, 0.0, lastColumn, 0.0, lastRow, 0.7);
    expectSpan(1.0F, 0.0, lastColumn, 0.0, lastRow, 0.0);
}

} // namespace
} // namespace tarvo::custom
