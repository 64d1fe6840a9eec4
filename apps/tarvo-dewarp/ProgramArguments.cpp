#include "apps/tarvo-dewarp/Program.h"

#ifdef _WIN32
// shellapi.h needs windows.h before it.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on
#endif

namespace tarvo::apps {

#ifdef _WIN32
// Those of main() have lost what the system's code page does not know.
std::vector<std::string> programArguments(int, char**) {
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; wide != nullptr && i < count; ++i) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string text(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, text.data(), size, nullptr, nullptr);
        text.pop_back();
        arguments.push_back(std::move(text));
    }
    LocalFree(wide);
    return arguments;
}
#else
std::vector<std::string> programArguments(int count, char** values) {
    // Some launchers give not even the program's name.
    return {values + (count > 0 ? 1 : 0), values + count};
}
#endif

} // namespace tarvo::apps
