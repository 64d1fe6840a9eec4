#pragma once

#include "com/Object.h"
#include "platform/InterfaceTypes.h"

#include <atomic>

namespace tarvo::com {

inline ULONG references(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

/// What QueryInterface answers for T, the reference already given back; null if it refuses.
template<class T>
T* answerFor(IUnknown* object) {
    void* answer = object;
    if (object->QueryInterface(__uuidof(T), &answer) != S_OK) {
        // A refusal must not leave a pointer behind either.
        return static_cast<T*>(answer);
    }
    object->Release();
    return static_cast<T*>(answer);
}

/// Counts the living objects of a test class.
class CLiving {
public:
    CLiving() noexcept { ++count(); }
    ~CLiving() { --count(); }
    CLiving(const CLiving&) = delete;
    CLiving& operator=(const CLiving&) = delete;
    static std::atomic<int>& count() {
        static std::atomic<int> living{0};
        return living;
    }
};

/// A mixin that implements an interface and its base by itself.
class CStreamedPart : public IPersistStream {
public:
    STDMETHODIMP GetClassID(CLSID* id) override {
        *id = CLSID{1, 2, 3, {}};
        return S_OK;
    }
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Load(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP Save(IStream*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }

protected:
    ~CStreamedPart() = default;
};

/// Answers to IObjectWithSite, IPersistStream and IPersist; can be aggregated.
class CSample : public CObject<IObjectWithSite, Implementing<CStreamedPart, IPersistStream>,
                               Through<IPersist, IPersistStream>> {
public:
    explicit CSample(Outer outer = {}) noexcept : CObjectOn(outer) {}
    STDMETHODIMP SetSite(IUnknown* site) override {
        m_site = ComPtr<IUnknown>(site);
        return S_OK;
    }
    STDMETHODIMP GetSite(REFIID iid, void** site) override {
        return m_site ? m_site->QueryInterface(iid, site) : E_FAIL;
    }

private:
    CLiving m_living;
    ComPtr<IUnknown> m_site;
};

/// What CSample is and ISupportErrorInfo; cannot be aggregated.
class CExtended : public CObjectOn<CSample, ISupportErrorInfo> {
public:
    CExtended() noexcept : CObjectOn() {}
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_FALSE; }
};

/// Answers to ISupportErrorInfo itself and has a CSample for everything else.
class COuter : public CObject<ISupportErrorInfo> {
public:
    COuter() {
        throwIfFailed(createInstance<CSample>(controllingUnknown(), __uuidof(IUnknown), m_inner.putVoid()));
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }

    IUnknown* inner() const { return m_inner.get(); }

protected:
    HRESULT queryOwn(REFIID iid, void** object) noexcept override {
        const HRESULT result = CObjectOn::queryOwn(iid, object);
        return result == E_NOINTERFACE && m_inner ? m_inner->QueryInterface(iid, object) : result;
    }

private:
    CLiving m_living;
    ComPtr<IUnknown> m_inner;
};

} // namespace tarvo::com
