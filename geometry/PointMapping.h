#pragma once

#include "geometry/PtzCalculator.h"
#include "geometry/ViewState.h"

#include <cstdint>
#include <optional>

namespace tarvo::geometry {

/// A point of the overview picture, 0 … 1 from its top-left corner; outside that range beyond the frame.
struct OverviewPoint {
    double x;
    double y;
};

/// Direction of the ray seen at (x, y) of the output picture, 0 … 1 from its top-left corner. A point on the
/// overview disc means the direction seen there, unless `flags` (`PointMapFlag` bits) say to look past the
/// disc. No value outside the single dewarped views.
std::optional<PanTilt> mapPoint(const CViewState& view, double x, double y, std::int32_t flags = 0);

/// Where (x, y) of the output picture lies in the overview. No value outside the single dewarped views.
std::optional<OverviewPoint> mapPointToOverview(const CViewState& view, double x, double y);

} // namespace tarvo::geometry
