#pragma once

#include "dshow/PinType.h"
#include "platform/InterfaceTypes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tarvo::tests {

inline constexpr REFERENCE_TIME frameDuration = 400'000; ///< 25 frames a second, units of 100 ns

/// Frames of what a camera on the ceiling of the sample room sees, 160×120, in YV12, YUY2 or RGB32 (the
/// bottom row first).
class CSceneFrames {
public:
    static constexpr int width = 160;
    static constexpr int height = 120;

    explicit CSceneFrames(const GUID& subtype);

    /// The video type: of YUY2 in the second kind of header, of the others in the first.
    const AM_MEDIA_TYPE& type() const noexcept { return m_type.get(); }
    /// Frame `index`, from 0: every one is by 5 levels brighter than the one before, beginning anew above
    /// 255, so that each of 256 differs from the others in all places.
    std::vector<std::uint8_t> frame(int index) const;

private:
    std::vector<std::uint8_t> m_bytes;
    std::vector<std::size_t> m_levels; ///< where in the bytes there is brightness
    dshow::CPinType m_type;
};

} // namespace tarvo::tests
