#pragma once

#include "geometry/ViewState.h"
#include "render/Picture.h"

namespace tarvo::render::reference {

/// The output picture of a view, drawn by the reference device: the truth that faster devices are held
/// against.
///
/// `input` is the fisheye picture and has the view's input size; the result has the view's output size. Both
/// sizes must be known to the view; a custom view has no built-in projection and stays black. With
/// `isBypassed` the input is only scaled into the output, letter-boxed. Throws std::invalid_argument when the
/// sizes do not fit or are more than `longestSide`, std::bad_alloc when a picture finds no memory. What fails
/// is also logged by the module's log.
Picture renderView(const geometry::CViewState& view, const Picture& input, bool isBypassed = false);

} // namespace tarvo::render::reference
