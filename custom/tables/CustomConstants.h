#pragma once

#include "custom/BoundedRectangle.h"
#include "custom/VirtualPtzSettings.h"
#include "custom/tables/CustomTables.h"
#include "render/ConstantRecords.h"

namespace tarvo::custom {

// The records of the two programs of the custom view. `view` is the part of the tables' picture that digital
// zoom shows, in fractions of it; `outputAspect` the output's width / height, positive and finite. Letter-box
// bars keep the tables' shape, one grid cell being as high as it is wide; dimensions with a 0 are those of no
// tables and give records that are never drawn with.

render::CustomTransformConstants customTransformConstants(const TableDimensions& dimensions,
                                                          const BoundedRectangle& view, float outputAspect);

/// `outputAspect` counts, not the one in the settings.
render::VirtualPtzConstants virtualPtzConstants(const TableDimensions& dimensions,
                                                const BoundedRectangle& view, float outputAspect,
                                                const VirtualPtzSettings& settings);

} // namespace tarvo::custom
