#include "platform/windows/OwnModule.h"

namespace tarvo::platform {

HMODULE ownModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const char*>(&ownModule), &module);
    return module;
}

} // namespace tarvo::platform
