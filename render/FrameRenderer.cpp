#include "render/FrameRenderer.h"

#include "geometry/ViewLayout.h"
#include "render/FramePasses.h"
#include "render/OutputDelivery.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

namespace tarvo::render {
namespace {

constexpr std::array<float, 4> opaqueBlack{0.0F, 0.0F, 0.0F, 1.0F};
/// Shows where a conversion failed.
constexpr std::array<float, 4> opaqueRed{1.0F, 0.0F, 0.0F, 1.0F};

constexpr const char* initPlace = "CDewarpingTransform::InitDirect3D()";
constexpr const char* convertPlace = "CDewarpingTransform::ConvertYUVToRGB32()";

/// Not a line of this file: those who read logs know a failing conversion by this number.
constexpr int convertLogLine = 2652;

/// The text about a shader that failed, for which it is tried twice: once for the result, then once for its
/// low 16 bits.
std::array<char, 64> describeFailure(IShader& shader, IRenderDevice& device) {
    const auto result = static_cast<unsigned>(shader.initialise(device));
    const auto lowBits = static_cast<int>(static_cast<unsigned>(shader.initialise(device)) & 0xFFFFU);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "HR=0x%X D3DERR=%i", result, lowBits);
    return text;
}

/// What lies beyond single precision becomes its outermost number: hosts may put anything.
float asFloat(double value) {
    constexpr double outermost = std::numeric_limits<float>::max();
    return static_cast<float>(std::isfinite(value) ? std::clamp(value, -outermost, outermost) : value);
}

ExcludeGeometry excludeGeometry(const geometry::ExcludeArea& area, const InputFormat& input) {
    ExcludeGeometry exclude;
    exclude.constants = {{asFloat(area.left), asFloat(area.top), asFloat(area.right), asFloat(area.bottom)}};
    if (area.isActive()) {
        exclude.box = area.pixelBox(input.width, input.height);
    }
    return exclude;
}

} // namespace

CFrameRenderer::CFrameRenderer(std::unique_ptr<IRenderDevice> device, diagnostics::ObjectLog log)
    : m_device(std::move(device)), m_log(log) {}

CFrameRenderer::~CFrameRenderer() {
    close();
}

bool CFrameRenderer::isAvailable() {
    m_isKnownAvailable = m_isKnownAvailable || m_device->isAvailable();
    return m_isKnownAvailable;
}

bool CFrameRenderer::isOpen() const {
    return m_device->isOpen();
}

DeviceKind CFrameRenderer::deviceKind() const {
    return m_device->kind();
}

HRESULT CFrameRenderer::InitDirect3D(const InputFormat& input, const OutputFormat& output,
                                     const geometry::CViewState& view, IShader& shader) {
    close();
    if (!isAvailable()) {
        return E_FAIL;
    }
    HRESULT result = E_FAIL;
    try {
        result = m_device->open(input, output);
        if (SUCCEEDED(result)) {
            m_input = input;
            m_output = output;
            result = readyDevice(view, shader);
        }
    } catch (...) {
        close();
        throw;
    }
    if (FAILED(result)) {
        close();
    }
    return result;
}

HRESULT CFrameRenderer::readyDevice(const geometry::CViewState& view, IShader& shader) {
    const auto failed = [this](int line, HRESULT result) {
        m_log.failedCall(initPlace, line, result);
        return result;
    };
    if (const HRESULT result = updateGeometry(view); FAILED(result)) {
        return failed(__LINE__, result);
    }
    if (const HRESULT result = selectShader(shader); FAILED(result)) {
        return failed(__LINE__, result);
    }
    // The other views have no overview; one that becomes an overview later gets its marker with the frame.
    if (view.viewType() == geometry::ViewType::singleOverview) {
        const HRESULT result = m_overviewMarker.update(*m_device, view.parameters().constants());
        if (FAILED(result)) {
            return failed(__LINE__, result);
        }
    }
    if (const HRESULT result = m_device->openStates(); FAILED(result)) {
        return failed(__LINE__, result);
    }
    return S_OK;
}

void CFrameRenderer::close() {
    if (IShader* const shader = std::exchange(m_shader, nullptr); shader != nullptr) {
        shader->release();
    }
    m_device->close();
    m_overviewMarker.forget();
    m_exclude = {};
    m_upload = {};
    m_hasInput = false;
}

HRESULT CFrameRenderer::updateGeometry(const geometry::CViewState& view) {
    if (!isOpen()) {
        return S_OK;
    }
    const geometry::ViewLayout layout = view.layout();
    const ExcludeGeometry exclude = excludeGeometry(layout.excludeArea, m_input);
    const HRESULT result = m_device->geometry(geometry::buildViewVertices(layout), exclude);
    if (SUCCEEDED(result)) {
        m_exclude = exclude;
        m_overviewMarker.placeDisc(layout);
    }
    return result;
}

HRESULT CFrameRenderer::selectShader(IShader& shader) {
    if (!isOpen()) {
        return S_OK;
    }
    if (IShader* const before = std::exchange(m_shader, &shader); before != nullptr && before != &shader) {
        before->release();
    }
    const HRESULT result = shader.initialise(*m_device);
    if (SUCCEEDED(result)) {
        return result;
    }
    // Trying again may well succeed: what failed can have been a moment's want of memory.
    TARVO_LOG(m_log.log, diagnostics::LogCategory::error, 0, "", "%s",
              describeFailure(shader, *m_device).data());
    return shader.initialise(*m_device);
}

HRESULT CFrameRenderer::UploadInputFrame(std::span<const std::byte> frame) {
    const HRESULT result = LendInputFrame(frame);
    KeepInputFrame();
    return result;
}

HRESULT CFrameRenderer::LendInputFrame(std::span<const std::byte> frame) {
    if (isOpen()) {
        m_upload.upload(*m_device, m_input, frame);
        m_hasInput = true;
    }
    return S_OK;
}

void CFrameRenderer::KeepInputFrame() {
    if (isOpen()) {
        m_device->keepInput();
    }
}

HRESULT CFrameRenderer::RenderFrame(const geometry::CViewState& view, IShader& shader, bool isBypassed) {
    if (!isOpen()) {
        return S_OK;
    }
    m_device->clear(Surface::outputTarget, opaqueBlack);
    m_device->clear(Surface::conversionTarget, opaqueRed);
    if (m_input.format == PixelFormat::yv12 || m_input.format == PixelFormat::yuy2) {
        // A frame whose conversion failed is drawn all the same, red.
        static_cast<void>(ConvertYUVToRGB32());
    }
    if (isBypassed) {
        draw(plainCopyPass(Surface::inputPicture, quadRange(geometry::quad::customView)));
    } else {
        drawDewarped(view, shader);
    }
    m_device->flush();
    return S_OK;
}

HRESULT CFrameRenderer::ConvertYUVToRGB32() {
    const Yuy2Constants constants{static_cast<std::uint32_t>(m_input.width), {}};
    const HRESULT result = m_device->draw(
        m_input.format == PixelFormat::yv12 ? yv12ConversionPass() : yuy2ConversionPass(constants));
    if (FAILED(result)) {
        m_log.failedCall(convertPlace, convertLogLine, result);
    }
    // After a failure too: the picture of an earlier frame must not pass for this one's.
    m_device->copy(Surface::conversionTarget, Surface::inputPicture);
    return result;
}

void CFrameRenderer::blackOutExcludeArea() {
    m_device->copyBox(Surface::inputPicture, m_exclude.box, Surface::excludeArea);
    draw(blackoutPass(m_exclude.constants));
    m_device->copy(Surface::conversionTarget, Surface::maskedInput);
}

void CFrameRenderer::drawDewarped(const geometry::CViewState& view, IShader& shader) {
    if (hasExcludeArea()) {
        blackOutExcludeArea();
    }
    PixelShaderUse use;
    const bool isViewReady = SUCCEEDED(shader.pixelShader(use));
    if (isViewReady) {
        drawView(view, use, hasExcludeArea() ? Surface::maskedInput : Surface::inputPicture);
        if (hasExcludeArea()) {
            draw(plainCopyPass(Surface::excludeArea, quadRange(geometry::quad::excludeArea)));
        }
    }
    if (view.viewType() == geometry::ViewType::singleOverview) {
        drawOverview(view, isViewReady);
    }
}

void CFrameRenderer::drawView(const geometry::CViewState& view, const PixelShaderUse& use, Surface source) {
    if (!use.program) {
        return;
    }
    const geometry::TiltOrientation orientation = view.orientationInForce();
    if (const auto firstVertex = viewQuad(view.viewType(), orientation)) {
        draw(viewPass(use, source, *firstVertex));
    } else if (view.viewType() == geometry::ViewType::quad) {
        for (int i = 0; i < geometry::quadrantCount(orientation); ++i) {
            const geometry::CDewarpParameters parameters = view.subViewParameters(i);
            PixelShaderUse quadrant = use;
            quadrant.constants = recordBytes(parameters.constants());
            draw(viewPass(quadrant, source, geometry::quad::firstQuadrant + i * geometry::verticesPerQuad));
        }
    }
}

void CFrameRenderer::drawOverview(const geometry::CViewState& view, bool isViewReady) {
    // A failure is the device's to log, and the marker is then missing.
    static_cast<void>(m_overviewMarker.update(*m_device, view.parameters().constants()));
    // The overview shows the input as it is, exclude area and all.
    draw(plainCopyPass(Surface::inputPicture, overviewDiscRange));
    if (isViewReady && m_overviewMarker.isThere()) {
        draw(overviewMarkerPass());
    }
}

void CFrameRenderer::draw(const Pass& pass) {
    // What a device lacks for a pass was logged when it could not be made; here it would be a line a frame.
    static_cast<void>(m_device->draw(pass));
}

HRESULT CFrameRenderer::ReadBackOutputFrame(std::span<std::byte> output, IMappedRowsVisitor* observer) {
    COutputDelivery delivery(m_output, output, observer, m_log);
    return ReadBackPicture(delivery);
}

HRESULT CFrameRenderer::ReadBackPicture(IMappedRowsVisitor& visitor) {
    if (!isOpen()) {
        return E_FAIL;
    }
    const HRESULT result = m_device->readBack(visitor);
    if (result == DXGI_ERROR_DEVICE_REMOVED || result == DXGI_ERROR_DEVICE_RESET) {
        close();
    }
    return result;
}

} // namespace tarvo::render
