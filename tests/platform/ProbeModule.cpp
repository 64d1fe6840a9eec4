// A dynamic library as the product is one: what the platform's services say inside of it.

#include "tests/platform/ProbeModule.h"

#include "platform/ModulePath.h"
#include "platform/ModuleResources.h"

#include <string>

extern "C" {

[[gnu::visibility("default")]] const char* probeModulePath() {
    static const std::string path = tarvo::platform::modulePath();
    return path.c_str();
}

[[gnu::visibility("default")]] const void* probeResource(const char* type, unsigned short id,
                                                         std::size_t* size) {
    const std::span<const std::byte> resource = tarvo::platform::findModuleResource(type, id);
    *size = resource.size();
    return resource.data();
}
}
