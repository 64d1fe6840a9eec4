#pragma once

#include "com/ComPtr.h"
#include "com/OwnTypeLibrary.h"
#include "custom/PropertyChangeNotifier.h"
#include "custom/Rectangle.h"
#include "interfaces/TarvoVideoTransform.h"

namespace tarvo::custom {

/// Steers the custom view by the part of it that is shown. Changes of that rectangle are the control's own:
/// its listeners are told of them. A client may keep the rectangle longer than the control lives.
///
/// Any thread.
class CDigitalZoomControl : public com::CObject<com::Dual<IDigitalZoomControl>>,
                            public PropertyChangeNotifier {
public:
    CDigitalZoomControl();

    /// E_POINTER without out pointer.
    STDMETHODIMP get_ViewRect(IRectangle** theViewRect) override;

    /// The same rectangle, always.
    CRectangle& viewRect() const { return *m_viewRect; }

protected:
    void finalRelease() noexcept override;

private:
    com::ComPtr<CRectangle> m_viewRect = com::makeObject<CRectangle>();
};

} // namespace tarvo::custom
