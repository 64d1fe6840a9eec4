#include "com/ComPtr.h"
#include "com/Guarded.h"
#include "com/Trace.h"
#include "module/ModuleFile.h"
#include "platform/Utf16.h"

#include <comcat.h>

namespace tarvo::module {
namespace {

using OleString = std::basic_string<OLECHAR>;

/// The module's path and the type library in its first resource.
struct OwnLibrary {
    OleString path;
    com::ComPtr<ITypeLib> library;
};

OwnLibrary ownLibrary() {
    const std::u16string path = platform::utf16FromUtf8(platform::modulePath());
    OwnLibrary own{{path.begin(), path.end()}, {}};
    com::throwIfFailed(LoadTypeLibEx(own.path.c_str(), REGKIND_NONE, own.library.put()));
    return own;
}

class CSystemServices final : public CModuleFileServices {
public:
    HRESULT registerMediaObject(const MediaObject& object) noexcept override {
        return DMORegister(object.name, object.id, object.category, object.flags,
                           static_cast<DWORD>(object.inputs.size()), object.inputs.data(),
                           static_cast<DWORD>(object.outputs.size()), object.outputs.data());
    }

    HRESULT unregisterMediaObject(const CLSID& id, const GUID& category) noexcept override {
        return DMOUnregister(id, category);
    }

    HRESULT registerCategories(const CLSID& id,
                               std::span<const ComponentCategory> categories) noexcept override {
        com::ComPtr<ICatRegister> registrar;
        RETURN_IF_FAILED(CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                                          __uuidof(ICatRegister), registrar.putVoid()));
        for (const ComponentCategory& category : categories) {
            CATID categoryId = category.id;
            const bool isImplemented = category.relation == ComponentCategory::Relation::implemented;
            RETURN_IF_FAILED(isImplemented ? registrar->RegisterClassImplCategories(id, 1, &categoryId)
                                           : registrar->RegisterClassReqCategories(id, 1, &categoryId));
        }
        return S_OK;
    }

    HRESULT registerTypeLibrary() noexcept override {
        return com::guarded([]() -> HRESULT {
            OwnLibrary own = ownLibrary();
            // Where help would be: beside the module.
            OleString folder = own.path.substr(0, own.path.find_last_of(OLESTR("\\/")));
            return RegisterTypeLib(own.library.get(), own.path.data(), folder.data());
        });
    }

    HRESULT unregisterTypeLibrary() noexcept override {
        return com::guarded([]() -> HRESULT {
            const OwnLibrary own = ownLibrary();
            TLIBATTR* attributes = nullptr;
            com::throwIfFailed(own.library->GetLibAttr(&attributes));
            const TLIBATTR copy = *attributes;
            own.library->ReleaseTLibAttr(attributes);
            return UnRegisterTypeLib(copy.guid, copy.wMajorVerNum, copy.wMinorVerNum, copy.lcid,
                                     copy.syskind);
        });
    }
};

} // namespace

IRegistrationServices& systemRegistrationServices() noexcept {
    static CSystemServices services;
    return services;
}

} // namespace tarvo::module
