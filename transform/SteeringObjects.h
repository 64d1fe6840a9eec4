#pragma once

#include "com/ComPtr.h"
#include "custom/DigitalZoomControl.h"
#include "custom/Rectangle.h"
#include "custom/VirtualPtzFromPanoramaControl.h"
#include "custom/tables/CustomTransformShader.h"
#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"

#include <functional>

namespace tarvo::transform {

/// The objects that the host is handed to steer the transform by: the exclude rectangle and the controls of
/// the custom view. They keep their state whichever is in use, and a host may keep them longer than the
/// transform lives.
class CSteeringObjects {
public:
    CSteeringObjects();
    CSteeringObjects(const CSteeringObjects&) = delete;
    CSteeringObjects& operator=(const CSteeringObjects&) = delete;

    /// Has the transform told of changes, on the thread that made them and with no lock held.
    void connect(const std::function<void()>& excludeRectangleChanged,
                 const std::function<void()>& controlChanged);
    /// Afterwards nobody is told any more, and nobody is still being told.
    void disconnect();

    custom::CRectangle& excludeRectangle() const { return *m_excludeRectangle; }
    geometry::ExcludeArea excludeArea() const;

    custom::CDigitalZoomControl& digitalZoom() const { return *m_digitalZoom; }
    /// The control of a type, never null.
    com::ComPtr<IUnknown> control(geometry::CustomTransformControlType type) const;

    /// Hands the custom view what its controls are set to now.
    void applyTo(custom::CCustomTransformShader& shader) const;
    /// Width / height of the output; the virtual camera's view has that shape.
    void setOutputAspect(float aspect) { m_virtualPtz->setOutputAspect(aspect); }

private:
    com::ComPtr<custom::CRectangle> m_excludeRectangle = com::makeObject<custom::CRectangle>();
    com::ComPtr<custom::CDigitalZoomControl> m_digitalZoom = com::makeObject<custom::CDigitalZoomControl>();
    com::ComPtr<custom::CVirtualPtzFromPanoramaControl> m_virtualPtz =
        com::makeObject<custom::CVirtualPtzFromPanoramaControl>();
};

} // namespace tarvo::transform
