#pragma once

#include "render/Picture.h"
#include "render/colour/YuvToBgra.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

namespace tarvo::bench {

/// The picture as a YV12 frame without padding; sides are even. Luma 0 to 255, chroma the mean of its four
/// pixels: what the module takes for this picture's colours.
std::vector<std::byte> yv12Frame(const render::Picture& picture);

/// The picture as an RGB32 frame without padding, top row first.
std::vector<std::byte> rgb32Frame(const render::Picture& picture);
render::Picture pictureOfRgb32(std::span<const std::byte> frame, int width, int height);

/// The picture of a YV12 frame that the module delivered: luma 16 to 235, where blue has the weights that
/// are red's elsewhere.
render::Picture pictureOfDelivered(std::span<const std::byte> frame, int width, int height);

/// Puts a part of a picture, made of our input by peers which keep its colours, into `whole` at (x, y).
void pasteYv12(const render::Yv12Source& source, int x, int y, render::Picture& whole);

void paste(const render::Picture& part, int x, int y, render::Picture& whole);

/// How far two pictures of the same size are apart: the mean over all pixels of the mean difference of blue,
/// green and red, levels of 255. Throws std::invalid_argument for different sizes.
double meanDifference(const render::Picture& one, const render::Picture& other);

/// Writes a binary PPM file; throws std::runtime_error.
void writePpm(const std::filesystem::path& path, const render::Picture& picture);

} // namespace tarvo::bench
