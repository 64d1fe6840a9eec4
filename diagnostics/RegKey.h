#pragma once

#include "diagnostics/RegKeyRead.h"

namespace tarvo::diagnostics {

/// A key for those that will write too; so far it only closes earlier than its base would.
class RegKey : public RegKeyRead {
public:
    using RegKeyRead::RegKeyRead;
    ~RegKey() { close(); }
};

} // namespace tarvo::diagnostics
