#include "tests/apps/PrivateRegistry.h"

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>

namespace tarvo::tests {

struct CPrivateRegistry::Place {
    CTemporaryFolder folder;
};

CPrivateRegistry::CPrivateRegistry() : m_place(std::make_unique<Place>()) {
    setenv("TARVO_REGISTRY", (m_place->folder / "registry.reg").c_str(), 1);
}

CPrivateRegistry::~CPrivateRegistry() {
    unsetenv("TARVO_REGISTRY");
}

} // namespace tarvo::tests
