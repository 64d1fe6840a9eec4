// Whole frames of every view on every device, against the reference.

#include "tests/render/conformance/Comparison.h"
#include "tests/render/conformance/Selection.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <tuple>

namespace tarvo::render::conformance {
namespace {

constexpr std::array<const char*, 12> programNames{
    "single view", "panorama, wall", "panorama, ceiling", "panorama, desk", "digital zoom",    "virtual PTZ",
    "YV12 to RGB", "YUY2 to RGB",    "exclude region",    "vertex",         "overview marker", "plain copy"};

/// The program that the view itself is drawn with.
ShaderProgram viewProgram(const FrameCase& frameCase) {
    switch (frameCase.shown) {
    case Shown::digitalZoom:
        return ShaderProgram::customTransform;
    case Shown::virtualPtz:
        return ShaderProgram::customVirtualPtz;
    case Shown::bypass:
        return ShaderProgram::plainCopy;
    default:
        return dewarpProgramOf(frameCase.view().parameters().panoramaMode());
    }
}

struct Tolerance {
    int worst;
    double mean;
};

Tolerance toleranceOf(const FrameCase& frameCase) {
    if (frameCase.shown == Shown::bypass && frameCase.sizes.isOneToOne()) {
        return frameCase.input == FrameKind::yv12 ? Tolerance{oneLevel, oneLevel} : Tolerance{exact, exact};
    }
    return {dewarpWorst, dewarpMean};
}

/// So many colours no picture has by accident, and no empty one.
bool isRich(const Picture& picture) {
    std::set<std::tuple<int, int, int>> colours;
    for (const Bgra& pixel : picture.pixels) {
        colours.emplace(pixel.blue, pixel.green, pixel.red);
    }
    return colours.size() > 200;
}

class Views : public testing::TestWithParam<DeviceUnderTest> {
protected:
    void compare(Shown shown) {
        CComparison comparison(GetParam());
        std::set<ShaderProgram> viewPrograms;
        std::optional<FrameCase> before;
        for (const FrameCase& frameCase : casesOf(shown, selectedRows)) {
            SCOPED_TRACE(frameCase.name());
            const bool isAnew = !before || !before->hasPictureOf(frameCase);
            if (isAnew) {
                comparison.render(frameCase,
                                  inputFrame(frameCase.input,
                                             roomPicture(frameCase.mounting, frameCase.sizes.inputWidth,
                                                         frameCase.sizes.inputHeight),
                                             frameCase.isInputPadded));
            } else {
                comparison.deliver(frameCase);
            }
            before = frameCase;
            ASSERT_FALSE(HasFatalFailure());
            if (isAnew) {
                viewPrograms.insert(viewProgram(frameCase));
                expectAlike(frameCase, comparison);
            }
        }
        EXPECT_EQ(viewPrograms.size(), isPerMounting(shown) ? 3U : 1U);
    }

private:
    static bool isPerMounting(Shown shown) {
        return shown == Shown::panoramaSingle || shown == Shown::panoramaDouble;
    }

    static void expectAlike(const FrameCase& frameCase, const CComparison& comparison) {
        const Picture& reference = comparison.reference().picture;
        const ShaderProgram program = viewProgram(frameCase);
        const std::vector<ShaderProgram>& drawn = comparison.reference().drawn.programs;
        EXPECT_NE(std::ranges::find(drawn, program), drawn.end());
        EXPECT_TRUE(isRich(reference));
        const Tolerance tolerance = toleranceOf(frameCase);
        const Difference difference =
            tolerance.worst == dewarpWorst
                ? differenceOf(reference, comparison.device().picture, edgeMask(reference))
                : differenceOf(reference, comparison.device().picture);
        EXPECT_LE(difference.worst, tolerance.worst) << "at " << difference.x << ", " << difference.y;
        EXPECT_LE(difference.mean, tolerance.mean);
        EXPECT_LE(difference.maskedShare, largestMaskedShare);
        recordFigures(comparison.deviceName(), programNames[static_cast<std::size_t>(program)], difference);
    }
};

TEST_P(Views, single) {
    compare(Shown::single);
}

TEST_P(Views, quad) {
    compare(Shown::quad);
}

TEST_P(Views, panoramaSingle) {
    compare(Shown::panoramaSingle);
}

TEST_P(Views, panoramaDouble) {
    compare(Shown::panoramaDouble);
}

TEST_P(Views, singleOverview) {
    compare(Shown::singleOverview);
}

TEST_P(Views, digitalZoom) {
    compare(Shown::digitalZoom);
}

TEST_P(Views, virtualPtz) {
    compare(Shown::virtualPtz);
}

TEST_P(Views, bypass) {
    compare(Shown::bypass);
}

// The vertex program has no pass of its own: it is behind each of them.
TEST_P(Views, drawEveryPixelProgram) {
    CComparison comparison(GetParam());
    std::set<ShaderProgram> drawn{ShaderProgram::vertex};
    for (const Shown shown : {Shown::singleOverview, Shown::panoramaSingle, Shown::digitalZoom,
                              Shown::virtualPtz, Shown::bypass}) {
        for (const auto mounting : {geometry::TiltOrientation::wall, geometry::TiltOrientation::ceiling,
                                    geometry::TiltOrientation::desk}) {
            FrameCase frameCase;
            frameCase.shown = shown;
            frameCase.mounting = mounting;
            frameCase.input = shown == Shown::bypass ? FrameKind::yuy2 : FrameKind::yv12;
            frameCase.area = {0.2, 0.2, 0.5, 0.5};
            SCOPED_TRACE(frameCase.name());
            comparison.render(frameCase, inputFrame(frameCase.input, roomPicture(mounting, 120, 90), false));
            ASSERT_FALSE(HasFatalFailure());
            drawn.insert(comparison.device().drawn.programs.begin(),
                         comparison.device().drawn.programs.end());
        }
    }
    EXPECT_EQ(drawn.size(), shaderResources.size());
}

INSTANTIATE_TEST_SUITE_P(On, Views, testing::ValuesIn(devicesUnderTest()), deviceTestName);

} // namespace
} // namespace tarvo::render::conformance
