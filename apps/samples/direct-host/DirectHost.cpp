// A whole host of the TARVO Video Transform, over its public header alone: direct-host MODULE OUTPUT.ppm
// It loads the module by its path (nothing needs to be registered) and streams a fisheye picture three times
// while an event handler turns the virtual camera; the last view goes to the file. The exit status is 0 only
// if everything holds that it checks on the way, which is what hosts may rely on.

#include "interfaces/TarvoVideoTransform.h"
#include "platform/InterfaceTypes.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>
#ifndef _WIN32
#include <dlfcn.h>
#endif

constexpr LONG side = 320;               // input and output have as many rows and columns, pixels
constexpr LONGLONG frameTicks = 400'000; // 25 frames a second, in units of 100 ns

static void require(bool holds, const std::string& complaint) {
    if (!holds)
        throw std::runtime_error(complaint);
}
static void requireStep(HRESULT result, const char* step) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
    require(result == S_OK, std::string(step) + " gave " + code);
}

/// A reference, which is released with it.
using Release = decltype([](IUnknown* object) { object->Release(); });
template<class T>
using Ref = std::unique_ptr<T, Release>;

/// Another interface of an object.
template<class T>
Ref<T> ask(IUnknown& object) {
    void* answer = nullptr;
    requireStep(object.QueryInterface(__uuidof(T), &answer), "asking for an interface");
    return Ref<T>(static_cast<T*>(answer));
}

/// What this host lends to the transform outlives the loan, so nobody needs to count.
template<class Interface, class Base = IUnknown>
struct Lent : Interface {
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool isKnown = iid == __uuidof(Interface) || iid == __uuidof(Base) || iid == __uuidof(IUnknown);
        *object = isKnown ? static_cast<Interface*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
};

/// A frame's memory. The transform reads its input from such a buffer and writes its output into one.
struct FrameBuffer final : Lent<IMediaBuffer> {
    STDMETHODIMP SetLength(DWORD used) override { return used == bytes.size() ? S_OK : E_INVALIDARG; }
    STDMETHODIMP GetMaxLength(DWORD* room) override { return *room = 4 * side * side, S_OK; }
    STDMETHODIMP GetBufferAndLength(BYTE** data, DWORD* used) override {
        if (data != nullptr)
            *data = bytes.data();
        if (used != nullptr)
            *used = 4 * side * side; // always full
        return S_OK;
    }
    std::vector<BYTE> bytes = std::vector<BYTE>(4 * side * side);
};

/// An event handler, connected while it lives. It is called on the streaming thread, inside ProcessOutput.
template<class Event>
struct Handler final : Lent<Event, IDispatch> {
    Handler(IUnknown& source, std::function<HRESULT(const VARIANT*)> what) : work(std::move(what)) {
        IConnectionPoint* at = nullptr;
        requireStep(ask<IConnectionPointContainer>(source)->FindConnectionPoint(__uuidof(Event), &at),
                    "event");
        point.reset(at);
        requireStep(point->Advise(this, &cookie), "connecting to an event");
    }
    ~Handler() { point->Unadvise(cookie); }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* all, VARIANT*, EXCEPINFO*, UINT*) override {
        return work(all->rgvarg); // the last argument comes first
    }
    std::function<HRESULT(const VARIANT*)> work;
    Ref<IConnectionPoint> point;
    DWORD cookie = 0;
};

/// What a camera on the ceiling might see: a chequered floor, lighter downwards or to the right by turns.
static void drawScene(std::vector<BYTE>& pixels) {
    for (LONG i = 0; i < 4 * side * side; ++i) // 4 bytes a pixel, 20 pixels a square
        pixels[i] = static_cast<BYTE>((i / 80 + i / (80 * side)) % 2 == 0 ? i / (5 * side) : i / 5 % 256);
}

/// Whether the pixels are the frame's: `pixelBytes` apart, rows `pitch` bytes (upwards if negative).
static bool isFrame(const std::vector<BYTE>& frame, const BYTE* row, LONG pixelBytes, LONG pitch) {
    bool isSame = true;
    for (LONG i = 0; i < side * side; ++i) // the fourth byte of a pixel means nothing
        isSame = isSame && std::memcmp(row + i / side * pitch + i % side * pixelBytes, &frame[4 * i], 3) == 0;
    return isSame;
}

static void stream(IDewarpingTransform& transform, const char* path) {
    requireStep(transform.put_TiltOrientation(TarvoVideoTransformLib::ceiling), "TiltOrientation");
    requireStep(transform.put_OutputWidth(side), "OutputWidth"); // before the types, as OutputHeight
    requireStep(transform.put_OutputHeight(side), "OutputHeight");
    const Ref<IMediaObject> media = ask<IMediaObject>(transform);
    // Both types are alike: the top row first, as the height below 0 says. The transform copies them.
    VIDEOINFOHEADER header{};
    header.AvgTimePerFrame = frameTicks;
    header.bmiHeader = {sizeof(BITMAPINFOHEADER), side, -side, 1, 32, BI_RGB, 4 * side * side, 0, 0, 0, 0};
    const DMO_MEDIA_TYPE type{MEDIATYPE_Video, MEDIASUBTYPE_RGB32, TRUE,
                              FALSE,           4 * side * side,    FORMAT_VideoInfo,
                              nullptr,         sizeof header,      reinterpret_cast<BYTE*>(&header)};
    requireStep(media->SetInputType(0, &type, 0), "setting the input type"); // settles the output's size
    requireStep(media->SetOutputType(0, &type, 0), "setting the output type");
    // What is changed while a picture is prepared applies to that picture: 20 degrees from frame to frame.
    const Handler<IDewarpingTransformEvents> prepare(transform, [&](const VARIANT* arguments) {
        return transform.put_Pan(20.0 * static_cast<double>(arguments[1].llVal / frameTicks));
    });
    Ref<IDispatch> shown; // the latest picture
    int announced = 0;
    const Handler<IImageSourceEvents> show(transform, [&](const VARIANT* arguments) {
        ++announced;
        shown.reset(arguments[0].pdispVal);
        shown->AddRef();
        return S_OK;
    });
    static FrameBuffer input, output, first; // lent until the transform is gone, after an error too
    drawScene(input.bytes);
    for (int frame = 0; frame < 3; ++frame) {
        const DWORD timed = DMO_INPUT_DATA_BUFFERF_TIME | DMO_INPUT_DATA_BUFFERF_TIMELENGTH;
        requireStep(media->ProcessInput(0, &input, timed, frame * frameTicks, frameTicks), "ProcessInput");
        DMO_OUTPUT_DATA_BUFFER data{&output, 0, 0, 0};
        DWORD status = 0;
        requireStep(media->ProcessOutput(0, 1, &data, &status), "ProcessOutput");
        require(data.rtTimestamp == frame * frameTicks, "a frame has another time than its input");
        VARIANT snapshot{}; // a bitmap of 24 bits a pixel, its bottom row first, behind its header
        requireStep(transform.GetCurrentImage(&snapshot, nullptr, 0), "taking a snapshot");
        const auto* const bitmap = static_cast<BYTE*>(snapshot.parray->pvData) + sizeof(BITMAPINFOHEADER);
        const bool isSame = isFrame(output.bytes, bitmap + (side - 1) * 3 * side, 3, -3 * side);
        require(VariantClear(&snapshot) == S_OK && isSame, "a snapshot differs from the frame");
        first.bytes = frame == 0 ? output.bytes : first.bytes;
        require(frame == 0 || output.bytes != first.bytes, "the camera was not turned");
        // The image stays locked during frame 1, which hence is not announced while the stream goes on.
        require(announced == (frame < 2 ? 1 : 2), "a locked image was replaced, or a free one was not");
        const auto image = ask<IImageBuffer>(*shown);
        VARIANT_BOOL isLocked = VARIANT_FALSE;
        requireStep(frame == 1 ? image->UnlockBuffer() : image->LockBuffer(0, &isLocked), "the image's lock");
        require(frame == 1 || isLocked != VARIANT_FALSE, "the image cannot be locked");
        INT_PTR pixels = 0;
        LONG size = 0;
        requireStep(image->get_DataPointer(&pixels), "DataPointer");
        requireStep(image->get_Size(&size), "Size");
        require(isFrame((frame == 1 ? first : output).bytes, reinterpret_cast<BYTE*>(pixels), 4, size / side),
                "the image differs from its frame");
    }
    requireStep(ask<IImageBuffer>(*shown)->UnlockBuffer(), "unlocking the image");
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << side << ' ' << side << "\n255\n";
    for (LONG i = 0; i < 3 * side * side; ++i)
        file.put(static_cast<char>(output.bytes[4 * (i / 3) + 2 - i % 3]));
    require(static_cast<bool>(file.flush()), "the picture cannot be written");
    std::printf("direct-host: 3 frames, %d of them announced\n", announced);
}

/// One of the four functions that the module exports; the module stays loaded.
template<class Signature>
Signature* exported(const char* module, const char* name) {
#ifdef _WIN32
    void* const found = reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(module), name));
#else
    void* const library = dlopen(module, RTLD_NOW);
    void* const found = library != nullptr ? dlsym(library, name) : nullptr;
#endif
    require(found != nullptr, std::string(module) + " is no module");
    return reinterpret_cast<Signature*>(found);
}

int main(int count, char** arguments) try {
    require(count == 3, "usage: direct-host MODULE OUTPUT.ppm");
    void* made = nullptr;
    const auto get = exported<HRESULT WINAPI(REFCLSID, REFIID, void**)>(arguments[1], "DllGetClassObject");
    requireStep(get(CLSID_DewarpingTransform, __uuidof(IClassFactory), &made), "the class");
    Ref<IClassFactory> factory(static_cast<IClassFactory*>(made));
    requireStep(factory->CreateInstance(nullptr, __uuidof(IDewarpingTransform), &made), "creating it");
    factory.reset();
    stream(*Ref<IDewarpingTransform>(static_cast<IDewarpingTransform*>(made)), arguments[2]);
    requireStep(exported<HRESULT WINAPI()>(arguments[1], "DllCanUnloadNow")(), "letting everything go");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "direct-host: %s\n", error.what());
    return 1;
}
