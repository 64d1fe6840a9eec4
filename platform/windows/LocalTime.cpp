#include "platform/LocalTime.h"

#include <windows.h>

namespace tarvo::platform {

LocalTime localTime() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

} // namespace tarvo::platform
