#include "transform/ViewRenderer.h"

#include "custom/tables/CustomTransformData.h"
#include "diagnostics/LogLine.h"

#include <utility>

namespace tarvo::transform {

using diagnostics::LogCategory;
using geometry::ViewType;

namespace {

/// A type may leave out how large its frames are; then they are packed.
render::InputFormat inputFormatOf(const NegotiatedFormats& formats) {
    render::InputFormat input = formats.renderInput();
    if (input.frameBytes == 0 && formats.inputFormat != nullptr) {
        const StreamFormat& format = *formats.inputFormat;
        const std::uint64_t bytes = format.packedFrameBytes(formats.inputWidth, formats.inputHeight);
        input.frameBytes = static_cast<std::uint32_t>(bytes);
        input.strideBytes = format.strideBytes(input.frameBytes, formats.inputHeight);
    }
    return input;
}

} // namespace

CViewRenderer::CViewRenderer(CTransformSettings& settings, CSteeringObjects& steering,
                             std::unique_ptr<render::IRenderDevice> device, diagnostics::ObjectLog log)
    : m_settings(settings), m_steering(steering), m_log(log), m_dewarpShader(m_view.parameters(), log),
      m_customShader(log), m_renderer(std::move(device), log) {}

bool CViewRenderer::isAvailable() {
    const std::lock_guard lock(m_lock);
    return m_renderer.isAvailable();
}

bool CViewRenderer::isOpen() {
    const std::lock_guard lock(m_lock);
    return m_renderer.isOpen();
}

HRESULT CViewRenderer::open(const NegotiatedFormats& formats) {
    const std::lock_guard lock(m_lock);
    close();
    takeUpSettings();
    const HRESULT result =
        m_renderer.InitDirect3D(inputFormatOf(formats), formats.renderOutput(), m_view, activeShader());
    if (FAILED(result))
        return result;
    m_layoutVersion = m_takenLayoutVersion;
    m_selected = neededProgram();
    const bool isHardware = m_renderer.deviceKind() == render::DeviceKind::hardware;
    m_hardwareAccelerationActive = static_cast<VARIANT_BOOL>(isHardware ? 1 : 0);
    return S_OK;
}

void CViewRenderer::close() {
    const std::lock_guard lock(m_lock);
    m_renderer.close();
    forgetDevice();
}

void CViewRenderer::forgetDevice() {
    m_drawnVersion = 0;
    m_deliveredVersion = 0;
    m_layoutVersion = 0;
    m_selected.reset();
    m_failedVersion = 0;
    m_hasPicture = false;
}

void CViewRenderer::setOutputFormat(const render::OutputFormat& format) {
    const std::lock_guard lock(m_lock);
    m_renderer.setOutputFormat(format);
}

HRESULT CViewRenderer::takeUpSettings() {
    const ViewSettings settings = m_settings.snapshot();
    m_view = settings.view;
    m_isBypassed = settings.isBypassed;
    m_takenVersion = settings.version;
    m_takenLayoutVersion = settings.layoutVersion;
    m_steering.applyTo(m_customShader);
    // A program that failed to come is asked for again below, with the lines about it.
    if (FAILED(m_customShader.setControlType(settings.controlType)))
        m_selected.reset();
    // Tables that do not reach the device leave a line of their own.
    static_cast<void>(m_customShader.setEffectLevel(settings.customEffectLevel));
    if (!m_renderer.isOpen() || m_layoutVersion == m_takenLayoutVersion)
        return S_OK;
    const HRESULT result = m_renderer.updateGeometry(m_view);
    if (SUCCEEDED(result))
        m_layoutVersion = m_takenLayoutVersion;
    return result;
}

void CViewRenderer::takeUpSettingsLoggingFailure() {
    if (FAILED(takeUpSettings()))
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "", "%s", "Failed to update geometry");
}

CViewRenderer::Program CViewRenderer::neededProgram() const {
    if (m_view.viewType() == ViewType::custom)
        return {true, geometry::PanoramaMode::singleView, m_customShader.controlType()};
    return {false, m_view.parameters().panoramaMode()};
}

render::IShader& CViewRenderer::activeShader() {
    if (m_view.viewType() == ViewType::custom)
        return m_customShader;
    return m_dewarpShader;
}

HRESULT CViewRenderer::selectShader() {
    const HRESULT result = m_renderer.selectShader(activeShader());
    m_selected.reset();
    if (SUCCEEDED(result))
        m_selected = neededProgram();
    else
        m_failedVersion = m_takenVersion;
    return result;
}

HRESULT CViewRenderer::refreshShader() {
    const std::lock_guard lock(m_lock);
    takeUpSettingsLoggingFailure();
    return selectShader();
}

HRESULT CViewRenderer::updateGeometry() {
    const std::lock_guard lock(m_lock);
    return takeUpSettings();
}

void CViewRenderer::updateCustomTransform() {
    const std::lock_guard lock(m_lock);
    takeUpSettingsLoggingFailure();
}

void CViewRenderer::excludeAreaChanged() {
    const std::lock_guard lock(m_lock);
    // Asked for under the lock: of two changes at once the later one stays.
    const geometry::ExcludeArea area = m_steering.excludeArea();
    m_settings.setExcludeArea(area);
    const geometry::PictureSize input =
        m_settings.ask([](const geometry::CViewState& view) { return view.inputSize(); });
    const geometry::PixelBox box =
        area.pixelBox(static_cast<int>(input.width), static_cast<int>(input.height));
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "",
              "Exclude area updated: [%f,%f,%f,%f] ([%i,%i,%i,%i])", area.left, area.top, area.right,
              area.bottom, box.left, box.top, box.right, box.bottom);
    takeUpSettingsLoggingFailure();
}

HRESULT CViewRenderer::setCustomTransformData(SAFEARRAY* data, LONG reserved) {
    const std::lock_guard lock(m_lock);
    const HRESULT result = custom::SetCustomTransformData(m_customShader, data, reserved, m_log);
    // Refused tables change nothing, but memory that is missing leaves none.
    if (SUCCEEDED(result) || result == E_OUTOFMEMORY)
        m_settings.markChanged();
    return result;
}

std::optional<float> CViewRenderer::tableAspect() {
    const std::lock_guard lock(m_lock);
    return m_customShader.tableAspect();
}

void CViewRenderer::setOutputAspect(float aspect) {
    m_customShader.setOutputAspect(aspect);
    m_steering.setOutputAspect(aspect);
}

HRESULT CViewRenderer::upload(std::span<const std::byte> frame) {
    return m_renderer.LendInputFrame(frame);
}

void CViewRenderer::keepInput() {
    m_renderer.KeepInputFrame();
}

bool CViewRenderer::haveSettingsChanged() const {
    return m_settings.version() != m_deliveredVersion;
}

HRESULT CViewRenderer::render() {
    takeUpSettingsLoggingFailure();
    m_drawnVersion = m_takenVersion;
    // One that could not be made is not asked for with every frame, but when something has changed.
    if (m_selected != neededProgram() && m_failedVersion != m_takenVersion)
        static_cast<void>(selectShader());
    const HRESULT result = m_renderer.RenderFrame(m_view, activeShader(), m_isBypassed);
    m_hasPicture = m_hasPicture || SUCCEEDED(result);
    return result;
}

HRESULT CViewRenderer::readBack(std::span<std::byte> output, render::IMappedRowsVisitor* observer) {
    return m_renderer.ReadBackOutputFrame(output, observer);
}

HRESULT CViewRenderer::readBack(render::IMappedRowsVisitor& visitor) {
    return m_renderer.ReadBackPicture(visitor);
}

} // namespace tarvo::transform
