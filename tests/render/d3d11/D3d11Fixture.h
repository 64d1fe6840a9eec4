#pragma once

#include "diagnostics/ErrorText.h"
#include "render/d3d11/D3d11Device.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/FakeD3d11.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

namespace tarvo::render::d3d11 {

constexpr int inputWidth = 320;
constexpr int inputHeight = 240;
constexpr int outputWidth = 200;
constexpr int outputHeight = 150;

inline InputFormat inputOf(PixelFormat format) {
    switch (format) {
    case PixelFormat::yv12:
        return {format, inputWidth, inputHeight, 320, 115200, false};
    case PixelFormat::yuy2:
        return {format, inputWidth, inputHeight, 640, 153600, false};
    case PixelFormat::rgb32:
        break;
    }
    return {format, inputWidth, inputHeight, 1280, 307200, false};
}
inline constexpr OutputFormat output{PixelFormat::rgb32, outputWidth, outputHeight, 800, false};

/// Lines of a log with id 7, from which the line numbers are taken once they are found to agree.
class CLogLines {
public:
    CLogLines() { m_log.SetModule("T", 2); }

    diagnostics::ObjectLog log() { return {m_log, 7}; }

    /// The lines since the last time; numbers of source lines become #.
    std::vector<std::string> take() {
        static const std::regex traceNumbers(R"(\[line: ([1-9]\d*)\] Erroneous HRESULT on line \1 error)");
        static const std::regex oneNumber(R"(\[line: [1-9]\d*\])");
        std::vector<std::string> result;
        for (const std::string& line : std::exchange(m_services.debuggerLines, {})) {
            const std::string clean =
                std::regex_replace(line, traceNumbers, "[line: #] Erroneous HRESULT on line # error");
            result.push_back(std::regex_replace(clean, oneNumber, "[line: #]"));
        }
        return result;
    }

    /// The line about a failed call.
    static std::string trace(const std::string& place, HRESULT result) {
        return "T:E:" + place +
               " [id: 7]  [line: #] Erroneous HRESULT on line # error: " + diagnostics::errorText(result) +
               "\n";
    }

private:
    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log{m_services};
};

/// A device over the fake.
class CD3d11Test : public testing::Test {
protected:
    CD3d11Test() {
        auto owned = std::make_unique<tests::CFakeD3d11Library>(fake);
        library = owned.get();
        device = std::make_unique<CD3d11Device>(std::move(owned), lines.log());
    }
    ~CD3d11Test() override {
        device.reset();
        EXPECT_EQ(fake.liveObjects, 0);
        EXPECT_EQ(fake.mappedCount, 0);
    }

    static constexpr ExcludeGeometry exclude{{{0.25F, 0.25F, 0.5F, 0.75F}}, {80, 60, 160, 180}};

    /// Everything that a renderer does before the first frame, ended by the first failure as it would do.
    HRESULT bringUp(const InputFormat& input) {
        HRESULT result = device->open(input, output);
        if (SUCCEEDED(result))
            result = device->geometry(vertices, exclude);
        if (SUCCEEDED(result))
            result = device->prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(dewarp));
        if (SUCCEEDED(result))
            result = device->overviewMarker(*marker);
        if (SUCCEEDED(result))
            result = device->openStates();
        if (FAILED(result))
            device->close();
        return result;
    }
    /// The same, for tests that begin where it ends.
    void ready(PixelFormat format) {
        ASSERT_EQ(bringUp(inputOf(format)), S_OK);
        fake.takeCalls();
        lines.take();
    }

    tests::CFakeD3d11 fake;
    CLogLines lines;
    tests::CFakeD3d11Library* library = nullptr;
    std::unique_ptr<CD3d11Device> device;
    geometry::ViewVertices vertices{};
    std::unique_ptr<geometry::OverviewMarkerVertices> marker =
        std::make_unique<geometry::OverviewMarkerVertices>();
    DewarpConstants dewarp{};
};

} // namespace tarvo::render::d3d11
