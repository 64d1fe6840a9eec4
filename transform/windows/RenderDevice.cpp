#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"
#include "transform/RenderDeviceMaker.h"

namespace tarvo::transform {

std::unique_ptr<render::IRenderDevice> makeRenderDevice(diagnostics::ObjectLog log) {
    using namespace render::d3d11;
    return std::make_unique<CD3d11Device>(std::make_unique<CD3d11Library>(), log);
}

} // namespace tarvo::transform
