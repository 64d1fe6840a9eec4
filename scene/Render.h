#pragma once

#include "render/Picture.h"
#include "scene/Camera.h"
#include "scene/Room.h"
#include "scene/Vector.h"

#include <functional>
#include <optional>

namespace tarvo::scene {

inline constexpr int maxPictureSide = 16384;
inline constexpr int maxSamplesPerSide = 16;

struct RenderOptions {
    int samplesPerSide = 3; ///< every pixel is the mean of its square, samplesPerSide² rays; 1 to 16
    int threads = 0;        ///< 0 takes what the machine has; the picture does not depend on it
};

/// The viewing direction of a place in the picture: u from 0 at the left edge to 1 at the right one, v from 0
/// at the upper edge to 1 at the lower one. Nothing means black. It is called from several threads at once.
using RayField = std::function<std::optional<Vector>(double u, double v)>;

// All pictures are opaque. All functions throw std::invalid_argument for sides outside 1 to 16384, options
// outside their ranges, numbers that are not finite and cameras outside the room.

/// A picture along any bundle of rays from one place. Throws also for a direction of length zero, and passes
/// on what `rays` throws.
render::Picture renderRays(const CRoom& room, const Vector& position, int width, int height,
                           const RayField& rays, const RenderOptions& options = {});

/// What a fisheye camera sees: the optical axis in the middle of the picture, black beyond the lens's disc.
render::Picture renderFisheye(const CRoom& room, const FisheyeCamera& camera, int width, int height,
                              const RenderOptions& options = {});

/// What an ideal pinhole camera sees. Both tangents must be positive.
render::Picture renderPerspective(const CRoom& room, const PerspectiveView& view, int width, int height,
                                  const RenderOptions& options = {});

/// A part of the equirectangular panorama.
render::Picture renderStrip(const CRoom& room, const PanoramaStrip& strip, int width, int height,
                            const RenderOptions& options = {});

} // namespace tarvo::scene
