#pragma once

#include "diagnostics/Log.h"
#include "render/reference/ReferenceDevice.h"
#include "tests/diagnostics/FakeLogServices.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tarvo::render::reference {

inline constexpr std::array<float, 4> greyClear{0.2F, 0.4F, 0.6F, 1.0F};
/// What greyClear leaves in a target: 51, 102 and 153 of 255.
inline constexpr Bgra grey{153, 102, 51, 255};

/// A picture without gaps, as an upload takes it.
inline SourceRows rowsOf(const Picture& picture) {
    const auto bytes = std::as_bytes(std::span(picture.pixels));
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * 4;
    return {bytes.data(), static_cast<std::ptrdiff_t>(rowBytes), rowBytes, picture.height};
}

/// Rows of a vector of texels, `perRow` of them a row.
template<typename Texel>
SourceRows rowsOf(const std::vector<Texel>& texels, int perRow) {
    const std::size_t rowBytes = sizeof(Texel) * static_cast<std::size_t>(perRow);
    return {std::as_bytes(std::span(texels)).data(), static_cast<std::ptrdiff_t>(rowBytes), rowBytes,
            static_cast<int>(texels.size()) / perRow};
}

/// A rectangle of the target in clip space, rows downward, with the whole of the texture.
inline void putQuad(std::span<geometry::Vertex> vertices, float left, float top, float right, float bottom,
                    float colour = 1.0F) {
    vertices[0] = {left, bottom, 0.0F, colour, 0.0F, 1.0F};
    vertices[1] = {left, top, 0.0F, colour, 0.0F, 0.0F};
    vertices[2] = {right, bottom, 0.0F, colour, 1.0F, 1.0F};
    vertices[3] = {right, top, 0.0F, colour, 1.0F, 0.0F};
}

/// A device whose log can be read. Its quads 0 and 44 cover the whole target, quad 4 its left half.
class ReferenceDevice : public testing::Test {
protected:
    static InputFormat rgb32Input(int width, int height) {
        return {PixelFormat::rgb32,
                width,
                height,
                static_cast<std::uint32_t>(width * 4),
                static_cast<std::uint32_t>(width * height * 4),
                false};
    }
    static InputFormat yv12Input(int width, int height) {
        return {PixelFormat::yv12,
                width,
                height,
                static_cast<std::uint32_t>(width),
                static_cast<std::uint32_t>(width * height * 3 / 2),
                false};
    }
    static InputFormat yuy2Input(int width, int height) {
        return {PixelFormat::yuy2,
                width,
                height,
                static_cast<std::uint32_t>(width * 2),
                static_cast<std::uint32_t>(width * height * 2),
                false};
    }
    static OutputFormat rgb32Output(int width, int height) {
        return {PixelFormat::rgb32, width, height, static_cast<std::uint32_t>(width * 4), false};
    }

    static geometry::ViewVertices quads() {
        geometry::ViewVertices vertices{};
        putQuad(std::span(vertices).subspan(0, 4), -1.0F, -1.0F, 1.0F, 1.0F);
        putQuad(std::span(vertices).subspan(4, 4), -1.0F, -1.0F, 0.0F, 1.0F);
        putQuad(std::span(vertices).subspan(44, 4), -1.0F, -1.0F, 1.0F, 1.0F);
        return vertices;
    }

    void openFor(const InputFormat& input, const OutputFormat& output) {
        ASSERT_EQ(device.open(input, output), S_OK);
        ASSERT_EQ(device.geometry(quads(), {}), S_OK);
        device.clear(Surface::outputTarget, greyClear);
        device.clear(Surface::conversionTarget, greyClear);
    }

    /// A copy of the output target.
    Picture output() {
        struct CVisitor final : IMappedRowsVisitor {
            Picture picture;
            HRESULT visit(const MappedRows& rows) override {
                picture = Picture(rows.width, rows.height);
                for (int y = 0; y < rows.height; ++y) {
                    std::memcpy(&picture.at(0, y), rows.data + static_cast<std::size_t>(y) * rows.pitchBytes,
                                static_cast<std::size_t>(rows.width) * 4);
                }
                return S_OK;
            }
        };
        CVisitor visitor;
        EXPECT_EQ(device.readBack(visitor), S_OK);
        return visitor.picture;
    }

    static Pass copyPass(Surface from, Surface to = Surface::outputTarget) {
        Pass pass;
        pass.target = to;
        pass.textures[0] = from;
        pass.range = quadRange(geometry::quad::customView);
        return pass;
    }

    /// Any BGRA surface of the output's size, by way of the output target.
    Picture shown(Surface surface) {
        EXPECT_EQ(device.draw(copyPass(surface)), S_OK);
        return output();
    }

    const std::vector<std::string>& logLines() const { return services.debuggerLines; }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    CReferenceDevice device{diagnostics::ObjectLog{log, 7}};
};

} // namespace tarvo::render::reference
