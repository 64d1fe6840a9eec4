#pragma once

#include "geometry/LensProfile.h"

#include <array>
#include <cstddef>

namespace tarvo::geometry {

/// Ordered map from an image radius to the angle off the lens axis: the lens polynomial inverted by 21
/// samples from 0 to 90 degrees. Fixed storage, so that copying the view state never allocates.
class CRadiusTable {
public:
    static constexpr int sampleCount = 21;

    /// Replaces the contents by samples of `profile`. Samples that are not finite are left out.
    void rebuild(const LensProfile& profile);

    /// Angle in radians for a radius in half input heights, linear between the samples; below the first
    /// sample its angle, beyond the last the last one's (the horizon). 0 when the table is empty.
    double angleAt(double radius) const;

    std::size_t size() const { return m_size; }

private:
    struct Entry {
        double radius;
        double angle;
    };

    void insertOrAssign(Entry entry);

    std::array<Entry, sampleCount> m_entries{};
    std::size_t m_size = 0;
};

} // namespace tarvo::geometry
