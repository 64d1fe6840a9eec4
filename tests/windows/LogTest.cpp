#include "tests/diagnostics/ConfiguredLog.h"
#include "tests/windows/RedirectedRegistry.h"

namespace tarvo::diagnostics {
namespace {

TEST(LogRegistry, logFollowsTheSystemsRegistry) {
    const tests::CRedirectedRegistry redirected;
    tests::expectLogFollowsTheRegistry();
}

} // namespace
} // namespace tarvo::diagnostics
