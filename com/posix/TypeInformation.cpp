#include "com/TypeInformation.h"

namespace tarvo::com {

void CTypeInformation::addUser() noexcept {
    const std::lock_guard lock(m_lock);
    ++m_users;
}

void CTypeInformation::removeUser() noexcept {
    const std::lock_guard lock(m_lock);
    --m_users;
}

HRESULT CTypeInformation::load(ITypeInfo**) noexcept {
    return E_NOTIMPL;
}

HRESULT CTypeInformation::getTypeInfo(UINT, ITypeInfo** information) noexcept {
    if (information == nullptr)
        return E_POINTER;
    *information = nullptr;
    return load(information);
}

HRESULT CTypeInformation::getIdsOfNames(REFIID, OLECHAR**, UINT, DISPID*) noexcept {
    return E_NOTIMPL;
}

HRESULT CTypeInformation::invoke(IDispatch&, DISPID, REFIID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                 UINT*) noexcept {
    return E_NOTIMPL;
}

} // namespace tarvo::com
