#include "platform/DebuggerChannel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>
#include <windows.h>

namespace tarvo::platform {
namespace {

constexpr DWORD debuggerText = 0x40010006;

std::vector<std::string> texts;

/// Sees texts on their way to the debugger. It changes the last-error value, as any handler may.
LONG CALLBACK takeText(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode != debuggerText || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    // The length counts the terminator.
    texts.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
                       record.ExceptionInformation[0] - 1);
    SetLastError(5);
    return EXCEPTION_CONTINUE_EXECUTION;
}

class DebuggerChannel : public testing::Test {
protected:
    DebuggerChannel() : m_handler(AddVectoredExceptionHandler(1, takeText)) { texts.clear(); }
    ~DebuggerChannel() override { RemoveVectoredExceptionHandler(m_handler); }

private:
    void* m_handler;
};

TEST_F(DebuggerChannel, isTheDebuggers) {
    writeToDebugger("Tarvo:_:100% %s\n");
    EXPECT_EQ(texts, (std::vector<std::string>{"Tarvo:_:100% %s\n"}));
}

TEST_F(DebuggerChannel, takesNothing) {
    writeToDebugger(nullptr);
    writeToDebugger("");
    EXPECT_TRUE(texts.empty());
}

TEST_F(DebuggerChannel, keepsTheLastError) {
    SetLastError(77);
    writeToDebugger("x\n");
    EXPECT_EQ(GetLastError(), 77U);
    EXPECT_EQ(texts.size(), 1U);
}

} // namespace
} // namespace tarvo::platform
