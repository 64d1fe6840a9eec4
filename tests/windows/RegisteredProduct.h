#pragma once

#include "platform/SystemLibrary.h"

#include <string>
#include <windows.h>

namespace tarvo::tests {

/// The product, registered for all to see while this lives.
class CRegisteredProduct {
public:
    CRegisteredProduct();
    CRegisteredProduct(const CRegisteredProduct&) = delete;
    CRegisteredProduct& operator=(const CRegisteredProduct&) = delete;
    ~CRegisteredProduct();

private:
    HRESULT call(const char* name) const;

    platform::CSystemLibrary m_library;
};

/// How a program ended, and what it said.
struct Ended {
    DWORD status = STILL_ACTIVE;
    std::string output;
};

/// Runs a program to its end; one that does not come to an end within two minutes is ended.
Ended run(std::string command);

} // namespace tarvo::tests
