#pragma once

#include "diagnostics/Log.h"
#include "diagnostics/ObjectLog.h"
#include "geometry/ViewState.h"
#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/RecordingDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tarvo::render {

inline constexpr std::int32_t instanceId = 7;

inline std::vector<std::byte> bytesOf(std::span<const std::byte> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// 1, 2, 3 … 255, 1 …: no byte is zero.
inline std::vector<std::byte> countingBytes(std::size_t count) {
    std::vector<std::byte> bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::byte>(i % 255 + 1);
    }
    return bytes;
}

/// A shader object that does what it is told.
class CFakeShader final : public IShader {
public:
    /// One for each attempt; S_OK once they are used up.
    std::vector<HRESULT> initialiseResults;
    HRESULT useResult = S_OK;
    PixelShaderUse use;
    int initialiseCount = 0;
    int releaseCount = 0;

    HRESULT initialise(IRenderDevice&) override {
        const auto attempt = static_cast<std::size_t>(initialiseCount++);
        return attempt < initialiseResults.size() ? initialiseResults[attempt] : S_OK;
    }
    void release() override { ++releaseCount; }
    HRESULT pixelShader(PixelShaderUse& result) override {
        result = use;
        return useResult;
    }
};

/// A renderer over a recording device, a view and its shader. Pictures are 64×48 in and 32×24 out.
class CSequenceTest : public testing::Test {
protected:
    CSequenceTest() {
        log.SetModule("T", 2);
        view.setInputSize(64, 48);
        view.setOutputSize(32, 24);
    }

    static InputFormat inputFormat(PixelFormat format) {
        switch (format) {
        case PixelFormat::yv12:
            return {format, 64, 48, 64, 64 * 48 * 3 / 2, false};
        case PixelFormat::yuy2:
            return {format, 64, 48, 128, 128 * 48, false};
        case PixelFormat::rgb32:
            break;
        }
        return {format, 64, 48, 256, 256 * 48, false};
    }

    HRESULT init(PixelFormat format = PixelFormat::rgb32) {
        return renderer.InitDirect3D(inputFormat(format), output, view, shader);
    }
    /// What a frame asks of the device.
    std::vector<tests::RecordedCall> frame(IShader& drawing, bool isBypassed = false) {
        device.calls.clear();
        EXPECT_EQ(renderer.RenderFrame(view, drawing, isBypassed), S_OK);
        return device.calls;
    }
    std::vector<tests::RecordedCall> frame() { return frame(shader); }

    const std::vector<std::string>& lines() const { return services.debuggerLines; }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    diagnostics::ObjectLog objectLog{log, instanceId};
    geometry::CViewState view;
    CDewarpPixelShader shader{view.parameters(), objectLog};
    CFakeShader fake;
    CFakeShader otherFake;
    OutputFormat output{PixelFormat::rgb32, 32, 24, 128, false};
    std::unique_ptr<tests::CRecordingDevice> ownedDevice = std::make_unique<tests::CRecordingDevice>();
    tests::CRecordingDevice& device = *ownedDevice;
    CFrameRenderer renderer{std::move(ownedDevice), objectLog};
};

} // namespace tarvo::render
