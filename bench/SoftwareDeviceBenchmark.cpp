#include "bench/AllocationCount.h"
#include "diagnostics/Log.h"
#include "geometry/ViewState.h"
#include "render/software/SoftwareDevice.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

// The single view of a 2592×1944 YV12 frame, 1024×768, by stage: the upload of a frame, the passes of a new
// frame and of one that was converted before, with the view at rest and with one that moves every frame, and
// all of it with the read-back.

namespace tarvo::render::software {
namespace {

constexpr int inputWidth = 2592;
constexpr int inputHeight = 1944;
constexpr int outputWidth = 1024;
constexpr int outputHeight = 768;

std::vector<std::byte> noise(std::size_t size) {
    std::minstd_rand random(1);
    std::vector<std::byte> bytes(size);
    for (std::byte& byte : bytes)
        byte = static_cast<std::byte>(random() >> 8);
    return bytes;
}

struct CNothing final : IMappedRowsVisitor {
    HRESULT visit(const MappedRows& rows) override {
        benchmark::DoNotOptimize(rows.data);
        return S_OK;
    }
};

class CScene {
public:
    explicit CScene(int threads)
        : m_device({diagnostics::moduleLog, 0}, std::make_shared<CThreadPool>(threads)) {
        const std::uint32_t frameBytes = inputWidth * inputHeight * 3 / 2;
        m_input = {PixelFormat::yv12, inputWidth, inputHeight, inputWidth, frameBytes, false};
        m_view.setInputSize(inputWidth, inputHeight);
        m_view.setOutputSize(outputWidth, outputHeight);
        m_view.setTiltOrientation(geometry::TiltOrientation::ceiling);
        m_view.setPtzPosition(20.0, -40.0, 60.0, false);
        m_frame = noise(frameBytes);
        isReady = m_device.open(m_input,
                                {PixelFormat::yv12, outputWidth, outputHeight, outputWidth, false}) == S_OK &&
                  m_device.geometry(geometry::buildViewVertices(m_view.layout()), {}) == S_OK &&
                  m_device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp,
                                   recordBytes(m_view.parameters().constants())) == S_OK;
    }

    void move() {
        m_panDegrees += 0.37;
        m_view.setPan(20.0 + std::fmod(m_panDegrees, 30.0));
    }

    void upload() {
        const std::byte* next = m_frame.data();
        int index = 0;
        for (const Surface surface : {Surface::yPlane, Surface::crPlane, Surface::cbPlane}) {
            const PlaneFormat plane = yv12Plane(m_input, index++);
            isReady = m_device.upload(surface, {next, plane.strideBytes, plane.width,
                                                static_cast<int>(plane.height)}) == S_OK &&
                      isReady;
            next += plane.planeBytes;
        }
    }

    void convert() {
        m_device.clear(Surface::conversionTarget, {1.0F, 0.0F, 0.0F, 1.0F});
        Pass pass;
        pass.program = ShaderProgram::yv12ToRgb;
        pass.target = Surface::conversionTarget;
        pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
        pass.range = quadRange(geometry::quad::fullTarget);
        isReady = m_device.draw(pass) == S_OK && isReady;
        m_device.copy(Surface::conversionTarget, Surface::inputPicture);
    }

    void draw() {
        m_device.clear(Surface::outputTarget, {0.0F, 0.0F, 0.0F, 1.0F});
        Pass pass;
        pass.program = ShaderProgram::singleView;
        pass.textures[0] = Surface::inputPicture;
        pass.constantSlot = ConstantSlot::dewarp;
        pass.constants = recordBytes(m_view.parameters().constants());
        pass.range = quadRange(geometry::quad::singleView);
        isReady = m_device.draw(pass) == S_OK && isReady;
        m_device.flush();
    }

    void readBack() {
        CNothing nothing;
        isReady = m_device.readBack(nothing) == S_OK && isReady;
    }

    WorkCounters counters() const { return m_device.counters(); }

    bool isReady = false;

private:
    CSoftwareDevice m_device;
    InputFormat m_input;
    geometry::CViewState m_view;
    std::vector<std::byte> m_frame;
    double m_panDegrees = 0.0;
};

enum class Stage { upload, convertAndDrawAtRest, drawAtRest, drawMoving, frameAtRest, frameMoving };

void run(benchmark::State& state, Stage stage, int threads) {
    const auto scene = std::make_unique<CScene>(threads);
    const bool isMoving = stage == Stage::drawMoving || stage == Stage::frameMoving;
    const bool isUploading =
        stage == Stage::upload || stage == Stage::frameAtRest || stage == Stage::frameMoving;
    const bool isConverting = isUploading ? stage != Stage::upload : stage == Stage::convertAndDrawAtRest;
    const auto frame = [&] {
        if (isMoving)
            scene->move();
        if (isUploading)
            scene->upload();
        if (isConverting)
            scene->convert();
        if (stage != Stage::upload) {
            scene->draw();
            scene->readBack();
        }
    };
    scene->upload();
    scene->convert();
    for (int i = 0; i < 3; ++i)
        frame();
    const long allocations = bench::allocationCount();
    const std::uint64_t tiles = scene->counters().tilesMade;
    for (auto _ : state)
        frame();
    if (!scene->isReady)
        state.SkipWithError("a verb failed");
    state.counters["allocations"] = benchmark::Counter(
        static_cast<double>(bench::allocationCount() - allocations), benchmark::Counter::kAvgIterations);
    state.counters["tiles"] = benchmark::Counter(static_cast<double>(scene->counters().tilesMade - tiles),
                                                 benchmark::Counter::kAvgIterations);
}

[[maybe_unused]] const bool isRegistered = [] {
    for (const int threads : {1, 2}) {
        const auto add = [&](const char* name, Stage stage) {
            benchmark::RegisterBenchmark(
                (std::string(name) + ", threads: " + std::to_string(threads)).c_str(),
                [=](benchmark::State& state) { run(state, stage, threads); })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        };
        add("upload", Stage::upload);
        add("conversion and view at rest", Stage::convertAndDrawAtRest);
        add("view at rest", Stage::drawAtRest);
        add("view moving", Stage::drawMoving);
        add("whole frame at rest", Stage::frameAtRest);
        add("whole frame moving", Stage::frameMoving);
    }
    return true;
}();

} // namespace
} // namespace tarvo::render::software
