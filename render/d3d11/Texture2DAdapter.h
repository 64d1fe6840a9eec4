#pragma once

#include "render/FrameFormat.h"
#include "render/RenderDevice.h"
#include "render/d3d11/Surfaces.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::render::d3d11 {

/// How a plane of a YV12 frame lies in the frame and in its texture.
struct PlaneRecord {
    std::uint32_t width;          ///< pixels
    std::uint32_t height;         ///< rows
    std::uint32_t format;         ///< DXGI_FORMAT
    std::uint32_t usage;          ///< D3D11_USAGE
    std::uint32_t bindFlags;      ///< D3D11_BIND_FLAG
    std::uint32_t cpuAccessFlags; ///< D3D11_CPU_ACCESS_FLAG
    std::uint32_t strideBytes;    ///< in the frame, from a row to the next
    std::uint32_t planeBytes;     ///< in the frame
    std::uint32_t bytesPerPixel;

    friend constexpr bool operator==(const PlaneRecord&, const PlaneRecord&) = default;
};
static_assert(sizeof(PlaneRecord) == 36);

inline constexpr std::size_t planeCount = 3;
using PlaneRecords = std::array<PlaneRecord, planeCount>;

/// The planes of a frame in the order in which they lie there: luma, Cr, Cb.
PlaneRecords planeRecordsOf(const InputFormat& input);

/// The planes of YV12 input as textures, one each.
class CTexture2DAdapter {
public:
    CTexture2DAdapter(com::ComPtr<ID3D11Device> device, com::ComPtr<ID3D11DeviceContext> context,
                      diagnostics::ObjectLog log);

    /// Releases the textures and makes those of the records. After a failure, which is logged, there are
    /// none.
    HRESULT InitializeTextures(const PlaneRecords& records);

    /// Replaces the contents of one plane as IRenderDevice::upload() says. A failure is logged and leaves the
    /// plane as it was.
    HRESULT UpdateResources(std::size_t plane, const SourceRows& rows);

    const SurfaceObjects& plane(std::size_t index) const { return m_planes[index]; }

private:
    com::ComPtr<ID3D11Device> m_device;
    com::ComPtr<ID3D11DeviceContext> m_context;
    diagnostics::ObjectLog m_log;
    std::array<SurfaceObjects, planeCount> m_planes;
};

} // namespace tarvo::render::d3d11
