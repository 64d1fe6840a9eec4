#include "custom/BoundedRectangle.h"

#include <algorithm>
#include <cmath>

namespace tarvo::custom {
namespace {

/// Both directions follow the same rules: one direction of the rectangle.
struct Span {
    double begin;
    double end;
    double beginBound;
    double endBound;
    double minimum;
};

Span normalised(Span span) {
    span.begin = std::max(span.begin, span.beginBound);
    span.end = std::min(span.end, span.endBound);
    const double size = span.end - span.begin;
    if (size < span.minimum) {
        span.begin += (size - span.minimum) / 2.0;
        span.end = span.begin + span.minimum;
    }
    return span;
}

Span inflated(Span span, double distance) {
    const double lacksAtEnd = std::max(0.0, span.end + distance - span.endBound);
    const double lacksAtBegin = std::max(0.0, span.beginBound - (span.begin - distance));
    span.begin -= distance + lacksAtEnd;
    span.end += distance + lacksAtBegin;
    return normalised(span);
}

Span moved(Span span, double distance) {
    // At a bound the edge is set to it: adding the distance to it could miss it by a rounding.
    if (span.begin + distance < span.beginBound) {
        span.end += span.beginBound - span.begin;
        span.begin = span.beginBound;
    } else if (span.end + distance > span.endBound) {
        span.begin += span.endBound - span.end;
        span.end = span.endBound;
    } else {
        span.begin += distance;
        span.end += distance;
    }
    return span;
}

Span horizontal(const BoundedRectangle& r) {
    return {r.left, r.right, r.leftBound, r.rightBound, r.minimumWidth};
}

Span vertical(const BoundedRectangle& r) {
    return {r.top, r.bottom, r.topBound, r.bottomBound, r.minimumHeight};
}

BoundedRectangle withSpans(BoundedRectangle rectangle, const Span& horizontal, const Span& vertical) {
    rectangle.left = horizontal.begin;
    rectangle.right = horizontal.end;
    rectangle.top = vertical.begin;
    rectangle.bottom = vertical.end;
    return rectangle;
}

} // namespace

BoundedRectangle normalised(const BoundedRectangle& rectangle) {
    return withSpans(rectangle, normalised(horizontal(rectangle)), normalised(vertical(rectangle)));
}

BoundedRectangle inflated(const BoundedRectangle& rectangle, double x, double y) {
    return withSpans(rectangle, inflated(horizontal(rectangle), x), inflated(vertical(rectangle), y));
}

BoundedRectangle moved(const BoundedRectangle& rectangle, double x, double y) {
    return withSpans(rectangle, moved(horizontal(rectangle), x), moved(vertical(rectangle), y));
}

bool isFinite(const BoundedRectangle& rectangle) {
    return std::isfinite(rectangle.left) && std::isfinite(rectangle.top) && std::isfinite(rectangle.right) &&
           std::isfinite(rectangle.bottom) && std::isfinite(rectangle.width()) &&
           std::isfinite(rectangle.height());
}

} // namespace tarvo::custom
