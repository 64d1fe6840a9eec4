#pragma once

#include "com/OwnTypeLibrary.h"
#include "custom/BoundedRectangle.h"
#include "custom/PropertyChangeNotifier.h"
#include "interfaces/TarvoVideoTransform.h"

#include <mutex>

namespace tarvo::custom {

/// The automation object for a rectangle in fractions of a picture: the custom view's view rectangle and the
/// area to be blacked out.
///
/// Setting an edge to another value and inflating normalise the rectangle; moving it and `Init` do not. All
/// of these notify the listeners, but not a put of the value that is there already. A number that is none, or
/// one by which an edge would leave the finite numbers, leaves the rectangle as it is, and nobody is
/// notified: all methods are S_OK, without out pointer E_POINTER.
///
/// Any thread; each call is one step for every other thread.
class CRectangle : public com::CObject<com::Dual<IRectangle>>, public PropertyChangeNotifier {
public:
    CRectangle() = default;

    STDMETHODIMP get_Left(double* theLeft) override;
    STDMETHODIMP put_Left(double theLeft) override;
    STDMETHODIMP get_Top(double* theTop) override;
    STDMETHODIMP put_Top(double theTop) override;
    STDMETHODIMP get_Right(double* theRight) override;
    STDMETHODIMP put_Right(double theRight) override;
    STDMETHODIMP get_Bottom(double* theBottom) override;
    STDMETHODIMP put_Bottom(double theBottom) override;
    STDMETHODIMP get_Width(double* theWidth) override;
    STDMETHODIMP get_Height(double* theHeight) override;
    STDMETHODIMP InflateRect(double theX, double theY) override;
    STDMETHODIMP DeflateRect(double theX, double theY) override;
    STDMETHODIMP OffsetRect(double theX, double theY) override;
    STDMETHODIMP Init(double theLeft, double theTop, double theRight, double theBottom) override;

    /// All of it at one moment.
    BoundedRectangle snapshot() const;

    /// What the edges are kept in from the next change on; numbers that are not finite change nothing.
    void setBounds(double left, double top, double right, double bottom);
    /// What the size is kept to from the next change on; numbers that are negative or not finite change
    /// nothing.
    void setMinimumSize(double width, double height);

private:
    HRESULT get(double BoundedRectangle::*edge, double* target) const;
    HRESULT put(double BoundedRectangle::*edge, double value);
    /// `change` makes a new rectangle of the present one, or none if nothing shall happen.
    template<class Change>
    HRESULT apply(const Change& change);

    mutable std::mutex m_lock;
    BoundedRectangle m_rectangle;
};

} // namespace tarvo::custom
