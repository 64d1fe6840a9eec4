#pragma once

#include "com/Object.h"
#include "platform/InterfaceTypes.h"

#include <span>

namespace tarvo::com {

/// Makes an object of one class, with the contract of createInstance<T>, of which it is usually an address.
using Creator = HRESULT (*)(IUnknown* outer, REFIID iid, void** object) noexcept;

/// One creatable class of the module.
struct ClassEntry {
    CLSID id;
    Creator create;
};

/// Class factory over a creator. It counts as a live object of the module, so whoever holds it keeps the
/// module loaded, and so does a server lock. Any thread.
class CClassFactory final : public CObject<IClassFactory> {
public:
    explicit CClassFactory(Creator create) noexcept : m_create(create) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
    STDMETHODIMP LockServer(BOOL lock) override;

private:
    Creator m_create;
};

/// The lookup of DllGetClassObject: makes a class factory for a class of the map and gives out its interface
/// `iid`. CLASS_E_CLASSNOTAVAILABLE for a class that is not in the map.
HRESULT getClassObject(std::span<const ClassEntry> classMap, REFCLSID id, REFIID iid, void** object) noexcept;

} // namespace tarvo::com
