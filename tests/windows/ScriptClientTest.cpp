// Scripts know the component by its registered name alone: the product is registered, the system's script
// host creates and steers its objects, and the registration is taken back.

#include "platform/SystemLibrary.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>
#include <windows.h>

namespace tarvo::tests {
namespace {

/// The product, registered for all to see while this lives.
class CRegisteredProduct {
public:
    CRegisteredProduct() : m_library(TARVO_PRODUCT_MODULE) {
        EXPECT_TRUE(m_library);
        EXPECT_EQ(call("DllRegisterServer"), S_OK);
    }
    CRegisteredProduct(const CRegisteredProduct&) = delete;
    CRegisteredProduct& operator=(const CRegisteredProduct&) = delete;
    ~CRegisteredProduct() {
        EXPECT_EQ(call("DllUnregisterServer"), S_OK);
        EXPECT_EQ(call("DllCanUnloadNow"), S_OK);
    }

private:
    HRESULT call(const char* name) const {
        auto* const function = m_library.function<HRESULT WINAPI()>(name);
        return function == nullptr ? E_NOTIMPL : function();
    }

    platform::CSystemLibrary m_library;
};

struct Ended {
    DWORD status = STILL_ACTIVE;
    std::string output;
};

std::string readAll(HANDLE pipe) {
    std::string text;
    char part[1000];
    DWORD count = 0;
    while (ReadFile(pipe, part, sizeof part, &count, nullptr) != FALSE && count != 0)
        text.append(part, count);
    return text;
}

/// Runs a program to its end; one that does not come to an end within two minutes is ended.
Ended run(std::string command) {
    Ended ended;
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    if (CreatePipe(&reader, &writer, &inherited, 1 << 20) == FALSE) {
        ADD_FAILURE() << "no pipe";
        return ended;
    }
    SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = writer;
    startup.hStdError = writer;
    PROCESS_INFORMATION process{};
    const BOOL isStarted = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &startup, &process);
    EXPECT_NE(isStarted, FALSE) << command;
    CloseHandle(writer);
    if (isStarted != FALSE) {
        // What it says fits into the pipe, so it never waits for us.
        if (WaitForSingleObject(process.hProcess, 120'000) != WAIT_OBJECT_0) {
            ADD_FAILURE() << command << " does not come to an end";
            TerminateProcess(process.hProcess, 99);
            WaitForSingleObject(process.hProcess, 10'000);
        }
        GetExitCodeProcess(process.hProcess, &ended.status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        ended.output = readAll(reader);
    }
    CloseHandle(reader);
    return ended;
}

/// With a drive: the script host takes what begins with a slash for an option.
std::string fullPath(const char* path) {
    char full[MAX_PATH] = {};
    EXPECT_NE(GetFullPathNameA(path, MAX_PATH, full, nullptr), 0U);
    return full;
}

bool isClassKnown() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, "TarvoVideoTransform.DewarpingTransform", 0, KEY_READ, &key) !=
        ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

TEST(ScriptClient, steersTheTransformByName) {
    const CRegistryTurn turn;
    {
        const CRegisteredProduct product;
        EXPECT_TRUE(isClassKnown());
        const Ended ended = run("cscript.exe //nologo \"" + fullPath(TARVO_SCRIPT_CLIENT) + '"');
        EXPECT_EQ(ended.status, 0U) << ended.output;
        std::smatch counts;
        ASSERT_TRUE(
            std::regex_search(ended.output, counts, std::regex("([0-9]+) checks, ([0-9]+) failed\\s*$")))
            << ended.output;
        EXPECT_GT(std::stoi(counts[1]), 100) << "a script that ended early";
        EXPECT_EQ(counts[2], "0") << ended.output;
    }
    EXPECT_FALSE(isClassKnown());
}

} // namespace
} // namespace tarvo::tests
