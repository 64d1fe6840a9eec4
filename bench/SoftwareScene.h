#pragma once

#include "bench/AllocationCount.h"
#include "diagnostics/Log.h"
#include "render/software/SoftwareDevice.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace tarvo::bench {

/// A software device with 2592×1944 YV12 frames of noise going in and 1024×768 coming out; what is drawn is
/// the benchmark's.
class CSoftwareScene {
public:
    static constexpr int inputWidth = 2592;
    static constexpr int inputHeight = 1944;
    static constexpr int outputWidth = 1024;
    static constexpr int outputHeight = 768;

    explicit CSoftwareScene(int threads)
        : m_device({diagnostics::moduleLog, 0}, std::make_shared<render::software::CThreadPool>(threads)) {
        const std::uint32_t frameBytes = inputWidth * inputHeight * 3 / 2;
        m_input = {render::PixelFormat::yv12, inputWidth, inputHeight, inputWidth, frameBytes, false};
        m_frame.resize(frameBytes);
        std::minstd_rand random(1);
        for (std::byte& byte : m_frame)
            byte = static_cast<std::byte>(random() >> 8);
        expect(m_device.open(m_input,
                             {render::PixelFormat::yv12, outputWidth, outputHeight, outputWidth, false}));
    }

    render::software::CSoftwareDevice& device() { return m_device; }
    void expect(HRESULT result) { m_isReady = result == S_OK && m_isReady; }
    bool isReady() const { return m_isReady; }

    void upload() {
        const std::byte* next = m_frame.data();
        int index = 0;
        using render::Surface;
        for (const Surface surface : {Surface::yPlane, Surface::crPlane, Surface::cbPlane}) {
            const render::PlaneFormat plane = render::yv12Plane(m_input, index++);
            expect(m_device.upload(surface,
                                   {next, plane.strideBytes, plane.width, static_cast<int>(plane.height)}));
            next += plane.planeBytes;
        }
    }

    void convert() {
        using render::Surface;
        m_device.clear(Surface::conversionTarget, {1.0F, 0.0F, 0.0F, 1.0F});
        render::Pass pass;
        pass.program = render::ShaderProgram::yv12ToRgb;
        pass.target = Surface::conversionTarget;
        pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
        pass.range = render::quadRange(geometry::quad::fullTarget);
        expect(m_device.draw(pass));
        m_device.copy(Surface::conversionTarget, Surface::inputPicture);
    }

    void readBack() {
        struct : render::IMappedRowsVisitor {
            HRESULT visit(const render::MappedRows& rows) override {
                benchmark::DoNotOptimize(rows.data);
                return S_OK;
            }
        } nothing;
        expect(m_device.readBack(nothing));
    }

    /// Times `frame`, after a few that do not count, and counts what it allocates and converts.
    template<typename Frame>
    void run(benchmark::State& state, Frame frame) {
        for (int i = 0; i < 3; ++i)
            frame();
        const long allocations = allocationCount();
        const std::uint64_t tiles = m_device.counters().tilesMade;
        for (auto _ : state)
            frame();
        if (!m_isReady)
            state.SkipWithError("a verb failed");
        const auto perFrame = [](auto count) {
            return benchmark::Counter(static_cast<double>(count), benchmark::Counter::kAvgIterations);
        };
        state.counters["allocations"] = perFrame(allocationCount() - allocations);
        state.counters["tiles"] = perFrame(m_device.counters().tilesMade - tiles);
    }

private:
    render::software::CSoftwareDevice m_device;
    render::InputFormat m_input;
    std::vector<std::byte> m_frame;
    bool m_isReady = true;
};

} // namespace tarvo::bench
