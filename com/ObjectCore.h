#pragma once

#include "com/ModuleCount.h"
#include "platform/InterfaceTypes.h"

#include <atomic>

namespace tarvo::com {

/// The outer object that a new one shall be part of; null for one that stands alone.
///
/// A class can be aggregated if, and only if, it has a public constructor that takes this and hands it to its
/// base.
struct Outer {
    IUnknown* unknown = nullptr;
};

/// What every object has, however many interfaces: a reference count, its place in the module's count, and
/// two answers to IUnknown.
///
/// - The inner one counts this object's references and answers for its own interfaces. Whoever made the
/// object holds
///   it.
/// - The controlling one is the outer object's if there is one, else the inner. All interfaces pass their
/// IUnknown
///   calls to it, so that an aggregate looks like one object from whichever interface.
///
/// An object begins with one reference, its maker's. When the last is released it is told so while it is
/// still whole, then destroyed, both on the thread that released it and with a count that keeps references
/// which the end itself takes and releases from destroying it again.
class CObjectCore {
public:
    CObjectCore(const CObjectCore&) = delete;
    CObjectCore& operator=(const CObjectCore&) = delete;

    IUnknown* controllingUnknown() const noexcept { return m_controlling; }
    /// For the maker of the object only.
    IUnknown& innerUnknown() noexcept { return m_inner; }

protected:
    explicit CObjectCore(Outer outer = {}) noexcept;
    virtual ~CObjectCore() = default;

    /// Answers for the object's own interfaces besides IUnknown; `object` is null on entry. Override it to
    /// answer for an interface that no base class stands for, and pass the rest on.
    virtual HRESULT queryOwn(REFIID iid, void** object) noexcept;

    /// The last reference is gone, all parts are still there: the time to let go of whoever may call back.
    /// Override it, and call the base's in the end.
    virtual void finalRelease() noexcept {}

private:
    class CInner final : public IUnknown {
    public:
        explicit CInner(CObjectCore& object) noexcept : m_object(object) {}
        STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
        STDMETHODIMP_(ULONG) AddRef() override;
        STDMETHODIMP_(ULONG) Release() override;

    private:
        CObjectCore& m_object;
    };

    // First, so that it ends last.
    CModuleLock m_moduleLock;
    CInner m_inner;
    // Not counted: the outer object owns this one.
    IUnknown* m_controlling;
    std::atomic<ULONG> m_references{1};
};

} // namespace tarvo::com
