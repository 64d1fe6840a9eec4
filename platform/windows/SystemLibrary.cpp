#include "platform/SystemLibrary.h"

#include "platform/Utf16.h"

#include <string>
#include <windows.h>

namespace tarvo::platform {

CSystemLibrary::CSystemLibrary(const char* name) {
    if (name == nullptr || *name == '\0')
        return;
    const std::u16string wide = utf16FromUtf8(name);
    m_handle = LoadLibraryW(reinterpret_cast<const WCHAR*>(wide.c_str()));
}

CSystemLibrary::~CSystemLibrary() {
    if (m_handle != nullptr)
        FreeLibrary(static_cast<HMODULE>(m_handle));
}

void* CSystemLibrary::symbol(const char* name) const {
    if (m_handle == nullptr || name == nullptr)
        return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

} // namespace tarvo::platform
