// A module like the product, with probes for classes.

#include "tests/module/ProbeClasses.h"

namespace tarvo::module {

const ModuleContents& moduleContents() noexcept {
    static const std::array<ModuleClass, 2> classes = tests::probeClasses();
    static const ModuleContents contents = tests::probeContents(classes);
    return contents;
}

} // namespace tarvo::module
