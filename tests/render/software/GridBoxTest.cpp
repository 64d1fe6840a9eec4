#include "render/software/GridBox.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

namespace tarvo::render::software {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr int columns = 5;
constexpr int rows = 3;

/// A table with a weight at one of its texels; place 0 is at the first of them along a side, 1 at the last.
class GridBox : public testing::Test {
protected:
    TableRow seeingAt(int column, int line) {
        texels.assign(std::size_t{4} * columns * rows, 0.0F);
        texels[static_cast<std::size_t>((line * columns + column) * 4 + 2)] = 1.0F;
        return {nullptr,  nullptr, 0,    texels.data(), columns, columns, rows,    columns - 1,
                rows - 1, 0.0F,    0.0F, 1.0F,          1.0F,    nullptr, nullptr, nullptr};
    }
    static bool isBlind(const std::vector<float>& x, const std::vector<float>& y, const TableRow& row) {
        return CGridBox(x.data(), y.data(), static_cast<int>(x.size())).isBlind(row);
    }

    std::vector<float> texels;
};

TEST_F(GridBox, SeesWhatLiesAroundItsPlaces) {
    // From the cell of columns 1 and 2 to that of 2 and 3, in lines 0 and 1.
    const std::vector<float> x{0.3F, 0.6F};
    const std::vector<float> y{0.1F, 0.4F};
    for (int line = 0; line < rows; ++line) {
        for (int column = 0; column < columns; ++column) {
            const bool isAround = column >= 1 && column <= 3 && line <= 1;
            EXPECT_EQ(isBlind(x, y, seeingAt(column, line)), !isAround) << column << " " << line;
        }
    }
}

TEST_F(GridBox, TakesEveryPlaceIntoAccount) {
    for (const std::size_t count : {1U, 7U, 8U, 9U, 40U}) {
        for (std::size_t i = 0; i < count; ++i) {
            std::vector<float> x(count, 0.5F);
            std::vector<float> y(count, 0.0F);
            x[i] = 0.05F;
            EXPECT_FALSE(isBlind(x, y, seeingAt(0, 0))) << count << " " << i;
            x[i] = 0.5F;
            y[i] = 0.9F;
            EXPECT_FALSE(isBlind(x, y, seeingAt(2, 2))) << count << " " << i;
            y[i] = nan;
            EXPECT_TRUE(isBlind(x, y, seeingAt(2, 2))) << count << " " << i;
        }
    }
}

TEST_F(GridBox, OfNoPlacesSeesNothing) {
    EXPECT_TRUE(isBlind({}, {}, seeingAt(0, 0)));
    EXPECT_TRUE(isBlind({nan, nan}, {0.5F, 0.5F}, seeingAt(0, 0)));
}

TEST_F(GridBox, MaySeeAnythingWhereItCannotBeWorkedOut) {
    TableRow row = seeingAt(4, 0);
    row.scaleX = std::numeric_limits<float>::infinity();
    // The first is no number, the second at the far end.
    EXPECT_FALSE(isBlind({0.0F, 0.5F}, {0.0F, 0.0F}, row));
}

TEST_F(GridBox, MayLieOnATableThatIsTurned) {
    TableRow row = seeingAt(4, 0);
    row.scaleX = -row.scaleX;
    row.originX = columns - 1;
    EXPECT_FALSE(isBlind({0.0F, 0.6F}, {0.0F, 0.0F}, row));
    EXPECT_TRUE(isBlind({0.3F, 0.6F}, {0.0F, 0.0F}, row));
}

} // namespace
} // namespace tarvo::render::software
