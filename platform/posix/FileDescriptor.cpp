#include "platform/posix/FileDescriptor.h"

#include <cerrno>

namespace tarvo::platform {

CFileDescriptor::~CFileDescriptor() {
    const int saved = errno;
    if (m_number >= 0)
        close(m_number);
    errno = saved;
}

} // namespace tarvo::platform
