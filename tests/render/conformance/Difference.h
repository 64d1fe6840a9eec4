#pragma once

#include "render/Picture.h"

#include <string>
#include <vector>

namespace tarvo::render::conformance {

/// How far a picture is from the reference, in levels of 0 … 255.
struct Difference {
    int worst = 0;            ///< of any channel, alpha too, outside the mask
    double mean = 0.0;        ///< of blue, green and red outside the mask
    int worstMasked = 0;      ///< inside the mask
    double maskedShare = 0.0; ///< of the pixels
    int x = 0;                ///< where the worst is
    int y = 0;
};

/// Of the pixels of a picture, row by row: those on either side of a hard edge, or of a border between the
/// clear colour and anything else. There a rounding of the place decides for one side or the other.
std::vector<bool> edgeMask(const Picture& reference);

/// Both pictures have one size.
Difference differenceOf(const Picture& reference, const Picture& other, const std::vector<bool>& mask);
/// Without a mask.
Difference differenceOf(const Picture& reference, const Picture& other);

/// Collects the figures of one program on one device; they are printed at the end of the run.
void recordFigures(const std::string& device, const char* program, const Difference& difference);

} // namespace tarvo::render::conformance
