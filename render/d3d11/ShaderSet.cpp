#include "render/d3d11/ShaderSet.h"

#include "com/Trace.h"
#include "render/VertexLayout.h"

#include <utility>

namespace tarvo::render::d3d11 {
namespace {

// In the order in which they are made.
constexpr std::array pixelPrograms{ShaderProgram::yv12ToRgb, ShaderProgram::yuy2ToRgb,
                                   ShaderProgram::overviewRegion, ShaderProgram::excludeRegion,
                                   ShaderProgram::plainCopy};

DXGI_FORMAT floatFormat(std::uint32_t count) {
    constexpr std::array formats{DXGI_FORMAT_UNKNOWN, DXGI_FORMAT_R32_FLOAT, DXGI_FORMAT_R32G32_FLOAT,
                                 DXGI_FORMAT_R32G32B32_FLOAT};
    return formats[count];
}

HRESULT createInputLayout(ID3D11Device& device, std::span<const std::byte> vertexProgram,
                          com::ComPtr<ID3D11InputLayout>& layout) {
    std::array<D3D11_INPUT_ELEMENT_DESC, vertexLayout.size()> elements{};
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i].SemanticName = vertexLayout[i].semantic;
        elements[i].Format = floatFormat(vertexLayout[i].floatCount);
        elements[i].AlignedByteOffset = vertexLayout[i].byteOffset;
        elements[i].InputSlotClass = D3D11_INPUT_PER_VERTEX_DATA;
    }
    return device.CreateInputLayout(elements.data(), static_cast<UINT>(elements.size()), vertexProgram.data(),
                                    vertexProgram.size(), layout.put());
}

} // namespace

std::span<const std::byte> bytecodeOf(BytecodeFinder find, ShaderProgram program) {
    if (static_cast<std::size_t>(program) >= shaderResources.size())
        return {};
    const ShaderResource& resource = shaderResource(program);
    return find(resource.type, resource.id);
}

HRESULT createPixelShader(ID3D11Device& device, BytecodeFinder find, ShaderProgram program,
                          com::ComPtr<ID3D11PixelShader>& shader) {
    const std::span<const std::byte> code = bytecodeOf(find, program);
    if (code.empty())
        return E_FAIL;
    return device.CreatePixelShader(code.data(), code.size(), nullptr, shader.put());
}

HRESULT CShaderSet::create(ID3D11Device& device, BytecodeFinder find) {
    CShaderSet made;
    const std::span<const std::byte> code = bytecodeOf(find, ShaderProgram::vertex);
    if (code.empty())
        return E_FAIL;
    RETURN_IF_FAILED(device.CreateVertexShader(code.data(), code.size(), nullptr, made.m_vertexShader.put()));
    RETURN_IF_FAILED(createInputLayout(device, code, made.m_inputLayout));
    for (const ShaderProgram program : pixelPrograms) {
        RETURN_IF_FAILED(
            createPixelShader(device, find, program, made.m_pixelShaders[static_cast<std::size_t>(program)]));
    }
    *this = std::move(made);
    return S_OK;
}

ID3D11PixelShader* CShaderSet::pixelShader(ShaderProgram program) const {
    const auto index = static_cast<std::size_t>(program);
    return index < m_pixelShaders.size() ? m_pixelShaders[index].get() : nullptr;
}

} // namespace tarvo::render::d3d11
