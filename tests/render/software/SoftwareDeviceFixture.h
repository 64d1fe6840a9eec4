#pragma once

#include "diagnostics/Log.h"
#include "render/Picture.h"
#include "render/software/SoftwareDevice.h"
#include "tests/diagnostics/FakeLogServices.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace tarvo::render::software {

inline constexpr std::array<float, 4> opaqueBlackClear{0.0F, 0.0F, 0.0F, 1.0F};
inline constexpr std::array<float, 4> greyClear{0.2F, 0.4F, 0.6F, 1.0F};
/// What greyClear leaves: 51, 102 and 153 of 255.
inline constexpr Bgra grey{153, 102, 51, 255};

/// A full quad of the whole texture; quad 44 is this one everywhere below.
inline void putQuad(std::span<geometry::Vertex> v, float left, float top, float right, float bottom) {
    v[0] = {left, bottom, 0.0F, 1.0F, 0.0F, 1.0F};
    v[1] = {left, top, 0.0F, 1.0F, 0.0F, 0.0F};
    v[2] = {right, bottom, 0.0F, 1.0F, 1.0F, 1.0F};
    v[3] = {right, top, 0.0F, 1.0F, 1.0F, 0.0F};
}

inline std::vector<std::uint8_t> noise(std::size_t size, unsigned seed) {
    std::minstd_rand random(seed);
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 8);
    return bytes;
}

inline Picture noisePicture(int width, int height, unsigned seed) {
    Picture picture(width, height);
    const std::vector<std::uint8_t> bytes = noise(picture.pixels.size() * 4, seed);
    std::memcpy(picture.pixels.data(), bytes.data(), bytes.size());
    return picture;
}

inline SourceRows rowsOf(const Picture& picture) {
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * 4;
    return {std::as_bytes(std::span(picture.pixels)).data(), static_cast<std::ptrdiff_t>(rowBytes), rowBytes,
            picture.height};
}

/// Rows without gaps.
inline SourceRows rowsOf(const std::uint8_t* bytes, std::size_t rowBytes, int rows) {
    return {std::as_bytes(std::span(bytes, rowBytes * static_cast<std::size_t>(rows))).data(),
            static_cast<std::ptrdiff_t>(rowBytes), rowBytes, rows};
}

inline InputFormat inputOf(PixelFormat format, int width, int height) {
    const auto pixels = static_cast<std::uint32_t>(width * height);
    const std::uint32_t bytes = format == PixelFormat::rgb32  ? pixels * 4
                                : format == PixelFormat::yuy2 ? (pixels * 2 + 3) / 4 * 4
                                                              : pixels * 3 / 2;
    return {format, width, height, static_cast<std::uint32_t>(width), bytes, false};
}

inline OutputFormat outputOf(int width, int height) {
    return {PixelFormat::rgb32, width, height, static_cast<std::uint32_t>(width * 4), false};
}

/// Copies the rows that it is shown.
struct CRowsCopy final : IMappedRowsVisitor {
    Picture picture;
    HRESULT visit(const MappedRows& rows) override {
        EXPECT_EQ(rows.pitchBytes % 64, 0U);
        picture = Picture(rows.width, rows.height);
        for (int y = 0; y < rows.height; ++y) {
            std::memcpy(&picture.at(0, y), rows.data + static_cast<std::size_t>(y) * rows.pitchBytes,
                        static_cast<std::size_t>(rows.width) * 4);
        }
        return S_OK;
    }
};

inline Picture outputOf(IRenderDevice& device) {
    CRowsCopy copy;
    EXPECT_EQ(device.readBack(copy), S_OK);
    return copy.picture;
}

inline Pass passOf(ShaderProgram program, Surface texture, const DrawRange& range) {
    Pass pass;
    pass.program = program;
    pass.textures[0] = texture;
    pass.range = range;
    return pass;
}

/// A single view of a lens with 90 degrees off the axis at the height's edge.
inline DewarpConstants singleViewConstants(int width, int height, float rotateX, float rotateZ,
                                           float tangent = 0.4F) {
    DewarpConstants c{};
    c.size[0] = static_cast<float>(width);
    c.size[1] = static_cast<float>(height);
    c.imageCenter[0] = c.size[0] * 0.5F;
    c.imageCenter[1] = c.size[1] * 0.5F;
    c.rotateData[0] = rotateX;
    c.rotateData[2] = rotateZ;
    c.tangentOfFieldOfView = tangent;
    c.lensProfile[2] = c.size[1] * 0.5F / 1.5708F;
    c.clearColor[3] = 1.0F;
    return c;
}

/// A YV12 frame without gaps and its conversion.
struct Yv12Frame {
    int width;
    int height;
    std::vector<std::uint8_t> y, cr, cb;

    Yv12Frame(int theWidth, int theHeight, unsigned seed)
        : width(theWidth), height(theHeight), y(noise(static_cast<std::size_t>(width * height), seed)),
          cr(noise(static_cast<std::size_t>(width / 2 * (height / 2)), seed + 1)),
          cb(noise(static_cast<std::size_t>(width / 2 * (height / 2)), seed + 2)) {}

    void uploadTo(IRenderDevice& device) const {
        const auto half = static_cast<std::size_t>(width / 2);
        EXPECT_EQ(device.upload(Surface::yPlane, rowsOf(y.data(), static_cast<std::size_t>(width), height)),
                  S_OK);
        EXPECT_EQ(device.upload(Surface::crPlane, rowsOf(cr.data(), half, height / 2)), S_OK);
        EXPECT_EQ(device.upload(Surface::cbPlane, rowsOf(cb.data(), half, height / 2)), S_OK);
    }

    /// Linear in chroma, saturated and rounded; what the conversion has to show.
    Bgra pixelAt(int px, int py) const {
        const auto sample = [&](const std::vector<std::uint8_t>& plane) {
            const int w = width / 2;
            const int h = height / 2;
            const double x = std::clamp((px + 0.5) / width * w - 0.5, 0.0, w - 1.0);
            const double yy = std::clamp((py + 0.5) / height * h - 0.5, 0.0, h - 1.0);
            const int x0 = static_cast<int>(x);
            const int y0 = static_cast<int>(yy);
            const int x1 = std::min(x0 + 1, w - 1);
            const int y1 = std::min(y0 + 1, h - 1);
            const auto at = [&](int c, int r) {
                return static_cast<double>(plane[static_cast<std::size_t>(r * w + c)]);
            };
            const double fx = x - x0;
            const double fy = yy - y0;
            return (at(x0, y0) * (1 - fx) + at(x1, y0) * fx) * (1 - fy) +
                   (at(x0, y1) * (1 - fx) + at(x1, y1) * fx) * fy - 127.5;
        };
        const double luma = y[static_cast<std::size_t>(py * width + px)];
        const double a = sample(cr);
        const double b = sample(cb);
        const auto stored = [](double v) {
            return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0, 255.0)));
        };
        return {stored(luma + 1.732446 * b), stored(luma - 0.698001 * a - 0.337633 * b),
                stored(luma + 1.370705 * a), 255};
    }
};

inline int largestDifference(Bgra a, Bgra b) {
    return std::max({std::abs(a.blue - b.blue), std::abs(a.green - b.green), std::abs(a.red - b.red),
                     std::abs(a.alpha - b.alpha)});
}

/// Blacks out an area of a picture, on the conversion target; the constants outlive the pass.
inline Pass excludePass(const ExcludeConstants& constants, Surface source = Surface::inputPicture) {
    Pass pass = passOf(ShaderProgram::excludeRegion, source, quadRange(geometry::quad::fullTarget));
    pass.target = Surface::conversionTarget;
    pass.constantSlot = ConstantSlot::exclude;
    pass.constants = recordBytes(constants);
    return pass;
}

/// The usual way of a YV12 frame: conversion, copy to the input picture.
inline Pass yv12Pass() {
    Pass pass;
    pass.program = ShaderProgram::yv12ToRgb;
    pass.target = Surface::conversionTarget;
    pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    pass.range = quadRange(geometry::quad::fullTarget);
    return pass;
}

inline void convertYv12(IRenderDevice& device) {
    device.clear(Surface::conversionTarget, {1.0F, 0.0F, 0.0F, 1.0F});
    EXPECT_EQ(device.draw(yv12Pass()), S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
}

/// A device with a log that can be read. Quads 0 and 44 are the whole target, quad 4 its left upper quarter,
/// quad 8 the right lower one.
class SoftwareDevice : public testing::Test {
protected:
    static geometry::ViewVertices quads() {
        geometry::ViewVertices vertices{};
        putQuad(std::span(vertices).subspan(0, 4), -1, -1, 1, 1);
        putQuad(std::span(vertices).subspan(4, 4), -1, -1, 0, 0);
        putQuad(std::span(vertices).subspan(8, 4), 0, 0, 1, 1);
        putQuad(std::span(vertices).subspan(44, 4), -1, -1, 1, 1);
        return vertices;
    }

    void openFor(PixelFormat format, int width, int height, int outputWidth, int outputHeight) {
        ASSERT_EQ(device.open(inputOf(format, width, height), outputOf(outputWidth, outputHeight)), S_OK);
        ASSERT_EQ(device.geometry(quads(), {}), S_OK);
        ASSERT_EQ(device.openStates(), S_OK);
    }

    /// Draws with a record that the program is prepared for.
    HRESULT drawView(const DewarpConstants& constants, int firstVertex,
                     Surface source = Surface::inputPicture,
                     ShaderProgram program = ShaderProgram::singleView) {
        EXPECT_EQ(device.prepare(program, ConstantSlot::dewarp, recordBytes(constants)), S_OK);
        Pass pass = passOf(program, source, quadRange(firstVertex));
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = recordBytes(constants);
        return device.draw(pass);
    }

    HRESULT drawCopy(Surface source, int firstVertex = 0) {
        return device.draw(passOf(ShaderProgram::plainCopy, source, quadRange(firstVertex)));
    }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    CSoftwareDevice device{diagnostics::ObjectLog{log, 7}};
};

} // namespace tarvo::render::software
