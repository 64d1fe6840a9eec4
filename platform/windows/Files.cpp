#include "platform/Files.h"

#include "platform/windows/FullAccess.h"

#include <cerrno>
#include <cstring>
#include <share.h>
#include <windows.h>

namespace tarvo::platform {

std::FILE* openFile(const char* path, const char* mode) {
    if (path == nullptr || mode == nullptr || *mode == '\0' || std::strchr("rwa", *mode) == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    return _fsopen(path, mode, _SH_DENYNO);
}

std::int64_t filePosition(std::FILE* file) {
    return file == nullptr ? -1 : _ftelli64(file);
}

bool copyFile(const char* from, const char* to) {
    if (from == nullptr || to == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    return CopyFileA(from, to, FALSE) != FALSE;
}

void grantAccessToEveryone(const char* path) {
    // Without a list the file would be left open to everyone by having none, or closed to all by an empty
    // one.
    const CFullAccessList list;
    SECURITY_DESCRIPTOR descriptor{};
    if (path != nullptr && list.get() != nullptr &&
        InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
        SetSecurityDescriptorDacl(&descriptor, TRUE, list.get(), FALSE) != FALSE)
        SetFileSecurityA(path, DACL_SECURITY_INFORMATION, &descriptor);
}

} // namespace tarvo::platform
