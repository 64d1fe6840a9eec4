#pragma once

#include "tests/render/software/SoftwareDeviceFixture.h"

#include <initializer_list>
#include <mutex>

namespace tarvo::render::software {

/// Frames of 320×240 pixels that are handed over at 200×150; the last band has six rows.
namespace handedOver {
inline constexpr int width = 320;
inline constexpr int height = 240;
inline constexpr int outputWidth = 200;
inline constexpr int outputHeight = 150;
} // namespace handedOver

/// Takes rows as they are finished.
struct CRowsTaken : IMappedRowsVisitor {
    Picture picture{handedOver::outputWidth, handedOver::outputHeight};
    std::vector<int> visits = std::vector<int>(handedOver::outputHeight);
    bool hasSeenPixels = false;
    bool takesAlone = true;
    HRESULT result = S_OK;
    std::mutex lock;

    bool takesRowsAlone() const override { return takesAlone; }
    void rowsFinished(const MappedRows& rows, int first, int end) noexcept override {
        const std::lock_guard guard(lock);
        for (int y = first; y < end; ++y) {
            ++visits[static_cast<std::size_t>(y)];
            std::memcpy(&picture.at(0, y), rows.data + static_cast<std::size_t>(y) * rows.pitchBytes,
                        handedOver::outputWidth * 4U);
        }
    }
    HRESULT visit(const MappedRows& rows) override {
        EXPECT_EQ(rows.width, handedOver::outputWidth);
        EXPECT_EQ(rows.height, handedOver::outputHeight);
        hasSeenPixels = rows.data != nullptr;
        return result;
    }
};

/// Has one device hand its output over, every row once, which is what another one drew into memory.
inline Picture readAlike(CSoftwareDevice& device, CSoftwareDevice& plainDevice) {
    CRowsTaken taken;
    EXPECT_EQ(device.readBack(taken), S_OK);
    EXPECT_FALSE(taken.hasSeenPixels);
    EXPECT_EQ(taken.visits, std::vector<int>(handedOver::outputHeight, 1));
    const Picture expected = outputOf(plainDevice);
    EXPECT_EQ(taken.picture.pixels, expected.pixels);
    return expected;
}

/// Draws a view into each of these quads of the output, after a clear.
inline void drawViews(IRenderDevice& target, float turn, std::initializer_list<int> quads) {
    target.clear(Surface::outputTarget, greyClear);
    for (const int quad : quads) {
        const DewarpConstants constants =
            singleViewConstants(handedOver::width, handedOver::height, 0.2F, turn + static_cast<float>(quad));
        EXPECT_EQ(target.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)),
                  S_OK);
        Pass pass = passOf(ShaderProgram::singleView, Surface::inputPicture, quadRange(quad));
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = recordBytes(constants);
        EXPECT_EQ(target.draw(pass), S_OK);
    }
}

} // namespace tarvo::render::software
