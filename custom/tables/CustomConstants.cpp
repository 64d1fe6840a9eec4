#include "custom/tables/CustomConstants.h"

#include "custom/SinglePrecision.h"
#include "custom/VirtualPtzMapping.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tarvo::custom {

render::CustomTransformConstants customTransformConstants(const TableDimensions& dimensions,
                                                          const BoundedRectangle& view, float outputAspect) {
    render::CustomTransformConstants record{};
    record.viewRect[0] = single(view.left);
    record.viewRect[1] = single(view.top);
    record.viewRect[2] = single(view.right - view.left);
    record.viewRect[3] = single(view.bottom - view.top);
    if (dimensions.entryWordCount() == 0)
        return record;

    const auto width = static_cast<float>(dimensions.width);
    const auto height = static_cast<float>(dimensions.height);
    // From the centre of the first cell to that of the last: beyond them one table would mix with the next.
    record.lookupRectangle[0] = 0.5F / width;
    record.lookupRectangle[1] = 0.5F / height;
    record.lookupRectangle[2] = 1.0F - 1.0F / width;
    record.lookupRectangle[3] = 1.0F - 1.0F / height;

    const float tableAspect = width / height;
    const float scaleX = std::max(1.0F, outputAspect / tableAspect);
    const float scaleY = std::max(1.0F, tableAspect / outputAspect);
    record.projectionRect[0] = (1.0F - scaleX) / 2.0F;
    record.projectionRect[1] = (1.0F - scaleY) / 2.0F;
    record.projectionRect[2] = scaleX;
    record.projectionRect[3] = scaleY;

    record.numberOfTables = dimensions.tableCount;
    record.tableHeight = 1.0F / static_cast<float>(dimensions.tableCount);
    return record;
}

render::VirtualPtzConstants virtualPtzConstants(const TableDimensions& dimensions,
                                                const BoundedRectangle& view, float outputAspect,
                                                const VirtualPtzSettings& settings) {
    const render::CustomTransformConstants common = customTransformConstants(dimensions, view, outputAspect);
    render::VirtualPtzConstants record{};
    static_assert(offsetof(render::VirtualPtzConstants, inputFov) ==
                  offsetof(render::CustomTransformConstants, padding));
    std::memcpy(&record, &common, offsetof(render::VirtualPtzConstants, inputFov));
    // The numbers that the mapping of single points computes with.
    const VirtualPtzView camera = virtualPtzView(settings);
    record.inputFov[0] = camera.panoramaHorizontalFieldOfView;
    record.inputFov[1] = camera.panoramaVerticalFieldOfView;
    record.outputAR = outputAspect;
    record.panTiltFov[0] = camera.pan;
    record.panTiltFov[1] = camera.tilt;
    record.panTiltFov[2] = camera.fieldOfView;
    record.pitchRoll[0] = camera.pitch;
    record.pitchRoll[1] = camera.roll;
    record.effectLevel = camera.effectLevel;
    return record;
}

} // namespace tarvo::custom
