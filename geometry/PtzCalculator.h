#pragma once

#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "geometry/RadiusTable.h"

namespace tarvo::geometry {

/// A viewing direction in the camera's PTZ coordinate system, degrees.
struct PanTilt {
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
};

/// Finds the direction that is seen at a point, for the dewarped view and for the fisheye picture itself.
/// Both are spherical trigonometry: the view's ray (right, up, 1) tilted about the horizontal axis and read
/// as azimuth and elevation, and the picture's radius turned into the angle off the lens axis by the lens
/// polynomial's inverse.
class PtzCalculator {
public:
    void setMounting(TiltOrientation orientation) { m_orientation = orientation; }

    /// Takes the input aspect (width / height) and rebuilds the radius-to-angle table from the unscaled
    /// profile.
    void setInput(double inputAspect, const LensProfile& profile);

    /// Takes the current position of the dewarped view, degrees.
    void setPosition(double panDegrees, double tiltDegrees, double fieldOfViewDegrees);

    /// Direction seen at (x, y) of the dewarped view: x from −1 at the left to 1 at the right edge of the
    /// projection, y from −1 at its lower to 1 at its upper edge. The pan is not wrapped.
    PanTilt fromDewarpedPoint(double x, double y) const;

    /// Direction seen at (x, y) of the fisheye picture, in half input heights from its centre, y upward.
    PanTilt fromFisheyePoint(double x, double y) const;

    const CRadiusTable& radiusTable() const { return m_radiusTable; }

private:
    double m_inputAspect = 4.0 / 3.0;
    TiltOrientation m_orientation = TiltOrientation::undef;
    CRadiusTable m_radiusTable;
    double m_panDegrees = 0.0;
    double m_tiltDegrees = 0.0;
    double m_fieldOfViewDegrees = 30.0;
};

} // namespace tarvo::geometry
