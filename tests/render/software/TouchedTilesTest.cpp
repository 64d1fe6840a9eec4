#include "tests/render/software/SoftwareDeviceFixture.h"

#include <array>
#include <cmath>

namespace tarvo::render::software {
namespace {

constexpr std::array<ShaderProgram, 4> projections{ShaderProgram::singleView, ShaderProgram::panoramaWall,
                                                   ShaderProgram::panoramaCeiling,
                                                   ShaderProgram::panoramaDesk};

/// Which tiles the projections are drawn from. What they look at is told from a few of their positions only,
/// in rows that are long enough for that.
class TouchedTiles : public SoftwareDevice {
protected:
    float between(float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(m_random);
    }
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    /// One quad of the target's width, from its top down to `bottom`, and the one over all of it.
    static geometry::ViewVertices vertices(float bottom) {
        geometry::ViewVertices v{};
        putQuad(std::span(v).subspan(0, 4), -1.0F, -1.0F, 1.0F, bottom);
        putQuad(std::span(v).subspan(44, 4), -1.0F, -1.0F, 1.0F, 1.0F);
        return v;
    }

    static Picture draw(CSoftwareDevice& device, ShaderProgram program, const DewarpConstants& constants,
                        Surface texture) {
        EXPECT_EQ(device.prepare(program, ConstantSlot::dewarp, recordBytes(constants)), S_OK);
        Pass pass = passOf(program, texture, quadRange(0));
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = recordBytes(constants);
        EXPECT_EQ(device.draw(pass), S_OK);
        return outputOf(device);
    }

    DewarpConstants anyConstants(int width, int height) {
        DewarpConstants c = singleViewConstants(width, height, between(-1.7F, 1.7F), between(-3.0F, 3.0F),
                                                std::exp(between(-4.0F, 1.5F)));
        c.imageCenter[0] += between(-0.3F, 0.3F) * static_cast<float>(width);
        c.imageCenter[1] += between(-0.3F, 0.3F) * static_cast<float>(height);
        c.lensProfile[2] *= std::exp(between(-0.5F, 3.0F));
        c.lambdaOffset = between(-3.0F, 3.0F);
        c.panoramaRectAngles[0] = between(-3.0F, 3.0F);
        c.panoramaRectAngles[2] = between(0.2F, 6.2F);
        c.panoramaRectAngles[3] = between(0.1F, 3.0F);
        return c;
    }

    /// As many tiles as a strip of the ceiling or the desk takes from a fresh frame.
    static std::uint64_t tilesOfStrip(CSoftwareDevice& device, ShaderProgram program, int rows,
                                      bool hasKnots) {
        constexpr int width = 1296;
        constexpr int height = 972;
        EXPECT_EQ(device.open(inputOf(PixelFormat::yv12, width, height), outputOf(640, rows)), S_OK);
        geometry::ViewVertices corners = vertices(1.0F);
        // With values that do not run linearly over it, a quad is two triangles, whose pixels are taken one
        // by one.
        if (!hasKnots)
            corners[3].colour += 0.5F;
        EXPECT_EQ(device.geometry(corners, {}), S_OK);
        Yv12Frame(width, height, 1).uploadTo(device);
        convertYv12(device);
        DewarpConstants c = singleViewConstants(width, height, 0.0F, 0.0F);
        c.panoramaRectAngles[0] = 0.3F;
        c.panoramaRectAngles[2] = 3.14159F;
        c.panoramaRectAngles[3] = 0.3F;
        draw(device, program, c, Surface::inputPicture);
        return device.counters().tilesMade;
    }

private:
    std::mt19937 m_random{12};
};

TEST_F(TouchedTiles, NoneIsForgotten) {
    for (unsigned round = 0; round < 60; ++round) {
        const int width = whole(150, 450) * 2;
        const int height = whole(100, 350) * 2;
        ASSERT_EQ(
            device.open(inputOf(PixelFormat::yv12, width, height), outputOf(whole(129, 420), whole(1, 119))),
            S_OK);
        // In every other round a window of the picture is looked at.
        const int left = whole(0, width - 110);
        const int top = whole(0, height - 110);
        const geometry::PixelBox box{left, top, left + whole(1, width - left), top + whole(1, height - top)};
        ExcludeGeometry exclude{};
        exclude.box = box;
        ASSERT_EQ(device.geometry(vertices(between(0.2F, 1.0F)), exclude), S_OK);
        const Surface texture = round % 2 == 0 ? Surface::inputPicture : Surface::excludeArea;
        for (const ShaderProgram program : projections) {
            const DewarpConstants constants = anyConstants(width, height);
            Yv12Frame(width, height, round * 4 + 1).uploadTo(device);
            convertYv12(device);
            if (texture == Surface::excludeArea)
                device.copyBox(Surface::inputPicture, box, Surface::excludeArea);
            const Picture lazily = draw(device, program, constants, texture);
            // A part of a surface can only be copied from pixels, which makes all tiles.
            device.copyBox(Surface::inputPicture, {0, 0, 1, 1}, Surface::maskedInput);
            ASSERT_EQ(draw(device, program, constants, texture).pixels, lazily.pixels)
                << round << ", program " << static_cast<int>(program);
        }
    }
}

TEST_F(TouchedTiles, TornRowsTakeNoTilesFromBetweenThem) {
    // The lower half of the strip begins on the other side of the picture, here in the middle of a band.
    constexpr int rows = 360;
    static_assert(rows / 2 % bandHeight != 0);
    for (const ShaderProgram program : {ShaderProgram::panoramaCeiling, ShaderProgram::panoramaDesk}) {
        const std::uint64_t exactly = tilesOfStrip(device, program, rows, false);
        const std::uint64_t byKnots = tilesOfStrip(device, program, rows, true);
        EXPECT_GE(byKnots, exactly);
        EXPECT_LE(byKnots, exactly + exactly / 8);
    }
}

} // namespace
} // namespace tarvo::render::software
