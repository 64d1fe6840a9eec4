#pragma once

#include "com/ComPtr.h"
#include "diagnostics/ObjectLog.h"
#include "platform/Direct3D11Types.h"
#include "platform/ModuleResources.h"
#include "render/RenderDevice.h"
#include "render/d3d11/Bindings.h"
#include "render/d3d11/Buffers.h"
#include "render/d3d11/D3d11Library.h"
#include "render/d3d11/ShaderSet.h"
#include "render/d3d11/Surfaces.h"
#include "render/d3d11/Texture2DAdapter.h"

#include <array>
#include <memory>
#include <optional>

namespace tarvo::render::d3d11 {

/// Draws with Direct3D 11: on the graphics adapter, or else with the platform's software rasteriser (WARP).
///
/// Functions that bear the name of a log line's place write that line. A surface that may not be used like
/// this, or is not there, and a closed device answer E_FAIL; what could never be served E_INVALIDARG.
class CD3d11Device final : public IRenderDevice {
public:
    explicit CD3d11Device(std::unique_ptr<ID3d11Library> library, diagnostics::ObjectLog log,
                          BytecodeFinder findBytecode = platform::findModuleResource);
    ~CD3d11Device() override;
    CD3d11Device(const CD3d11Device&) = delete;
    CD3d11Device& operator=(const CD3d11Device&) = delete;

    /// A yes is remembered.
    bool isAvailable() override;
    HRESULT open(const InputFormat& input, const OutputFormat& output) override;
    HRESULT openStates() override;
    bool isOpen() const override { return static_cast<bool>(m_held.device); }
    DeviceKind kind() const override { return m_held.kind; }

    HRESULT geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) override;
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override;

    bool hasProgram(ShaderProgram program) const override;
    /// Logs nothing: the caller tells of it in its own words.
    HRESULT prepare(ShaderProgram program, ConstantSlot slot, std::span<const std::byte> constants) override;
    void releaseProgram() override;

    HRESULT lookup(int width, int height) override;
    void releaseLookup() override;

    HRESULT upload(Surface surface, const SourceRows& rows) override;

    void clear(Surface target, const std::array<float, 4>& colour) override;
    HRESULT draw(const Pass& pass) override;
    void copy(Surface from, Surface to) override;
    void copyBox(Surface from, const geometry::PixelBox& box, Surface to) override;
    void flush() override;

    HRESULT readBack(IMappedRowsVisitor& visitor) override;

    void close() override;

private:
    /// A program of the view.
    struct PreparedProgram {
        std::optional<ShaderProgram> program;
        com::ComPtr<ID3D11PixelShader> shader;
        ConstantSlot slot = ConstantSlot::none;
    };

    /// Everything that belongs to an open device.
    struct Held {
        com::ComPtr<ID3D11Device> device;
        com::ComPtr<ID3D11DeviceContext> context;
        DeviceKind kind = DeviceKind::hardware;
        CBindings bindings;
        InputFormat input;
        OutputFormat output;

        /// By role; the planes are the adapter's.
        std::array<SurfaceObjects, static_cast<std::size_t>(Surface::lookup) + 1> surfaces;
        std::array<SurfaceObjects, 2> readBack;
        std::unique_ptr<CTexture2DAdapter> planes;

        CShaderSet shaders;
        PreparedProgram prepared;
        std::array<CConstantRecord, CBindings::constantSlotCount> pixelRecords;
        com::ComPtr<ID3D11Buffer> vertexRecord;
        com::ComPtr<ID3D11Buffer> indices;
        com::ComPtr<ID3D11Buffer> viewVertices;
        com::ComPtr<ID3D11Buffer> markerVertices;
        com::ComPtr<ID3D11BlendState> blendState;
        com::ComPtr<ID3D11SamplerState> sampler;
    };

    HRESULT InitDirect3D();
    HRESULT createDevice();
    HRESULT queryHardwareOptions();
    HRESULT CreateTextures();
    HRESULT CreateStructuredBuffer();
    HRESULT CreateShadersAndInputLayout();
    HRESULT CreateIndexBuffer();
    HRESULT createVertexRecord();
    HRESULT CreateYUY2PSCBuffer();
    HRESULT CreateExcludeCBuffer(const ExcludeConstants& constants, CConstantRecord& record);
    HRESULT CreateExcludeRectTexture(const geometry::PixelBox& box, SurfaceObjects& surface);
    HRESULT createVertexBuffer(std::span<const geometry::Vertex> vertices, D3D11_USAGE usage,
                               com::ComPtr<ID3D11Buffer>& buffer);

    /// What is kept for a surface; empty objects if nothing is.
    const SurfaceObjects& objectsOf(Surface surface) const;
    SurfaceObjects& ownObjectsOf(Surface surface) {
        return m_held.surfaces[static_cast<std::size_t>(surface)];
    }
    /// Null if it is not ready.
    ID3D11PixelShader* pixelShaderOf(ShaderProgram program) const;
    /// Null if there are none, or not as many as the range names.
    ID3D11Buffer* verticesFor(const DrawRange& range) const;
    bool findViews(const TextureSlots& textures, CBindings::Views& views) const;

    std::unique_ptr<ID3d11Library> m_library;
    diagnostics::ObjectLog m_log;
    BytecodeFinder m_findBytecode;
    bool m_isInstalled = false;
    Held m_held;
};

} // namespace tarvo::render::d3d11
