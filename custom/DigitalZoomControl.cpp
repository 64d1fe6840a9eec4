#include "custom/DigitalZoomControl.h"

namespace tarvo::custom {

CDigitalZoomControl::CDigitalZoomControl() {
    m_viewRect->addListener(keyOf(this), [this](PropertyChangeNotifier&) { notify(); });
}

void CDigitalZoomControl::finalRelease() noexcept {
    m_viewRect->removeListener(keyOf(this));
    CObjectOn::finalRelease();
}

STDMETHODIMP CDigitalZoomControl::get_ViewRect(IRectangle** theViewRect) {
    return com::ComPtr<IRectangle>(m_viewRect.get()).copyTo(theViewRect);
}

} // namespace tarvo::custom
