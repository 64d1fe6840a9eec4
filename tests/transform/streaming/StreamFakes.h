#pragma once

#include "com/Guarded.h"
#include "com/MediaType.h"
#include "diagnostics/ObjectLog.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "transform/streaming/StreamOwner.h"
#include "transform/streaming/StreamTypes.h"
#include "transform/streaming/TypeNegotiation.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::transform {

/// A log whose lines can be read, without the line feeds.
class CReadableLog {
public:
    CReadableLog() { m_log.SetModule("T", 2); }

    diagnostics::ObjectLog objectLog() { return {m_log, 7}; }
    /// The lines since the last call.
    std::vector<std::string> takeLines() {
        std::vector<std::string> lines = std::exchange(m_services.debuggerLines, {});
        for (std::string& line : lines) {
            if (!line.empty() && line.back() == '\n')
                line.pop_back();
        }
        return lines;
    }

private:
    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log{m_services};
};

/// Keeps the order of the calls.
class CFakeOwner final : public IStreamOwner {
public:
    ViewFacts facts;
    bool deviceExists = false;
    HRESULT creation = S_OK;
    std::vector<std::string> calls;
    /// Done inside flushStream(), as what is let go there may call back.
    std::function<void()> whileFlushing;

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    ViewFacts viewFacts() override { return facts; }
    bool hasDevice() override { return deviceExists; }
    HRESULT createDevice() override {
        calls.emplace_back("create");
        deviceExists = SUCCEEDED(creation);
        return creation;
    }
    void releaseRenderResources() override {
        calls.emplace_back("release");
        deviceExists = false;
    }
    void inputChecked() override { calls.emplace_back("input"); }
    void outputChecked() override { calls.emplace_back("output"); }
    void flushStream() override {
        calls.emplace_back("flush");
        if (whileFlushing)
            whileFlushing();
    }
    void freeCachedFrame() override { calls.emplace_back("cache"); }
    void releaseCurrentImage() override { calls.emplace_back("image"); }
};

/// A video type to be offered; what is not named is zero.
struct VideoType {
    const GUID* subtype = &MEDIASUBTYPE_YV12;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t imageBytes = 0;
    std::int64_t ticksPerFrame = 0;
    RECT target{};
    bool isSecondKind = true;

    com::CMediaType make() const {
        com::CMediaType type;
        if (isSecondKind)
            set<VIDEOINFOHEADER2>(type, FORMAT_VideoInfo2);
        else
            set<VIDEOINFOHEADER>(type, FORMAT_VideoInfo);
        type.fields().majortype = MEDIATYPE_Video;
        type.fields().subtype = *subtype;
        return type;
    }

private:
    template<class Header>
    void set(com::CMediaType& type, REFGUID formatType) const {
        Header header{};
        header.rcTarget = target;
        header.AvgTimePerFrame = ticksPerFrame;
        header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        header.bmiHeader.biWidth = width;
        header.bmiHeader.biHeight = height;
        header.bmiHeader.biSizeImage = imageBytes;
        com::throwIfFailed(type.setFormat(formatType, header));
    }
};

inline VideoType yv12Input(std::int32_t width, std::int32_t height, std::int64_t ticksPerFrame = 333'333) {
    VideoType type;
    type.width = width;
    type.height = height;
    type.imageBytes = static_cast<std::uint32_t>(width * (height < 0 ? -height : height) * 3 / 2);
    type.ticksPerFrame = ticksPerFrame;
    return type;
}

/// Everything that negotiates, over fakes.
struct Negotiator {
    CReadableLog log;
    CFakeOwner owner;
    StreamSettings settings;
    CTypeNegotiation negotiation{owner, settings, log.objectLog()};
    CStreamTypes types{owner, negotiation};

    HRESULT checkInput(const VideoType& type) { return negotiation.checkInputType(&type.make().get()); }
    HRESULT checkOutput(const VideoType& type) { return negotiation.checkOutputType(&type.make().get()); }
};

// The platform's numbers, by themselves.
inline constexpr auto typeIsNotAccepted = static_cast<HRESULT>(0x80040205U);
inline constexpr auto typeIsNotSet = static_cast<HRESULT>(0x80040203U);
inline constexpr auto streamIsInvalid = static_cast<HRESULT>(0x80040201U);
inline constexpr auto notAcceptingNow = static_cast<HRESULT>(0x80040204U);
inline constexpr auto noItemsLeft = static_cast<HRESULT>(0x80040206U);

} // namespace tarvo::transform
