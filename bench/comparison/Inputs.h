#pragma once

#include "apps/host/MediaBuffer.h"
#include "apps/host/VideoFormat.h"
#include "bench/comparison/Work.h"
#include "render/Picture.h"
#include "scene/Camera.h"

#include <array>
#include <cstdint>

namespace tarvo::bench {

/// Two frames of the drawn room from two places, so that nobody can answer with a frame of before. Frames and
/// their memory are the same ones for every contender.
class CInputs {
public:
    static constexpr int count = 2;

    /// The frames that the work wants; drawing takes seconds. Throws std::bad_alloc.
    explicit CInputs(const Work& work);

    const host::VideoFormat& format() const { return m_format; }
    /// Frame number `number` of an endless stream.
    IMediaBuffer& buffer(int number) const { return *m_buffers[index(number)]; }
    /// The same frame as plain memory; nobody writes to it.
    std::uint8_t* bytes(int number) const;

    /// The picture that the work shall show of that frame, drawn as an ideal camera sees it.
    render::Picture expected(const Work& work, int number) const;
    /// The same of the cylinder that is tilted to where the panorama's middle lies.
    render::Picture expectedCylinder(const Work& work, int number) const;

private:
    static std::size_t index(int number) { return static_cast<std::size_t>(number % count); }
    scene::FisheyeCamera camera(int number) const;

    geometry::TiltOrientation m_mounting;
    host::VideoFormat m_format;
    std::array<com::ComPtr<host::CMediaBuffer>, count> m_buffers;
};

} // namespace tarvo::bench
