#include "geometry/ExcludeArea.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarvo::geometry {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double none = std::numeric_limits<double>::quiet_NaN();

TEST(ExcludeArea, isActiveWithPositiveWidthAndHeight) {
    EXPECT_TRUE((ExcludeArea{0.1, 0.2, 0.3, 0.4}).isActive());
    EXPECT_FALSE((ExcludeArea{0.3, 0.2, 0.3, 0.4}).isActive());
    EXPECT_FALSE((ExcludeArea{0.1, 0.4, 0.3, 0.4}).isActive());
    EXPECT_FALSE((ExcludeArea{0.3, 0.2, 0.1, 0.4}).isActive());
    EXPECT_FALSE((ExcludeArea{none, 0.2, 0.3, 0.4}).isActive());
    EXPECT_FALSE(ExcludeArea{}.isActive());
}

TEST(ExcludeArea, edgesAreEven) {
    // 0.1 · 101 = 10.1 → (10 + 1) / 2 · 2 = 10; 0.29 · 101 = 29.29 → (29 + 1) / 2 · 2 = 30
    // 0.2 · 55 = 11 → 12; 0.9 · 55 = 49.5 → (49 + 1) / 2 · 2 = 50
    EXPECT_EQ((ExcludeArea{0.1, 0.2, 0.29, 0.9}.pixelBox(101, 55)), (PixelBox{10, 12, 30, 50}));
}

TEST(ExcludeArea, edgesStayInsideTheFrame) {
    EXPECT_EQ((ExcludeArea{0.0, 0.0, 1.0, 1.0}.pixelBox(101, 55)), (PixelBox{0, 0, 101, 55}));
    EXPECT_EQ((ExcludeArea{-3.0, -infinity, 7.0, infinity}.pixelBox(640, 480)), (PixelBox{0, 0, 640, 480}));
    EXPECT_EQ((ExcludeArea{none, none, 1e300, none}.pixelBox(640, 480)), (PixelBox{0, 0, 640, 0}));
    const ExcludeArea clipped = ExcludeArea{-1.0, none, 2.0, 0.5}.clipped();
    EXPECT_EQ(clipped.left, 0.0);
    EXPECT_EQ(clipped.top, 0.0);
    EXPECT_EQ(clipped.right, 1.0);
    EXPECT_EQ(clipped.bottom, 0.5);
}

TEST(ExcludeArea, mayBeEmptyInPixelsThoughActive) {
    const ExcludeArea thin{0.5, 0.1, 0.5001, 0.9};
    EXPECT_TRUE(thin.isActive());
    EXPECT_TRUE(thin.pixelBox(640, 480).isEmpty());
    EXPECT_FALSE((ExcludeArea{0.1, 0.1, 0.2, 0.2}.pixelBox(640, 480).isEmpty()));
}

} // namespace
} // namespace tarvo::geometry
