#pragma once

#include "com/TypeInformation.h"
#include "platform/InterfaceTypes.h"

namespace tarvo::com {

/// IDispatch of a dual interface, by its description in a type library: an object lists
/// `Implementing<CDispatch<IThing, library>, IThing, IDispatch>` and writes the interface's own methods.
///
/// Natively GetTypeInfoCount says that there is no description, and the others are E_NOTIMPL.
template<class Interface, const TypeLibraryId& library>
class CDispatch : public Interface {
public:
    CDispatch(const CDispatch&) = delete;
    CDispatch& operator=(const CDispatch&) = delete;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr)
            return E_POINTER;
        ITypeInfo* described = nullptr;
        const HRESULT result = information().getTypeInfo(0, &described);
        if (described != nullptr)
            described->Release();
        *count = SUCCEEDED(result) ? 1 : 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** described) override {
        return information().getTypeInfo(index, described);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, OLECHAR** names, UINT count, LCID, DISPID* ids) override {
        return information().getIdsOfNames(iid, names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) override {
        return information().invoke(*this, member, iid, flags, parameters, result, exception, badArgument);
    }

protected:
    CDispatch() noexcept { information().addUser(); }
    ~CDispatch() { information().removeUser(); }

private:
    static CTypeInformation& information() noexcept {
        static CTypeInformation shared(library, __uuidof(Interface));
        return shared;
    }
};

} // namespace tarvo::com
