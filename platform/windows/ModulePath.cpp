#include "platform/ModulePath.h"

#include "platform/Utf16.h"
#include "platform/windows/OwnModule.h"

namespace tarvo::platform {

std::string modulePath() {
    // As long as any path may be; a shorter room for it would be filled without an error.
    std::u16string path(32768, u'\0');
    const DWORD length = GetModuleFileNameW(ownModule(), reinterpret_cast<WCHAR*>(path.data()),
                                            static_cast<DWORD>(path.size()));
    path.resize(length);
    return utf8FromUtf16(path);
}

} // namespace tarvo::platform
