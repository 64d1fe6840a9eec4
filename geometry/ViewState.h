#pragma once

#include "geometry/DewarpParameters.h"
#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"
#include "geometry/OutputSize.h"
#include "geometry/PanoramaRectangle.h"
#include "geometry/ViewLayout.h"

#include <array>
#include <cstdint>

namespace tarvo::geometry {

/// Offsets of one sub-view of the quad view from the main position, degrees.
struct QuadViewOffset {
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
    double fieldOfViewDegrees = 0.0;
};

using QuadViewOffsets = std::array<QuadViewOffset, 4>;

/// Everything that decides what the output picture shows: view type, mounting, position, layout. It ties the
/// parts of the geometry together in the order that they depend on each other.
///
/// A plain value like `CDewarpParameters`: copies allocate nothing; one thread at a time.
class CViewState {
public:
    CViewState();

    /// Sizes in pixels; sides that are not positive are ignored.
    void setInputSize(int width, int height);
    void setOutputSize(int width, int height);
    void setLensProfile(const LensProfile& profile);

    /// The mounting as the host names it; what is no mounting counts as `undef`. True when the mounting in
    /// force changed, which also resets the quad view's offsets.
    bool setTiltOrientation(TiltOrientation orientation);

    /// Changing between the group of single dewarped views and the others resets the position to its
    /// defaults, and so does every change among the others.
    void setViewType(ViewType viewType);

    /// Which sub-view pan, tilt and field of view address; what is no view is ignored.
    void setSelectedView(View view);

    /// Position of the main view, or of the selected sub-view, which keeps the difference to the main view as
    /// its offset. Degrees; limited as `CDewarpParameters` does; what is no number is ignored. True when
    /// something changed.
    bool setPan(double panDegrees);
    bool setTilt(double tiltDegrees);
    bool setFieldOfView(double fieldOfViewDegrees);
    /// All three, absolute or added to the current ones.
    void setPtzPosition(double panDegrees, double tiltDegrees, double fieldOfViewDegrees, bool isRelative);
    double pan() const;
    double tilt() const;
    double fieldOfView() const;

    /// Limited to 0 … 1; what is no number keeps the level.
    void setEffectLevel(double effectLevel);

    /// Degrees; at least 1. What is no finite number keeps the value.
    void setPanoramaFieldOfView(double fieldOfViewDegrees);
    void setPanoramaPanOffset(double panOffsetDegrees);

    void setOptions(std::int32_t options) { m_options = options; }
    void setExcludeArea(const ExcludeArea& area) { m_excludeArea = area; }

    ViewType viewType() const { return m_viewType; }
    View selectedView() const { return m_selectedView; }
    /// The mounting as set and the one in force.
    TiltOrientation tiltOrientation() const { return m_tiltOrientation; }
    TiltOrientation orientationInForce() const { return m_orientationInForce; }
    std::int32_t options() const { return m_options; }
    const ExcludeArea& excludeArea() const { return m_excludeArea; }
    double panoramaFieldOfView() const { return m_panoramaFieldOfView; }
    double panoramaPanOffset() const { return m_panoramaPanOffset; }
    const PanoramaRectangle& panoramaRectangle() const { return m_panorama; }
    const QuadViewOffsets& quadViewOffsets() const { return m_quadViewOffsets; }
    const CDewarpParameters& parameters() const { return m_parameters; }

    PictureSize inputSize() const { return m_input; }
    PictureSize outputSize() const { return m_output; }
    /// Width / height; 0 while the size is unknown.
    float inputAspect() const { return aspectOf(m_input); }
    float outputAspect() const { return aspectOf(m_output); }

    /// The layout of the output picture; aspects that are unknown count as 4:3.
    ViewLayout layout() const;

    /// The parameters that sub-view `index` (0 … 3, in the order of `View`) of the quad view is drawn with;
    /// throws std::out_of_range for another index.
    CDewarpParameters subViewParameters(int index) const;

private:
    static float aspectOf(PictureSize size);
    bool updateOrientation();
    void updatePanorama();
    void refreshParameters();

    struct PtzAxis;
    static const PtzAxis panAxis;
    static const PtzAxis tiltAxis;
    static const PtzAxis fieldOfViewAxis;
    bool setPosition(const PtzAxis& axis, double degrees);
    double position(const PtzAxis& axis) const;

    PictureSize m_input;
    PictureSize m_output;
    LensProfile m_lensProfile = defaultLensProfile;
    TiltOrientation m_tiltOrientation = TiltOrientation::undef;
    TiltOrientation m_orientationInForce = TiltOrientation::undef;
    ViewType m_viewType = ViewType::single;
    View m_selectedView = View::all;
    std::int32_t m_options = 0;
    double m_panoramaFieldOfView = defaultPanoramaFieldOfView;
    double m_panoramaPanOffset = defaultPanoramaPanOffset;
    PanoramaRectangle m_panorama;
    QuadViewOffsets m_quadViewOffsets;
    ExcludeArea m_excludeArea;
    CDewarpParameters m_parameters;
};

} // namespace tarvo::geometry
