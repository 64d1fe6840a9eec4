#pragma once

#include "platform/InterfaceTypes.h"

#include <span>

namespace tarvo::module {

/// What DMORegister is told about a media object: enough for others to find it. The types that it really
/// accepts are negotiated with the object.
struct MediaObject {
    const OLECHAR* name;
    CLSID id;
    GUID category;
    DWORD flags;
    /// Stay as long as the program.
    std::span<const DMO_PARTIAL_MEDIATYPE> inputs;
    std::span<const DMO_PARTIAL_MEDIATYPE> outputs;
};

/// The record of the dewarping transform, whose class is `id`: a video effect from YUY2 to YV12.
MediaObject dewarpingMediaObject(const CLSID& id) noexcept;

} // namespace tarvo::module
