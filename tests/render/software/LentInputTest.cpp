#include "tests/render/software/SoftwareDeviceFixture.h"
#include "tests/support/AllocationCount.h"

namespace tarvo::render::software {
namespace {

constexpr int outputWidth = 96;
constexpr int outputHeight = 72;

/// The bytes of a frame as a host holds them, without gaps.
class CHostFrame {
public:
    CHostFrame(PixelFormat format, int width, int height, unsigned seed)
        : m_format(format), m_width(width), m_height(height),
          m_bytes(noise(inputOf(format, width, height).frameBytes, seed)) {}

    /// Uploads every surface of the frame.
    void uploadTo(IRenderDevice& device, bool isLent) const {
        const auto put = [&](Surface surface, std::size_t offset, std::size_t rowBytes, int rows) {
            SourceRows source = rowsOf(m_bytes.data() + offset, rowBytes, rows);
            source.isLent = isLent;
            EXPECT_EQ(device.upload(surface, source), S_OK);
        };
        const auto width = static_cast<std::size_t>(m_width);
        const std::size_t luma = width * static_cast<std::size_t>(m_height);
        const std::size_t half = width / 2;
        switch (m_format) {
        case PixelFormat::yv12:
            put(Surface::yPlane, 0, width, m_height);
            put(Surface::crPlane, luma, half, m_height / 2);
            put(Surface::cbPlane, luma + half * static_cast<std::size_t>(m_height / 2), half, m_height / 2);
            break;
        case PixelFormat::yuy2:
            put(Surface::packedInput, 0, m_bytes.size(), 1);
            break;
        case PixelFormat::rgb32:
            put(Surface::inputPicture, 0, width * 4, m_height);
            break;
        }
    }

    /// What becomes of the memory once it is the host's again.
    void spoil() { std::fill(m_bytes.begin(), m_bytes.end(), std::uint8_t{0xEE}); }

private:
    PixelFormat m_format;
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_bytes;
};

struct Shape {
    PixelFormat format;
    int width;
    int height;
};

class LentInput : public SoftwareDevice, public testing::WithParamInterface<Shape> {
protected:
    void SetUp() override {
        openFor(GetParam().format, GetParam().width, GetParam().height, outputWidth, outputHeight);
        ASSERT_EQ(plainDevice.open(inputOf(GetParam().format, GetParam().width, GetParam().height),
                                   outputOf(outputWidth, outputHeight)),
                  S_OK);
        ASSERT_EQ(plainDevice.geometry(quads(), {}), S_OK);
    }

    static void convert(IRenderDevice& target) {
        if (GetParam().format == PixelFormat::rgb32)
            return;
        target.clear(Surface::conversionTarget, {1.0F, 0.0F, 0.0F, 1.0F});
        Pass pass = yv12Pass();
        const Yuy2Constants constants{static_cast<std::uint32_t>(GetParam().width), {}};
        if (GetParam().format == PixelFormat::yuy2) {
            pass.program = ShaderProgram::yuy2ToRgb;
            pass.textures = {};
            pass.textures[3] = Surface::packedInput;
            pass.constantSlot = ConstantSlot::width;
            pass.constants = recordBytes(constants);
        }
        EXPECT_EQ(target.draw(pass), S_OK);
        target.copy(Surface::conversionTarget, Surface::inputPicture);
    }

    /// A view of a part of the picture.
    static Picture view(IRenderDevice& target, float rotateX, float rotateZ, float tangent) {
        const DewarpConstants constants =
            singleViewConstants(GetParam().width, GetParam().height, rotateX, rotateZ, tangent);
        EXPECT_EQ(target.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)),
                  S_OK);
        Pass pass = passOf(ShaderProgram::singleView, Surface::inputPicture, quadRange(0));
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = recordBytes(constants);
        target.clear(Surface::outputTarget, opaqueBlackClear);
        EXPECT_EQ(target.draw(pass), S_OK);
        return outputOf(target);
    }
    static Picture whole(IRenderDevice& target) {
        EXPECT_EQ(target.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(0))), S_OK);
        return outputOf(target);
    }

    void expectWholeAfterTheLoan();

    CSoftwareDevice plainDevice{diagnostics::ObjectLog{log, 8}};
};

TEST_P(LentInput, isDrawnFromWhereItLies) {
    const CHostFrame frame(GetParam().format, GetParam().width, GetParam().height, 1);
    frame.uploadTo(device, true);
    frame.uploadTo(plainDevice, false);
    convert(device);
    convert(plainDevice);
    EXPECT_EQ(view(device, 0.4F, 1.0F, 0.2F).pixels, view(plainDevice, 0.4F, 1.0F, 0.2F).pixels);
}

void LentInput::expectWholeAfterTheLoan() {
    for (unsigned round = 0; round < 4; ++round) {
        CHostFrame frame(GetParam().format, GetParam().width, GetParam().height, 10 * (round + 1));
        frame.uploadTo(device, true);
        frame.uploadTo(plainDevice, false);
        convert(device);
        convert(plainDevice);
        const float turn = static_cast<float>(round);
        // None of the picture, a small or a larger part of it is drawn before the loan ends.
        if (round != 0) {
            EXPECT_EQ(view(device, 0.3F, turn, 0.1F * turn).pixels,
                      view(plainDevice, 0.3F, turn, 0.1F * turn).pixels);
        }
        device.keepInput();
        frame.spoil();
        EXPECT_EQ(view(device, -0.5F, 2.0F, 0.5F).pixels, view(plainDevice, -0.5F, 2.0F, 0.5F).pixels);
        // As a later redraw begins: the conversion is asked for again.
        convert(device);
        EXPECT_EQ(whole(device).pixels, whole(plainDevice).pixels) << round;
    }
}

TEST_P(LentInput, isWholeAfterTheLoan) {
    expectWholeAfterTheLoan();
}

// Where many share the threads, frames are kept another way.
TEST_P(LentInput, isWholeAfterTheLoanAmongManyDevices) {
    std::array<CSoftwareDevice, 2> others{CSoftwareDevice(diagnostics::ObjectLog{log, 9}),
                                          CSoftwareDevice(diagnostics::ObjectLog{log, 10})};
    for (CSoftwareDevice& other : others)
        ASSERT_EQ(other.open(inputOf(PixelFormat::yv12, 16, 16), outputOf(16, 16)), S_OK);
    expectWholeAfterTheLoan();
}

TEST_P(LentInput, isKeptWholeWithoutAConversion) {
    CHostFrame frame(GetParam().format, GetParam().width, GetParam().height, 5);
    frame.uploadTo(device, true);
    frame.uploadTo(plainDevice, false);
    device.keepInput();
    frame.spoil();
    convert(device);
    convert(plainDevice);
    EXPECT_EQ(whole(device).pixels, whole(plainDevice).pixels);
}

TEST_P(LentInput, whatWasQueuedIsDrawnBeforeTheLoanEnds) {
    CHostFrame frame(GetParam().format, GetParam().width, GetParam().height, 6);
    frame.uploadTo(device, true);
    frame.uploadTo(plainDevice, false);
    convert(device);
    convert(plainDevice);
    EXPECT_EQ(device.draw(passOf(ShaderProgram::plainCopy, Surface::inputPicture, quadRange(0))), S_OK);
    device.keepInput();
    frame.spoil();
    EXPECT_EQ(outputOf(device).pixels, whole(plainDevice).pixels);
}

TEST_P(LentInput, mayBeReplacedWhileItIsLent) {
    CHostFrame first(GetParam().format, GetParam().width, GetParam().height, 7);
    CHostFrame second(GetParam().format, GetParam().width, GetParam().height, 8);
    first.uploadTo(device, true);
    convert(device);
    second.uploadTo(device, true);
    second.uploadTo(plainDevice, false);
    convert(device);
    convert(plainDevice);
    device.keepInput();
    first.spoil();
    second.spoil();
    EXPECT_EQ(whole(device).pixels, whole(plainDevice).pixels);
}

TEST_P(LentInput, framesAllocateNothing) {
    const CHostFrame frame(GetParam().format, GetParam().width, GetParam().height, 3);
    const auto once = [&] {
        frame.uploadTo(device, true);
        convert(device);
        struct : IMappedRowsVisitor {
            HRESULT visit(const MappedRows&) override { return S_OK; }
        } nobody;
        EXPECT_EQ(drawView(singleViewConstants(GetParam().width, GetParam().height, 0.3F, 1.0F), 0), S_OK);
        EXPECT_EQ(device.readBack(nobody), S_OK);
        device.keepInput();
    };
    for (int i = 0; i < 4; ++i)
        once();
    const int before = tests::allocationCount();
    for (int i = 0; i < 4; ++i)
        once();
    EXPECT_EQ(tests::allocationCount(), before);
}

INSTANTIATE_TEST_SUITE_P(formats, LentInput,
                         testing::Values(Shape{PixelFormat::yv12, 320, 240},
                                         Shape{PixelFormat::yv12, 203, 117}, Shape{PixelFormat::yv12, 64, 16},
                                         Shape{PixelFormat::yuy2, 320, 240},
                                         Shape{PixelFormat::yuy2, 201, 99}, Shape{PixelFormat::yuy2, 130, 33},
                                         Shape{PixelFormat::rgb32, 320, 240},
                                         Shape{PixelFormat::rgb32, 77, 35}));

} // namespace
} // namespace tarvo::render::software
