#include "com/TypeInformation.h"

#include "com/ComPtr.h"
#include "com/Guarded.h"
#include "platform/ModulePath.h"
#include "platform/Utf16.h"

#include <string>
#include <utility>

namespace tarvo::com {
namespace {

/// Path of the program or library that this code is linked into.
std::basic_string<OLECHAR> ownPath() {
    const std::u16string path = platform::utf16FromUtf8(platform::modulePath());
    return {path.begin(), path.end()};
}

/// Null if the module has no such library in it.
ComPtr<ITypeLib> ownLibrary(const TypeLibraryId& wanted) {
    ComPtr<ITypeLib> library;
    TLIBATTR* attributes = nullptr;
    if (FAILED(LoadTypeLibEx(ownPath().c_str(), REGKIND_NONE, library.put())) ||
        FAILED(library->GetLibAttr(&attributes)))
        return nullptr;
    const bool isWanted = attributes->guid == wanted.id && attributes->wMajorVerNum == wanted.major &&
                          attributes->wMinorVerNum == wanted.minor;
    library->ReleaseTLibAttr(attributes);
    return isWanted ? library : nullptr;
}

} // namespace

void CTypeInformation::addUser() noexcept {
    const std::lock_guard lock(m_lock);
    ++m_users;
}

void CTypeInformation::removeUser() noexcept {
    ComPtr<ITypeInfo> released;
    const std::lock_guard lock(m_lock);
    if (--m_users == 0)
        released.attach(std::exchange(m_information, nullptr));
}

HRESULT CTypeInformation::load(ITypeInfo** information) noexcept {
    return guarded([&]() -> HRESULT {
        const std::lock_guard lock(m_lock);
        if (m_information == nullptr) {
            ComPtr<ITypeLib> library = ownLibrary(m_library);
            if (!library)
                throwIfFailed(LoadRegTypeLib(m_library.id, m_library.major, m_library.minor, LOCALE_NEUTRAL,
                                             library.put()));
            throwIfFailed(library->GetTypeInfoOfGuid(m_interface, &m_information));
        }
        return ComPtr<ITypeInfo>(m_information).copyTo(information);
    });
}

HRESULT CTypeInformation::getTypeInfo(UINT index, ITypeInfo** information) noexcept {
    if (information == nullptr)
        return E_POINTER;
    *information = nullptr;
    return index == 0 ? load(information) : DISP_E_BADINDEX;
}

HRESULT CTypeInformation::getIdsOfNames(REFIID iid, OLECHAR** names, UINT count, DISPID* ids) noexcept {
    if (iid != GUID_NULL)
        return DISP_E_UNKNOWNINTERFACE;
    ComPtr<ITypeInfo> information;
    const HRESULT result = load(information.put());
    return SUCCEEDED(result) ? information->GetIDsOfNames(names, count, ids) : result;
}

HRESULT CTypeInformation::invoke(IDispatch& object, DISPID member, REFIID iid, WORD flags,
                                 DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                 UINT* badArgument) noexcept {
    if (iid != GUID_NULL)
        return DISP_E_UNKNOWNINTERFACE;
    ComPtr<ITypeInfo> information;
    const HRESULT loaded = load(information.put());
    if (FAILED(loaded))
        return loaded;
    return information->Invoke(&object, member, flags, parameters, result, exception, badArgument);
}

} // namespace tarvo::com
