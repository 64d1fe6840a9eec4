#include "render/colour/ConvertRGB32ToYV12.h"
#include "render/colour/MirrorRGB24.h"
#include "render/colour/YuvToBgra.h"

#include <benchmark/benchmark.h>
#include <random>
#include <string>
#include <vector>

// The colour conversions and the mirror, 1024×768, each instruction set of this processor.

namespace tarvo::render {
namespace {

constexpr int width = 1024;
constexpr int height = 768;
constexpr std::size_t pixels = static_cast<std::size_t>(width) * height;

std::vector<std::uint8_t> noise(std::size_t size) {
    std::minstd_rand random(1);
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 8);
    return bytes;
}

void countPixels(benchmark::State& state) {
    state.counters["pixels"] =
        benchmark::Counter(static_cast<double>(pixels), benchmark::Counter::kIsIterationInvariantRate);
}

void rgb32ToYv12(benchmark::State& state, InstructionSet set) {
    const std::vector<std::uint8_t> source = noise(pixels * 4);
    std::vector<std::uint8_t> target(pixels * 3 / 2);
    for (auto _ : state) {
        ConvertRGB32ToYV12(source.data(), width * 4,
                           {target.data(), target.data() + pixels * 5 / 4, target.data() + pixels},
                           {width, width / 2, width / 2}, {width, height}, colourKernels(set));
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

void mirror(benchmark::State& state, InstructionSet set, FlipMode mode) {
    std::vector<std::uint8_t> image = noise(pixels * 3);
    for (auto _ : state) {
        MirrorRGB24(image.data(), width * 3, {width, height}, mode, colourKernels(set));
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

void yv12ToBgra(benchmark::State& state, InstructionSet set) {
    const std::vector<std::uint8_t> frame = noise(pixels * 3 / 2);
    const Yv12Source source{width,
                            height,
                            {frame.data(), frame.data() + pixels, frame.data() + pixels * 5 / 4},
                            {width, width / 2, width / 2}};
    std::vector<std::uint8_t> target(pixels * 4);
    for (auto _ : state) {
        convertYv12ToBgra(source, {target.data(), width * 4}, {0, 0, width, height}, colourKernels(set));
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

void yuy2ToBgra(benchmark::State& state, InstructionSet set) {
    const std::vector<std::uint8_t> frame = noise(pixels * 2);
    std::vector<std::uint8_t> target(pixels * 4);
    for (auto _ : state) {
        convertYuy2ToBgra({width, height, frame.data(), frame.size()}, {target.data(), width * 4},
                          {0, 0, width, height}, colourKernels(set));
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

[[maybe_unused]] const bool isRegistered = [] {
    for (int level = 0; level <= static_cast<int>(detectInstructionSet()); ++level) {
        const auto set = static_cast<InstructionSet>(level);
        const std::string suffix = std::string("/") + instructionSetName(set);
        const auto add = [&](const char* name, auto run, auto... arguments) {
            benchmark::RegisterBenchmark((name + suffix).c_str(), run, set, arguments...)
                ->Unit(benchmark::kMicrosecond);
        };
        add("ConvertRGB32ToYV12", rgb32ToYv12);
        add("MirrorRGB24 upside down", mirror, FlipMode::upsideDown);
        add("MirrorRGB24 left to right", mirror, FlipMode::leftToRight);
        add("MirrorRGB24 half turn", mirror, FlipMode::halfTurn);
        add("YV12 to BGRA", yv12ToBgra);
        add("YUY2 to BGRA", yuy2ToBgra);
    }
    return true;
}();

} // namespace
} // namespace tarvo::render
