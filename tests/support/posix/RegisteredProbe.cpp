#include "tests/support/RegisteredProbe.h"

#include "tests/module/LoadedModule.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tarvo::tests {

/// A registry file of its own.
struct CRegisteredProbe::Place {
    Place() { setenv("TARVO_REGISTRY", (m_folder / "registry.reg").c_str(), 1); }
    ~Place() { unsetenv("TARVO_REGISTRY"); }

    CTemporaryFolder m_folder;
};

CRegisteredProbe::CRegisteredProbe() : m_place(std::make_unique<Place>()) {
    EXPECT_EQ(CLoadedModule().registerServer(), S_OK);
}

CRegisteredProbe::~CRegisteredProbe() = default;

void CRegisteredProbe::unregister() {
    EXPECT_EQ(CLoadedModule().unregisterServer(), S_OK);
}

} // namespace tarvo::tests
