#pragma once

#include "render/ConstantRecords.h"
#include "render/Shader.h"
#include "tests/render/conformance/FrameCase.h"

#include <cstdint>
#include <vector>

namespace tarvo::render::conformance {

/// Draws a custom case: three tables, each of which bends its own part of the input into the panorama.
class CCustomTables final : public IShader {
public:
    explicit CCustomTables(const FrameCase& frameCase);

    HRESULT initialise(IRenderDevice& device) override;
    void release() override {}
    HRESULT pixelShader(PixelShaderUse& use) override;

private:
    bool m_isVirtualPtz;
    CustomTransformConstants m_zoom{};
    VirtualPtzConstants m_camera{};
    std::vector<std::uint16_t> m_texels;
};

} // namespace tarvo::render::conformance
