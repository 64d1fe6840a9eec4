#include "tests/render/conformance/Selection.h"

namespace tarvo::render::conformance {

std::vector<tests::Levels> selectedRows(std::span<const int> levelCounts) {
    return tests::pairwise(levelCounts);
}

} // namespace tarvo::render::conformance
