#pragma once

#include "diagnostics/ObjectLog.h"
#include "geometry/DewarpParameters.h"
#include "render/Shader.h"

#include <optional>

namespace tarvo::render {

/// Draws with the built-in projections of the fisheye picture: the single view or the panorama of a mounting,
/// as the parameters' panorama mode says at the time of initialise().
class CDewarpPixelShader final : public IShader {
public:
    /// The parameters stay with the caller and are read at each use.
    CDewarpPixelShader(const geometry::CDewarpParameters& parameters, diagnostics::ObjectLog log);

    /// Without the program's code logs "No shader data" and answers E_FAIL.
    HRESULT initialise(IRenderDevice& device) override;
    void release() override;
    /// E_FAIL while there is no program.
    HRESULT pixelShader(PixelShaderUse& use) override;

private:
    const geometry::CDewarpParameters& m_parameters;
    diagnostics::ObjectLog m_log;
    std::optional<ShaderProgram> m_program;
};

} // namespace tarvo::render
