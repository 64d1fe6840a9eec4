#include "geometry/ExcludeArea.h"

#include <algorithm>

namespace tarvo::geometry {
namespace {

double insideFrame(double fraction) {
    // Compared this way round, what is no number falls to 0.
    return fraction > 0.0 ? std::min(fraction, 1.0) : 0.0;
}

int evenEdge(double fraction, int size) {
    return std::min((static_cast<int>(insideFrame(fraction) * size) + 1) / 2 * 2, size);
}

} // namespace

ExcludeArea ExcludeArea::clipped() const {
    return {insideFrame(left), insideFrame(top), insideFrame(right), insideFrame(bottom)};
}

PixelBox ExcludeArea::pixelBox(int inputWidth, int inputHeight) const {
    return {evenEdge(left, inputWidth), evenEdge(top, inputHeight), evenEdge(right, inputWidth),
            evenEdge(bottom, inputHeight)};
}

} // namespace tarvo::geometry
