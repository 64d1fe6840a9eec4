#pragma once

#include "geometry/DewarpConstants.h"
#include "geometry/OverviewMarker.h"
#include "geometry/ViewLayout.h"
#include "render/RenderDevice.h"

#include <optional>

namespace tarvo::render {

/// Sees to it that the device has the overview marker of the view, and that it is built only when something
/// that it depends on has changed: a marker costs more than two thousand projections. Allocates nothing.
class COverviewMarkerFeed {
public:
    /// Where the disc lies that the device has. The marker goes by it, and not by a later wish of the host,
    /// so that it is never beside its disc.
    void placeDisc(const geometry::ViewLayout& layout);

    /// Brings the device's marker up to date. After a failure there is none, and the next call tries again.
    HRESULT update(IRenderDevice& device, const geometry::DewarpConstants& constants);

    /// Whether the device has a marker that is up to date.
    bool isThere() const { return m_built.has_value(); }

    /// The device has lost it.
    void forget() { m_built.reset(); }

private:
    struct Disc {
        double inputAspect = 0.0;
        double outputAspect = 0.0;
        bool isLeft = false;

        friend bool operator==(const Disc&, const Disc&) = default;
    };
    /// What a marker was built from.
    struct Basis {
        geometry::DewarpConstants constants;
        Disc disc;
    };

    Disc m_disc;
    std::optional<Basis> m_built;
    geometry::OverviewMarkerVertices m_vertices{};
};

} // namespace tarvo::render
