#include "tests/render/conformance/Rig.h"

#include "diagnostics/Log.h"
#include "render/DewarpPixelShader.h"
#include "tests/render/conformance/CustomTables.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarvo::render::conformance {
namespace {

constexpr std::byte untouched{0x5A};
constexpr std::size_t guardBytes = 64;

diagnostics::ObjectLog objectLog() {
    return {diagnostics::moduleLog, 1};
}

struct CPictureCopy final : IMappedRowsVisitor {
    Picture picture;
    HRESULT visit(const MappedRows& rows) override {
        picture = Picture(rows.width, rows.height);
        for (int y = 0; y < rows.height; ++y) {
            std::memcpy(&picture.at(0, y), rows.data + static_cast<std::size_t>(y) * rows.pitchBytes,
                        static_cast<std::size_t>(rows.width) * sizeof(Bgra));
        }
        return S_OK;
    }
};

} // namespace

struct CRig::Scene {
    Scene(const FrameCase& frameCase, const InputFrame& frame)
        : input(frame.format), sizes(frameCase.sizes), view(frameCase.view()) {
        if (frameCase.viewType() == geometry::ViewType::custom) {
            shader = std::make_unique<CCustomTables>(frameCase);
        } else {
            shader = std::make_unique<CDewarpPixelShader>(view.parameters(), objectLog());
        }
    }

    InputFormat input;
    FrameSizes sizes;
    geometry::CViewState view;
    std::unique_ptr<IShader> shader;
};

Picture deliveredPicture(const Rendered& rendered) {
    const OutputFormat& format = rendered.format;
    Picture picture(format.width, format.height);
    for (int y = 0; y < format.height; ++y) {
        const int row = format.isBottomUp ? format.height - 1 - y : y;
        std::memcpy(&picture.at(0, y), &rendered.bytes[static_cast<std::size_t>(row) * format.strideBytes],
                    static_cast<std::size_t>(format.width) * sizeof(Bgra));
    }
    return picture;
}

bool isGuardWhole(const Rendered& rendered) {
    return std::all_of(rendered.bytes.begin() + static_cast<std::ptrdiff_t>(rendered.deliveredBytes),
                       rendered.bytes.end(), [](std::byte byte) { return byte == untouched; });
}

OutputFormat outputFormat(FrameKind kind, const FrameSizes& sizes, bool isPadded) {
    const auto columns = static_cast<std::uint32_t>(sizes.outputWidth);
    OutputFormat format{PixelFormat::rgb32, sizes.outputWidth, sizes.outputHeight, columns * 4, false};
    if (kind == FrameKind::yv12) {
        format.format = PixelFormat::yv12;
        format.strideBytes = (columns + 1) / 2 * 2;
    }
    format.isBottomUp = kind == FrameKind::rgb32BottomUp;
    format.strideBytes += isPadded ? 36 : 0;
    return format;
}

CRig::CRig(std::unique_ptr<IRenderDevice> device)
    : m_renderer(std::make_unique<CWatchedDevice>(std::move(device), m_drawn), objectLog()) {}

CRig::~CRig() = default;

void CRig::close() {
    m_renderer.close();
    m_scene.reset();
}

Rendered CRig::render(const FrameCase& frameCase, const InputFrame& frame) {
    *m_drawn = {};
    if (const HRESULT result = show(frameCase, frame); FAILED(result)) {
        Rendered rendered;
        rendered.result = result;
        return rendered;
    }
    return deliver(frameCase);
}

Rendered CRig::deliver(const FrameCase& frameCase) {
    Rendered rendered;
    rendered.format = outputFormat(frameCase.output, frameCase.sizes, frameCase.isOutputPadded);
    rendered.deliveredBytes = static_cast<std::size_t>(rendered.format.strideBytes) *
                              static_cast<std::size_t>(rendered.format.height);
    if (rendered.format.format == PixelFormat::yv12) {
        rendered.deliveredBytes += (rendered.deliveredBytes + 1) / 2;
    }
    rendered.bytes.assign(rendered.deliveredBytes + guardBytes, untouched);
    m_renderer.setOutputFormat(rendered.format);
    CPictureCopy copy;
    rendered.result =
        m_renderer.ReadBackOutputFrame(std::span(rendered.bytes).first(rendered.deliveredBytes), &copy);
    rendered.picture = std::move(copy.picture);
    rendered.drawn = *m_drawn;
    return rendered;
}

HRESULT CRig::show(const FrameCase& frameCase, const InputFrame& frame) {
    auto scene = std::make_unique<Scene>(frameCase, frame);
    HRESULT result = S_OK;
    if (m_renderer.isOpen() && m_scene && m_scene->input == scene->input && m_scene->sizes == scene->sizes) {
        result = m_renderer.selectShader(*scene->shader);
        // From here on the renderer knows the new scene only.
        m_scene = std::move(scene);
        if (SUCCEEDED(result)) {
            result = m_renderer.updateGeometry(m_scene->view);
        }
    } else {
        m_renderer.close();
        m_scene = std::move(scene);
        result = m_renderer.InitDirect3D(
            frame.format, outputFormat(frameCase.output, frameCase.sizes, frameCase.isOutputPadded),
            m_scene->view, *m_scene->shader);
    }
    if (FAILED(result)) {
        return result;
    }
    m_renderer.UploadInputFrame(frame.bytes);
    m_renderer.RenderFrame(m_scene->view, *m_scene->shader, frameCase.shown == Shown::bypass);
    return S_OK;
}

} // namespace tarvo::render::conformance
