#include "geometry/RadiusTable.h"

#include "geometry/Angles.h"

#include <algorithm>
#include <cmath>

namespace tarvo::geometry {

void CRadiusTable::rebuild(const LensProfile& profile) {
    m_size = 0;
    for (int i = 0; i < sampleCount; ++i) {
        const double angle = i * piSingle * 0.5 / (sampleCount - 1);
        const double radius = 2.0 * lensRadius(profile, angle);
        if (std::isfinite(radius)) {
            insertOrAssign({radius, angle});
        }
    }
}

void CRadiusTable::insertOrAssign(Entry entry) {
    const auto end = m_entries.begin() + static_cast<std::ptrdiff_t>(m_size);
    const auto place = std::lower_bound(m_entries.begin(), end, entry.radius,
                                        [](const Entry& e, double radius) { return e.radius < radius; });
    if (place != end && place->radius == entry.radius) {
        place->angle = entry.angle;
        return;
    }
    std::move_backward(place, end, end + 1);
    *place = entry;
    ++m_size;
}

double CRadiusTable::angleAt(double radius) const {
    if (m_size == 0) {
        return 0.0;
    }
    if (radius < m_entries[0].radius) {
        return m_entries[0].angle;
    }
    for (std::size_t i = 1; i < m_size; ++i) {
        const Entry& above = m_entries[i];
        if (above.radius > radius) {
            const Entry& below = m_entries[i - 1];
            const double share = (radius - below.radius) / (above.radius - below.radius);
            return below.angle + share * (above.angle - below.angle);
        }
    }
    return m_entries[m_size - 1].angle;
}

} // namespace tarvo::geometry
