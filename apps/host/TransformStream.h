#pragma once

#include "apps/host/MediaBuffer.h"
#include "apps/host/VideoFormat.h"
#include "com/ComPtr.h"
#include "interfaces/TarvoVideoTransform.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarvo::host {

/// When a frame is shown, in units of 100 ns.
struct FrameTime {
    std::optional<std::int64_t> start;
    std::optional<std::int64_t> duration;
};

/// A frame that the transform gave.
struct OutputFrame {
    com::ComPtr<CMediaBuffer> buffer;
    FrameTime time;
    bool isIncomplete = false; ///< the same input gives another frame
};

/// Frames through a transform: its side as a media object. Every method may throw HostError, which names the
/// step, and std::bad_alloc.
class CTransformStream {
public:
    explicit CTransformStream(const com::ComPtr<IDewarpingTransform>& transform);

    void setInput(const VideoFormat& format);
    /// After the input, which settles the output's size. RGB32 comes with the top row first unless
    /// `isBottomUp`; YV12 knows one order only. The result is the format of the frames to come.
    VideoFormat setOutput(FramePixels pixels, bool isBottomUp = false, std::uint32_t strideBytes = 0);

    /// Makes the render device now rather than with the first frame.
    void allocate();

    bool acceptsInput() const;
    /// Hands a frame in. One that is still in use is refused: take its output first.
    void putFrame(std::vector<std::byte> frame, const FrameTime& time = {});
    /// The next frame that there is to give; none before the first input.
    std::optional<OutputFrame> nextFrame();
    /// Forgets the input and the times that passed.
    void flush();

    IMediaObject& mediaObject() const { return *m_media; }

private:
    com::ComPtr<IDewarpingTransform> m_transform;
    com::ComPtr<IMediaObject> m_media;
    std::int64_t m_ticksPerFrame = 0;
};

} // namespace tarvo::host
