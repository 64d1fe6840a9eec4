#include "com/ModuleCount.h"

namespace tarvo::com {

CModuleCount& moduleCount() noexcept {
    static constinit CModuleCount count;
    return count;
}

} // namespace tarvo::com
