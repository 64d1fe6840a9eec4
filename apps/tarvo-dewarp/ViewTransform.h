#pragma once

#include "apps/host/Module.h"
#include "apps/host/TransformStream.h"
#include "apps/tarvo-dewarp/CustomViewSettings.h"
#include "apps/tarvo-dewarp/ViewSettings.h"

#include <optional>
#include <utility>

namespace tarvo::apps {

/// A view as a transform shall show it.
struct WantedView {
    const ViewSettings& view;
    const CustomViewSettings& customView;
    bool isBypassed = false;
    std::optional<double> outputFrameRate;
};

/// A transform that shows a view of the command line's. Throws as its host does: host::HostError,
/// std::bad_alloc.
class CViewTransform {
public:
    /// Of a new transform of the module, which must outlive it, puts everything that decides the output's
    /// size. Throws FileError besides, for tables that cannot be had or are refused.
    CViewTransform(const host::CModule& module, const WantedView& wanted);

    /// Sets the input's type and gives the size that the output then has, {width, height}. Throws UsageError
    /// besides for one with a side of 0 or beyond maxPictureSide.
    std::pair<LONG, LONG> setInput(const host::VideoFormat& format);
    /// Sets the output's type, then what has its limits and defaults from both types: where the view looks.
    host::VideoFormat setOutput(host::FramePixels pixels, bool isBottomUp = false);

    IDewarpingTransform& transform() const { return *m_transform; }
    host::CTransformStream& stream() { return m_stream; }

private:
    WantedView m_wanted;
    com::ComPtr<IDewarpingTransform> m_transform;
    host::CTransformStream m_stream;
};

} // namespace tarvo::apps
