#include "tests/custom/view/RenderedView.h"

#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "render/reference/ReferenceDevice.h"
#include "render/software/SoftwareDevice.h"
#include "tests/custom/tables/Blob.h"

#include <cmath>
#include <cstring>
#include <span>

namespace tarvo::custom {

using render::Picture;

std::unique_ptr<render::IRenderDevice> makeDevice(const std::string& name,
                                                  const diagnostics::ObjectLog& log) {
    if (name == "reference")
        return std::make_unique<render::reference::CReferenceDevice>(log);
    return std::make_unique<render::software::CSoftwareDevice>(log);
}

void append(std::vector<std::uint16_t>& words, const Cell& cell) {
    for (const double value : {cell.x, cell.y, cell.weight})
        words.push_back(static_cast<std::uint16_t>(std::lround(value * 65535.0)));
}

void RenderedView::setTables(const TableDimensions& dimensions, const std::vector<std::uint16_t>& words) {
    // S_FALSE: there is no device yet.
    ASSERT_EQ(shader.SetTransform(dimensions, bytesOfWords(words)), S_FALSE);
}

Picture RenderedView::custom(const Picture& input, int width, int height) {
    geometry::CViewState view;
    view.setViewType(geometry::ViewType::custom);
    view.setInputSize(input.width, input.height);
    view.setOutputSize(width, height);
    shader.setOutputAspect(view.outputAspect());
    return rendered(view, input, shader);
}

Picture RenderedView::builtIn(const geometry::CViewState& view, const Picture& input) {
    render::CDewarpPixelShader dewarp(view.parameters(), lines.objectLog());
    return rendered(view, input, dewarp);
}

Picture RenderedView::rendered(const geometry::CViewState& view, const Picture& input,
                               render::IShader& with) {
    const auto size = view.outputSize();
    Picture output(static_cast<int>(size.width), static_cast<int>(size.height));
    const auto stride = static_cast<std::uint32_t>(4 * input.width);
    const render::InputFormat in{render::PixelFormat::rgb32,
                                 input.width,
                                 input.height,
                                 stride,
                                 stride * static_cast<std::uint32_t>(input.height),
                                 false};
    const render::OutputFormat out{render::PixelFormat::rgb32, output.width, output.height,
                                   static_cast<std::uint32_t>(4 * output.width), false};
    render::CFrameRenderer renderer(makeDevice(GetParam(), lines.objectLog()), lines.objectLog());
    EXPECT_EQ(renderer.InitDirect3D(in, out, view, with), S_OK);
    EXPECT_EQ(renderer.UploadInputFrame(std::as_bytes(std::span(input.pixels))), S_OK);
    EXPECT_EQ(renderer.RenderFrame(view, with, false), S_OK);
    EXPECT_EQ(renderer.ReadBackOutputFrame(std::as_writable_bytes(std::span(output.pixels)), nullptr), S_OK);
    EXPECT_TRUE(lines.take().empty());
    return output;
}

} // namespace tarvo::custom
