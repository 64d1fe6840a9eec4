#pragma once

#include "custom/tables/CustomTables.h"
#include "render/ConstantRecords.h"

namespace tarvo::custom {

/// The part of the tables' picture that digital zoom shows, as fractions of it.
struct CustomViewRectangle {
    double left = 0.0;
    double top = 0.0;
    double right = 1.0;
    double bottom = 1.0;
};

/// What the virtual PTZ is set to. Angles are degrees.
struct VirtualPtzValues {
    double panoramaHorizontalFieldOfViewDegrees = 180.0;
    double panoramaVerticalFieldOfViewDegrees = 90.0;
    double cameraPitchDegrees = 0.0;
    double cameraRollDegrees = 0.0;
    double effectLevel = 1.0; ///< 0 … 1: the panorama as it is … the rectilinear view
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
    double fieldOfViewDegrees = 60.0;
};

// The records of the two programs of the custom view. `outputAspect` is the output's width / height, positive
// and finite. Letter-box bars keep the tables' shape, one grid cell being as high as it is wide; dimensions
// with a 0 are those of no tables and give records that are never drawn with.

render::CustomTransformConstants customTransformConstants(const TableDimensions& dimensions,
                                                          const CustomViewRectangle& view,
                                                          float outputAspect);

render::VirtualPtzConstants virtualPtzConstants(const TableDimensions& dimensions,
                                                const CustomViewRectangle& view, float outputAspect,
                                                const VirtualPtzValues& values);

} // namespace tarvo::custom
