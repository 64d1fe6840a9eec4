// What a frame costs on each device, by stage: a plain program, so that it also runs on Windows.
//
//     bench-devices [SECONDS]     measures each row for that long, default 3
//
// Devices put work off until somebody waits for it, so stages are told apart by what frames cost with and
// without them: the read-back is that of a picture that is finished, the view what a frame of RGB32 takes
// beyond that and its upload, the conversion what a frame of YV12 takes beyond one of RGB32. The view turns
// with every frame, unless it is said to be at rest.

#include "diagnostics/Log.h"
#include "geometry/ViewState.h"
#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "render/reference/ReferenceDevice.h"
#include "render/software/SoftwareDevice.h"
#ifdef _WIN32
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tarvo::render {
namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Sizes {
    int inputWidth, inputHeight, outputWidth, outputHeight;
};

diagnostics::ObjectLog objectLog() {
    return {diagnostics::moduleLog, 1};
}

/// Milliseconds of one frame, or the least of many: on a machine with other work that says most.
struct FrameTimes {
    double upload = 1e9;
    double render = 1e9; ///< with the read-back
    double readBack = 1e9;

    void takeLess(const FrameTimes& other) {
        upload = std::min(upload, other.upload);
        render = std::min(render, other.render);
        readBack = std::min(readBack, other.readBack);
    }
};

class CScene {
public:
    CScene(std::unique_ptr<IRenderDevice> device, const Sizes& sizes, PixelFormat format)
        : m_renderer(std::move(device), objectLog()) {
        const auto pixels =
            static_cast<std::uint32_t>(sizes.inputWidth) * static_cast<std::uint32_t>(sizes.inputHeight);
        const auto columns = static_cast<std::uint32_t>(sizes.inputWidth);
        const bool isYv12 = format == PixelFormat::yv12;
        const InputFormat input{format,
                                sizes.inputWidth,
                                sizes.inputHeight,
                                isYv12 ? columns : columns * 4,
                                isYv12 ? pixels / 2 * 3 : pixels * 4,
                                false};
        const OutputFormat output{PixelFormat::rgb32, sizes.outputWidth, sizes.outputHeight,
                                  static_cast<std::uint32_t>(sizes.outputWidth) * 4, false};
        m_view.setInputSize(sizes.inputWidth, sizes.inputHeight);
        m_view.setOutputSize(sizes.outputWidth, sizes.outputHeight);
        m_view.setTiltOrientation(geometry::TiltOrientation::ceiling);
        m_view.setPtzPosition(20.0, -40.0, 60.0, false);
        m_frame.resize(input.frameBytes);
        for (std::size_t i = 0; i < m_frame.size(); ++i) {
            m_frame[i] = static_cast<std::byte>((i * i) >> 7);
        }
        m_delivered.resize(static_cast<std::size_t>(output.strideBytes) *
                           static_cast<std::size_t>(output.height));
        if (FAILED(m_renderer.InitDirect3D(input, output, m_view, m_shader))) {
            throw std::runtime_error("the device cannot be opened");
        }
    }

    FrameTimes frame(double panDegrees) {
        m_view.setPan(panDegrees);
        const Clock::time_point start = Clock::now();
        m_renderer.UploadInputFrame(m_frame);
        const double uploaded = millisecondsSince(start);
        m_renderer.RenderFrame(m_view, m_shader, false);
        readBack();
        const double rendered = millisecondsSince(start);
        readBack();
        return {uploaded, rendered - uploaded, millisecondsSince(start) - rendered};
    }

private:
    void readBack() {
        if (FAILED(m_renderer.ReadBackOutputFrame(m_delivered, nullptr))) {
            throw std::runtime_error("no frame came back");
        }
    }

    geometry::CViewState m_view;
    CDewarpPixelShader m_shader{m_view.parameters(), objectLog()};
    std::vector<std::byte> m_frame;
    std::vector<std::byte> m_delivered;
    CFrameRenderer m_renderer;
};

struct Device {
    const char* name;
    std::unique_ptr<IRenderDevice> (*make)();
};

constexpr Device devices[] = {
    {"reference",
     []() -> std::unique_ptr<IRenderDevice> {
         return std::make_unique<reference::CReferenceDevice>(objectLog());
     }},
    {"software",
     []() -> std::unique_ptr<IRenderDevice> {
         return std::make_unique<software::CSoftwareDevice>(objectLog());
     }},
    {"software, 1 thread",
     []() -> std::unique_ptr<IRenderDevice> {
         return std::make_unique<software::CSoftwareDevice>(objectLog(),
                                                            std::make_shared<software::CThreadPool>(1));
     }},
#ifdef _WIN32
    {"direct3d11",
     []() -> std::unique_ptr<IRenderDevice> {
         return std::make_unique<d3d11::CD3d11Device>(std::make_unique<d3d11::CD3d11Library>(), objectLog());
     }},
#endif
};

void report(const Device& device, const Sizes& sizes, double seconds) {
    CScene yv12(device.make(), sizes, PixelFormat::yv12);
    CScene rgb32(device.make(), sizes, PixelFormat::rgb32);
    FrameTimes converted;
    FrameTimes plain;
    FrameTimes atRest;
    // In turns, so that other work meets all alike. The first frames warm up.
    const Clock::time_point start = Clock::now();
    for (int i = -3; i < 5 || millisecondsSince(start) < seconds * 1000.0; ++i) {
        // Two places of the view, each as dear as the other, in turns.
        const double pan = i % 2 == 0 ? 20.0 : 20.4;
        const FrameTimes yv12Frame = yv12.frame(pan);
        const FrameTimes restingFrame = yv12.frame(pan);
        const FrameTimes rgb32Frame = rgb32.frame(pan);
        if (i >= 0) {
            converted.takeLess(yv12Frame);
            atRest.takeLess(restingFrame);
            plain.takeLess(rgb32Frame);
        }
    }
    std::printf("%-19s %5dx%-5d %5dx%-5d %8.2f %10.2f %8.2f %9.2f %9.2f %9.2f\n", device.name,
                sizes.inputWidth, sizes.inputHeight, sizes.outputWidth, sizes.outputHeight, converted.upload,
                converted.render - plain.render, plain.render - plain.readBack, converted.readBack,
                converted.upload + converted.render, atRest.upload + atRest.render);
    std::fflush(stdout);
}

} // namespace
} // namespace tarvo::render

int main(int argumentCount, char** arguments) {
    using namespace tarvo::render;
    const double seconds = argumentCount > 1 ? std::atof(arguments[1]) : 3.0;
    std::printf("milliseconds (YV12 in, RGB32 out)\n%-19s %-11s %-11s %8s %10s %8s %9s %9s %9s\n", "device",
                "input", "output", "upload", "conversion", "view", "read-back", "frame", "at rest");
    try {
        for (const Sizes& sizes : {Sizes{640, 480, 640, 480}, Sizes{2592, 1944, 1024, 768}}) {
            for (const Device& device : devices) {
                report(device, sizes, seconds);
            }
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench-devices: %s\n", failure.what());
        return 1;
    }
    return 0;
}
