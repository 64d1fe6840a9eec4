#include "tests/windows/RegisteredProduct.h"

#include <gtest/gtest.h>

namespace tarvo::tests {
namespace {

std::string readAll(HANDLE pipe) {
    std::string text;
    char part[1000];
    DWORD count = 0;
    while (ReadFile(pipe, part, sizeof part, &count, nullptr) != FALSE && count != 0)
        text.append(part, count);
    return text;
}

} // namespace

CRegisteredProduct::CRegisteredProduct() : m_library(TARVO_PRODUCT_MODULE) {
    EXPECT_TRUE(m_library);
    EXPECT_EQ(call("DllRegisterServer"), S_OK);
}

CRegisteredProduct::~CRegisteredProduct() {
    EXPECT_EQ(call("DllUnregisterServer"), S_OK);
    EXPECT_EQ(call("DllCanUnloadNow"), S_OK);
}

HRESULT CRegisteredProduct::call(const char* name) const {
    auto* const function = m_library.function<HRESULT WINAPI()>(name);
    return function == nullptr ? E_NOTIMPL : function();
}

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

} // namespace tarvo::tests
