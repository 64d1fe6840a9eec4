// The classes of the product.

#include "module/ClassMap.h"

#include "accelerator/AcceleratorFilter.h"
#include "com/Object.h"
#include "interfaces/TarvoVideoTransform.h"
#include "transform/DewarpingTransform.h"

#include <array>

namespace tarvo::module {

const ModuleContents& moduleContents() noexcept {
    // The numbers are those of the registration scripts among the resources.
    static const std::array<ModuleClass, 2> classes{
        {{{CLSID_DewarpingTransform, &com::createInstance<transform::CDewarpingTransform>}, 100, {}},
         {{CLSID_AcceleratorFilter, &com::createInstance<accelerator::CAcceleratorFilter>}, 101, {}}}};
    static const ModuleContents contents{classes, dewarpingMediaObject(CLSID_DewarpingTransform),
                                         LIBID_TarvoVideoTransformLib};
    return contents;
}

} // namespace tarvo::module
