#include "render/software/kernels/PlainCopy.h"

namespace tarvo::render::software::plain {
namespace {

/// A position looks at something: what is no number falls to the edge.
float positionOf(float coordinate, float size) {
    return coordinate > 0.0F ? coordinate * size : 0.0F;
}

} // namespace

void plainCopy(const void* /*constants*/, const PlaceRow& places, const PositionRow& positions) {
    for (int i = 0; i < places.count; ++i) {
        positions.x[i] = positionOf(places.u[i], positions.width);
        positions.y[i] = positionOf(places.v[i], positions.height);
    }
}

} // namespace tarvo::render::software::plain
