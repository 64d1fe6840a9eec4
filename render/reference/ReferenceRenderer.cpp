#include "render/reference/ReferenceRenderer.h"

#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "render/reference/ReferenceDevice.h"

#include <memory>
#include <new>
#include <span>
#include <stdexcept>

namespace tarvo::render::reference {
namespace {

using geometry::CViewState;

/// Draws nothing: what a custom view is without its tables.
class CNoShader final : public IShader {
public:
    HRESULT initialise(IRenderDevice&) override { return S_OK; }
    void release() override {}
    HRESULT pixelShader(PixelShaderUse& use) override {
        use = {};
        return S_OK;
    }
};

void requireSize(const Picture& input, const CViewState& view) {
    const geometry::PictureSize wanted = view.inputSize();
    const geometry::PictureSize output = view.outputSize();
    if (wanted.width == 0 || wanted.height == 0 || output.width == 0 || output.height == 0) {
        throw std::invalid_argument("the view does not know the input and output size");
    }
    if (static_cast<std::uint32_t>(input.width) != wanted.width ||
        static_cast<std::uint32_t>(input.height) != wanted.height) {
        throw std::invalid_argument("the input picture does not have the view's input size");
    }
}

void require(HRESULT result) {
    if (result == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    if (FAILED(result)) {
        throw std::invalid_argument("no surface can have the input's or the output's size");
    }
}

std::uint32_t rowBytes(int width) {
    return static_cast<std::uint32_t>(width) * std::uint32_t{sizeof(Bgra)};
}

} // namespace

Picture renderView(const CViewState& view, const Picture& input, bool isBypassed) {
    requireSize(input, view);
    const diagnostics::ObjectLog log{diagnostics::moduleLog};
    CDewarpPixelShader dewarp(view.parameters(), log);
    CNoShader none;
    IShader& shader = view.viewType() == geometry::ViewType::custom ? static_cast<IShader&>(none) : dewarp;

    const auto width = static_cast<int>(view.outputSize().width);
    const auto height = static_cast<int>(view.outputSize().height);
    const auto inputBytes = std::as_bytes(std::span(input.pixels));
    CFrameRenderer renderer(std::make_unique<CReferenceDevice>(log), log);
    require(renderer.InitDirect3D({PixelFormat::rgb32, input.width, input.height, rowBytes(input.width),
                                   static_cast<std::uint32_t>(inputBytes.size()), false},
                                  {PixelFormat::rgb32, width, height, rowBytes(width), false}, view, shader));
    Picture output(width, height);
    require(renderer.UploadInputFrame(inputBytes));
    require(renderer.RenderFrame(view, shader, isBypassed));
    require(renderer.ReadBackOutputFrame(std::as_writable_bytes(std::span(output.pixels)), nullptr));
    return output;
}

} // namespace tarvo::render::reference
