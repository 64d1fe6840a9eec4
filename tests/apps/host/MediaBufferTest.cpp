#include "apps/host/MediaBuffer.h"

#include <gtest/gtest.h>

namespace tarvo::host {
namespace {

TEST(MediaBuffer, holdsAFrame) {
    const auto buffer = CMediaBuffer::holding({std::byte{1}, std::byte{2}, std::byte{3}});
    BYTE* data = nullptr;
    DWORD length = 0;
    ASSERT_EQ(buffer->GetBufferAndLength(&data, &length), S_OK);
    ASSERT_EQ(length, 3U);
    EXPECT_EQ(data[0], 1);
    EXPECT_EQ(data[2], 3);
    EXPECT_EQ(buffer->contents().size(), 3U);
}

TEST(MediaBuffer, hasRoomForAFrame) {
    const auto buffer = CMediaBuffer::withRoom(8);
    EXPECT_TRUE(buffer->contents().empty());
    DWORD capacity = 0;
    ASSERT_EQ(buffer->GetMaxLength(&capacity), S_OK);
    EXPECT_EQ(capacity, 8U);
    BYTE* data = nullptr;
    ASSERT_EQ(buffer->GetBufferAndLength(&data, nullptr), S_OK);
    data[7] = 9;
    EXPECT_EQ(buffer->SetLength(9), E_INVALIDARG);
    EXPECT_TRUE(buffer->contents().empty()) << "a refused length changes nothing";
    ASSERT_EQ(buffer->SetLength(8), S_OK);
    EXPECT_EQ(buffer->contents().back(), std::byte{9});
    DWORD length = 0;
    EXPECT_EQ(buffer->GetBufferAndLength(nullptr, &length), S_OK);
    EXPECT_EQ(length, 8U);
}

TEST(MediaBuffer, answersWrongUse) {
    const auto buffer = CMediaBuffer::withRoom(1);
    EXPECT_EQ(buffer->GetBufferAndLength(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(buffer->GetMaxLength(nullptr), E_POINTER);
    EXPECT_EQ(buffer->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    void* other = &other;
    EXPECT_EQ(buffer->QueryInterface(__uuidof(IDispatch), &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

TEST(MediaBuffer, countsItsReferences) {
    auto buffer = CMediaBuffer::withRoom(1);
    EXPECT_EQ(buffer->AddRef(), 2U);
    EXPECT_EQ(buffer->Release(), 1U);
    const auto same = buffer.as<IMediaBuffer>();
    ASSERT_TRUE(same);
    buffer.reset();
    DWORD capacity = 0;
    EXPECT_EQ(same->GetMaxLength(&capacity), S_OK) << "whoever has a reference keeps it alive";
    EXPECT_EQ(capacity, 1U);
}

} // namespace
} // namespace tarvo::host
