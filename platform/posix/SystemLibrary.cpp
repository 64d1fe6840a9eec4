#include "platform/SystemLibrary.h"

#include <dlfcn.h>

namespace tarvo::platform {

CSystemLibrary::CSystemLibrary(const char* name) {
    // No name would mean the program itself.
    if (name != nullptr && *name != '\0')
        m_handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

CSystemLibrary::~CSystemLibrary() {
    if (m_handle != nullptr)
        dlclose(m_handle);
}

void* CSystemLibrary::symbol(const char* name) const {
    return m_handle != nullptr && name != nullptr ? dlsym(m_handle, name) : nullptr;
}

} // namespace tarvo::platform
