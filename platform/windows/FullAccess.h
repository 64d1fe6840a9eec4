#pragma once

#include <windows.h>

namespace tarvo::platform {

/// An access list that gives the group of administrators and everyone, in this order, all rights.
class CFullAccessList {
public:
    CFullAccessList();
    CFullAccessList(const CFullAccessList&) = delete;
    CFullAccessList& operator=(const CFullAccessList&) = delete;
    ~CFullAccessList();

    /// Null if the system could not build it.
    PACL get() const { return m_list; }

private:
    PACL m_list = nullptr;
};

} // namespace tarvo::platform
