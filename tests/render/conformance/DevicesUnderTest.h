#pragma once

#include "render/RenderDevice.h"
#include "tests/render/conformance/FrameCase.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <span>
#include <string>

namespace tarvo::render::conformance {

/// A kind of device that is held against the reference.
struct DeviceUnderTest {
    const char* name;
    std::unique_ptr<IRenderDevice> (*make)();
    bool isHeapOurs; ///< nothing below it keeps memory for a next time

    friend std::ostream& operator<<(std::ostream& stream, const DeviceUnderTest& device) {
        return stream << device.name;
    }
};

/// Those which this build has, and has to have: one that cannot be opened is a failure.
std::span<const DeviceUnderTest> devicesUnderTest();

/// What a device's tests are called by.
inline std::string deviceTestName(const testing::TestParamInfo<DeviceUnderTest>& device) {
    return device.param.name;
}

} // namespace tarvo::render::conformance
