// How CD3d11Device draws a pass.

#include "com/Trace.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/ProgramInputs.h"

namespace tarvo::render::d3d11 {
namespace {

D3D11_PRIMITIVE_TOPOLOGY topologyOf(Topology topology) {
    return topology == Topology::triangleList ? D3D11_PRIMITIVE_TOPOLOGY_TRIANGLELIST
                                              : D3D11_PRIMITIVE_TOPOLOGY_TRIANGLESTRIP;
}

/// Whether a range that is counted in `available` lies inside of it.
bool isInside(int first, int count, int available) {
    return first >= 0 && count > 0 && count <= available && first <= available - count;
}

bool isInside(const DrawRange& range) {
    const int vertexCount = range.source == VertexSource::overviewMarker ? geometry::overviewMarkerVertexCount
                                                                         : geometry::viewVertexCount;
    if (range.topology == Topology::triangleList) {
        return isInside(range.first, range.count, geometry::overviewDiscIndexCount) &&
               range.baseVertex >= 0 && range.baseVertex < vertexCount;
    }
    return isInside(range.first, range.count, vertexCount);
}

} // namespace

ID3D11PixelShader* CD3d11Device::pixelShaderOf(ShaderProgram program) const {
    if (m_held.prepared.program == program)
        return m_held.prepared.shader.get();
    return m_held.shaders.pixelShader(program);
}

ID3D11Buffer* CD3d11Device::verticesFor(const DrawRange& range) const {
    if (!isInside(range))
        return nullptr;
    return range.source == VertexSource::overviewMarker ? m_held.markerVertices.get()
                                                        : m_held.viewVertices.get();
}

bool CD3d11Device::findViews(const TextureSlots& textures, CBindings::Views& views) const {
    static_assert(std::tuple_size_v<TextureSlots> == CBindings::textureSlotCount);
    for (std::size_t slot = 0; slot < textures.size(); ++slot) {
        if (textures[slot] == Surface::none)
            continue;
        views[slot] = objectsOf(textures[slot]).view.get();
        if (views[slot] == nullptr)
            return false;
    }
    return true;
}

HRESULT CD3d11Device::draw(const Pass& pass) {
    const SurfaceObjects& target = objectsOf(pass.target);
    // Without a program some implementations would paint the range white and others leave it alone.
    ID3D11PixelShader* const shader = pixelShaderOf(pass.program);
    ID3D11Buffer* const vertices = verticesFor(pass.range);
    CBindings::Views views{};
    if (!target.target || shader == nullptr || vertices == nullptr || !m_held.sampler ||
        !findViews(pass.textures, views))
        return E_FAIL;
    if (pass.constantSlot != ConstantSlot::none) {
        const auto slot = static_cast<std::size_t>(pass.constantSlot);
        if (slot >= m_held.pixelRecords.size() || m_held.pixelRecords[slot].buffer() == nullptr)
            return E_FAIL;
        CConstantRecord& record = m_held.pixelRecords[slot];
        RETURN_IF_FAILED(record.write(*m_held.context, pass.constants));
        m_held.bindings.pixelConstants(slot, record.buffer());
    }

    CBindings& bindings = m_held.bindings;
    bindings.target(target.target.get(), target.width, target.height);
    bindings.textures(views, inputsOf(pass.program).textures);
    bindings.pixelShader(shader);
    bindings.vertices(vertices);
    bindings.topology(topologyOf(pass.range.topology));
    bindings.blending(pass.isBlended ? m_held.blendState.get() : nullptr);
    if (pass.range.topology == Topology::triangleList) {
        m_held.context->DrawIndexed(static_cast<UINT>(pass.range.count), static_cast<UINT>(pass.range.first),
                                    pass.range.baseVertex);
    } else {
        m_held.context->Draw(static_cast<UINT>(pass.range.count), static_cast<UINT>(pass.range.first));
    }
    return S_OK;
}

} // namespace tarvo::render::d3d11
