#pragma once

#include "custom/VirtualPtzSettings.h"

namespace tarvo::custom {

/// Draws a view that looks past the panorama's border back into it: first the pan, by three points of the
/// left and right border each, then the tilt, by nine points of the upper and lower border each, after a
/// narrower field of view if the view is too high. With effect level 0 all stays as it is.
///
/// By how much a side looks past is the most of its points in strict border mode with full effect, else the
/// middle between the least and the most of them.
///
/// The field of view is not made narrower than its least. An adjustment beyond the range of single precision
/// is not made.
VirtualPtzSettings adjustedToBorder(const VirtualPtzSettings& settings);

} // namespace tarvo::custom
