#include "tests/diagnostics/ConfiguredLog.h"

#include <cstdlib>
#include <sys/stat.h>

namespace tarvo::diagnostics {
namespace {

TEST(LogRegistryFile, logFollowsTheFileThatTheEnvironmentNames) {
    const tests::CTemporaryFolder folder;
    ASSERT_EQ(setenv("TARVO_REGISTRY", (folder / "registry.reg").c_str(), 1), 0);
    testing::internal::CaptureStderr();
    tests::expectLogFollowsTheRegistry();
    // The debugger's channel is the standard error.
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "TvVideoTransform:_:[1] - TARVO Dewarping Transform DMO - initializing\n"),
              std::string::npos);
    unsetenv("TARVO_REGISTRY");
}

TEST(LogRegistryFile, fileAndItsBackupsAreOpenToEveryone) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    const mode_t mask = umask(077);
    {
        Log log(systemLogServices());
        log.SetModule("T", 0);
        log.SetFileOutput(path.c_str(), 2, 1, 3);
        TARVO_LOG(log, LogCategory::error, 0, "", "%s", std::string(1000, 'x').c_str());
    }
    umask(mask);
    for (const std::string& name : {path, path + " 0.log"}) {
        struct stat status {};
        ASSERT_EQ(stat(name.c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 0777, 0666U) << name;
    }
}

} // namespace
} // namespace tarvo::diagnostics
