#include "tests/apps/PrivateRegistry.h"

#include "tests/windows/RedirectedRegistry.h"

namespace tarvo::tests {

struct CPrivateRegistry::Place {
    CRedirectedRegistry redirected;
};

CPrivateRegistry::CPrivateRegistry() : m_place(std::make_unique<Place>()) {}

CPrivateRegistry::~CPrivateRegistry() = default;

} // namespace tarvo::tests
