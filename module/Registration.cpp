#include "module/Registration.h"

#include "com/Guarded.h"
#include "com/Trace.h"
#include "module/Registrar.h"
#include "module/RegistryRecords.h"

namespace tarvo::module {
namespace {

enum class Direction { registering, unregistering };

HRESULT runScript(const ModuleContents& contents, const ModuleClass& moduleClass,
                  IRegistrationServices& services, Direction direction) noexcept {
    return com::guarded([&]() -> HRESULT {
        const std::string_view script = services.script(moduleClass.script);
        if (script.empty())
            return HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND);
        const std::string path = services.modulePath();
        // Nobody could load such a class. Its removal is possible all the same.
        if (path.empty() && direction == Direction::registering)
            return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
        const Replacements replacements{{"CLSID", guidText(moduleClass.entry.id)},
                                        {"TYPELIB", guidText(contents.typeLibrary)},
                                        {"MODULE", path}};
        CRegistrar registrar(services.registry());
        return direction == Direction::registering ? registrar.registerScript(script, replacements)
                                                   : registrar.unregisterScript(script, replacements);
    });
}

HRESULT unregisterClassesAndTypes(const ModuleContents& contents, IRegistrationServices& services) noexcept {
    for (const ModuleClass& moduleClass : contents.classes)
        RETURN_IF_FAILED(runScript(contents, moduleClass, services, Direction::unregistering));
    return services.unregisterTypeLibrary();
}

} // namespace

HRESULT registerModule(const ModuleContents& contents, IRegistrationServices& services) noexcept {
    services.registerMediaObject(contents.mediaObject);
    for (const ModuleClass& moduleClass : contents.classes) {
        RETURN_IF_FAILED(runScript(contents, moduleClass, services, Direction::registering));
        if (!moduleClass.categories.empty())
            RETURN_IF_FAILED(services.registerCategories(moduleClass.entry.id, moduleClass.categories));
    }
    return services.registerTypeLibrary();
}

HRESULT unregisterModule(const ModuleContents& contents, IRegistrationServices& services) noexcept {
    RETURN_IF_FAILED(services.unregisterMediaObject(contents.mediaObject.id, contents.mediaObject.category));
    const HRESULT result = unregisterClassesAndTypes(contents, services);
    return result == TYPE_E_REGISTRYACCESS ? unregisterClassesAndTypes(contents, services) : result;
}

} // namespace tarvo::module
