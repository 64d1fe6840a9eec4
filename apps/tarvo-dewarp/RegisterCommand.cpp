#include "apps/host/Module.h"
#include "apps/tarvo-dewarp/ModuleCommands.h"
#include "apps/tarvo-dewarp/ModuleOption.h"

#include <CLI/App.hpp>

#include <memory>

namespace tarvo::apps {
namespace {

Command addModuleCommand(CLI::App& program, const char* name, const char* purpose, const char* footer,
                         void (host::CModule::*work)() const) {
    const auto settings = std::make_shared<ModuleSettings>();
    CLI::App& command = *program.add_subcommand(name, purpose);
    addModuleOption(command, *settings);
    command.footer(footer);
    return {&command, [settings, work](std::ostream&) { (host::CModule(settings->path()).*work)(); }};
}

} // namespace

Command addRegisterCommand(CLI::App& program) {
    return addModuleCommand(
        program, "register", "Register the module's classes, so that hosts can create them by name.",
        "The module stays where it is: registered is the path it was loaded from. On Windows the\n"
        "registration goes to the registry and needs an administrator's rights; elsewhere to the file\n"
        "that the environment variable TARVO_REGISTRY names, else to tarvo/registry.reg in the user's\n"
        "configuration folder.\n"
        "Example: tarvo-dewarp register",
        &host::CModule::registerServer);
}

Command addUnregisterCommand(CLI::App& program) {
    return addModuleCommand(program, "unregister", "Take the registration of the module's classes back.",
                            "Fails when the module is not registered.\n"
                            "Example: tarvo-dewarp unregister",
                            &host::CModule::unregisterServer);
}

} // namespace tarvo::apps
