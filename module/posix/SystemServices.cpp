#include "com/Guarded.h"
#include "module/ModuleFile.h"
#include "module/RegistryRecords.h"

namespace tarvo::module {
namespace {

class CSystemServices final : public CModuleFileServices {
public:
    HRESULT registerMediaObject(const MediaObject& object) noexcept override {
        return com::guarded([&] { writeMediaObject(registry(), object); });
    }

    HRESULT unregisterMediaObject(const CLSID& id, const GUID& category) noexcept override {
        return com::guarded([&] { removeMediaObject(registry(), id, category); });
    }

    HRESULT registerCategories(const CLSID& id,
                               std::span<const ComponentCategory> categories) noexcept override {
        return com::guarded([&] { writeCategories(registry(), id, categories); });
    }

    HRESULT registerTypeLibrary() noexcept override { return S_OK; }
    HRESULT unregisterTypeLibrary() noexcept override { return S_OK; }
};

} // namespace

IRegistrationServices& systemRegistrationServices() noexcept {
    static CSystemServices services;
    return services;
}

} // namespace tarvo::module
