#include "custom/BoundedRectangle.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tarvo::custom {
namespace {

void expectEdges(const BoundedRectangle& r, double left, double top, double right, double bottom) {
    EXPECT_DOUBLE_EQ(r.left, left);
    EXPECT_DOUBLE_EQ(r.top, top);
    EXPECT_DOUBLE_EQ(r.right, right);
    EXPECT_DOUBLE_EQ(r.bottom, bottom);
}

TEST(BoundedRectangle, isTheWholePictureAtFirst) {
    const BoundedRectangle r;
    expectEdges(r, 0, 0, 1, 1);
    EXPECT_EQ(r.width(), 1.0);
    EXPECT_EQ(r.height(), 1.0);
}

TEST(BoundedRectangle, isDrawnBackToItsBounds) {
    expectEdges(normalised({.left = -0.5, .top = -0.25, .right = 1.5, .bottom = 2.0}), 0, 0, 1, 1);
    expectEdges(normalised({.left = 0.1,
                            .top = 0.2,
                            .right = 0.9,
                            .bottom = 0.8,
                            .leftBound = 0.25,
                            .topBound = 0.3,
                            .rightBound = 0.75,
                            .bottomBound = 0.7}),
                0.25, 0.3, 0.75, 0.7);
}

TEST(BoundedRectangle, growsToItsMinimumAboutItsCentre) {
    BoundedRectangle r{.left = 0.4, .top = 0.5, .right = 0.5, .bottom = 0.5};
    r.minimumWidth = 0.3;
    r.minimumHeight = 0.2;
    expectEdges(normalised(r), 0.3, 0.4, 0.6, 0.6);
    // Beyond the bound, if the centre lies near to it: the minimum has the last word.
    r.left = 0.9;
    r.right = 1.0;
    expectEdges(normalised(r), 0.8, 0.4, 1.1, 0.6);
}

TEST(BoundedRectangle, closesWhenItsEdgesAreInTheWrongOrder) {
    expectEdges(normalised({.left = 0.75, .top = 0.5, .right = 0.25, .bottom = 0.5}), 0.5, 0.5, 0.5, 0.5);
    // An edge far outside of its opposite bound is not drawn back to that: the centre of both is the place.
    expectEdges(normalised({.left = 5.0, .top = 0.0, .right = 1.0, .bottom = 1.0}), 3, 0, 3, 1);
}

TEST(BoundedRectangle, inflatesEvenlyWhereThereIsRoom) {
    expectEdges(inflated({.left = 0.4, .top = 0.4, .right = 0.6, .bottom = 0.5}, 0.1, 0.2), 0.3, 0.2, 0.7,
                0.7);
}

TEST(BoundedRectangle, inflatesToTheOtherSideWhatOneHasNoRoomFor) {
    // 0.05 of room on the right, so 0.15 more go left; below the same upwards.
    expectEdges(inflated({.left = 0.5, .top = 0.1, .right = 0.95, .bottom = 0.2}, 0.2, 0.3), 0.15, 0, 1, 0.7);
    expectEdges(inflated({}, 0.5, 0.5), 0, 0, 1, 1);
}

TEST(BoundedRectangle, deflatesByNegativeDistances) {
    expectEdges(inflated({}, -0.25, -0.125), 0.25, 0.125, 0.75, 0.875);
    // Past its centre it closes there.
    expectEdges(inflated({.left = 0.25, .top = 0.0, .right = 0.75, .bottom = 1.0}, -0.5, 0.0), 0.5, 0, 0.5,
                1);
}

TEST(BoundedRectangle, movesUpToABound) {
    const BoundedRectangle r{.left = 0.25, .top = 0.5, .right = 0.5, .bottom = 0.75};
    expectEdges(moved(r, 0.125, -0.25), 0.375, 0.25, 0.625, 0.5);
    expectEdges(moved(r, -0.5, 0.5), 0, 0.75, 0.25, 1);
    expectEdges(moved(r, 1e300, -1e300), 0.75, 0, 1, 0.25);
}

TEST(BoundedRectangle, stopsExactlyAtTheBoundItWouldCross) {
    std::mt19937 random(20240511);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    for (int i = 0; i < 20000; ++i) {
        BoundedRectangle r;
        r.leftBound = number(random) - 1.0;
        r.rightBound = number(random) + 1.0;
        const double share = (number(random) + 1.0) / 2.0;
        r.left = r.leftBound + share * (r.rightBound - r.leftBound) / 2.0;
        r.right = r.rightBound - share * (r.rightBound - r.leftBound) / 4.0;
        EXPECT_EQ(moved(r, -3.0, 0.0).left, r.leftBound);
        EXPECT_EQ(moved(r, 3.0, 0.0).right, r.rightBound);
        const BoundedRectangle anywhere = moved(r, number(random), 0.0);
        EXPECT_GE(anywhere.left, r.leftBound);
        EXPECT_LE(anywhere.right, r.rightBound);
        EXPECT_NEAR(anywhere.width(), r.width(), 1e-15);
    }
}

TEST(BoundedRectangle, stopsExactlyAtABoundThatIsFarAway) {
    // Adding the way to the bound would miss it by what the way is rounded.
    BoundedRectangle r{.left = -1000.3, .top = 999.9, .right = -1000.2, .bottom = 1000.3};
    r.leftBound = -1e6;
    r.topBound = 0.1;
    r.rightBound = 0.1;
    r.bottomBound = 1e6;
    ASSERT_NE(r.right + (r.rightBound - r.right), r.rightBound);
    ASSERT_NE(r.top + (r.topBound - r.top), r.topBound);
    const BoundedRectangle there = moved(r, 5000.0, -5000.0);
    EXPECT_EQ(there.right, 0.1);
    EXPECT_EQ(there.top, 0.1);
    EXPECT_NEAR(there.left, 0.0, 1e-12);
    EXPECT_NEAR(there.bottom, 0.5, 1e-12);
}

TEST(BoundedRectangle, tellsNumbersFromOthers) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(isFinite({}));
    for (const double bad : {infinity, -infinity, nan}) {
        EXPECT_FALSE(isFinite({.left = bad}));
        EXPECT_FALSE(isFinite({.top = bad}));
        EXPECT_FALSE(isFinite({.right = bad}));
        EXPECT_FALSE(isFinite({.bottom = bad}));
    }
    EXPECT_FALSE(isFinite({.left = -1.5e308, .right = 1.5e308})) << "its width is no number";
    EXPECT_FALSE(isFinite({.top = 1.5e308, .bottom = -1.5e308}));
}

} // namespace
} // namespace tarvo::custom
