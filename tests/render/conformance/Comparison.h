#pragma once

#include "render/reference/ReferenceDevice.h"
#include "tests/render/conformance/DevicesUnderTest.h"
#include "tests/render/conformance/Difference.h"
#include "tests/render/conformance/Rig.h"

#include <gtest/gtest.h>

namespace tarvo::render::conformance {

/// Copies and conversions in whole numbers leave no room for a difference.
inline constexpr int exact = 0;
/// Shading and blending end in one rounding.
inline constexpr int oneLevel = 1;
/// Of a dewarped picture, whose places are rounded too.
inline constexpr int dewarpWorst = 3;
inline constexpr double dewarpMean = 0.1;
/// At least the rest of every picture is compared.
inline constexpr double largestMaskedShare = 0.2;

/// A device beside the reference, each under the sequence of a frame.
class CComparison {
public:
    explicit CComparison(const DeviceUnderTest& device);

    /// Both render the case; expects that both do so without a failure, draw the same passes and deliver what
    /// they have drawn, in the case's output format.
    void render(const FrameCase& frameCase, const InputFrame& frame);
    /// The same for another output format of the case before.
    void deliver(const FrameCase& frameCase);

    const std::string& deviceName() const { return m_deviceName; }
    const Rendered& reference() const { return m_reference; }
    const Rendered& device() const { return m_device; }

private:
    void expectDelivered() const;

    std::string m_deviceName;
    CRig m_referenceRig;
    CRig m_deviceRig;
    Rendered m_reference;
    Rendered m_device;
};

} // namespace tarvo::render::conformance
