#include "render/software/SoftwareDevice.h"
#include "tests/render/software/CountedMemory.h"
#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace tarvo::transform {
namespace {

class CurrentImage : public CTransformTest {
protected:
    CTransformHost host;
};

TEST_F(CurrentImage, refusesWhatItCannotGive) {
    host.takeLines();
    EXPECT_EQ(host.transform->GetCurrentImage(nullptr, nullptr, 1), E_POINTER);
    com::CVariant image;
    EXPECT_EQ(host.transform->GetCurrentImage(image.put(), nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(host.takeLine(), "E:[1] - GetCurrentImage - Unsupported flag argument, must be zero.");
    EXPECT_EQ(host.transform->GetCurrentImage(image.put(), nullptr, 0), E_FAIL);
    EXPECT_EQ(host.takeLine(), "E:[1] - GetCurrentImage - Not initialized");
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(host.media->AllocateStreamingResources(), S_OK);
    host.takeLines();
    EXPECT_EQ(host.transform->GetCurrentImage(image.put(), nullptr, 0), E_FAIL);
    EXPECT_EQ(host.takeLine(), "E:[1] - GetCurrentImage - No image available");
    ASSERT_EQ(host.through(patternRgb(64, 48)).result, S_OK);
    ASSERT_EQ(host.media->Flush(), S_OK);
    host.takeLines();
    EXPECT_EQ(host.transform->GetCurrentImage(image.put(), nullptr, 0), E_FAIL);
    EXPECT_EQ(host.takeLine(), "E:[1] - GetCurrentImage - No image available");
    EXPECT_EQ(image.type(), VT_EMPTY);
}

TEST_F(CurrentImage, isTheDeliveredFrameFromTheBottomWithoutTheFourthBytes) {
    host.negotiateRgb(64, 48, 34, 26); // rows of 102 bytes, padded to 104
    const Delivered frame = host.through(patternRgb(64, 48), 8'000'000);
    LONGLONG time = -1;
    const auto image = currentImage(*host.transform, &time);
    EXPECT_EQ(time, 8'000'000);
    ASSERT_EQ(image.size(), 40U + 26 * 104);
    BITMAPINFOHEADER header{};
    std::memcpy(&header, image.data(), sizeof header);
    EXPECT_EQ(header.biSize, 40U);
    EXPECT_EQ(header.biWidth, 34);
    EXPECT_EQ(header.biHeight, 26);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biBitCount, 24);
    EXPECT_EQ(header.biCompression, DWORD{BI_RGB});
    EXPECT_EQ(header.biSizeImage, 0U);
    for (std::size_t y = 0; y < 26; ++y) {
        for (std::size_t x = 0; x < 34; ++x) {
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_EQ(image[40 + (25 - y) * 104 + x * 3 + c], frame.bytes[(y * 34 + x) * 4 + c]);
        }
        EXPECT_EQ(image[40 + y * 104 + 102], 0) << "padding";
    }
}

TEST_F(CurrentImage, hasPaddedRows) {
    host.negotiateRgb(64, 48, 1366, 768);
    ASSERT_EQ(host.through(patternRgb(64, 48)).result, S_OK);
    EXPECT_EQ(currentImage(*host.transform).size(), 40U + 768 * 4100);
}

TEST_F(CurrentImage, isACopyOfItsOwn) {
    host.negotiateRgb(64, 48, 32, 24);
    host.through(patternRgb(64, 48), 0);
    const auto first = currentImage(*host.transform);
    EXPECT_EQ(currentImage(*host.transform), first);
    host.through(patternRgb(64, 48, 3), 400'000);
    EXPECT_NE(currentImage(*host.transform), first);
}

TEST_F(CurrentImage, mayBeAskedForWithoutTheTime) {
    host.negotiateRgb(64, 48, 32, 24);
    host.through(patternRgb(64, 48), 0);
    EXPECT_FALSE(currentImage(*host.transform, nullptr).empty());
}

TEST_F(CurrentImage, isGoneWithItsDevice) {
    host.negotiateRgb(64, 48, 32, 24);
    host.through(patternRgb(64, 48), 0);
    ASSERT_EQ(host.setInput(rgbType(64, -48)), S_OK); // which releases the device
    HRESULT result = S_OK;
    host.takeLines();
    EXPECT_TRUE(currentImage(*host.transform, nullptr, &result).empty());
    EXPECT_EQ(result, E_FAIL);
    EXPECT_EQ(host.takeLine(), "E:[1] - GetCurrentImage - Not initialized");
    DMO_MEDIA_TYPE type{};
    ASSERT_EQ(host.media->GetOutputType(0, 0, &type), S_OK); // which builds one
    com::CMediaType owned;
    owned.attach(type);
    EXPECT_TRUE(currentImage(*host.transform, nullptr, &result).empty()) << "on which nothing was drawn";
    EXPECT_EQ(result, E_FAIL);
}

TEST_F(CurrentImage, tellsWhyThePictureCannotBeMapped) {
    CTransformHost other(CTransformHost::Device::recording);
    other.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(other.through(patternRgb(64, 48)).result, S_OK);
    other.recording->fail(tests::Verb::readBack, E_OUTOFMEMORY);
    other.takeLines();
    com::CVariant image;
    EXPECT_EQ(other.transform->GetCurrentImage(image.put(), nullptr, 0), E_OUTOFMEMORY);
    EXPECT_EQ(image.type(), VT_EMPTY);
    EXPECT_THAT(other.takeLine(),
                testing::HasSubstr("CDewarpingTransform::GetCurrentImage() [id: 1]  [line: "));
    other.recording->answer = nullptr;
    EXPECT_EQ(currentImage(*other.transform).size(), 40U + 24 * 96);
}

using render::software::WatchedMemory;

/// What an image of the frame has to be: rows of `width` pixels, the lowest first, without the fourth bytes.
/// The frame has its top row first.
std::vector<std::uint8_t> imageOf(const std::vector<std::uint8_t>& frame, std::size_t width) {
    std::vector<std::uint8_t> rows;
    for (std::size_t end = frame.size(); end != 0; end -= width * 4) {
        for (std::size_t pixel = end - width * 4; pixel != end; pixel += 4)
            rows.insert(rows.end(), &frame[pixel], &frame[pixel] + 3);
    }
    return rows;
}

std::vector<std::uint8_t> rowsOf(const std::vector<std::uint8_t>& image) {
    return {image.begin() + 40, image.end()};
}

/// On the component's own device, which keeps no picture of an output unless it is asked for; it looks at
/// frames of `width`×`height` and has rows of 200 pixels.
class CurrentImageDrawnAgain : public CTransformTest {
protected:
    static constexpr int width = 320;
    static constexpr int height = 240;
    static constexpr std::size_t pictureBytes = std::size_t{width} * height * 4;

    void SetUp() override { host.negotiateRgb(width, height, 200, 150); }
    Delivered through(int picture) {
        Delivered frame = host.through(patternRgb(width, height, picture), picture * 400'000);
        EXPECT_EQ(frame.result, S_OK);
        return frame;
    }

    CTransformHost host{[](diagnostics::ObjectLog log) {
        return std::make_unique<render::software::CSoftwareDevice>(
            log, std::make_shared<render::software::CThreadPool>(2), WatchedMemory::source);
    }};
};

TEST_F(CurrentImageDrawnAgain, isTheLastFrame) {
    for (int picture = 0; picture < 6; ++picture) {
        const Delivered frame = through(picture);
        if (picture % 3 == 0)
            continue; // so that the next one is handed over
        LONGLONG time = -1;
        EXPECT_EQ(rowsOf(currentImage(*host.transform, &time)), imageOf(frame.bytes, 200));
        EXPECT_EQ(time, picture * 400'000);
        EXPECT_EQ(rowsOf(currentImage(*host.transform)), imageOf(frame.bytes, 200)) << "asked for once more";
    }
}

TEST_F(CurrentImageDrawnAgain, isTheLastFrameWhileTheNextIsPrepared) {
    std::vector<std::uint8_t> seen;
    bool isAskedFor = false;
    PrepareSink sink(host, [&](const DISPPARAMS&) {
        if (isAskedFor)
            seen = rowsOf(currentImage(*host.transform));
        return S_OK;
    });
    Delivered last = through(0);
    for (int picture = 1; picture < 7; ++picture) {
        isAskedFor = picture != 3 && picture != 4;
        seen.clear();
        const Delivered frame = through(picture);
        EXPECT_NE(frame.bytes, last.bytes);
        if (isAskedFor) {
            EXPECT_EQ(seen, imageOf(last.bytes, 200));
        }
        last = frame;
    }
}

TEST_F(CurrentImageDrawnAgain, costsNoSecondInputPicture) {
    bool isAskedFor = false;
    PrepareSink sink(host, [&](const DISPPARAMS&) {
        if (isAskedFor) {
            EXPECT_FALSE(currentImage(*host.transform).empty());
        }
        return S_OK;
    });
    for (int picture = 0; picture < 8; ++picture) {
        isAskedFor = picture == 5;
        through(picture);
        if (picture == 3) {
            EXPECT_FALSE(currentImage(*host.transform).empty());
        }
        EXPECT_EQ(WatchedMemory::written(pictureBytes), 1);
    }
}

TEST_F(CurrentImageDrawnAgain, isThatOfFramesWithTheLowestRowFirst) {
    ASSERT_EQ(host.setOutput(rgbType(200, 150)), S_OK);
    const Delivered turned = through(1);
    std::vector<std::uint8_t> rows;
    for (std::size_t pixel = 0; pixel != turned.bytes.size(); pixel += 4)
        rows.insert(rows.end(), &turned.bytes[pixel], &turned.bytes[pixel] + 3);
    EXPECT_EQ(rowsOf(currentImage(*host.transform)), rows);
}

} // namespace
} // namespace tarvo::transform
