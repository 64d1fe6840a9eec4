#pragma once

#include "geometry/Enumerations.h"
#include "geometry/PanoramaRectangle.h"
#include "platform/InterfaceTypes.h"

#include <optional>

namespace tarvo::transform {

/// What the output size depends on besides the shared settings.
struct ViewFacts {
    geometry::ViewType viewType = geometry::ViewType::single;
    double panoramaFieldOfViewDegrees = geometry::defaultPanoramaFieldOfView;
    /// Width / height of the custom view's tables, if there are any.
    std::optional<float> customAspect{};
};

/// The object whose streams these are: what the bookkeeping of types asks of it. Every call comes from a call
/// that the object passed on, so on that thread and under the lock of its streams. None throws.
class IStreamOwner {
public:
    virtual ~IStreamOwner() = default;

    virtual ViewFacts viewFacts() = 0;

    virtual bool hasDevice() = 0;
    /// Builds the render device for the formats as they are negotiated now. After a failure, whichever,
    /// releaseRenderResources() is called.
    virtual HRESULT createDevice() = 0;
    virtual void releaseRenderResources() = 0;

    /// An input type was checked: both sizes may have changed. The device is still that of the old ones; it
    /// is released next.
    virtual void inputChecked() = 0;
    /// An output type was checked: the layout of the output may have changed. The device stays.
    virtual void outputChecked() = 0;

    /// Forgets the frames and the time line: cached frame, current image, held input, pacing, quality.
    virtual void flushStream() = 0;
    virtual void freeCachedFrame() = 0;
    virtual void releaseCurrentImage() = 0;
};

} // namespace tarvo::transform
