#pragma once

#include <memory>

namespace tarvo::tests {

/// While it lives, registrations of this process go to a registry of its own, which is empty at first and is
/// also what platform::systemRegistry() reads.
class CPrivateRegistry {
public:
    CPrivateRegistry();
    CPrivateRegistry(const CPrivateRegistry&) = delete;
    CPrivateRegistry& operator=(const CPrivateRegistry&) = delete;
    ~CPrivateRegistry();

private:
    struct Place;
    std::unique_ptr<Place> m_place;
};

} // namespace tarvo::tests
