#include "custom/BorderAdjustment.h"
#include "custom/VirtualPtzMapping.h"
#include "tests/custom/view/RenderedView.h"

#include <array>
#include <cmath>

// The mapping of single points and the picture: a mark in the panorama appears where the mapping says.

namespace tarvo::custom {
namespace {

using render::Picture;

constexpr int panoramaWidth = 1440;
constexpr int panoramaHeight = 720;
constexpr int outputWidth = 320;
constexpr int outputHeight = 240;

struct Place {
    double x;
    double y;
};

/// A round white mark with soft edges on black, about half a degree in radius; places are pixels.
Picture markedPanorama(Place mark) {
    constexpr double radius = 4.0;
    Picture panorama(panoramaWidth, panoramaHeight);
    for (int y = 0; y < panoramaHeight; ++y) {
        for (int x = 0; x < panoramaWidth; ++x) {
            const double distance = std::hypot(x + 0.5 - mark.x, y + 0.5 - mark.y);
            const auto level =
                static_cast<std::uint8_t>(255.0 * std::clamp(radius - distance + 0.5, 0.0, 1.0));
            panorama.at(x, y) = {level, level, level, 255};
        }
    }
    return panorama;
}

struct Found {
    Place centre;  ///< pixels
    double sum;    ///< of the brightness, in white pixels
    double spread; ///< how far the light lies from its centre, pixels
};

Found findMark(const Picture& picture) {
    double sum = 0.0;
    double sumX = 0.0;
    double sumY = 0.0;
    double squares = 0.0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const double level = picture.at(x, y).green / 255.0;
            sum += level;
            sumX += level * (x + 0.5);
            sumY += level * (y + 0.5);
            squares += level * ((x + 0.5) * (x + 0.5) + (y + 0.5) * (y + 0.5));
        }
    }
    const Place centre{sumX / sum, sumY / sum};
    const double variance = squares / sum - centre.x * centre.x - centre.y * centre.y;
    return {centre, sum, std::sqrt(std::max(variance, 0.0))};
}

class VirtualPtzPlaces : public RenderedView {
protected:
    VirtualPtzPlaces() {
        // The input is the panorama itself: its corners, and all between them in proportion.
        std::vector<std::uint16_t> words;
        for (const Cell& cell :
             {Cell{0.0, 0.0, 1.0}, Cell{1.0, 0.0, 1.0}, Cell{0.0, 1.0, 1.0}, Cell{1.0, 1.0, 1.0}})
            append(words, cell);
        setTables({1, 2, 2}, words);
        shader.setControlType(geometry::CustomTransformControlType::virtualPtzFromPanorama);
    }

    /// How many of a few points of the view saw the panorama; each of those is looked at.
    int expectMarks(VirtualPtzSettings settings) {
        SCOPED_TRACE(testing::Message() << "pan " << settings.pan << " tilt " << settings.tilt << " fov "
                                        << settings.fieldOfView << " effect " << settings.effectLevel);
        settings.outputAspect = static_cast<float>(outputWidth) / outputHeight;
        shader.setVirtualPtz(settings);
        int seen = 0;
        // Not the very centre, which the mapping has no answer for.
        for (const Place point : {Place{0.1, 0.15}, Place{0.85, 0.2}, Place{0.3, 0.8}, Place{0.55, 0.45}}) {
            const PanoramaDirection direction =
                mapToPanorama(virtualPtzView(settings), static_cast<float>(point.x),
                              static_cast<float>(point.y), Straightening::applied);
            const double x = double{direction.pan} / settings.panoramaHorizontalFieldOfView + 0.5;
            const double y = 0.5 - double{direction.tilt} / settings.panoramaVerticalFieldOfView;
            if (x < 0.02 || x > 0.98 || y < 0.02 || y > 0.98)
                continue;
            ++seen;
            const Found found = findMark(
                custom(markedPanorama({x * panoramaWidth, y * panoramaHeight}), outputWidth, outputHeight));
            // At the smallest scale used here, 0.4 degrees a pixel, it covers nearly five pixels.
            EXPECT_GT(found.sum, 3.0);
            EXPECT_LT(found.spread, 8.0) << "it is one mark";
            EXPECT_NEAR(found.centre.x, point.x * outputWidth, 0.3);
            EXPECT_NEAR(found.centre.y, point.y * outputHeight, 0.3);
        }
        return seen;
    }
};
TARVO_ON_EVERY_DEVICE(VirtualPtzPlaces);

TEST_P(VirtualPtzPlaces, areThoseOfTheMapping) {
    EXPECT_EQ(expectMarks({}), 4) << "a level camera sees the panorama's middle";
    VirtualPtzSettings s;
    s.pan = 30.0;
    s.tilt = -12.0;
    s.fieldOfView = 50.0;
    EXPECT_EQ(expectMarks(s), 4);
    s.tilt = 20.0;
    s.pan = -35.0;
    EXPECT_EQ(expectMarks(s), 4);
    s.cameraPitch = 8.0;
    s.cameraRoll = -15.0;
    EXPECT_GE(expectMarks(s), 3);
    s.effectLevel = 0.4;
    EXPECT_GE(expectMarks(s), 2);
    s = {};
    s.effectLevel = 0.0;
    s.panoramaHorizontalFieldOfView = 100.0;
    s.pan = 4.0;
    s.tilt = 3.0;
    EXPECT_GE(expectMarks(s), 3);
}

TEST_P(VirtualPtzPlaces, areThoseOfTheMappingOnceDrawnBack) {
    VirtualPtzSettings s;
    s.fieldOfView = 40.0;
    s.pan = 85.0;
    s.useStrictBorderMode = true;
    s.outputAspect = static_cast<float>(outputWidth) / outputHeight;
    const VirtualPtzSettings adjusted = adjustedToBorder(s);
    // A level view of 40 degrees ends at the panorama's border when its middle is 20 degrees from it.
    EXPECT_NEAR(adjusted.pan, 70.0, 1e-3);
    EXPECT_EQ(expectMarks(adjusted), 4);
    // All of it is panorama: a white one fills the view but for its last rounding, and before it did not.
    const Picture white(panoramaWidth, panoramaHeight, {255, 255, 255, 255});
    const double all = outputWidth * outputHeight;
    EXPECT_GT(findMark(custom(white, outputWidth, outputHeight)).sum, all - outputHeight);
    shader.setVirtualPtz(s);
    EXPECT_LT(findMark(custom(white, outputWidth, outputHeight)).sum, 0.7 * all);
}

} // namespace
} // namespace tarvo::custom
