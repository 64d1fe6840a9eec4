#include "tests/diagnostics/ConfiguredLog.h"

#include <cstdlib>

namespace tarvo::diagnostics {
namespace {

TEST(LogRegistryFile, logFollowsTheFileThatTheEnvironmentNames) {
    const tests::CTemporaryFolder folder;
    ASSERT_EQ(setenv("TARVO_REGISTRY", (folder / "registry.reg").c_str(), 1), 0);
    tests::expectLogFollowsTheRegistry();
    unsetenv("TARVO_REGISTRY");
}

} // namespace
} // namespace tarvo::diagnostics
