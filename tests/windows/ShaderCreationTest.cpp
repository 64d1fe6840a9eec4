#include "com/ComPtr.h"
#include "platform/ModuleResources.h"
#include "render/ShaderProgram.h"
#include "render/VertexLayout.h"

#include <gtest/gtest.h>

#include <array>
#include <d3d11.h>
#include <span>

namespace tarvo::render {
namespace {

using com::ComPtr;

/// Null, with a failure of the test, when the system has no Direct3D 11.
ComPtr<ID3D11Device> createDevice() {
    ComPtr<ID3D11Device> device;
    constexpr D3D_FEATURE_LEVEL lowest = D3D_FEATURE_LEVEL_10_0;
    HRESULT result = E_FAIL;
    for (const D3D_DRIVER_TYPE driver : {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP}) {
        result = D3D11CreateDevice(nullptr, driver, nullptr, 0, &lowest, 1, D3D11_SDK_VERSION, device.put(),
                                   nullptr, nullptr);
        if (SUCCEEDED(result))
            return device;
    }
    ADD_FAILURE() << "no Direct3D 11 device: 0x" << std::hex << result;
    return nullptr;
}

std::span<const std::byte> bytecode(ShaderProgram program) {
    const ShaderResource& resource = shaderResource(program);
    return platform::findModuleResource(resource.type, resource.id);
}

DXGI_FORMAT floatFormat(std::uint32_t count) {
    constexpr std::array formats{DXGI_FORMAT_UNKNOWN, DXGI_FORMAT_R32_FLOAT, DXGI_FORMAT_R32G32_FLOAT,
                                 DXGI_FORMAT_R32G32B32_FLOAT};
    return formats.at(count);
}

TEST(ShaderCreation, succeedsForEveryProgram) {
    const ComPtr<ID3D11Device> device = createDevice();
    ASSERT_TRUE(device);
    for (const ShaderResource& resource : shaderResources) {
        SCOPED_TRACE(resource.sourceName);
        const std::span<const std::byte> code = bytecode(resource.program);
        ASSERT_FALSE(code.empty());
        if (resource.program == ShaderProgram::vertex) {
            ComPtr<ID3D11VertexShader> shader;
            EXPECT_EQ(device->CreateVertexShader(code.data(), code.size(), nullptr, shader.put()), S_OK);
            EXPECT_TRUE(shader);
        } else {
            ComPtr<ID3D11PixelShader> shader;
            EXPECT_EQ(device->CreatePixelShader(code.data(), code.size(), nullptr, shader.put()), S_OK);
            EXPECT_TRUE(shader);
        }
    }
}

TEST(ShaderCreation, acceptsTheVertexLayout) {
    const ComPtr<ID3D11Device> device = createDevice();
    ASSERT_TRUE(device);
    std::array<D3D11_INPUT_ELEMENT_DESC, vertexLayout.size()> elements{};
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = {vertexLayout[i].semantic,
                       0,
                       floatFormat(vertexLayout[i].floatCount),
                       0,
                       vertexLayout[i].byteOffset,
                       D3D11_INPUT_PER_VERTEX_DATA,
                       0};
    }
    const std::span<const std::byte> code = bytecode(ShaderProgram::vertex);
    ComPtr<ID3D11InputLayout> layout;
    EXPECT_EQ(
        device->CreateInputLayout(elements.data(), elements.size(), code.data(), code.size(), layout.put()),
        S_OK);
    EXPECT_TRUE(layout);

    // Not because anything would do: what the program asks for has to be there.
    ComPtr<ID3D11InputLayout> incomplete;
    EXPECT_TRUE(
        FAILED(device->CreateInputLayout(elements.data(), 1, code.data(), code.size(), incomplete.put())));
}

} // namespace
} // namespace tarvo::render
