#include "tests/render/conformance/Comparison.h"

#include "diagnostics/Log.h"
#include "render/colour/ConvertRGB32ToYV12.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::conformance {
namespace {

/// The three planes without gaps, luma, Cr, Cb; what is odd is left out.
struct Planes {
    std::size_t width = 0;
    std::size_t height = 0;
    std::array<std::vector<std::uint8_t>, 3> bytes;

    Planes(int theWidth, int theHeight)
        : width(static_cast<std::size_t>(theWidth) / 2 * 2),
          height(static_cast<std::size_t>(theHeight) / 2 * 2) {
        bytes[0].resize(width * height);
        bytes[1].resize(width * height / 4);
        bytes[2].resize(width * height / 4);
    }
};

Planes convertedPlanes(const Picture& picture) {
    Planes planes(picture.width, picture.height);
    const auto step = static_cast<std::ptrdiff_t>(planes.width);
    const ImageStatus status = ConvertRGB32ToYV12(
        &picture.pixels.front().blue, static_cast<std::ptrdiff_t>(picture.width) * 4,
        {planes.bytes[0].data(), planes.bytes[1].data(), planes.bytes[2].data()}, {step, step / 2, step / 2},
        {static_cast<std::int32_t>(planes.width), static_cast<std::int32_t>(planes.height)});
    EXPECT_EQ(status, ImageStatus::done);
    return planes;
}

/// In the buffer the converter's plane 2 lies before its plane 1.
Planes deliveredPlanes(const Rendered& rendered) {
    Planes planes(rendered.format.width, rendered.format.height);
    const std::size_t stride = rendered.format.strideBytes;
    const std::size_t lumaBytes = stride * static_cast<std::size_t>(rendered.format.height);
    const std::array<std::size_t, 3> starts{0, lumaBytes + lumaBytes / 4, lumaBytes};
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const std::size_t part = plane == 0 ? 1 : 2;
        const std::size_t rowBytes = planes.width / part;
        for (std::size_t row = 0; row < planes.height / part; ++row) {
            std::memcpy(&planes.bytes[plane][row * rowBytes],
                        &rendered.bytes[starts[plane] + row * (stride / part)], rowBytes);
        }
    }
    return planes;
}

void expectDeliveredAsDrawn(const Rendered& rendered) {
    EXPECT_TRUE(isGuardWhole(rendered));
    if (rendered.format.format == PixelFormat::yv12) {
        EXPECT_TRUE(deliveredPlanes(rendered).bytes == convertedPlanes(rendered.picture).bytes);
    } else {
        EXPECT_TRUE(deliveredPicture(rendered).pixels == rendered.picture.pixels);
    }
}

} // namespace

CComparison::CComparison(const DeviceUnderTest& device)
    : m_deviceName(device.name), m_referenceRig(std::make_unique<reference::CReferenceDevice>(
                                     diagnostics::ObjectLog{diagnostics::moduleLog, 1})),
      m_deviceRig(device.make()) {}

void CComparison::render(const FrameCase& frameCase, const InputFrame& frame) {
    m_reference = m_referenceRig.render(frameCase, frame);
    m_device = m_deviceRig.render(frameCase, frame);
    expectDelivered();
}

void CComparison::deliver(const FrameCase& frameCase) {
    m_reference = m_referenceRig.deliver(frameCase);
    m_device = m_deviceRig.deliver(frameCase);
    expectDelivered();
}

void CComparison::expectDelivered() const {
    ASSERT_EQ(m_reference.result, S_OK);
    ASSERT_EQ(m_device.result, S_OK);
    EXPECT_EQ(m_reference.drawn.failedCount, 0);
    EXPECT_EQ(m_device.drawn.failedCount, 0);
    EXPECT_EQ(m_device.drawn.programs, m_reference.drawn.programs);
    for (const Rendered* rendered : {&m_reference, &m_device}) {
        ASSERT_EQ(rendered->picture.width, rendered->format.width);
        ASSERT_EQ(rendered->picture.height, rendered->format.height);
        expectDeliveredAsDrawn(*rendered);
    }
}

} // namespace tarvo::render::conformance
