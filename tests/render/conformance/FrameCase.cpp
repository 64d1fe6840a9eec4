#include "tests/render/conformance/FrameCase.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace tarvo::render::conformance {
namespace {

using geometry::TiltOrientation;
using geometry::ViewType;

// Factors are levels of these. The first level of each is the one without anything special.
constexpr std::array<FrameSizes, 4> sizes{
    FrameSizes{120, 90, 120, 90}, {128, 96, 96, 72}, {101, 75, 133, 97}, {96, 112, 140, 64}};
constexpr std::array<double, 3> effectLevels{1.0, 0.3, 0.0};
constexpr std::array<TiltOrientation, 3> mountings{TiltOrientation::wall, TiltOrientation::ceiling,
                                                   TiltOrientation::desk};

/// None, one inside, one at two edges of the picture, and all of it. No edge goes through the centres of a
/// row or column of any of the inputs: of those, rounding alone would tell whether they are inside.
constexpr std::array<geometry::ExcludeArea, 4> areas{
    geometry::ExcludeArea{}, {0.31, 0.23, 0.56, 0.72}, {0.0, 0.6, 0.36, 1.0}, {0.0, 0.0, 1.0, 1.0}};

constexpr std::array<const char*, 8> shownNames{"single",   "quad",        "panoramaSingle", "panoramaDouble",
                                                "overview", "digitalZoom", "virtualPtz",     "bypass"};
constexpr std::array<const char*, 4> frameNames{"rgb32", "rgb32BottomUp", "yv12", "yuy2"};
constexpr std::array<const char*, 4> mountingNames{"undef", "wall", "ceiling", "desk"};

template<typename Enumeration>
constexpr std::size_t number(Enumeration value) {
    return static_cast<std::size_t>(value);
}

/// Input, its padding, sizes, exclude area, mounting, effect level, aim, overview, output, its padding: what
/// changes fastest asks for the least anew.
std::array<int, 10> levelCounts(Shown shown) {
    const bool isDewarped =
        shown != Shown::digitalZoom && shown != Shown::virtualPtz && shown != Shown::bypass;
    const bool isSingle = shown == Shown::single || shown == Shown::singleOverview;
    const bool hasAim = isSingle || shown == Shown::quad || shown == Shown::virtualPtz;
    return {4,
            2,
            static_cast<int>(sizes.size()),
            shown == Shown::bypass ? 1 : static_cast<int>(areas.size()),
            isDewarped ? 3 : 1,
            isSingle || shown == Shown::virtualPtz ? 3 : 1,
            hasAim ? 2 : 1,
            shown == Shown::singleOverview ? 2 : 1,
            3,
            2};
}

template<typename Values>
const auto& levelOf(const Values& values, int level) {
    return values[static_cast<std::size_t>(level)];
}

FrameCase frameCase(Shown shown, const tests::Levels& levels) {
    FrameCase result;
    result.shown = shown;
    result.input = static_cast<FrameKind>(levels[0]);
    result.isInputPadded = levels[1] != 0;
    result.sizes = levelOf(sizes, levels[2]);
    result.area = levelOf(areas, levels[3]);
    result.mounting = levelOf(mountings, levels[4]);
    result.effectLevel = levelOf(effectLevels, levels[5]);
    result.isAimedWide = levels[6] != 0;
    result.isOverviewLeft = levels[7] != 0;
    result.output = static_cast<FrameKind>(levels[8]);
    result.isOutputPadded = levels[9] != 0;
    return result;
}

} // namespace

std::string FrameCase::name() const {
    const auto size = [](int width, int height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    std::string result = shownNames[number(shown)];
    result += std::string(", ") + mountingNames[number(mounting)] + ", " + frameNames[number(input)] + " " +
              size(sizes.inputWidth, sizes.inputHeight) + (isInputPadded ? " padded" : "") + " to " +
              frameNames[number(output)] + " " + size(sizes.outputWidth, sizes.outputHeight) +
              (isOutputPadded ? " padded" : "");
    result +=
        (area.isActive() ? ", excluded " + std::to_string(area.right - area.left) + " of the width" : "") +
        ", effect " + std::to_string(effectLevel) + (isAimedWide ? ", wide" : "") +
        (isOverviewLeft ? ", overview left" : "");
    return result;
}

bool FrameCase::hasPictureOf(const FrameCase& other) const {
    const auto key = [](const FrameCase& each) {
        return std::tuple(each.shown, each.input, each.sizes.inputWidth, each.sizes.inputHeight,
                          each.sizes.outputWidth, each.sizes.outputHeight, each.isInputPadded, each.area.left,
                          each.area.top, each.area.right, each.area.bottom, each.mounting, each.effectLevel,
                          each.isAimedWide, each.isOverviewLeft, each.panAsideDegrees);
    };
    return key(*this) == key(other);
}

ViewType FrameCase::viewType() const {
    switch (shown) {
    case Shown::quad:
        return ViewType::quad;
    case Shown::panoramaSingle:
        return ViewType::panoramaSingle;
    case Shown::panoramaDouble:
        return ViewType::panoramaDouble;
    case Shown::singleOverview:
        return ViewType::singleOverview;
    case Shown::digitalZoom:
    case Shown::virtualPtz:
        return ViewType::custom;
    case Shown::single:
    case Shown::bypass:
        break;
    }
    return ViewType::single;
}

geometry::CViewState FrameCase::view() const {
    geometry::CViewState view;
    view.setInputSize(sizes.inputWidth, sizes.inputHeight);
    view.setOutputSize(sizes.outputWidth, sizes.outputHeight);
    view.setLensProfile({-0.01F, 0.005F, 0.31F});
    view.setTiltOrientation(mounting);
    view.setViewType(viewType());
    if (geometry::isSingleDewarp(viewType()) || viewType() == ViewType::quad) {
        const double up = mounting == TiltOrientation::desk ? 1.0 : -1.0;
        if (isAimedWide) {
            view.setPtzPosition(75.0 + panAsideDegrees, 15.0 * up, 60.0, false);
        } else {
            view.setPtzPosition(17.0 + panAsideDegrees, 48.0 * up, 40.0, false);
        }
    }
    view.setEffectLevel(effectLevel);
    view.setExcludeArea(area);
    view.setOptions(isOverviewLeft ? static_cast<std::int32_t>(geometry::OptionFlag::overviewMapPlacementLeft)
                                   : 0);
    return view;
}

std::vector<FrameCase> casesOf(Shown shown, Rows rows) {
    std::vector<FrameCase> cases;
    for (const tests::Levels& levels : rows(levelCounts(shown))) {
        cases.push_back(frameCase(shown, levels));
    }
    std::ranges::stable_sort(cases, {}, [](const FrameCase& each) {
        return std::tuple(each.input, each.isInputPadded, each.sizes.inputWidth);
    });
    return cases;
}

} // namespace tarvo::render::conformance
