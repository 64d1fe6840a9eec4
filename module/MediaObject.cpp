#include "module/MediaObject.h"

#include <array>

namespace tarvo::module {
namespace {

constexpr GUID videoEffects = {0xD990EE14, 0x776C, 0x4723, {0xBE, 0x46, 0x3D, 0xA2, 0xF5, 0x6F, 0x10, 0xB9}};
constexpr GUID video = {0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

/// Subtypes named by a four-character code carry it in front of a common rest.
constexpr GUID subtype(char a, char b, char c, char d) {
    GUID guid = video;
    guid.Data1 = static_cast<unsigned char>(a) | static_cast<unsigned>(static_cast<unsigned char>(b)) << 8U |
                 static_cast<unsigned>(static_cast<unsigned char>(c)) << 16U |
                 static_cast<unsigned>(static_cast<unsigned char>(d)) << 24U;
    return guid;
}

constexpr std::array<DMO_PARTIAL_MEDIATYPE, 1> inputs{{{video, subtype('Y', 'U', 'Y', '2')}}};
constexpr std::array<DMO_PARTIAL_MEDIATYPE, 1> outputs{{{video, subtype('Y', 'V', '1', '2')}}};

} // namespace

MediaObject dewarpingMediaObject(const CLSID& id) noexcept {
    return {OLESTR("TARVO Dewarping Transform DMO"), id, videoEffects, 0, inputs, outputs};
}

} // namespace tarvo::module
