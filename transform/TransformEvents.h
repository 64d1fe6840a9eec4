#pragma once

#include "com/ConnectionPoint.h"
#include "diagnostics/ObjectLog.h"
#include "interfaces/TarvoVideoTransform.h"

#include <cstdint>

namespace tarvo::transform {

/// Fires the transform's events. What sinks answer is logged and changes nothing.
class CTransformEvents {
public:
    /// The points belong to the transform.
    CTransformEvents(com::CConnectionPoint& transformEvents, com::CConnectionPoint& imageEvents,
                     diagnostics::ObjectLog log)
        : m_transformEvents(transformEvents), m_imageEvents(imageEvents), m_log(log) {}

    /// A frame of this start, in 100 ns, is about to be rendered.
    void prepareImage(std::int64_t timestamp);
    /// A frame was rendered.
    void newImage(IImageBuffer& image);

    /// Whether anybody has ever wanted to see new images.
    bool haveImagesEverBeenWanted() const { return m_imageEvents.hasEverConnected(); }

private:
    com::CConnectionPoint& m_transformEvents;
    com::CConnectionPoint& m_imageEvents;
    diagnostics::ObjectLog m_log;
};

} // namespace tarvo::transform
