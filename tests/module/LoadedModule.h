#pragma once

#include "com/ComPtr.h"
#include "interfaces/TarvoVideoTransform.h"
#include "platform/SystemLibrary.h"

#include <gtest/gtest.h>

namespace tarvo::tests {

/// The module as a host finds it: a file with four functions.
class CLoadedModule {
public:
    explicit CLoadedModule(const char* path = TARVO_PROBE_MODULE) : m_library(path) {
        EXPECT_TRUE(m_library) << path;
    }

    HRESULT canUnloadNow() const { return call<HRESULT WINAPI()>("DllCanUnloadNow"); }
    HRESULT registerServer() const { return call<HRESULT WINAPI()>("DllRegisterServer"); }
    HRESULT unregisterServer() const { return call<HRESULT WINAPI()>("DllUnregisterServer"); }
    HRESULT getClassObject(REFCLSID id, REFIID iid, void** object) const {
        return call<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject", id, iid, object);
    }

    com::ComPtr<IClassFactory> factoryOf(REFCLSID id) const {
        com::ComPtr<IClassFactory> factory;
        EXPECT_EQ(getClassObject(id, __uuidof(IClassFactory), factory.putVoid()), S_OK);
        return factory;
    }

private:
    template<class Signature, class... Arguments>
    HRESULT call(const char* name, Arguments&&... arguments) const {
        auto* const function = m_library.function<Signature>(name);
        if (function == nullptr) {
            ADD_FAILURE() << name << " is not exported";
            return E_NOTIMPL;
        }
        return function(std::forward<Arguments>(arguments)...);
    }

    platform::CSystemLibrary m_library;
};

} // namespace tarvo::tests
