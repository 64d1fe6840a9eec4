#pragma once

#include "com/Object.h"
#include "interfaces/TarvoVideoTransform.h"
#include "module/ClassMap.h"

#include <array>
#include <cstring>

namespace tarvo::tests {

/// Stands in for a class of the product: tells which one it is, and passes memory to and fro.
template<int number>
class CProbe final : public com::CObject<IPersistFile, com::Through<IPersist, IPersistFile>, IPropertyBag> {
public:
    STDMETHODIMP GetClassID(CLSID* id) override {
        if (id == nullptr)
            return E_POINTER;
        *id = CLSID{number, 0, 0, {}};
        return S_OK;
    }

    /// A text in the caller's care: "probe".
    STDMETHODIMP GetCurFile(LPOLESTR* name) override {
        constexpr OLECHAR text[] = OLESTR("probe");
        *name = static_cast<LPOLESTR>(CoTaskMemAlloc(sizeof text));
        if (*name == nullptr)
            return E_OUTOFMEMORY;
        std::memcpy(*name, text, sizeof text);
        return S_OK;
    }
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Load(LPCOLESTR, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Save(LPCOLESTR, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }

    /// Frees the caller's value and gives out an array of one text, the name.
    STDMETHODIMP Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        VariantClear(value);
        SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, 0, 1);
        LONG index = 0;
        BSTR text = SysAllocString(name);
        const HRESULT result = array != nullptr ? SafeArrayPutElement(array, &index, text) : E_OUTOFMEMORY;
        SysFreeString(text);
        value->vt = VT_ARRAY | VT_BSTR;
        value->parray = array;
        return result;
    }
    STDMETHODIMP Write(LPCOLESTR, VARIANT*) override { return E_NOTIMPL; }
};

inline constexpr GUID someCategory = {
    0x4B1D6F1E, 0x2C0A, 0x4B7B, {0x9D, 0x3E, 0x51, 0x0A, 0x7C, 0x86, 0x2F, 0x33}};
inline constexpr GUID otherCategory = {
    0x4B1D6F1E, 0x2C0A, 0x4B7B, {0x9D, 0x3E, 0x51, 0x0A, 0x7C, 0x86, 0x2F, 0x34}};

/// The product's two classes by their identities, made of probes 1 and 2.
inline std::array<module::ModuleClass, 2> probeClasses() {
    return {{{{CLSID_DewarpingTransform, &com::createInstance<CProbe<1>>}, 100, {}},
             {{CLSID_AcceleratorFilter, &com::createInstance<CProbe<2>>}, 101, {}}}};
}

inline module::ModuleContents probeContents(std::span<const module::ModuleClass> classes) {
    return {classes, module::dewarpingMediaObject(CLSID_DewarpingTransform), LIBID_TarvoVideoTransformLib};
}

} // namespace tarvo::tests
