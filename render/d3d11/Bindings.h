#pragma once

#include "com/ComPtr.h"
#include "platform/Direct3D11Types.h"

#include <array>
#include <cstddef>

namespace tarvo::render::d3d11 {

/// What the passes bind, on a context that nobody else uses. Each call costs the driver's checks, and a
/// machine shows many cameras: what is bound already is not bound again.
///
/// Holds no references: what is released has to be taken off with unbind() before.
class CBindings {
public:
    static constexpr std::size_t textureSlotCount = 5;
    static constexpr std::size_t constantSlotCount = 5;
    using Views = std::array<ID3D11ShaderResourceView*, textureSlotCount>;
    using Slots = std::array<bool, textureSlotCount>;

    CBindings() = default;
    /// A context on which nothing is bound yet.
    explicit CBindings(com::ComPtr<ID3D11DeviceContext> context);

    /// With a viewport of its whole size, at depth 0.
    void target(ID3D11RenderTargetView* view, UINT width, UINT height);
    /// In the slots that are read; neighbours that change go in one call. The other slots keep what they
    /// have, since the next frame will look at it again: nothing is ever both looked at and drawn to.
    void textures(const Views& views, const Slots& read);
    void pixelShader(ID3D11PixelShader* shader);
    void pixelConstants(std::size_t slot, ID3D11Buffer* record);
    /// Of geometry::Vertex.
    void vertices(ID3D11Buffer* buffer);
    void topology(D3D11_PRIMITIVE_TOPOLOGY topology);
    /// Null: the program's colour replaces the target's.
    void blending(ID3D11BlendState* state);

    /// Take one off wherever it is bound; null is nothing.
    void unbind(ID3D11ShaderResourceView* view);
    void unbind(ID3D11PixelShader* shader);
    void unbind(ID3D11Buffer* buffer);

private:
    com::ComPtr<ID3D11DeviceContext> m_context;
    ID3D11RenderTargetView* m_target = nullptr;
    UINT m_viewportWidth = 0;
    UINT m_viewportHeight = 0;
    Views m_views{};
    ID3D11PixelShader* m_pixelShader = nullptr;
    std::array<ID3D11Buffer*, constantSlotCount> m_pixelConstants{};
    ID3D11Buffer* m_vertices = nullptr;
    D3D11_PRIMITIVE_TOPOLOGY m_topology = D3D11_PRIMITIVE_TOPOLOGY_UNDEFINED;
    ID3D11BlendState* m_blending = nullptr;
};

} // namespace tarvo::render::d3d11
