#include "render/DewarpPixelShader.h"

namespace tarvo::render {

CDewarpPixelShader::CDewarpPixelShader(const geometry::CDewarpParameters& parameters,
                                       diagnostics::ObjectLog log)
    : m_parameters(parameters), m_log(log) {}

HRESULT CDewarpPixelShader::initialise(IRenderDevice& device) {
    // Given up first: an object whose new program fails must not go on drawing with the old one.
    release();
    device.releaseProgram();
    const ShaderProgram program = dewarpProgramOf(m_parameters.panoramaMode());
    if (!device.hasProgram(program)) {
        m_log.error("No shader data");
        return E_FAIL;
    }
    const HRESULT result =
        device.prepare(program, ConstantSlot::dewarp, recordBytes(m_parameters.constants()));
    if (SUCCEEDED(result)) {
        m_program = program;
    }
    return result;
}

void CDewarpPixelShader::release() {
    m_program.reset();
}

HRESULT CDewarpPixelShader::pixelShader(PixelShaderUse& use) {
    if (!m_program) {
        return E_FAIL;
    }
    use = {m_program, ConstantSlot::dewarp, recordBytes(m_parameters.constants()), false};
    return S_OK;
}

} // namespace tarvo::render
