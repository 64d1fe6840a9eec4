// The device on the system's own Direct3D 11: what the fake of the other tests cannot tell, that the calls
// come to a picture.

#include "diagnostics/Log.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace tarvo::render::d3d11 {
namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr std::size_t rowBytes = width * 4;
constexpr std::size_t frameBytes = rowBytes * height;

using Bytes = std::vector<std::byte>;

struct Channels {
    int blue;
    int green;
    int red;
    int alpha;
};

Channels pixel(const Bytes& picture, int x, int y) {
    const auto channel = [&](int i) { return std::to_integer<int>(picture[(y * width + x) * 4 + i]); };
    return {channel(0), channel(1), channel(2), channel(3)};
}

/// Largest difference of a channel.
int difference(const Channels& a, const Channels& b) {
    return std::max({std::abs(a.blue - b.blue), std::abs(a.green - b.green), std::abs(a.red - b.red),
                     std::abs(a.alpha - b.alpha)});
}

/// A picture in which no two neighbours are alike.
Bytes patterned(std::size_t size, unsigned seed) {
    Bytes result(size);
    for (std::byte& byte : result) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<std::byte>(seed >> 24);
    }
    return result;
}

/// Collects the rows without what lies between them.
class CCollector final : public IMappedRowsVisitor {
public:
    HRESULT visit(const MappedRows& rows) override {
        EXPECT_EQ(rows.width, width);
        EXPECT_EQ(rows.height, height);
        for (int row = 0; row < rows.height; ++row) {
            const std::byte* const start = rows.data + row * rows.pitchBytes;
            picture.insert(picture.end(), start, start + rowBytes);
        }
        return S_OK;
    }
    Bytes picture;
};

class SystemDevice : public testing::Test {
protected:
    SystemDevice() : device(std::make_unique<CD3d11Library>(), {diagnostics::moduleLog, 1}) {
        // Quads at 0 and 44 over the whole target; 40 over its left upper quarter.
        for (const int first : {0, 44})
            quad(first, -1, -1, 1, 1);
        quad(40, -1, -1, 0, 0);
    }

    void quad(int first, float left, float top, float right, float bottom) {
        vertices[first] = {left, bottom, 0, 1, 0, 1};
        vertices[first + 1] = {left, top, 0, 1, 0, 0};
        vertices[first + 2] = {right, bottom, 0, 1, 1, 1};
        vertices[first + 3] = {right, top, 0, 1, 1, 0};
    }

    void open(PixelFormat format, std::uint32_t strideBytes, std::uint32_t size) {
        ASSERT_TRUE(device.isAvailable());
        ASSERT_EQ(device.open({format, width, height, strideBytes, size, false},
                              {PixelFormat::rgb32, width, height, rowBytes, false}),
                  S_OK);
        ASSERT_EQ(device.geometry(vertices, exclude), S_OK);
        ASSERT_EQ(device.openStates(), S_OK);
        device.clear(Surface::outputTarget, {0, 0, 0, 1});
        device.clear(Surface::conversionTarget, {1, 0, 0, 1});
    }

    static Pass pass(ShaderProgram program, Surface target, const TextureSlots& textures, int first) {
        return {program, target, textures, ConstantSlot::none, {}, quadRange(first)};
    }
    Pass plainCopy() const {
        return pass(ShaderProgram::plainCopy, Surface::outputTarget, {Surface::inputPicture}, 0);
    }

    Bytes readBack() {
        CCollector collector;
        EXPECT_EQ(device.readBack(collector), S_OK);
        EXPECT_EQ(collector.picture.size(), frameBytes);
        collector.picture.resize(frameBytes);
        return collector.picture;
    }

    CD3d11Device device;
    geometry::ViewVertices vertices{};
    ExcludeGeometry exclude{{{0.25F, 0.25F, 0.5F, 0.5F}}, {80, 60, 160, 120}};
};

TEST_F(SystemDevice, showsAnRgbFrameAsItCame) {
    open(PixelFormat::rgb32, rowBytes, frameBytes);
    const Bytes frame = patterned(frameBytes, 1);
    ASSERT_EQ(device.upload(Surface::inputPicture, {frame.data(), rowBytes, rowBytes, height}), S_OK);
    ASSERT_EQ(device.draw(plainCopy()), S_OK);
    EXPECT_EQ(readBack(), frame);

    // Upside down, and the lower half missing.
    ASSERT_EQ(
        device.upload(Surface::inputPicture, {frame.data() + (height - 1) * rowBytes,
                                              -static_cast<std::ptrdiff_t>(rowBytes), rowBytes, height / 2}),
        S_OK);
    ASSERT_EQ(device.draw(plainCopy()), S_OK);
    Bytes expected(frameBytes);
    for (int row = 0; row < height / 2; ++row)
        std::memcpy(&expected[row * rowBytes], &frame[(height - 1 - row) * rowBytes], rowBytes);
    EXPECT_EQ(readBack(), expected);
}

/// What a channel becomes: saturated and rounded.
int stored(double value) {
    return static_cast<int>(std::lround(std::fmin(std::fmax(value, 0.0), 255.0)));
}

TEST_F(SystemDevice, convertsYv12) {
    constexpr std::uint32_t lumaBytes = width * height;
    open(PixelFormat::yv12, width, lumaBytes / 2 * 3);
    // Chroma in blocks of 16 × 16 luma pixels, so that away from their edges filtering makes no difference.
    Bytes luma = patterned(lumaBytes, 2);
    std::array<Bytes, 2> chroma{Bytes(lumaBytes / 4), Bytes(lumaBytes / 4)};
    for (int plane = 0; plane < 2; ++plane) {
        for (int y = 0; y < height / 2; ++y) {
            for (int x = 0; x < width / 2; ++x) {
                const int block = x / 8 + y / 8 * 20;
                chroma[plane][y * width / 2 + x] = static_cast<std::byte>(block * (plane == 0 ? 37 : 91));
            }
        }
    }
    ASSERT_EQ(device.upload(Surface::yPlane, {luma.data(), width, width, height}), S_OK);
    ASSERT_EQ(device.upload(Surface::crPlane, {chroma[0].data(), width / 2, width / 2, height / 2}), S_OK);
    ASSERT_EQ(device.upload(Surface::cbPlane, {chroma[1].data(), width / 2, width / 2, height / 2}), S_OK);
    ASSERT_EQ(device.draw(pass(ShaderProgram::yv12ToRgb, Surface::conversionTarget,
                               {Surface::yPlane, Surface::crPlane, Surface::cbPlane}, 44)),
              S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
    ASSERT_EQ(device.draw(plainCopy()), S_OK);
    const Bytes result = readBack();
    int worst = 0;
    for (int y = 4; y < height; y += 16) {
        for (int x = 4; x < width; x += 16) {
            const double light = std::to_integer<int>(luma[y * width + x]);
            const double cr = std::to_integer<int>(chroma[0][y / 2 * width / 2 + x / 2]) - 127.5;
            const double cb = std::to_integer<int>(chroma[1][y / 2 * width / 2 + x / 2]) - 127.5;
            const Channels expected{stored(light + 1.732446 * cb),
                                    stored(light - 0.698001 * cr - 0.337633 * cb),
                                    stored(light + 1.370705 * cr), 255};
            worst = std::max(worst, difference(pixel(result, x, y), expected));
        }
    }
    EXPECT_LE(worst, 1);
}

TEST_F(SystemDevice, convertsYuy2) {
    constexpr std::uint32_t size = width * height * 2;
    open(PixelFormat::yuy2, width * 2, size);
    const Bytes frame = patterned(size, 3);
    ASSERT_EQ(device.upload(Surface::packedInput, {frame.data(), size, size, 1}), S_OK);
    Pass conversion =
        pass(ShaderProgram::yuy2ToRgb, Surface::conversionTarget,
             {Surface::none, Surface::none, Surface::none, Surface::packedInput, Surface::none}, 44);
    const Yuy2Constants constants{width, {}};
    conversion.constantSlot = ConstantSlot::width;
    conversion.constants = recordBytes(constants);
    ASSERT_EQ(device.draw(conversion), S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
    ASSERT_EQ(device.draw(plainCopy()), S_OK);
    const Bytes result = readBack();
    int worst = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::byte* const pair = &frame[y * width * 2 + x / 2 * 4];
            const double light = std::to_integer<int>(pair[x % 2 == 0 ? 0 : 2]);
            const double cb = std::to_integer<int>(pair[1]) - 128;
            const double cr = std::to_integer<int>(pair[3]) - 128;
            const double scale = 255.0 / 256.0;
            const Channels expected{stored((light + 1.772 * cb) * scale),
                                    stored((light - 0.344 * cb - 0.714 * cr) * scale),
                                    stored((light + 1.402 * cr) * scale), 1};
            worst = std::max(worst, difference(pixel(result, x, y), expected));
        }
    }
    EXPECT_LE(worst, 1);
}

TEST_F(SystemDevice, blacksOutTheExcludeAreaAndPastesIt) {
    open(PixelFormat::rgb32, rowBytes, frameBytes);
    // Alpha everywhere as the blackout paints it, and blocks that show where something lies.
    Bytes frame(frameBytes);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::array<int, 4> values{x / 2 + 10, y + 10, 200, 255};
            for (int i = 0; i < 4; ++i)
                frame[(y * width + x) * 4 + i] = static_cast<std::byte>(values[i]);
        }
    }
    ASSERT_EQ(device.upload(Surface::inputPicture, {frame.data(), rowBytes, rowBytes, height}), S_OK);
    device.copyBox(Surface::inputPicture, exclude.box, Surface::excludeArea);
    Pass blackout =
        pass(ShaderProgram::excludeRegion, Surface::conversionTarget, {Surface::inputPicture}, 44);
    blackout.constantSlot = ConstantSlot::exclude;
    blackout.constants = recordBytes(exclude.constants);
    ASSERT_EQ(device.draw(blackout), S_OK);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    ASSERT_EQ(device.draw(pass(ShaderProgram::plainCopy, Surface::outputTarget, {Surface::maskedInput}, 0)),
              S_OK);
    const Bytes masked = readBack();
    Bytes expected = frame;
    for (int y = 60; y < 120; ++y) {
        for (int x = 80; x < 160; ++x) {
            for (int i = 0; i < 4; ++i)
                expected[(y * width + x) * 4 + i] = static_cast<std::byte>(i == 3 ? 255 : 0);
        }
    }
    EXPECT_EQ(masked, expected);

    // The quad at 40 is 160 × 120 pixels, the area 80 × 60: all of it, twice as large.
    ASSERT_EQ(device.draw(pass(ShaderProgram::plainCopy, Surface::outputTarget, {Surface::excludeArea}, 40)),
              S_OK);
    const Bytes pasted = readBack();
    EXPECT_EQ(difference(pixel(pasted, 0, 0), pixel(frame, 80, 60)), 0);
    EXPECT_LE(difference(pixel(pasted, 80, 60), pixel(frame, 120, 90)), 1);
    EXPECT_EQ(difference(pixel(pasted, 159, 119), pixel(frame, 159, 119)), 0);
    EXPECT_EQ(difference(pixel(pasted, 160, 120), pixel(expected, 160, 120)), 0);
}

TEST_F(SystemDevice, blendsTheMarker) {
    open(PixelFormat::rgb32, rowBytes, frameBytes);
    auto marker = std::make_unique<geometry::OverviewMarkerVertices>();
    // One quad over the left half, clockwise, its alpha a half; all the others lie on one point.
    (*marker)[0] = {-1, 1, 0, 0.5F, 0, 0};
    (*marker)[1] = {-1, -1, 0, 0.5F, 0, 0};
    (*marker)[2] = {0, 1, 0, 0.5F, 0, 0};
    for (std::size_t i = 3; i < marker->size(); ++i)
        (*marker)[i] = {0, -1, 0, 0.5F, 0, 0};
    ASSERT_EQ(device.overviewMarker(*marker), S_OK);
    device.clear(Surface::outputTarget, {0, 0, 1, 1});
    Pass blended{ShaderProgram::overviewRegion,
                 Surface::outputTarget,
                 {},
                 ConstantSlot::none,
                 {},
                 overviewMarkerRange,
                 true};
    ASSERT_EQ(device.draw(blended), S_OK);
    const Bytes half = readBack();
    // Half of red over blue; the alpha is the program's own.
    EXPECT_LE(difference(pixel(half, 20, 100), {128, 0, 128, 128}), 1);
    EXPECT_EQ(difference(pixel(half, 300, 100), {255, 0, 0, 255}), 0);

    // Nothing of the blending sticks.
    blended.isBlended = false;
    ASSERT_EQ(device.draw(blended), S_OK);
    EXPECT_LE(difference(pixel(readBack(), 20, 100), {0, 0, 255, 128}), 1);
}

TEST_F(SystemDevice, drawsThroughALookupSurface) {
    open(PixelFormat::rgb32, rowBytes, frameBytes);
    Bytes frame(frameBytes);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            frame[(y * width + x) * 4] = static_cast<std::byte>(x < width / 2 ? 40 : 220);
            frame[(y * width + x) * 4 + 3] = std::byte{255};
        }
    }
    ASSERT_EQ(device.upload(Surface::inputPicture, {frame.data(), rowBytes, rowBytes, height}), S_OK);
    // One table of 4 × 4 cells, each looking at three quarters of the width with the full weight.
    ASSERT_EQ(device.lookup(4, 4), S_OK);
    std::vector<std::uint16_t> table;
    for (int cell = 0; cell < 16; ++cell)
        table.insert(table.end(), {49151, 32768, 65535, 65535});
    const SourceRows rows{std::as_bytes(std::span(table)).data(), 32, 32, 4};
    ASSERT_EQ(device.upload(Surface::lookup, rows), S_OK);
    CustomTransformConstants constants{};
    const std::array<float, 4> all{0, 0, 1, 1};
    const std::array<float, 4> cells{0.125F, 0.125F, 0.75F, 0.75F};
    std::ranges::copy(cells, constants.lookupRectangle);
    std::ranges::copy(all, constants.viewRect);
    std::ranges::copy(all, constants.projectionRect);
    constants.numberOfTables = 1;
    constants.tableHeight = 1;
    ASSERT_EQ(device.prepare(ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(constants)),
              S_OK);
    Pass custom =
        pass(ShaderProgram::customTransform, Surface::outputTarget,
             {Surface::inputPicture, Surface::none, Surface::none, Surface::none, Surface::lookup}, 0);
    custom.constantSlot = ConstantSlot::custom;
    custom.constants = recordBytes(constants);
    ASSERT_EQ(device.draw(custom), S_OK);
    const Bytes result = readBack();
    for (const int x : {0, 100, 319}) {
        EXPECT_EQ(pixel(result, x, 120).blue, 220) << x;
        EXPECT_EQ(pixel(result, x, 120).red, 0) << x;
    }

    // Another weight: half of it.
    for (std::size_t i = 2; i < table.size(); i += 4)
        table[i] = 32768;
    ASSERT_EQ(device.upload(Surface::lookup, rows), S_OK);
    ASSERT_EQ(device.draw(custom), S_OK);
    EXPECT_NEAR(pixel(readBack(), 100, 120).blue, 110, 1);
}

TEST_F(SystemDevice, aPassWithoutItsProgramLeavesTheTarget) {
    open(PixelFormat::rgb32, rowBytes, frameBytes);
    EXPECT_EQ(
        device.draw(pass(ShaderProgram::customTransform, Surface::outputTarget, {Surface::inputPicture}, 0)),
        E_FAIL);
    const Bytes result = readBack();
    EXPECT_EQ(difference(pixel(result, 10, 10), {0, 0, 0, 255}), 0);
    EXPECT_EQ(difference(pixel(result, 310, 230), {0, 0, 0, 255}), 0);
}

TEST_F(SystemDevice, canBeOpenedAgain) {
    for (int life = 0; life < 3; ++life) {
        open(PixelFormat::rgb32, rowBytes, frameBytes);
        EXPECT_TRUE(device.isOpen());
        EXPECT_NE(device.kind(), DeviceKind::software);
        const Bytes frame = patterned(frameBytes, static_cast<unsigned>(life));
        ASSERT_EQ(device.upload(Surface::inputPicture, {frame.data(), rowBytes, rowBytes, height}), S_OK);
        ASSERT_EQ(device.draw(plainCopy()), S_OK);
        device.flush();
        EXPECT_EQ(readBack(), frame);
        device.close();
        EXPECT_FALSE(device.isOpen());
    }
}

TEST_F(SystemDevice, refusesSizesThatCannotBe) {
    EXPECT_TRUE(FAILED(device.open({PixelFormat::rgb32, 0, height, 0, 0, false},
                                   {PixelFormat::rgb32, width, height, rowBytes, false})));
    EXPECT_TRUE(FAILED(device.open({PixelFormat::rgb32, width, height, rowBytes, frameBytes, false},
                                   {PixelFormat::rgb32, -1, height, 0, false})));
    EXPECT_FALSE(device.isOpen());
}

TEST(SystemLibrary, isLoadedForDevicesAndNotForTheCheck) {
    // Once there was a device the system may keep its library for the rest of the process, as Wine does.
    const HMODULE before = GetModuleHandleA("d3d11.dll");
    CD3d11Library library;
    EXPECT_TRUE(library.isInstalled());
    EXPECT_EQ(GetModuleHandleA("d3d11.dll"), before);
    for (int life = 0; life < 3; ++life) {
        CD3d11Device device(std::make_unique<CD3d11Library>(), {diagnostics::moduleLog, 1});
        ASSERT_EQ(device.open({PixelFormat::rgb32, width, height, rowBytes, frameBytes, false},
                              {PixelFormat::rgb32, width, height, rowBytes, false}),
                  S_OK);
        EXPECT_NE(GetModuleHandleA("d3d11.dll"), nullptr);
    }
}

} // namespace
} // namespace tarvo::render::d3d11
