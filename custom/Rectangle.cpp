#include "custom/Rectangle.h"

#include "com/Guarded.h"

#include <cmath>
#include <optional>

namespace tarvo::custom {

BoundedRectangle CRectangle::snapshot() const {
    const std::lock_guard lock(m_lock);
    return m_rectangle;
}

void CRectangle::setBounds(double left, double top, double right, double bottom) {
    if (!std::isfinite(left) || !std::isfinite(top) || !std::isfinite(right) || !std::isfinite(bottom))
        return;
    const std::lock_guard lock(m_lock);
    m_rectangle.leftBound = left;
    m_rectangle.topBound = top;
    m_rectangle.rightBound = right;
    m_rectangle.bottomBound = bottom;
}

void CRectangle::setMinimumSize(double width, double height) {
    if (!std::isfinite(width) || !std::isfinite(height) || width < 0.0 || height < 0.0)
        return;
    const std::lock_guard lock(m_lock);
    m_rectangle.minimumWidth = width;
    m_rectangle.minimumHeight = height;
}

HRESULT CRectangle::get(double BoundedRectangle::*edge, double* target) const {
    if (target == nullptr)
        return E_POINTER;
    *target = snapshot().*edge;
    return S_OK;
}

template<class Change>
HRESULT CRectangle::apply(const Change& change) {
    return com::guarded([&] {
        {
            const std::lock_guard lock(m_lock);
            const std::optional<BoundedRectangle> changed = change(m_rectangle);
            if (!changed || !isFinite(*changed))
                return;
            m_rectangle = *changed;
        }
        notify();
    });
}

HRESULT CRectangle::put(double BoundedRectangle::*edge, double value) {
    // Normalising would make a number of an infinite edge again, so it is refused before.
    if (!std::isfinite(value))
        return S_OK;
    return apply([=](BoundedRectangle rectangle) -> std::optional<BoundedRectangle> {
        if (rectangle.*edge == value)
            return std::nullopt;
        rectangle.*edge = value;
        return normalised(rectangle);
    });
}

STDMETHODIMP CRectangle::get_Left(double* theLeft) {
    return get(&BoundedRectangle::left, theLeft);
}

STDMETHODIMP CRectangle::put_Left(double theLeft) {
    return put(&BoundedRectangle::left, theLeft);
}

STDMETHODIMP CRectangle::get_Top(double* theTop) {
    return get(&BoundedRectangle::top, theTop);
}

STDMETHODIMP CRectangle::put_Top(double theTop) {
    return put(&BoundedRectangle::top, theTop);
}

STDMETHODIMP CRectangle::get_Right(double* theRight) {
    return get(&BoundedRectangle::right, theRight);
}

STDMETHODIMP CRectangle::put_Right(double theRight) {
    return put(&BoundedRectangle::right, theRight);
}

STDMETHODIMP CRectangle::get_Bottom(double* theBottom) {
    return get(&BoundedRectangle::bottom, theBottom);
}

STDMETHODIMP CRectangle::put_Bottom(double theBottom) {
    return put(&BoundedRectangle::bottom, theBottom);
}

STDMETHODIMP CRectangle::get_Width(double* theWidth) {
    if (theWidth == nullptr)
        return E_POINTER;
    *theWidth = snapshot().width();
    return S_OK;
}

STDMETHODIMP CRectangle::get_Height(double* theHeight) {
    if (theHeight == nullptr)
        return E_POINTER;
    *theHeight = snapshot().height();
    return S_OK;
}

STDMETHODIMP CRectangle::InflateRect(double theX, double theY) {
    if (!std::isfinite(theX) || !std::isfinite(theY))
        return S_OK;
    return apply([=](const BoundedRectangle& rectangle) { return inflated(rectangle, theX, theY); });
}

STDMETHODIMP CRectangle::DeflateRect(double theX, double theY) {
    return InflateRect(-theX, -theY);
}

STDMETHODIMP CRectangle::OffsetRect(double theX, double theY) {
    if (!std::isfinite(theX) || !std::isfinite(theY))
        return S_OK;
    return apply([=](const BoundedRectangle& rectangle) { return moved(rectangle, theX, theY); });
}

STDMETHODIMP CRectangle::Init(double theLeft, double theTop, double theRight, double theBottom) {
    return apply([=](BoundedRectangle rectangle) {
        rectangle.left = theLeft;
        rectangle.top = theTop;
        rectangle.right = theRight;
        rectangle.bottom = theBottom;
        return rectangle;
    });
}

} // namespace tarvo::custom
