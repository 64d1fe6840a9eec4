#pragma once

#include "geometry/ViewState.h"
#include "tests/render/conformance/Pairwise.h"

#include <string>
#include <vector>

namespace tarvo::render::conformance {

/// What the output picture shows: the view types - the custom one by each of its programs - and the bypass.
enum class Shown {
    single,
    quad,
    panoramaSingle,
    panoramaDouble,
    singleOverview,
    digitalZoom,
    virtualPtz,
    bypass,
};

enum class FrameKind { rgb32, rgb32BottomUp, yv12, yuy2 };

/// Of the input and the output, in pixels.
struct FrameSizes {
    int inputWidth;
    int inputHeight;
    int outputWidth;
    int outputHeight;

    bool isOneToOne() const { return inputWidth == outputWidth && inputHeight == outputHeight; }

    friend bool operator==(const FrameSizes&, const FrameSizes&) = default;
};

/// Everything that tells one frame of the comparison from the others.
struct FrameCase {
    Shown shown = Shown::single;
    FrameKind input = FrameKind::rgb32;
    FrameKind output = FrameKind::rgb32; ///< not yuy2
    FrameSizes sizes{120, 90, 120, 90};
    bool isInputPadded = false;
    bool isOutputPadded = false;
    geometry::ExcludeArea area{}; ///< to leave out and paste
    geometry::TiltOrientation mounting = geometry::TiltOrientation::wall;
    double effectLevel = 1.0;
    bool isAimedWide = false; ///< past the border of the picture
    bool isOverviewLeft = false;
    double panAsideDegrees = 0.0; ///< added to the aim

    std::string name() const;
    geometry::CViewState view() const;
    geometry::ViewType viewType() const;

    /// Whether both show the same picture, in whatever output format.
    bool hasPictureOf(const FrameCase& other) const;
};

using Rows = std::vector<tests::Levels> (*)(std::span<const int> levelCounts);

/// The cases of something shown, of the factors that it depends on; `rows` chooses among the combinations.
/// Cases that can share an open device follow one another.
std::vector<FrameCase> casesOf(Shown shown, Rows rows);

} // namespace tarvo::render::conformance
