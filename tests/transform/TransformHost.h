#pragma once

#include "com/ComPtr.h"
#include "com/ModuleCount.h"
#include "diagnostics/Log.h"
#include "render/reference/ReferenceDevice.h"
#include "tests/com/TestObjects.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/RecordingDevice.h"
#include "tests/transform/MediaBuffers.h"
#include "tests/transform/streaming/StreamFakes.h"
#include "transform/DewarpingTransform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::transform {

using com::ComPtr;

inline constexpr DWORD timed = DMO_INPUT_DATA_BUFFERF_TIME | DMO_INPUT_DATA_BUFFERF_TIMELENGTH;
/// A bit of a buffer's status that means nothing.
inline constexpr DWORD wasOpen = 0x40;
inline constexpr DWORD incomplete = DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE;

/// A video type of 32-bit RGB without gaps; the bottom row first for a positive height.
inline VideoType rgbType(std::int32_t width, std::int32_t height, std::int64_t ticksPerFrame = 400'000) {
    VideoType type;
    type.subtype = &MEDIASUBTYPE_RGB32;
    type.width = width;
    type.height = height;
    // By words, in which the least of all heights has a magnitude too.
    const auto rows = static_cast<std::uint32_t>(height);
    type.imageBytes = static_cast<std::uint32_t>(width) * 4U * (height < 0 ? 0U - rows : rows);
    type.ticksPerFrame = ticksPerFrame;
    return type;
}

/// Blue, green, red and 255 of each pixel tell where it is and which picture it belongs to.
inline std::vector<std::uint8_t> patternRgb(std::int32_t width, std::int32_t height, int picture = 0) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            bytes.push_back(static_cast<std::uint8_t>(x * 255 / (width - 1)));
            bytes.push_back(static_cast<std::uint8_t>(y * 255 / (height - 1)));
            bytes.push_back(static_cast<std::uint8_t>(40 * picture + (x * 7 + y * 13) % 37));
            bytes.push_back(255);
        }
    }
    return bytes;
}

/// What one call of ProcessOutput gave.
struct Delivered {
    HRESULT result = E_UNEXPECTED;
    DWORD status = 0;
    REFERENCE_TIME time = -1;
    REFERENCE_TIME duration = -1;
    std::vector<std::uint8_t> bytes;

    bool isIncomplete() const { return (status & incomplete) != 0; }
};

/// A transform as its host holds it, with a log that can be read and a device that can be chosen.
class CTransformHost {
public:
    enum class Device {
        reference,
        recording,
        own ///< the one that the object takes unasked
    };

    explicit CTransformHost(Device device = Device::reference)
        : CTransformHost([this, device](diagnostics::ObjectLog log) { return make(device, log); }) {}
    explicit CTransformHost(const DeviceMaker& makeDevice) {
        m_log.SetModule("TvVideoTransform", 2);
        m_services.setDword("DBGView", 2);
        object.attach(new CDewarpingTransform(com::Outer{}, TransformServices{m_log, makeDevice}));
        media = object.as<IMediaObject>();
        transform = object.as<IDewarpingTransform>();
    }
    CTransformHost(const CTransformHost&) = delete;
    CTransformHost& operator=(const CTransformHost&) = delete;
    ~CTransformHost() {
        transform.reset();
        media.reset();
        EXPECT_EQ(com::references(object->controllingUnknown()), 1U) << "somebody still holds it";
    }

    HRESULT setInput(const VideoType& type, DWORD flags = 0) {
        return media->SetInputType(0, &type.make().get(), flags);
    }
    HRESULT setOutput(const VideoType& type, DWORD flags = 0) {
        return media->SetOutputType(0, &type.make().get(), flags);
    }
    /// RGB in and out, top row first, from `width`×`height` to the size that is put first.
    void negotiateRgb(std::int32_t width, std::int32_t height, std::int32_t outputWidth,
                      std::int32_t outputHeight, std::int64_t ticksPerFrame = 400'000) {
        ASSERT_EQ(transform->put_OutputWidth(outputWidth), S_OK);
        ASSERT_EQ(transform->put_OutputHeight(outputHeight), S_OK);
        ASSERT_EQ(setInput(rgbType(width, -height, ticksPerFrame)), S_OK);
        ASSERT_EQ(setOutput(rgbType(outputWidth, -outputHeight, ticksPerFrame)), S_OK);
    }

    HRESULT input(CFakeBuffer& buffer, REFERENCE_TIME time = 0, REFERENCE_TIME duration = 400'000,
                  DWORD flags = timed) {
        return media->ProcessInput(0, &buffer, flags, time, duration);
    }
    HRESULT output(CFakeBuffer& buffer, Delivered& delivered) {
        DMO_OUTPUT_DATA_BUFFER data{};
        data.pBuffer = &buffer;
        // What stands there from the last frame is nobody's to keep.
        data.dwStatus = wasOpen;
        DWORD status = 77;
        delivered.result = media->ProcessOutput(0, 1, &data, &status);
        EXPECT_EQ(status, 0U);
        delivered.status = data.dwStatus;
        EXPECT_TRUE(delivered.result == typeIsNotSet || (data.dwStatus & wasOpen) == 0);
        delivered.time = data.rtTimestamp;
        delivered.duration = data.rtTimelength;
        delivered.bytes = buffer.bytes;
        EXPECT_EQ(buffer.references(), 0) << "an output buffer is not kept";
        return delivered.result;
    }
    /// The next output frame, into a buffer of exactly the size that is asked for.
    Delivered frame() {
        DWORD size = 0;
        DWORD alignment = 0;
        EXPECT_EQ(media->GetOutputSizeInfo(0, &size, &alignment), S_OK);
        CFakeBuffer buffer(size);
        Delivered delivered;
        if (output(buffer, delivered) == S_OK) {
            EXPECT_EQ(buffer.length, size);
        }
        return delivered;
    }
    /// One picture in and its first frame out.
    Delivered through(const std::vector<std::uint8_t>& picture, REFERENCE_TIME time = 0,
                      REFERENCE_TIME duration = 400'000) {
        CFakeBuffer buffer(picture);
        EXPECT_EQ(input(buffer, time, duration), S_OK);
        Delivered delivered = frame();
        EXPECT_EQ(buffer.references(), 0) << "an input is let go with its first frame";
        return delivered;
    }

    /// The lines since the last call, without the tag.
    std::vector<std::string> takeLines() {
        std::vector<std::string> lines = std::exchange(m_services.debuggerLines, {});
        const std::string tag = "TvVideoTransform:";
        for (std::string& line : lines) {
            if (!line.empty() && line.back() == '\n')
                line.pop_back();
            if (line.starts_with(tag))
                line.erase(0, tag.size());
        }
        return lines;
    }
    /// The line of the last call, if it was one.
    std::string takeLine() {
        const std::vector<std::string> lines = takeLines();
        return lines.size() == 1 ? lines.front() : std::to_string(lines.size()) + " lines";
    }

private:
    std::unique_ptr<render::IRenderDevice> make(Device device, diagnostics::ObjectLog log) {
        if (device == Device::reference)
            return std::make_unique<render::reference::CReferenceDevice>(log);
        if (device == Device::own)
            return makeRenderDevice(log);
        auto made = std::make_unique<tests::CRecordingDevice>();
        recording = made.get();
        return made;
    }

    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log{m_services};

public:
    ComPtr<CDewarpingTransform> object;
    ComPtr<IMediaObject> media;
    ComPtr<IDewarpingTransform> transform;
    tests::CRecordingDevice* recording = nullptr; ///< the object's, if it is of that kind
};

/// Checks that nothing is left of whatever a test made.
class CTransformTest : public testing::Test {
protected:
    // Not in TearDown, which comes before the end of what a fixture has as members.
    ~CTransformTest() override { EXPECT_EQ(com::moduleCount().count(), 0) << "objects are left"; }
};

} // namespace tarvo::transform
