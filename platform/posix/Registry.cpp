#include "platform/Registry.h"

#include "platform/posix/FileStore.h"
#include "platform/registry/StoredRegistry.h"

namespace tarvo::platform {

IRegistry& systemRegistry() {
    static CFileStore store(registryFiles);
    static CStoredRegistry registry(store);
    return registry;
}

} // namespace tarvo::platform
