#pragma once

#include "geometry/ViewState.h"
#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "tests/render/d3d11/D3d11Fixture.h"

namespace tarvo::render::d3d11 {

/// Draws with tables of 4 × 4 texels, as the host's own view does.
class CTableShader final : public IShader {
public:
    HRESULT initialise(IRenderDevice& device) override {
        const std::vector<std::byte> texels(std::size_t{4} * 4 * 8);
        HRESULT result =
            device.prepare(ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(m_record));
        if (SUCCEEDED(result))
            result = device.lookup(4, 4);
        return SUCCEEDED(result) ? device.upload(Surface::lookup, {texels.data(), 32, 32, 4}) : result;
    }
    void release() override {}
    HRESULT pixelShader(PixelShaderUse& use) override {
        use = {ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(m_record), true};
        return S_OK;
    }

private:
    CustomTransformConstants m_record{{0, 0, 1, 1}, {0, 0, 1, 1}, {0, 0, 1, 1}, 1, 1, {}};
};

/// The whole sequence of a frame over a device over the fake.
class CRendererTest : public testing::Test {
protected:
    ~CRendererTest() override {
        renderer.reset();
        EXPECT_EQ(fake.liveObjects, 0);
        EXPECT_EQ(fake.mappedCount, 0);
    }

    /// By way of a library that makes the fakes.
    void start(std::unique_ptr<ID3d11Library> library, const InputFormat& input, const OutputFormat& frame) {
        view.setInputSize(input.width, input.height);
        view.setOutputSize(frame.width, frame.height);
        renderer = std::make_unique<CFrameRenderer>(
            std::make_unique<CD3d11Device>(std::move(library), lines.log()), lines.log());
        inputFrame.assign(input.frameBytes, std::byte{40});
        outputFrame.resize(std::size_t{frame.strideBytes} * static_cast<std::size_t>(frame.height) * 3 / 2);
        ASSERT_EQ(renderer->InitDirect3D(input, frame, view, shader()), S_OK);
    }
    void start(const InputFormat& input, const OutputFormat& frame = output) {
        start(std::make_unique<tests::CFakeD3d11Library>(fake), input, frame);
    }

    IShader& shader() {
        return view.viewType() == geometry::ViewType::custom ? static_cast<IShader&>(tables) : projection;
    }
    HRESULT frame() {
        renderer->UploadInputFrame(inputFrame);
        renderer->RenderFrame(view, shader(), false);
        return renderer->ReadBackOutputFrame(outputFrame, nullptr);
    }

    tests::CFakeD3d11 fake;
    CLogLines lines;
    geometry::CViewState view;
    CDewarpPixelShader projection{view.parameters(), lines.log()};
    CTableShader tables;
    std::vector<std::byte> inputFrame;
    std::vector<std::byte> outputFrame;
    std::unique_ptr<CFrameRenderer> renderer;
};

} // namespace tarvo::render::d3d11
