#include "bench/comparison/Curves.h"

#include "bench/comparison/OwnTransform.h"
#include "bench/comparison/Pictures.h"
#include "bench/comparison/Processors.h"
#include "bench/comparison/ResidentMemory.h"
#include "bench/comparison/StreamCurve.h"
#include "bench/measure/Formatted.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>

namespace tarvo::bench {
namespace {

struct Size {
    int width;
    int height;
};

constexpr Size outputSizes[] = {{320, 240}, {640, 480}, {1024, 768}, {1920, 1080}, {3840, 2160}};
constexpr Size inputSizes[] = {{640, 480}, {1280, 960}, {2592, 1944}, {4000, 3000}};
constexpr int streamCounts[] = {1, 2, 4, 8, 16, 32, 64};

Work single(Size input, Size output, bool isMoving = false) {
    Work work{.name = "single", .text = "", .peer = Peer::v360, .peerText = ""};
    work.inputWidth = input.width;
    work.inputHeight = input.height;
    work.outputWidth = output.width;
    work.outputHeight = output.height;
    work.isMoving = isMoving;
    return work;
}

constexpr Size usualInput{inputWidth, inputHeight};
constexpr Size usualOutput{1024, 768};

double mebibytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

std::uint64_t yv12Bytes(Size size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height) / 2 * 3;
}

} // namespace

CCurves::CCurves(const std::filesystem::path& module, double secondsPerFigure)
    : m_module(module), m_secondsPerFigure(secondsPerFigure), m_processors(usableProcessors()),
      m_inputs(single(usualInput, usualOutput)) {}

CTimes CCurves::frameTimes(const Work& work, const CInputs& inputs, int threads) const {
    pinToProcessors(m_processors, threads);
    COwnTransform own(m_module, work, inputs);
    CTimes times;
    const Clock::time_point begin = Clock::now();
    for (int number = 0; number < 10 || millisecondsSince(begin) < m_secondsPerFigure * 1000.0; ++number) {
        const Clock::time_point start = Clock::now();
        own.frame(number);
        if (number >= 4) {
            times.add(millisecondsSince(start));
        }
    }
    pinToProcessors(m_processors, static_cast<int>(m_processors.size()));
    return times;
}

void CCurves::printOutputSizes(std::ostream& out) {
    out << "\nOutput pixels, from 2592x1944; milliseconds of a frame, best (median), and nanoseconds a pixel "
           "of the "
           "best:\n\n"
        << "| output | at rest, 1 thread | ns | at rest, 2 | ns | moving, 1 thread | ns | moving, 2 | ns |\n"
        << "|---|---|---|---|---|---|---|---|---|\n";
    for (const Size size : outputSizes) {
        out << formatted("| %dx%d |", size.width, size.height);
        for (const bool isMoving : {false, true}) {
            for (const int threads : {1, 2}) {
                const CTimes times = frameTimes(single(usualInput, size, isMoving), m_inputs, threads);
                out << formatted(" %.2f (%.2f) | %.2f |", times.best(), times.median(),
                                 times.best() * 1e6 / size.width / size.height);
            }
        }
        out << std::endl;
    }
}

void CCurves::printInputSizes(std::ostream& out) {
    out << "\nInput pixels, to 1024x768; milliseconds of a frame, best (median):\n\n"
        << "| input | at rest, 1 thread | at rest, 2 | moving, 1 thread | moving, 2 "
           "|\n|---|---|---|---|---|\n";
    for (const Size size : inputSizes) {
        const CInputs inputs(single(size, usualOutput));
        out << formatted("| %dx%d |", size.width, size.height);
        for (const bool isMoving : {false, true}) {
            for (const int threads : {1, 2}) {
                const CTimes times = frameTimes(single(size, usualOutput, isMoving), inputs, threads);
                out << formatted(" %.2f (%.2f) |", times.best(), times.median());
            }
        }
        out << std::endl;
    }
}

void CCurves::printStreams(std::ostream& out) {
    out << formatted("\nTransforms in one process, each with a thread of its host, 2592x1944 to 1024x768, at "
                     "rest, on "
                     "%zu processors:\n\n",
                     m_processors.size())
        << "| transforms | frames a second | per processor | per transform | memory per transform, MiB |\n"
        << "|---|---|---|---|---|\n";
    for (const int streams : streamCounts) {
        const StreamFigures figures = measureStreams(m_module, single(usualInput, usualOutput), m_inputs,
                                                     streams, std::max(1.0, m_secondsPerFigure));
        out << formatted("| %d | %.0f | %.0f | %.1f | %.1f |", streams, figures.framesPerSecond,
                         figures.framesPerSecond / static_cast<double>(m_processors.size()),
                         figures.framesPerSecond / streams, mebibytes(figures.bytesPerStream))
            << std::endl;
    }
}

CTimes CCurves::firstFrameTimes(const Work& work) const {
    CTimes times;
    const Clock::time_point begin = Clock::now();
    while (times.count() < 5 || millisecondsSince(begin) < m_secondsPerFigure * 1000.0) {
        const Clock::time_point start = Clock::now();
        COwnTransform own(m_module, work, m_inputs);
        own.frame(0);
        times.add(millisecondsSince(start));
    }
    return times;
}

CTimes CCurves::changeTimes(const Work& work) const {
    COwnTransform own(m_module, work, m_inputs);
    CTimes times;
    render::Picture before = (own.frame(0), own.picture());
    const Clock::time_point begin = Clock::now();
    for (int change = 1; times.count() < 5 || millisecondsSince(begin) < m_secondsPerFigure * 1000.0;
         ++change) {
        // The same input each time, so that nothing but the property makes the difference; at rest in
        // between.
        for (int i = 0; i < 4; ++i) {
            own.frame(0);
        }
        const Clock::time_point start = Clock::now();
        own.pan(work.panDegrees + (change % 2 == 0 ? 0.0 : 15.0));
        own.frame(0);
        times.add(millisecondsSince(start));
        render::Picture after = own.picture();
        if (meanDifference(before, after) < 1.0) {
            throw std::runtime_error("a change of a property did not show in the next frame");
        }
        before = std::move(after);
    }
    return times;
}

void CCurves::printLatencies(std::ostream& out) {
    const Work work = single(usualInput, usualOutput);
    const auto row = [&out](const char* what, const CTimes& times) {
        out << formatted("| %s | %.2f | %.2f |", what, times.best(), times.median()) << std::endl;
    };
    out << "\nLatencies, 2592x1944 to 1024x768, milliseconds:\n\n| from, to | best | median "
           "|\n|---|---|---|\n";
    row("creating a transform, its first frame; nothing else runs", firstFrameTimes(work));
    {
        COwnTransform other(m_module, work, m_inputs);
        other.frame(0);
        row("creating a transform, its first frame; another one is there", firstFrameTimes(work));
    }
    row("setting Pan, the frame that shows it, which is the next one", changeTimes(work));
    row("for comparison: the next frame at rest",
        frameTimes(work, m_inputs, static_cast<int>(m_processors.size())));
}

void CCurves::printMemory(std::ostream& out) {
    out << "\nMemory of one transform at its peak, without its host's frames:\n\n"
        << "| input | output | input frame, MiB | output frame, MiB | peak, MiB | times both frames | after "
           "50 "
           "frames, MiB |\n|---|---|---|---|---|---|---|\n";
    for (const Size inputSize : inputSizes) {
        const CInputs inputs(single(inputSize, usualOutput));
        for (const Size outputSize : {Size{640, 480}, usualOutput, Size{1920, 1080}}) {
            const Work work = single(inputSize, outputSize, true);
            const CResidentMemory memory;
            COwnTransform own(m_module, work, inputs);
            for (int number = 0; number < 50; ++number) {
                own.frame(number);
            }
            const std::uint64_t hostBytes = own.outputBytes();
            const std::uint64_t peak = memory.peak();
            const std::uint64_t now = memory.grown();
            const std::uint64_t frames = yv12Bytes(inputSize) + yv12Bytes(outputSize);
            const std::uint64_t ownPeak = peak > hostBytes ? peak - hostBytes : 0;
            out << formatted("| %dx%d | %dx%d | %.1f | %.1f | %.1f | %.1f | %.1f |", inputSize.width,
                             inputSize.height, outputSize.width, outputSize.height,
                             mebibytes(yv12Bytes(inputSize)), mebibytes(yv12Bytes(outputSize)),
                             mebibytes(ownPeak), static_cast<double>(ownPeak) / static_cast<double>(frames),
                             mebibytes(now > hostBytes ? now - hostBytes : 0))
                << std::endl;
        }
    }
}

void CCurves::print(std::ostream& out) {
    printLatencies(out);
    printMemory(out);
    printOutputSizes(out);
    printInputSizes(out);
    printStreams(out);
}

} // namespace tarvo::bench
