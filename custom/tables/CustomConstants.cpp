#include "custom/tables/CustomConstants.h"

#include "geometry/Angles.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

namespace tarvo::custom {
namespace {

/// What is no number stays none; the programs show black for it.
float single(double value) {
    constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(value, -largest, largest));
}

float radians(double degrees) {
    return single(geometry::radiansFromDegrees(degrees));
}

} // namespace

render::CustomTransformConstants customTransformConstants(const TableDimensions& dimensions,
                                                          const CustomViewRectangle& view,
                                                          float outputAspect) {
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
                                                const CustomViewRectangle& view, float outputAspect,
                                                const VirtualPtzValues& values) {
    const render::CustomTransformConstants common = customTransformConstants(dimensions, view, outputAspect);
    render::VirtualPtzConstants record{};
    static_assert(offsetof(render::VirtualPtzConstants, inputFov) ==
                  offsetof(render::CustomTransformConstants, padding));
    std::memcpy(&record, &common, offsetof(render::VirtualPtzConstants, inputFov));
    record.inputFov[0] = radians(values.panoramaHorizontalFieldOfViewDegrees);
    record.inputFov[1] = radians(values.panoramaVerticalFieldOfViewDegrees);
    record.outputAR = outputAspect;
    record.panTiltFov[0] = radians(values.panDegrees);
    record.panTiltFov[1] = radians(values.tiltDegrees);
    record.panTiltFov[2] = radians(values.fieldOfViewDegrees);
    record.pitchRoll[0] = radians(values.cameraPitchDegrees);
    record.pitchRoll[1] = radians(values.cameraRollDegrees);
    record.effectLevel = single(values.effectLevel);
    return record;
}

} // namespace tarvo::custom
