#pragma once

namespace tarvo::custom {

/// A rectangle in fractions of a picture, the bounds it is kept in and the size it is not made smaller than.
///
/// Right or bottom may lie before left or top, and edges outside of the bounds: only what the operations say
/// is kept, not more.
struct BoundedRectangle {
    double left = 0.0;
    double top = 0.0;
    double right = 1.0;
    double bottom = 1.0;

    double leftBound = 0.0;
    double topBound = 0.0;
    double rightBound = 1.0;
    double bottomBound = 1.0;
    double minimumWidth = 0.0;
    double minimumHeight = 0.0;

    double width() const { return right - left; }
    double height() const { return bottom - top; }
};

/// Draws edges that lie outside back to their bounds; what is smaller than the minimum then grows to it about
/// its centre, even if that leaves the bounds again.
BoundedRectangle normalised(const BoundedRectangle& rectangle);

/// Moves left and right outwards by `x`, top and bottom by `y`. What one side has no room for goes to the
/// opposite side, then the rectangle is normalised. Negative distances deflate.
BoundedRectangle inflated(const BoundedRectangle& rectangle, double x, double y);

/// Moves the rectangle right by `x` and down by `y`, at most until it touches a bound.
BoundedRectangle moved(const BoundedRectangle& rectangle, double x, double y);

/// Whether edges, width and height are all numbers and finite.
bool isFinite(const BoundedRectangle& rectangle);

} // namespace tarvo::custom
