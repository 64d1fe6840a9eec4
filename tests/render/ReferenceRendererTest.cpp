#include "render/reference/ReferenceRenderer.h"

#include "geometry/Projection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace tarvo::render::reference {
namespace {

using geometry::CViewState;
using geometry::TiltOrientation;
using geometry::ViewType;

constexpr Bgra white{255, 255, 255, 255};
constexpr Bgra green{0, 200, 0, 255};
constexpr geometry::LensProfile narrowLens{0.0F, 0.0F, 0.3F}; // the horizon is inside the frame

CViewState viewOf(ViewType viewType, TiltOrientation orientation, int inputWidth, int inputHeight, int width,
                  int height) {
    CViewState view;
    view.setLensProfile(narrowLens);
    view.setTiltOrientation(orientation);
    view.setViewType(viewType);
    view.setInputSize(inputWidth, inputHeight);
    view.setOutputSize(width, height);
    return view;
}

/// Blue tells the column and green the row, over the whole of 0 … 255.
Picture ramp(int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(255 * x / (width - 1)),
                                static_cast<std::uint8_t>(255 * y / (height - 1)), 0, 255};
        }
    }
    return picture;
}

TEST(ReferenceRenderer, refusesWhatDoesNotFit) {
    CViewState view;
    EXPECT_THROW(renderView(view, Picture(4, 4)), std::invalid_argument); // no sizes
    view.setInputSize(8, 8);
    EXPECT_THROW(renderView(view, Picture(8, 8)), std::invalid_argument); // no output size
    view.setOutputSize(8, 8);
    EXPECT_THROW(renderView(view, Picture(8, 7)), std::invalid_argument);
    EXPECT_EQ(renderView(view, Picture(8, 8)).pixels.size(), 64U);
}

TEST(ReferenceRenderer, bypassScalesTheInputIntoTheLetterBox) {
    const CViewState view = viewOf(ViewType::single, TiltOrientation::wall, 64, 64, 128, 64);
    const Picture output = renderView(view, Picture(64, 64, white), true);
    for (int x = 0; x < 128; ++x) {
        EXPECT_EQ(output.at(x, 30), x >= 32 && x < 96 ? white : opaqueBlack) << x;
    }
    // At its own size the input comes through untouched.
    const CViewState same = viewOf(ViewType::quad, TiltOrientation::ceiling, 17, 9, 17, 9);
    const Picture input = ramp(17, 9);
    EXPECT_EQ(renderView(same, input, true).pixels, input.pixels);
}

TEST(ReferenceRenderer, narrowOutputLeavesBars) {
    const CViewState view = viewOf(ViewType::single, TiltOrientation::wall, 80, 60, 60, 60);
    const Picture output = renderView(view, Picture(80, 60, white));
    // The view takes 3/4 of the height: rows 7.5 to 52.5.
    EXPECT_EQ(output.at(30, 6), opaqueBlack);
    EXPECT_EQ(output.at(30, 8), white);
    EXPECT_EQ(output.at(30, 51), white);
    EXPECT_EQ(output.at(30, 53), opaqueBlack);
}

TEST(ReferenceRenderer, centreOfAnOddPictureIsARealSample) {
    for (const auto orientation : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        CViewState view = viewOf(ViewType::single, orientation, 65, 49, 33, 25);
        const double tilt = orientation == TiltOrientation::wall      ? 0.0
                            : orientation == TiltOrientation::ceiling ? -90.0
                                                                      : 90.0;
        view.setPtzPosition(0.0, tilt, 30.0, false);
        Picture input(65, 49, green);
        input.at(32, 24) = white;
        EXPECT_EQ(renderView(view, input).at(16, 12), white);
    }
}

TEST(ReferenceRenderer, wallQuadHasTwoHalves) {
    // White to the west and green to the east: the halves look at −45 and 45 degrees.
    CViewState view = viewOf(ViewType::quad, TiltOrientation::wall, 120, 90, 80, 60);
    Picture input(120, 90, white);
    for (int y = 0; y < 90; ++y) {
        for (int x = 60; x < 120; ++x) {
            input.at(x, y) = green;
        }
    }
    view.setPtzPosition(0.0, 0.0, 15.0, false);
    const Picture output = renderView(view, input);
    for (const int y : {1, 20, 40, 58}) {
        EXPECT_EQ(output.at(20, y), white) << y;
        EXPECT_EQ(output.at(60, y), green) << y;
    }
}

TEST(ReferenceRenderer, ceilingQuadShowsFourDirections) {
    CViewState view = viewOf(ViewType::quad, TiltOrientation::ceiling, 120, 120, 80, 80);
    // Each quarter of the picture its own colour: north-west, north-east, south-east, south-west.
    const Bgra quarters[] = {{10, 0, 0, 255}, {20, 0, 0, 255}, {30, 0, 0, 255}, {40, 0, 0, 255}};
    Picture input(120, 120);
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 120; ++x) {
            input.at(x, y) = quarters[y < 60 ? (x < 60 ? 0 : 1) : (x < 60 ? 3 : 2)];
        }
    }
    view.setPtzPosition(0.0, -45.0, 10.0, false);
    const Picture output = renderView(view, input);
    EXPECT_EQ(output.at(20, 20), quarters[0]); // pan −45
    EXPECT_EQ(output.at(60, 20), quarters[1]); // pan 45
    EXPECT_EQ(output.at(20, 60), quarters[2]); // pan 135
    EXPECT_EQ(output.at(60, 60), quarters[3]); // pan 225
}

TEST(ReferenceRenderer, customViewStaysBlack) {
    const CViewState view = viewOf(ViewType::custom, TiltOrientation::ceiling, 16, 16, 8, 8);
    for (const Bgra& pixel : renderView(view, Picture(16, 16, white)).pixels) {
        EXPECT_EQ(pixel, opaqueBlack);
    }
}

TEST(ReferenceRenderer, excludeAreaIsShownUnwarpedInItsPlace) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::wall, 80, 60, 80, 60);
    view.setPtzPosition(0.0, 0.0, 30.0, false);
    const Picture input = ramp(80, 60);
    const Picture plain = renderView(view, input);
    view.setExcludeArea({0.25, 0.5, 0.5, 0.8});
    const Picture output = renderView(view, input);
    const auto& constants = view.parameters().constants();
    int blackened = 0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 80; ++x) {
            SCOPED_TRACE(testing::Message() << x << ' ' << y);
            if (x >= 20 && x < 40 && y >= 30 && y < 48) {
                ASSERT_EQ(output.at(x, y), input.at(x, y)); // its place, shown as it is
                continue;
            }
            // Where the pixel looks: columns 20 to 40 and rows 30 to 48 of the input are the area.
            const auto seen = geometry::projectSingleView(constants, (x + 0.5) / 80.0, (y + 0.5) / 60.0);
            const double inside = std::min({seen.x - 20.0, 40.0 - seen.x, seen.y - 30.0, 48.0 - seen.y});
            if (inside > 1.0) {
                ASSERT_EQ(output.at(x, y), opaqueBlack);
                ++blackened;
            } else if (inside < -1.0) {
                ASSERT_EQ(output.at(x, y), plain.at(x, y));
            }
        }
    }
    EXPECT_GT(blackened, 20);
}

TEST(ReferenceRenderer, emptyExcludeAreasChangeNothing) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::ceiling, 80, 60, 80, 60);
    const Picture input = ramp(80, 60);
    const Picture plain = renderView(view, input);
    const double none = std::nan("");
    for (const geometry::ExcludeArea area :
         {geometry::ExcludeArea{0.5, 0.1, 0.5, 0.9}, geometry::ExcludeArea{0.6, 0.1, 0.5, 0.9},
          geometry::ExcludeArea{none, 0.1, 0.5, 0.9}, geometry::ExcludeArea{0.5, 0.1, 0.501, 0.9}}) {
        view.setExcludeArea(area);
        EXPECT_EQ(renderView(view, input).pixels, plain.pixels);
    }
}

TEST(ReferenceRenderer, excludeAreaLargerThanThePictureShowsTheInput) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::ceiling, 80, 60, 80, 60);
    view.setExcludeArea({-2.0, -INFINITY, 1e300, 3.0});
    const Picture input = ramp(80, 60);
    EXPECT_EQ(renderView(view, input).pixels, input.pixels);
}

TEST(ReferenceRenderer, overviewDiscShowsTheUndistortedInput) {
    CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::ceiling, 120, 120, 120, 120);
    view.setPtzPosition(90.0, 0.0, 2.0,
                        false); // a small view of the horizon: its mark lies at the disc's right
    Picture input(120, 120, white);
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 120; ++x) {
            if (y < 60) {
                input.at(x, y) = green;
            }
        }
    }
    const Picture output = renderView(view, input);
    // Square output: the disc is half as large and sits in the lower right corner: centre (90, 90),
    // radius 30.
    EXPECT_EQ(output.at(90, 70), green);
    EXPECT_EQ(output.at(90, 110), white);
    EXPECT_EQ(output.at(70, 95), white);
    EXPECT_EQ(output.at(70, 80), green);
    view.setOptions(static_cast<std::int32_t>(geometry::OptionFlag::overviewMapPlacementLeft));
    const Picture left = renderView(view, input);
    EXPECT_EQ(left.at(30, 70), green);
    EXPECT_EQ(left.at(30, 110), white);
}

TEST(ReferenceRenderer, markerTintsExactlyTheRegionInView) {
    CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::ceiling, 400, 400, 400, 400);
    view.setPtzPosition(90.0, -45.0, 10.0, false);
    const Picture output = renderView(view, Picture(400, 400, white));
    int tinted = 0;
    for (int y = 200; y < 400; ++y) {
        for (int x = 200; x < 400; ++x) {
            const Bgra& pixel = output.at(x, y);
            if (pixel == white) {
                continue;
            }
            // Once half red over white; the blend leaves its own alpha. Twice would be darker.
            ASSERT_EQ(pixel, (Bgra{128, 128, 255, 128})) << x << ' ' << y;
            ++tinted;
            // 45 degrees off the nadir to the east: radius 0.3 · π/4 = 0.2356 of the input's height, which is
            // 200 pixels here. The view spans ±10 degrees of that, 0.0524 · 200 = 10.5 pixels.
            EXPECT_NEAR(x + 0.5, 300.0 + 47.1, 11.5);
            EXPECT_NEAR(y + 0.5, 300.0, 13.0);
        }
    }
    // Its solid angle is (2 tan 10°)² less a little at the corners; on the disc, radius and arc scale by 0.3
    // · 200 and 0.3 · 200 · θ / sin θ per radian: 0.1244 · 0.97 · 60² · 1.1107.
    EXPECT_NEAR(tinted, 482, 24);
}

TEST(ReferenceRenderer, markerEndsAtTheImageCircle) {
    CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::wall, 400, 400, 400, 400);
    view.setLensProfile({0.0F, 0.0F, 0.5F}); // the circle ends one radian off the axis
    view.setPtzPosition(57.0, 0.0, 30.0, false);
    const Picture output = renderView(view, Picture(400, 400, white));
    for (int y = 200; y < 400; ++y) {
        for (int x = 200; x < 400; ++x) {
            const Bgra pixel = output.at(x, y);
            const bool isMarked = pixel.red == 255 && pixel.green < 255;
            if (isMarked) {
                const double radius = std::hypot(x + 0.5 - 300.0, y + 0.5 - 300.0);
                EXPECT_LT(radius, 100.0 + 4.0); // the alpha falls to 0 within one cell of the grid
            }
        }
    }
    EXPECT_EQ(output.at(380, 300), (Bgra{128, 128, 255, 128}));
}

TEST(ReferenceRenderer, smallestAndThinnestPicturesWork) {
    for (const auto viewType : {ViewType::single, ViewType::quad, ViewType::panoramaSingle,
                                ViewType::panoramaDouble, ViewType::singleOverview}) {
        for (const auto orientation :
             {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
            for (const auto& [width, height] : {std::pair(1, 1), std::pair(1, 10000), std::pair(10000, 1)}) {
                CViewState view = viewOf(viewType, orientation, width, height, 9, 7);
                const Picture output = renderView(view, Picture(width, height, white));
                ASSERT_EQ(output.pixels.size(), 63U);
                for (const Bgra& pixel : output.pixels) {
                    // White or black, but for the marker, half of it red.
                    const bool isMarked =
                        pixel.red == 255 && pixel.alpha < 255 && viewType == ViewType::singleOverview;
                    EXPECT_TRUE(pixel == white || pixel == opaqueBlack || isMarked);
                }
                CViewState back = viewOf(viewType, orientation, 9, 7, width, height);
                EXPECT_EQ(renderView(back, Picture(9, 7, white)).pixels.size(),
                          static_cast<std::size_t>(width * height));
            }
        }
    }
}

TEST(ReferenceRenderer, lensThatIsNoNumberGivesBlackAndNoCrash) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::ceiling, 16, 16, 16, 16);
    view.setLensProfile({NAN, 0.0F, INFINITY});
    for (const Bgra& pixel : renderView(view, Picture(16, 16, white)).pixels) {
        EXPECT_EQ(pixel, opaqueBlack);
    }
    CViewState wall = viewOf(ViewType::panoramaSingle, TiltOrientation::wall, 16, 16, 16, 16);
    wall.setLensProfile({NAN, 0.0F, INFINITY});
    for (const Bgra& pixel : renderView(wall, Picture(16, 16, white)).pixels) {
        EXPECT_TRUE(pixel == white || pixel == opaqueBlack); // a wall panorama goes on with the edge pixels
    }
}

} // namespace
} // namespace tarvo::render::reference
