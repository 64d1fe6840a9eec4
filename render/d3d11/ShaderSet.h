#pragma once

#include "com/ComPtr.h"
#include "platform/Direct3D11Types.h"
#include "render/ShaderProgram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::render::d3d11 {

/// Finds a program's bytecode: platform::findModuleResource() or the like.
using BytecodeFinder = std::span<const std::byte> (*)(const char* type, std::uint16_t id);

/// Empty when it is not there, or there is no such program.
std::span<const std::byte> bytecodeOf(BytecodeFinder find, ShaderProgram program);

/// E_FAIL when the bytecode is not there.
HRESULT createPixelShader(ID3D11Device& device, BytecodeFinder find, ShaderProgram program,
                          com::ComPtr<ID3D11PixelShader>& shader);

/// The programs that every device has at hand: the one for vertices, with the layout of what it reads, and
/// those for pixels which do not belong to a view.
class CShaderSet {
public:
    /// After a failure the set is as it was.
    HRESULT create(ID3D11Device& device, BytecodeFinder find);

    ID3D11VertexShader* vertexShader() const { return m_vertexShader.get(); }
    ID3D11InputLayout* inputLayout() const { return m_inputLayout.get(); }
    /// Null for the others.
    ID3D11PixelShader* pixelShader(ShaderProgram program) const;

private:
    com::ComPtr<ID3D11VertexShader> m_vertexShader;
    com::ComPtr<ID3D11InputLayout> m_inputLayout;
    std::array<com::ComPtr<ID3D11PixelShader>, shaderResources.size()> m_pixelShaders;
};

} // namespace tarvo::render::d3d11
