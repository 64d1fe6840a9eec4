#include "transform/SteeringObjects.h"

#include "com/Guarded.h"

namespace tarvo::transform {

using custom::PropertyChangeNotifier;

CSteeringObjects::CSteeringObjects() {
    com::throwIfFailed(m_excludeRectangle->Init(0.0, 0.0, 0.0, 0.0));
}

void CSteeringObjects::connect(const std::function<void()>& excludeRectangleChanged,
                               const std::function<void()>& controlChanged) {
    const auto key = PropertyChangeNotifier::keyOf(this);
    m_excludeRectangle->addListener(
        key, [excludeRectangleChanged](PropertyChangeNotifier&) { excludeRectangleChanged(); });
    const auto listener = [controlChanged](PropertyChangeNotifier&) { controlChanged(); };
    m_digitalZoom->addListener(key, listener);
    m_virtualPtz->addListener(key, listener);
}

void CSteeringObjects::disconnect() {
    const auto key = PropertyChangeNotifier::keyOf(this);
    m_excludeRectangle->removeListener(key);
    m_digitalZoom->removeListener(key);
    m_virtualPtz->removeListener(key);
}

geometry::ExcludeArea CSteeringObjects::excludeArea() const {
    const custom::BoundedRectangle rectangle = m_excludeRectangle->snapshot();
    return {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom};
}

com::ComPtr<IUnknown> CSteeringObjects::control(geometry::CustomTransformControlType type) const {
    if (type == geometry::CustomTransformControlType::virtualPtzFromPanorama)
        return m_virtualPtz.as<IUnknown>();
    return m_digitalZoom.as<IUnknown>();
}

void CSteeringObjects::applyTo(custom::CCustomTransformShader& shader) const {
    shader.setViewRectangle(m_digitalZoom->viewRect().snapshot());
    shader.setVirtualPtz(m_virtualPtz->snapshot());
}

} // namespace tarvo::transform
