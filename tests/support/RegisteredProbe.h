#pragma once

#include <memory>

namespace tarvo::tests {

/// While it lives, the probe module of tests/module is registered where hosts of this system look for
/// modules, and hosts may create objects.
class CRegisteredProbe {
public:
    CRegisteredProbe();
    CRegisteredProbe(const CRegisteredProbe&) = delete;
    CRegisteredProbe& operator=(const CRegisteredProbe&) = delete;
    ~CRegisteredProbe();

    /// Ends the registration before.
    void unregister();

private:
    struct Place;
    std::unique_ptr<Place> m_place;
};

} // namespace tarvo::tests
