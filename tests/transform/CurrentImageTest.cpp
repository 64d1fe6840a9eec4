#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

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

} // namespace
} // namespace tarvo::transform
