#include "apps/tarvo-render/DirectStill.h"

#include "apps/tarvo-dewarp/FrameCoding.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/geometry/GeometryValues.h"
#include "apps/tarvo-render/RenderRecords.h"
#include "custom/BorderAdjustment.h"
#include "custom/BoundedRectangle.h"
#include "custom/tables/CustomTransformData.h"
#include "custom/tables/CustomTransformShader.h"
#include "geometry/OutputSize.h"
#include "geometry/ViewState.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <span>

namespace tarvo::apps {
namespace {

std::int32_t optionsWord(const ViewSettings& settings) {
    std::int32_t options = 0;
    if (settings.isOverviewLeft) {
        options |= static_cast<std::int32_t>(geometry::OptionFlag::overviewMapPlacementLeft);
    }
    if (settings.isOutputWide) {
        options |= static_cast<std::int32_t>(geometry::OptionFlag::outputFormat_16_9);
    }
    return options;
}

geometry::PictureSize outputSize(const ViewSettings& settings, geometry::PictureSize input,
                                 std::optional<float> customAspect) {
    geometry::OutputSizeRequest request;
    request.input = input;
    request.viewType = geometryOf(settings.viewType);
    request.options = optionsWord(settings);
    request.wanted = {static_cast<std::uint32_t>(settings.outputWidth.value_or(0)),
                      static_cast<std::uint32_t>(settings.outputHeight.value_or(0))};
    request.isWantedSet = settings.outputWidth || settings.outputHeight;
    request.panoramaFieldOfViewDegrees =
        settings.panoramaFieldOfViewDegrees.value_or(geometry::defaultPanoramaFieldOfView);
    request.customAspect = customAspect;
    const geometry::PictureSize size = geometry::deriveOutputSize(request);
    requireOutputSize(settings, static_cast<int>(input.width), static_cast<int>(input.height), size.width,
                      size.height);
    return size;
}

geometry::CViewState makeView(const ViewSettings& settings, geometry::PictureSize input,
                              std::optional<float> customAspect) {
    const geometry::PictureSize output = outputSize(settings, input, customAspect);
    geometry::CViewState view;
    view.setOptions(optionsWord(settings));
    if (settings.excludeArea) {
        view.setExcludeArea(excludeAreaOf(*settings.excludeArea));
    }
    if (settings.lensProfile) {
        view.setLensProfile(geometryOf(*settings.lensProfile));
    }
    if (settings.tiltOrientation) {
        view.setTiltOrientation(geometryOf(*settings.tiltOrientation));
    }
    view.setViewType(geometryOf(settings.viewType));
    if (settings.effectLevel) {
        view.setEffectLevel(*settings.effectLevel);
    }
    if (settings.panoramaFieldOfViewDegrees) {
        view.setPanoramaFieldOfView(*settings.panoramaFieldOfViewDegrees);
    }
    if (settings.panoramaPanOffsetDegrees) {
        view.setPanoramaPanOffset(*settings.panoramaPanOffsetDegrees);
    }
    view.setInputSize(static_cast<int>(input.width), static_cast<int>(input.height));
    view.setOutputSize(static_cast<int>(output.width), static_cast<int>(output.height));
    // Last, since mounting, view type and output shape bring their own limits and defaults for these.
    if (settings.panDegrees) {
        view.setPan(*settings.panDegrees);
    }
    if (settings.tiltDegrees) {
        view.setTilt(*settings.tiltDegrees);
    }
    if (settings.fieldOfViewDegrees) {
        view.setFieldOfView(*settings.fieldOfViewDegrees);
    }
    return view;
}

void loadTables(custom::CCustomTransformShader& shader, const std::filesystem::path& path,
                const diagnostics::ObjectLog& log) {
    const std::vector<std::uint8_t> bytes = readTablesFile(path);
    const HRESULT result = custom::SetCustomTransformData(shader, std::as_bytes(std::span(bytes)), 0, log);
    if (result == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    checkTables(path, bytes); // knows what is wrong with them
    requireStep(result, "handing over the tables");
}

custom::VirtualPtzSettings virtualPtzOf(const VirtualPtzOptions& options, float outputAspect) {
    const custom::VirtualPtzSettings initial;
    custom::VirtualPtzSettings ptz;
    ptz.panoramaHorizontalFieldOfView =
        options.panoramaHorizontalFieldOfView.value_or(initial.panoramaHorizontalFieldOfView);
    ptz.panoramaVerticalFieldOfView =
        options.panoramaVerticalFieldOfView.value_or(initial.panoramaVerticalFieldOfView);
    ptz.cameraPitch = options.cameraPitch.value_or(initial.cameraPitch);
    ptz.cameraRoll = options.cameraRoll.value_or(initial.cameraRoll);
    ptz.effectLevel = options.effectLevel.value_or(initial.effectLevel);
    ptz.pan = options.pan.value_or(initial.pan);
    ptz.tilt = options.tilt.value_or(initial.tilt);
    ptz.fieldOfView = std::clamp(options.fieldOfView.value_or(initial.fieldOfView),
                                 custom::smallestVirtualFieldOfView, custom::largestVirtualFieldOfView);
    ptz.useStrictBorderMode = options.useStrictBorderMode;
    ptz.outputAspect = outputAspect;
    // A host's puts draw the view back when they change one of these.
    const bool isDrawnBack = ptz.pan != initial.pan || ptz.fieldOfView != initial.fieldOfView ||
                             ptz.useStrictBorderMode != initial.useStrictBorderMode;
    return isDrawnBack ? custom::adjustedToBorder(ptz) : ptz;
}

/// Sets all that the shader draws by besides its tables.
void steer(custom::CCustomTransformShader& shader, const CustomViewSettings& settings,
           std::optional<double> effectLevel, float outputAspect) {
    shader.setVirtualPtz(virtualPtzOf(settings.virtualPtz, outputAspect));
    custom::BoundedRectangle rectangle;
    if (const auto& edges = settings.viewRectangle) {
        rectangle.left = edges->left;
        rectangle.top = edges->top;
        rectangle.right = edges->right;
        rectangle.bottom = edges->bottom;
    }
    shader.setViewRectangle(rectangle);
    shader.setOutputAspect(outputAspect);
    requireStep(shader.setControlType(geometryOf(settings.controlType)), "choosing the control");
    if (effectLevel) {
        requireStep(shader.setEffectLevel(static_cast<float>(*effectLevel)), "setting the effect level");
    }
}

} // namespace

StillFrame drawOnDevice(const DeviceMaker& makeDevice, const StillJob& job) {
    const bool isCustom = job.view.viewType == ViewType::custom;
    const diagnostics::ObjectLog log = openRendererLog();
    custom::CCustomTransformShader shader(log);
    if (isCustom) {
        loadTables(shader, job.customView.tables.value(), log);
    }
    const host::VideoFormat& input = job.input.format;
    const geometry::CViewState view = makeView(
        job.view,
        {static_cast<std::uint32_t>(input.width), static_cast<std::uint32_t>(std::abs(input.height))},
        shader.tableAspect());
    if (isCustom) {
        steer(shader, job.customView, job.view.effectLevel, view.outputAspect());
    }
    const geometry::PictureSize size = view.outputSize();
    const host::VideoFormat output = frameFormat(job.frames.outputFormat, static_cast<int>(size.width),
                                                 static_cast<int>(size.height), job.frames.isOutputBottomUp);
    return {output, runFrame(makeDevice, log,
                             {job.input, output, view, isCustom ? &shader : nullptr, job.isBypassed})};
}

} // namespace tarvo::apps
