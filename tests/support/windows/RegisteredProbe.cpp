#include "tests/support/RegisteredProbe.h"

#include "tests/module/LoadedModule.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

namespace tarvo::tests {

/// The system's own registry, which the system's functions insist upon.
struct CRegisteredProbe::Place {
    Place() { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK); }
    ~Place() { CoUninitialize(); }

    CRegistryTurn m_turn;
    bool m_isRegistered = true;
};

CRegisteredProbe::CRegisteredProbe() : m_place(std::make_unique<Place>()) {
    EXPECT_EQ(CLoadedModule().registerServer(), S_OK);
}

CRegisteredProbe::~CRegisteredProbe() {
    if (m_place->m_isRegistered)
        unregister();
}

void CRegisteredProbe::unregister() {
    EXPECT_EQ(CLoadedModule().unregisterServer(), S_OK);
    m_place->m_isRegistered = false;
}

} // namespace tarvo::tests
