#pragma once

#include "com/ComPtr.h"
#include "com/Guarded.h"
#include "com/ObjectCore.h"
#include "platform/InterfaceTypes.h"

#include <type_traits>
#include <utility>

// A class lists what it answers to, in the order in which it is asked most:
//
//     class CThing : public CObject<IThing, Through<IDispatch, IThing>, Implementing<CPersistence, IPersist>>
//     {
//
// - an interface: its methods are the class's to write;
// - Through<Base, IThing>: the base of a listed interface, answered with that one's pointer;
// - Implementing<CMixin, IThing…>: a base class that implements interfaces by itself.
//
// A class that adds interfaces to such a class: CObjectOn<CThing, IMore…>.

namespace tarvo::com {

template<class Interface, class Via>
struct Through {};

template<class Mixin, class... Interfaces>
class Implementing : public Mixin {
public:
    using Mixin::Mixin;
};

/// How an entry of the list finds its interface; the pointer is not counted yet, null if the entry has it
/// not.
template<class Entry>
struct InterfaceEntry {
    static IUnknown* find(Entry& entry, REFIID iid) noexcept {
        return iid == __uuidof(Entry) ? static_cast<IUnknown*>(&entry) : nullptr;
    }
};

template<class Interface, class Via>
struct InterfaceEntry<Through<Interface, Via>> {
    static_assert(std::is_base_of_v<Interface, Via>);
    static IUnknown* find(Via& via, REFIID iid) noexcept {
        return iid == __uuidof(Interface) ? static_cast<IUnknown*>(&via) : nullptr;
    }
};

template<class Mixin, class... Interfaces>
struct InterfaceEntry<Implementing<Mixin, Interfaces...>> {
    static IUnknown* find(Mixin& mixin, REFIID iid) noexcept {
        IUnknown* found = nullptr;
        ((found = InterfaceEntry<Interfaces>::find(mixin, iid)) || ...);
        return found;
    }
};

/// An object with the interfaces of `Base`, itself such a class or CObjectCore, and those of its own list.
template<class Base, class... Entries>
class CObjectOn : public Base, public Entries... {
    static_assert(std::is_base_of_v<CObjectCore, Base> && sizeof...(Entries) > 0);

public:
    using Base::Base;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        return this->controllingUnknown()->QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return this->controllingUnknown()->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return this->controllingUnknown()->Release(); }

protected:
    ~CObjectOn() override = default;

    /// Passed on to the parts that have connections to end.
    void finalRelease() noexcept override {
        (endConnectionsOf(static_cast<Entries&>(*this)), ...);
        Base::finalRelease();
    }

    HRESULT queryOwn(REFIID iid, void** object) noexcept override {
        IUnknown* found = nullptr;
        ((found = InterfaceEntry<Entries>::find(*this, iid)) || ...);
        if (found == nullptr)
            return Base::queryOwn(iid, object);
        // Through the pointer that is given out: an interface counts on the controlling object.
        found->AddRef();
        *object = found;
        return S_OK;
    }

private:
    template<class Entry>
    static void endConnectionsOf(Entry& entry) noexcept {
        if constexpr (requires { entry.endConnections(); })
            entry.endConnections();
    }
};

/// An object with the interfaces of its list.
template<class... Entries>
using CObject = CObjectOn<CObjectCore, Entries...>;

/// Makes a T that stands alone; throws what its constructor throws.
template<class T, class... Arguments>
ComPtr<T> makeObject(Arguments&&... arguments) {
    ComPtr<T> object;
    object.attach(new T(std::forward<Arguments>(arguments)...));
    return object;
}

/// Makes a T, part of `outer` if that is not null, and gives out the interface asked for, as class factories
/// do.
///
/// An outer object must ask for IUnknown and gets the inner one; it is refused with CLASS_E_NOAGGREGATION if
/// it asks for another or if T cannot be aggregated. Exceptions of the constructor become HRESULTs as in
/// guarded().
template<class T>
HRESULT createInstance(IUnknown* outer, REFIID iid, void** object) noexcept {
    constexpr bool aggregatable = std::is_constructible_v<T, Outer>;
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (outer != nullptr && (!aggregatable || iid != __uuidof(IUnknown)))
        return CLASS_E_NOAGGREGATION;
    return guarded([&]() -> HRESULT {
        CObjectCore* made = nullptr;
        if constexpr (aggregatable)
            made = new T(Outer{outer});
        else
            made = new T();
        const HRESULT result = made->innerUnknown().QueryInterface(iid, object);
        made->innerUnknown().Release();
        return result;
    });
}

} // namespace tarvo::com
