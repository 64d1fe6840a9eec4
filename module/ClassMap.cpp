// The classes of the product.

#include "module/ClassMap.h"

#include "com/Object.h"
#include "interfaces/TarvoVideoTransform.h"
#include "transform/DewarpingTransform.h"

#include <array>

namespace tarvo::module {

const ModuleContents& moduleContents() noexcept {
    // The number is that of the registration script among the resources.
    static const std::array<ModuleClass, 1> classes{
        {{{CLSID_DewarpingTransform, &com::createInstance<transform::CDewarpingTransform>}, 100, {}}}};
    static const ModuleContents contents{classes, dewarpingMediaObject(CLSID_DewarpingTransform),
                                         LIBID_TarvoVideoTransformLib};
    return contents;
}

} // namespace tarvo::module
