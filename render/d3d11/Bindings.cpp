#include "render/d3d11/Bindings.h"

#include "geometry/ViewLayout.h"

#include <algorithm>
#include <utility>

namespace tarvo::render::d3d11 {

CBindings::CBindings(com::ComPtr<ID3D11DeviceContext> context) : m_context(std::move(context)) {}

void CBindings::target(ID3D11RenderTargetView* view, UINT width, UINT height) {
    if (m_target != view) {
        m_target = view;
        m_context->OMSetRenderTargets(1, &view, nullptr);
    }
    if (m_viewportWidth != width || m_viewportHeight != height) {
        m_viewportWidth = width;
        m_viewportHeight = height;
        const D3D11_VIEWPORT viewport{0.0F, 0.0F, static_cast<float>(width), static_cast<float>(height),
                                      0.0F, 0.0F};
        m_context->RSSetViewports(1, &viewport);
    }
}

void CBindings::textures(const Views& views, const Slots& read) {
    std::size_t slot = 0;
    while (slot < textureSlotCount) {
        const std::size_t first = slot;
        for (; slot < textureSlotCount && read[slot] && views[slot] != m_views[slot]; ++slot)
            m_views[slot] = views[slot];
        if (slot != first) {
            m_context->PSSetShaderResources(static_cast<UINT>(first), static_cast<UINT>(slot - first),
                                            &views[first]);
        } else {
            ++slot;
        }
    }
}

void CBindings::pixelShader(ID3D11PixelShader* shader) {
    if (std::exchange(m_pixelShader, shader) != shader)
        m_context->PSSetShader(shader, nullptr, 0);
}

void CBindings::pixelConstants(std::size_t slot, ID3D11Buffer* record) {
    if (std::exchange(m_pixelConstants[slot], record) != record)
        m_context->PSSetConstantBuffers(static_cast<UINT>(slot), 1, &record);
}

void CBindings::vertices(ID3D11Buffer* buffer) {
    if (std::exchange(m_vertices, buffer) == buffer)
        return;
    const UINT stride = sizeof(geometry::Vertex);
    const UINT offset = 0;
    m_context->IASetVertexBuffers(0, 1, &buffer, &stride, &offset);
}

void CBindings::topology(D3D11_PRIMITIVE_TOPOLOGY topology) {
    if (std::exchange(m_topology, topology) != topology)
        m_context->IASetPrimitiveTopology(topology);
}

void CBindings::blending(ID3D11BlendState* state) {
    if (std::exchange(m_blending, state) == state)
        return;
    // No blend factor is used; it is stated for drivers that look at it all the same.
    const std::array<float, 4> factor{0.75F, 0.75F, 0.75F, 1.0F};
    m_context->OMSetBlendState(state, state != nullptr ? factor.data() : nullptr, 0xFFFFFFFF);
}

void CBindings::unbind(ID3D11ShaderResourceView* view) {
    Views views = m_views;
    std::ranges::replace(views, view, nullptr);
    Slots everySlot;
    everySlot.fill(true);
    textures(views, everySlot);
}

void CBindings::unbind(ID3D11PixelShader* shader) {
    if (shader != nullptr && m_pixelShader == shader)
        pixelShader(nullptr);
}

void CBindings::unbind(ID3D11Buffer* buffer) {
    if (buffer == nullptr)
        return;
    for (std::size_t slot = 0; slot < constantSlotCount; ++slot) {
        if (m_pixelConstants[slot] == buffer)
            pixelConstants(slot, nullptr);
    }
    if (m_vertices == buffer)
        vertices(nullptr);
}

} // namespace tarvo::render::d3d11
