#pragma once

#include "module/Registration.h"
#include "platform/ModulePath.h"
#include "platform/ModuleResources.h"

namespace tarvo::module {

/// The part of the services that every system answers alike: the registry, and what the module's file says.
class CModuleFileServices : public IRegistrationServices {
public:
    platform::IRegistry& registry() noexcept override { return platform::systemRegistry(); }

    std::string_view script(std::uint16_t id) noexcept override {
        const std::span<const std::byte> bytes = platform::findModuleResource("REGISTRY", id);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

    std::string modulePath() override { return platform::modulePath(); }
};

} // namespace tarvo::module
