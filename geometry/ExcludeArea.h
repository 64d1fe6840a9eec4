#pragma once

namespace tarvo::geometry {

/// Pixel edges of an area, right and bottom exclusive.
struct PixelBox {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    constexpr int width() const { return right - left; }
    constexpr int height() const { return bottom - top; }
    constexpr bool isEmpty() const { return right <= left || bottom <= top; }

    friend constexpr bool operator==(const PixelBox&, const PixelBox&) = default;
};

/// The part of the input that is blacked out before dewarping and shown unwarped in the output; edges are
/// fractions of the input. Values outside 0 … 1, infinities and what is no number are harmless.
struct ExcludeArea {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;

    /// True with positive width and height.
    constexpr bool isActive() const { return right - left > 0.0 && bottom - top > 0.0; }

    /// The part of the area that lies in the frame; what is no number falls to 0.
    ExcludeArea clipped() const;

    /// The area in pixels of an input of the given size: every edge even, so that it falls between the chroma
    /// samples of a subsampled picture, and inside the frame. May be empty though the area is active.
    PixelBox pixelBox(int inputWidth, int inputHeight) const;
};

} // namespace tarvo::geometry
