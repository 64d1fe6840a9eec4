// A host with a DirectShow graph: a source, the transform in the system's wrapper, a sink.
//
//   graph-host [--accelerated] PICTURE.ppm
//
// Plays two seconds of the sample room through the graph, turning the view meanwhile, and writes the last
// picture. The module must be registered. With --accelerated the accelerator is put before the transform.

#include "apps/samples/graph-host/PictureSink.h"
#include "apps/samples/graph-host/SceneSource.h"
#include "interfaces/TarvoVideoTransform.h"

#include <control.h>
#include <cstdio>
#include <cstdlib>
#include <dmodshow.h>
#include <evcode.h>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using tarvo::com::ComPtr;
using tarvo::samples::CPictureSink;
using tarvo::samples::CSceneSource;

constexpr int frameCount = 50;
constexpr REFERENCE_TIME frameDuration = 400'000; // 25 frames a second
constexpr LONG longestPlayMilliseconds = 60'000;

void requireStep(HRESULT result, const char* step) {
    if (FAILED(result)) {
        char code[16];
        std::snprintf(code, sizeof code, " (0x%08lX)", static_cast<unsigned long>(result));
        throw std::runtime_error(std::string(step) + " failed" + code);
    }
}

template<class T, class Source>
ComPtr<T> ask(const ComPtr<Source>& object, const char* step) {
    HRESULT result = S_OK;
    ComPtr<T> answer = object.template as<T>(result);
    requireStep(result, step);
    return answer;
}

/// The pin of a direction; the wrapper has one of each.
ComPtr<IPin> pinOf(IBaseFilter& filter, PIN_DIRECTION wanted) {
    ComPtr<IEnumPins> pins;
    requireStep(filter.EnumPins(pins.put()), "listing the pins");
    ComPtr<IPin> pin;
    ULONG fetched = 0;
    while (pins->Next(1, pin.put(), &fetched) == S_OK) {
        PIN_DIRECTION direction{};
        if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted)
            return pin;
    }
    throw std::runtime_error("the wrapper lacks a pin");
}

/// The registered transform as a filter.
ComPtr<IBaseFilter> makeWrapper() {
    ComPtr<IBaseFilter> filter;
    requireStep(CoCreateInstance(CLSID_DMOWrapperFilter, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IBaseFilter),
                                 filter.putVoid()),
                "creating the wrapper");
    requireStep(ask<IDMOWrapperFilter>(filter, "the wrapper's own interface")
                    ->Init(CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_EFFECT),
                "wrapping the transform");
    return filter;
}

/// Turns the view while the graph plays, by what has come out of it.
void playToTheEnd(IMediaControl& control, IMediaEvent& events, IDewarpingTransform& transform,
                  CPictureSink& sink) {
    requireStep(control.Run(), "running the graph");
    LONG event = 0;
    for (LONG waited = 0; waited < longestPlayMilliseconds; waited += 20) {
        transform.put_Pan(sink.pictures().count * 90.0 / frameCount);
        if (events.WaitForCompletion(20, &event) == S_OK) {
            requireStep(control.Stop(), "stopping the graph");
            if (event != EC_COMPLETE)
                throw std::runtime_error("the graph ended by event " + std::to_string(event));
            return;
        }
    }
    control.Stop();
    throw std::runtime_error("the graph does not come to an end");
}

void writePicture(const CPictureSink::Pictures& pictures, const std::string& path) {
    const LONG rows = std::abs(pictures.height);
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << pictures.width << ' ' << rows << "\n255\n";
    for (LONG row = 0; row < rows; ++row) {
        const LONG stored = pictures.height > 0 ? rows - 1 - row : row;
        for (LONG column = 0; column < pictures.width; ++column) {
            const std::uint8_t* pixel = pictures.last.data() + 4 * (stored * pictures.width + column);
            for (const int channel : {2, 1, 0})
                file.put(static_cast<char>(pixel[channel]));
        }
    }
    if (!file.flush())
        throw std::runtime_error(path + " cannot be written");
}

void play(bool isAccelerated, const std::string& path) {
    ComPtr<IGraphBuilder> graph;
    requireStep(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IGraphBuilder),
                                 graph.putVoid()),
                "creating the graph");
    const auto source = tarvo::com::makeObject<CSceneSource>(frameCount, frameDuration);
    const auto sink = tarvo::com::makeObject<CPictureSink>();
    const ComPtr<IBaseFilter> wrapper = makeWrapper();
    const auto transform = ask<IDewarpingTransform>(wrapper, "the transform in the wrapper");
    requireStep(transform->put_TiltOrientation(TarvoVideoTransformLib::ceiling), "TiltOrientation");
    requireStep(transform->put_OutputWidth(256), "OutputWidth"); // before the input is connected
    requireStep(transform->put_OutputHeight(192), "OutputHeight");

    requireStep(graph->AddFilter(source.get(), OLESTR("Camera")), "adding the source");
    requireStep(graph->AddFilter(wrapper.get(), OLESTR("Dewarping")), "adding the transform");
    requireStep(graph->AddFilter(sink.get(), OLESTR("Picture")), "adding the sink");
    requireStep(graph->ConnectDirect(&source->output(), pinOf(*wrapper, PINDIR_INPUT).get(), nullptr),
                "connecting the source");
    requireStep(graph->ConnectDirect(pinOf(*wrapper, PINDIR_OUTPUT).get(), &sink->input(), nullptr),
                "connecting the sink");
    ComPtr<IAccelerator> accelerator;
    if (isAccelerated)
        requireStep(transform->InjectAcceleratorFilter(accelerator.put()), "injecting the accelerator");

    // Without a clock everybody goes on as fast as the next one takes it.
    requireStep(ask<IMediaFilter>(graph, "the graph's clock")->SetSyncSource(nullptr),
                "taking the clock away");
    ComPtr<IMediaEvent> events; // whose identifier this compiler does not tie to its type
    requireStep(graph->QueryInterface(IID_IMediaEvent, events.putVoid()), "the graph's events");
    playToTheEnd(*ask<IMediaControl>(graph, "the graph's control"), *events, *transform, *sink);

    const CPictureSink::Pictures pictures = sink->pictures();
    if (pictures.last.size() <
            std::size_t{4} * static_cast<std::size_t>(pictures.width * std::abs(pictures.height)) ||
        pictures.last.empty())
        throw std::runtime_error("no picture came out");
    writePicture(pictures, path);
    std::printf("%d pictures of %ldx%ld, the last at %.2f s\n", pictures.count, long{pictures.width},
                long{std::abs(pictures.height)}, static_cast<double>(pictures.lastStart) / 1e7);
}

} // namespace

int main(int count, char** arguments) {
    const bool isAccelerated = count == 3 && arguments[1] == std::string("--accelerated");
    if (count != 2 && !isAccelerated) {
        std::fprintf(stderr, "usage: graph-host [--accelerated] PICTURE.ppm\n");
        return 2;
    }
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        std::fprintf(stderr, "graph-host: the system's objects cannot be used\n");
        return 1;
    }
    int status = 0;
    try {
        play(isAccelerated, arguments[count - 1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "graph-host: %s\n", error.what());
        status = 1;
    }
    CoUninitialize();
    return status;
}
