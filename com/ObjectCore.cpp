#include "com/ObjectCore.h"

namespace tarvo::com {
namespace {

/// The count during destruction: far from both ends.
constexpr ULONG destructionReferences = 0x40000000;

} // namespace

CObjectCore::CObjectCore(Outer outer) noexcept
    : m_inner(*this), m_controlling(outer.unknown != nullptr ? outer.unknown : &m_inner) {}

HRESULT CObjectCore::queryOwn(REFIID, void**) noexcept {
    return E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE CObjectCore::CInner::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid == __uuidof(IUnknown)) {
        AddRef();
        *object = static_cast<IUnknown*>(this);
        return S_OK;
    }
    return m_object.queryOwn(iid, object);
}

ULONG STDMETHODCALLTYPE CObjectCore::CInner::AddRef() {
    return m_object.m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

ULONG STDMETHODCALLTYPE CObjectCore::CInner::Release() {
    // What each holder did to the object must be seen by the one that destroys it.
    const ULONG left = m_object.m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
        m_object.m_references.store(destructionReferences, std::memory_order_relaxed);
        m_object.finalRelease();
        delete &m_object;
    }
    return left;
}

} // namespace tarvo::com
