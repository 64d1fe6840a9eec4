#pragma once

#include "platform/InterfaceTypes.h"

#include <mutex>

namespace tarvo::com {

/// A version of a type library.
struct TypeLibraryId {
    GUID id;
    WORD major;
    WORD minor;
};

/// The description of one interface in a type library, loaded at its first use and kept while there are
/// users. Any thread.
///
/// On Windows the library is the resource of the module that this code is linked into or, if that has none
/// with this id, the registered one. Elsewhere there are no type libraries: everything is E_NOTIMPL.
class CTypeInformation {
public:
    /// Both live as long as the program.
    CTypeInformation(const TypeLibraryId& library, const IID& interfaceId) noexcept
        : m_library(library), m_interface(interfaceId) {}
    CTypeInformation(const CTypeInformation&) = delete;
    CTypeInformation& operator=(const CTypeInformation&) = delete;

    /// Every object that may ask is a user. The last one to go lets the description go too: nothing of the
    /// system's is left for the module's unloading, where it could no longer be released.
    void addUser() noexcept;
    void removeUser() noexcept;

    /// The methods of IDispatch over this description; `object` is the interface described.
    HRESULT getTypeInfo(UINT index, ITypeInfo** information) noexcept;
    HRESULT getIdsOfNames(REFIID iid, OLECHAR** names, UINT count, DISPID* ids) noexcept;
    HRESULT invoke(IDispatch& object, DISPID member, REFIID iid, WORD flags, DISPPARAMS* parameters,
                   VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept;

private:
    /// The description, with a reference for the caller.
    HRESULT load(ITypeInfo** information) noexcept;

    // Not used where there are no type libraries.
    [[maybe_unused]] const TypeLibraryId& m_library;
    [[maybe_unused]] const IID& m_interface;
    std::mutex m_lock;
    unsigned m_users = 0;
    [[maybe_unused]] ITypeInfo* m_information = nullptr;
};

} // namespace tarvo::com
