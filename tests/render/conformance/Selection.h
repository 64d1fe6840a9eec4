#pragma once

#include "tests/render/conformance/FrameCase.h"

namespace tarvo::render::conformance {

/// Which combinations of a view's factors this build compares: all of them where they are quick to draw, else
/// those in which any two levels meet.
std::vector<tests::Levels> selectedRows(std::span<const int> levelCounts);

} // namespace tarvo::render::conformance
