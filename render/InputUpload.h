#pragma once

#include "render/FrameFormat.h"
#include "render/RenderDevice.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tarvo::render {

/// Hands the frames that come in to the device, surface by surface.
class CInputUpload {
public:
    /// A frame of the given format. Bytes missing at its end count as zero, and none beyond it are read. The
    /// first plane that fails ends the frame; of other formats than RGB32, YV12 and YUY2 nothing is uploaded.
    /// Frames that are whole are handed over as they lie, and lent for as long as the device wants; nothing
    /// is allocated for them.
    void upload(IRenderDevice& device, const InputFormat& format, std::span<const std::byte> frame);

private:
    /// How the rows of a surface lie in a frame.
    struct RowLayout {
        std::size_t stepBytes = 0;
        std::size_t rowBytes = 0;
        std::size_t rowCount = 0;
        bool isBottomUp = false;

        bool fitsInto(std::size_t byteCount) const;
        SourceRows rowsOf(std::span<const std::byte> bytes) const;
    };

    void uploadPlanes(IRenderDevice& device, const InputFormat& format, std::span<const std::byte> frame);
    /// `bytes` begins with the first row in memory.
    HRESULT uploadRows(IRenderDevice& device, Surface surface, std::span<const std::byte> bytes,
                       const RowLayout& layout);
    void complete(std::span<const std::byte> bytes, const RowLayout& layout);

    /// The last surface that came short, with zeros for what was missing.
    std::vector<std::byte> m_completed;
};

} // namespace tarvo::render
