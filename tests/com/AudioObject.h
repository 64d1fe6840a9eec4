#pragma once

#include "com/Dispatch.h"
#include "com/Object.h"
#include "tests/com/TestObjects.h"

#include <control.h>

namespace tarvo::com {

/// A registered type library of the system's, with a small dual interface in it.
inline constexpr TypeLibraryId systemLibrary{
    {0x56A868B0, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}}, 1, 0};

class CAudio : public CObject<Implementing<CDispatch<IBasicAudio, systemLibrary>, IBasicAudio, IDispatch>> {
public:
    STDMETHODIMP put_Volume(LONG volume) override {
        m_volume = volume;
        return volume > 0 ? E_INVALIDARG : S_OK;
    }
    STDMETHODIMP get_Volume(LONG* volume) override {
        *volume = m_volume;
        return S_OK;
    }
    STDMETHODIMP put_Balance(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP get_Balance(LONG*) override { return E_NOTIMPL; }

private:
    LONG m_volume = 0;
    CLiving m_living;
};

} // namespace tarvo::com
