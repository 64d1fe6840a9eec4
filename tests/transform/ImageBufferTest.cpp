#include "transform/ImageBuffer.h"

#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace tarvo::transform {
namespace {

using com::ComPtr;
using std::chrono::steady_clock;

class ImageBuffer : public testing::Test {
protected:
    ImageBuffer() {
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<std::byte>(i);
    }

    bool lock(LONG milliseconds) {
        VARIANT_BOOL isLocked = 3;
        EXPECT_EQ(buffer->LockBuffer(milliseconds, &isLocked), S_OK);
        EXPECT_TRUE(isLocked == VARIANT_TRUE || isLocked == VARIANT_FALSE);
        return isLocked == VARIANT_TRUE;
    }

    /// Three rows of two pixels with four bytes between them.
    std::array<std::byte, 36> pixels{};
    render::MappedRows rows{pixels.data(), 12, 2, 3};
    ComPtr<CImageBuffer> buffer = com::makeObject<CImageBuffer>(rows);
};

TEST_F(ImageBuffer, tellsWhatItHolds) {
    buffer->store(rows, 123'456'789'012, 400'000);
    LONG value = -1;
    EXPECT_EQ(buffer->get_Size(&value), S_OK);
    EXPECT_EQ(value, 36);
    EXPECT_EQ(buffer->get_Width(&value), S_OK);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(buffer->get_Height(&value), S_OK);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(buffer->get_Format(&value), S_OK);
    EXPECT_EQ(value, 0);
    LONGLONG time = -1;
    EXPECT_EQ(buffer->get_Timestamp(&time), S_OK);
    EXPECT_EQ(time, 123'456'789'012);
    EXPECT_EQ(buffer->get_Duration(&time), S_OK);
    EXPECT_EQ(time, 400'000);
    INT_PTR address = 0;
    EXPECT_EQ(buffer->get_DataPointer(&address), S_OK);
    const auto* data = reinterpret_cast<const std::byte*>(address);
    EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), data));
}

TEST_F(ImageBuffer, takesNoNullPointers) {
    EXPECT_EQ(buffer->get_DataPointer(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Size(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Width(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Height(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Format(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Timestamp(nullptr), E_POINTER);
    EXPECT_EQ(buffer->get_Duration(nullptr), E_POINTER);
    EXPECT_EQ(buffer->LockBuffer(0, nullptr), E_POINTER);
    EXPECT_TRUE(lock(0)) << "which locked nothing";
    buffer->UnlockBuffer();
}

TEST_F(ImageBuffer, isLockedOnce) {
    EXPECT_TRUE(lock(0));
    EXPECT_FALSE(lock(0)) << "by the same thread neither";
    const auto begin = steady_clock::now();
    EXPECT_FALSE(lock(30));
    EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(30));
    EXPECT_EQ(buffer->UnlockBuffer(), S_OK);
    EXPECT_EQ(buffer->UnlockBuffer(), S_OK) << "setting it twice sets it once";
    EXPECT_TRUE(lock(0));
    EXPECT_FALSE(lock(0));
    buffer->UnlockBuffer();
}

TEST_F(ImageBuffer, wakesWhoWaits) {
    for (const LONG time : {10'000, -1}) {
        ASSERT_TRUE(lock(0));
        std::thread unlocker([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            buffer->UnlockBuffer();
        });
        EXPECT_TRUE(lock(time)) << "unlocked by another thread";
        unlocker.join();
        buffer->UnlockBuffer();
    }
}

TEST_F(ImageBuffer, fitsPicturesOfItsSize) {
    EXPECT_TRUE(buffer->fits(rows));
    EXPECT_FALSE(buffer->fits({pixels.data(), 12, 3, 3}));
    EXPECT_FALSE(buffer->fits({pixels.data(), 8, 2, 3}));
    EXPECT_FALSE(buffer->fits({pixels.data(), 12, 2, 2}));
}

TEST_F(ImageBuffer, waitsInTheEndForWhoStillReads) {
    ASSERT_TRUE(lock(0));
    std::atomic<bool> hasEnded{false};
    IImageBuffer* last = buffer.detach();
    // Unlocks while the last reference is being released; the pointer stays good so long, for the end waits.
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(hasEnded);
        last->UnlockBuffer();
    });
    const auto begin = steady_clock::now();
    last->Release();
    hasEnded = true;
    EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(40));
    EXPECT_LT(steady_clock::now() - begin, std::chrono::milliseconds(4'000));
    reader.join();
}

} // namespace
} // namespace tarvo::transform
