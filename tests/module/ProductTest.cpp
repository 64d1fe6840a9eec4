// The product itself: loaded as a host loads it, it makes a transform that streams.

#include "com/MediaType.h"
#include "com/Object.h"
#include "tests/module/LoadedModule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tarvo::module {
namespace {

using com::ComPtr;
using tests::CLoadedModule;

constexpr LONG width = 64;
constexpr LONG height = 48;
constexpr DWORD frameBytes = DWORD{4} * width * height;

class CBuffer final : public com::CObject<IMediaBuffer> {
public:
    explicit CBuffer(std::uint8_t fill) : bytes(frameBytes, fill) {}
    STDMETHODIMP SetLength(DWORD newLength) override {
        length = newLength;
        return S_OK;
    }
    STDMETHODIMP GetMaxLength(DWORD* capacity) override {
        *capacity = frameBytes;
        return S_OK;
    }
    STDMETHODIMP GetBufferAndLength(BYTE** data, DWORD* used) override {
        if (data != nullptr)
            *data = bytes.data();
        *used = length;
        return S_OK;
    }

    std::vector<std::uint8_t> bytes;
    DWORD length = frameBytes;
};

com::CMediaType rgbType() {
    com::CMediaType type;
    VIDEOINFOHEADER header{};
    header.AvgTimePerFrame = 400'000;
    header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    header.bmiHeader.biWidth = width;
    header.bmiHeader.biHeight = -height;
    header.bmiHeader.biSizeImage = frameBytes;
    com::throwIfFailed(type.setFormat(FORMAT_VideoInfo, header));
    type.fields().majortype = MEDIATYPE_Video;
    type.fields().subtype = MEDIASUBTYPE_RGB32;
    return type;
}

/// One frame in and out, from loading the module to unloading it.
void streamAFrame() {
    const CLoadedModule module(TARVO_PRODUCT_MODULE);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    {
        ComPtr<IDewarpingTransform> transform;
        ASSERT_EQ(module.factoryOf(CLSID_DewarpingTransform)
                      ->CreateInstance(nullptr, __uuidof(IDewarpingTransform), transform.putVoid()),
                  S_OK);
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
        VARIANT_BOOL isCapable = VARIANT_FALSE;
        ASSERT_EQ(transform->CheckDewarpingCapability(&isCapable), S_OK);
        if (isCapable == VARIANT_FALSE)
            GTEST_SKIP() << "this machine cannot render";
        ASSERT_EQ(transform->put_OutputWidth(width), S_OK);
        ASSERT_EQ(transform->put_OutputHeight(height), S_OK);
        const auto media = transform.as<IMediaObject>();
        ASSERT_TRUE(media);
        const com::CMediaType type = rgbType();
        ASSERT_EQ(media->SetInputType(0, &type.get(), 0), S_OK);
        ASSERT_EQ(media->SetOutputType(0, &type.get(), 0), S_OK);

        const auto input = com::makeObject<CBuffer>(std::uint8_t{200});
        const auto output = com::makeObject<CBuffer>(std::uint8_t{7});
        ASSERT_EQ(media->ProcessInput(0, input.get(), 0, 0, 0), S_OK);
        DMO_OUTPUT_DATA_BUFFER data{};
        data.pBuffer = output.get();
        DWORD status = 0;
        ASSERT_EQ(media->ProcessOutput(0, 1, &data, &status), S_OK);
        EXPECT_EQ(output->length, frameBytes);
        // Straight ahead lies the middle of the grey input.
        EXPECT_EQ(output->bytes[4 * (height / 2 * width + width / 2)], 200);
        EXPECT_EQ(std::count(output->bytes.begin(), output->bytes.end(), std::uint8_t{7}), 0)
            << "every byte is written";
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(Product, streamsAFrame) {
    streamAFrame();
}

TEST(Product, leavesNothingRunningBehind) {
    // A thread of the module's would fall over the code that is no longer there.
    for (int round = 0; round < 5; ++round)
        streamAFrame();
}

} // namespace
} // namespace tarvo::module
