#include "apps/tarvo-dewarp/tables/TableProjection.h"
#include "scene/Render.h"
#include "tests/custom/view/RenderedView.h"
#include "tests/geometry/TrueCamera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

// A table of a rectilinear view, shown as a custom view, against the built-in single view of the same
// direction. How far a cell's places are from the truth between the cells is computed with the vector
// arithmetic of tests/geometry/TrueCamera.h, and from that how far the pictures may differ.

namespace tarvo::custom {
namespace {

using render::Bgra;
using render::Picture;

constexpr int inputWidth = 1152;
constexpr int inputHeight = 864;
constexpr int outputWidth = 320;
constexpr int outputHeight = 240;
constexpr double panDegrees = 30.0;
constexpr double tiltDegrees = -10.0;
constexpr double fieldOfViewDegrees = 25.0;

struct Grid {
    int width;
    int height;
};
// Of the output's shape, so that there are no bars.
constexpr std::array<Grid, 6> grids{{{8, 6}, {16, 12}, {32, 24}, {64, 48}, {128, 96}, {320, 240}}};
// Steps of 1/65535 of the input, rounded, and the table's own single-precision constants.
constexpr double roundingOfPlaces = 0.02;

apps::LookupTable tableOf(const Grid& grid, double pan) {
    apps::TableView view;
    view.grid = {static_cast<std::uint32_t>(grid.width), static_cast<std::uint32_t>(grid.height)};
    view.input = {inputWidth, inputHeight};
    view.panDegrees = pan;
    view.tiltDegrees = tiltDegrees;
    view.fieldOfViewDegrees = fieldOfViewDegrees;
    return apps::makeTable(view);
}

/// Pixels of the input.
struct Place {
    double x;
    double y;
};

/// Where the point of an output of the input's shape looks.
Place truth(double u, double v, double shape) {
    const double halfWidth = std::tan(tests::toRadians(fieldOfViewDegrees)) * inputWidth / inputHeight;
    const tests::Vector ray = tests::viewRay(panDegrees, tiltDegrees, (2.0 * u - 1.0) * halfWidth,
                                             (1.0 - 2.0 * v) * halfWidth / shape);
    const tests::ImagePoint point =
        tests::Mounting::of(geometry::TiltOrientation::wall).image(geometry::defaultLensProfile, ray);
    return {inputWidth / 2.0 + point.x * inputHeight, inputHeight / 2.0 + point.y * inputHeight};
}

/// Where the table looks for it, mixing the cells around.
Place looked(const apps::LookupTable& table, double u, double v) {
    const double x = u * (table.width - 1);
    const double y = v * (table.height - 1);
    const int left = std::min(static_cast<int>(x), table.width - 2);
    const int top = std::min(static_cast<int>(y), table.height - 2);
    const auto entry = [&](int column, int row) {
        return table.entries.at(static_cast<std::size_t>((top + row) * table.width + left + column));
    };
    const auto mixed = [&](auto member) {
        const auto at = [&](int column, int row) { return (entry(column, row).*member) / 65535.0; };
        return std::lerp(std::lerp(at(0, 0), at(1, 0), x - left), std::lerp(at(0, 1), at(1, 1), x - left),
                         y - top);
    };
    return {mixed(&apps::TableEntry::x) * inputWidth, mixed(&apps::TableEntry::y) * inputHeight};
}

/// The steepest step of a channel from a pixel to the next, across and down, around a place.
struct Steps {
    double across = 0.0;
    double down = 0.0;
};

template<typename Channel>
Steps stepsAround(const Picture& picture, Place place, double reach, Channel channel) {
    Steps steps;
    const auto value = [&](int x, int y) {
        return double{1} *
               (picture.at(std::clamp(x, 0, inputWidth - 1), std::clamp(y, 0, inputHeight - 1)).*channel);
    };
    const int left = static_cast<int>(std::floor(place.x - 0.5 - reach));
    const int right = static_cast<int>(std::floor(place.x - 0.5 + reach)) + 1;
    const int top = static_cast<int>(std::floor(place.y - 0.5 - reach));
    const int bottom = static_cast<int>(std::floor(place.y - 0.5 + reach)) + 1;
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            if (x < right)
                steps.across = std::max(steps.across, std::abs(value(x + 1, y) - value(x, y)));
            if (y < bottom)
                steps.down = std::max(steps.down, std::abs(value(x, y + 1) - value(x, y)));
        }
    }
    return steps;
}

double decibels(const Picture& a, const Picture& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        for (const auto channel : {&Bgra::blue, &Bgra::green, &Bgra::red}) {
            const double difference = double{1} * (a.pixels[i].*channel) - (b.pixels[i].*channel);
            sum += difference * difference;
        }
    }
    return 10.0 * std::log10(255.0 * 255.0 * 3.0 * static_cast<double>(a.pixels.size()) / sum);
}

class BuiltInView : public RenderedView {
protected:
    static const Picture& input() {
        static const Picture picture =
            scene::renderFisheye(scene::CRoom(), scene::defaultCamera(geometry::TiltOrientation::wall),
                                 inputWidth, inputHeight, {2, 0});
        return picture;
    }

    Picture single() {
        geometry::CViewState view;
        view.setTiltOrientation(geometry::TiltOrientation::wall);
        view.setInputSize(inputWidth, inputHeight);
        view.setOutputSize(outputWidth, outputHeight);
        view.setPtzPosition(panDegrees, tiltDegrees, fieldOfViewDegrees, false);
        return builtIn(view, input());
    }

    Picture tablesPicture(const apps::LookupTable& table) {
        std::vector<std::uint16_t> words;
        for (const apps::TableEntry& entry : table.entries)
            words.insert(words.end(), {entry.x, entry.y, entry.weight});
        setTables({1, static_cast<std::uint16_t>(table.width), static_cast<std::uint16_t>(table.height)},
                  words);
        return custom(input(), outputWidth, outputHeight);
    }
};
TARVO_ON_EVERY_DEVICE(BuiltInView);

TEST_P(BuiltInView, agreesWithATableWithinItsResolution) {
    const Picture expected = single();
    double decibelsBefore = 0.0;
    double errorBefore = 1e9;
    for (const Grid& grid : grids) {
        SCOPED_TRACE(testing::Message() << grid.width << " x " << grid.height);
        const apps::LookupTable table = tableOf(grid, panDegrees);
        const Picture actual = tablesPicture(table);
        double largestError = 0.0;
        for (int y = 0; y < outputHeight; ++y) {
            for (int x = 0; x < outputWidth; ++x) {
                const double u = (x + 0.5) / outputWidth;
                const double v = (y + 0.5) / outputHeight;
                const Place wanted = truth(u, v, double{1} * outputWidth / outputHeight);
                const Place got = looked(table, u, v);
                const double errorX = std::abs(got.x - wanted.x);
                const double errorY = std::abs(got.y - wanted.y);
                largestError = std::max(largestError, std::hypot(errorX, errorY));
                // What the devices' single precision adds, of both pictures.
                constexpr double ofDevice = 0.03;
                for (const auto channel : {&Bgra::blue, &Bgra::green, &Bgra::red}) {
                    const Steps steps =
                        stepsAround(input(), wanted, std::max(errorX, errorY) + ofDevice, channel);
                    // And a half for the rounding of each picture.
                    const double allowed =
                        (errorX + ofDevice) * steps.across + (errorY + ofDevice) * steps.down + 1.01;
                    ASSERT_LE(std::abs(actual.at(x, y).*channel - expected.at(x, y).*channel), allowed)
                        << x << ' ' << y;
                }
            }
        }
        const double reached = decibels(actual, expected);
        std::printf("    %3d x %3d cells: places within %.3f input pixels, pictures %.1f dB\n", grid.width,
                    grid.height, largestError, reached);
        // Half the mesh is a quarter of the error, down to what the places are rounded to.
        EXPECT_LT(largestError, std::max(errorBefore / 3.0, roundingOfPlaces));
        EXPECT_GT(reached, decibelsBefore);
        errorBefore = largestError;
        decibelsBefore = reached;
    }
    EXPECT_LT(errorBefore, roundingOfPlaces);
    // A tenth of a degree aside, half an output pixel, it is another picture.
    const Picture aside = tablesPicture(tableOf(grids.back(), panDegrees + 0.1));
    EXPECT_LT(decibels(aside, expected), decibelsBefore - 10.0);
}

TEST_P(BuiltInView, isCutOutByTheViewRectangleAndHasBarsOfTheTablesShape) {
    const apps::LookupTable table = tableOf({320, 240}, panDegrees);
    const Picture whole = tablesPicture(table);
    // The middle half, enlarged to the whole output, shows at pixel (2k + 1/2) what pixel 80 + k showed; the
    // room is smooth enough between.
    BoundedRectangle middle;
    middle.left = middle.top = 0.25;
    middle.right = middle.bottom = 0.75;
    shader.setViewRectangle(middle);
    const Picture zoomed = custom(input(), outputWidth, outputHeight);
    Picture shrunk(outputWidth / 2, outputHeight / 2);
    Picture cut = shrunk;
    for (int y = 0; y < shrunk.height; ++y) {
        for (int x = 0; x < shrunk.width; ++x) {
            for (const auto channel : {&Bgra::blue, &Bgra::green, &Bgra::red}) {
                shrunk.at(x, y).*channel = static_cast<std::uint8_t>(
                    (zoomed.at(2 * x, 2 * y).*channel + zoomed.at(2 * x + 1, 2 * y).*channel +
                     zoomed.at(2 * x, 2 * y + 1).*channel + zoomed.at(2 * x + 1, 2 * y + 1).*channel + 2) /
                    4);
            }
            cut.at(x, y) = whole.at(outputWidth / 4 + x, outputHeight / 4 + y);
        }
    }
    EXPECT_GT(decibels(shrunk, cut), 30.0);
    shader.setViewRectangle({});
    // Tables of 4:3 in a square: an eighth of it above and below is black, the rest the same picture.
    const Picture square = custom(input(), outputWidth, outputWidth);
    constexpr int bar = (outputWidth - outputHeight) / 2;
    for (int y = 0; y < outputWidth; ++y) {
        for (int x = 0; x < outputWidth; ++x) {
            if (y < bar || y >= bar + outputHeight) {
                ASSERT_EQ(square.at(x, y), render::opaqueBlack) << x << ' ' << y;
            } else {
                const Bgra& same = whole.at(x, y - bar);
                ASSERT_NEAR(square.at(x, y).blue, same.blue, 2.0) << x << ' ' << y;
                ASSERT_NEAR(square.at(x, y).green, same.green, 2.0) << x << ' ' << y;
                ASSERT_NEAR(square.at(x, y).red, same.red, 2.0) << x << ' ' << y;
            }
        }
    }
}

} // namespace
} // namespace tarvo::custom
