#include "dshow/MemoryAllocator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <future>
#include <limits>
#include <vector>

namespace tarvo::dshow {
namespace {

using com::ComPtr;

class Allocator : public testing::Test {
protected:
    HRESULT set(LONG buffers, LONG bytes, LONG align = 1, LONG prefix = 0) {
        ALLOCATOR_PROPERTIES wanted{buffers, bytes, align, prefix};
        return allocator->SetProperties(&wanted, &actual);
    }
    ComPtr<IMediaSample> take() {
        ComPtr<IMediaSample> sample;
        EXPECT_EQ(allocator->GetBuffer(sample.put(), nullptr, nullptr, 0), S_OK);
        return sample;
    }

    ComPtr<CMemoryAllocator> allocator = com::makeObject<CMemoryAllocator>();
    ALLOCATOR_PROPERTIES actual{};
};

TEST_F(Allocator, saysWhatItWasAskedFor) {
    EXPECT_EQ(set(3, 100, 16, 8), S_OK);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(actual.cBuffers, 3);
        EXPECT_EQ(actual.cbBuffer, 100);
        EXPECT_EQ(actual.cbAlign, 16);
        EXPECT_EQ(actual.cbPrefix, 8);
        EXPECT_EQ(allocator->GetProperties(&actual), S_OK);
    }
    EXPECT_EQ(allocator->GetProperties(nullptr), E_POINTER);
    EXPECT_EQ(allocator->SetProperties(nullptr, &actual), E_POINTER);
    EXPECT_EQ(allocator->SetProperties(&actual, nullptr), E_POINTER);
}

TEST_F(Allocator, refusesWhatCannotBe) {
    EXPECT_EQ(set(1, 100, 0), VFW_E_BADALIGN);
    EXPECT_EQ(set(1, 100, 12), VFW_E_BADALIGN);
    EXPECT_EQ(set(1, 100, -8), VFW_E_BADALIGN);
    EXPECT_EQ(set(-1, 100), E_INVALIDARG);
    EXPECT_EQ(set(1, -100), E_INVALIDARG);
    EXPECT_EQ(set(1, 100, 1, -1), E_INVALIDARG);
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    EXPECT_EQ(set(std::numeric_limits<LONG>::max(), std::numeric_limits<LONG>::max()), S_OK);
    EXPECT_EQ(allocator->Commit(), E_OUTOFMEMORY);
    EXPECT_EQ(set(2, 8), S_OK);
    EXPECT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(set(2, 8), VFW_E_ALREADY_COMMITTED);
}

TEST_F(Allocator, givesBuffersOfTheirOwnAtTheAlignment) {
    ASSERT_EQ(set(3, 33, 64, 5), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    std::vector<ComPtr<IMediaSample>> samples;
    for (int i = 0; i < 3; ++i) {
        samples.push_back(take());
        EXPECT_EQ(samples.back()->GetSize(), 33);
        EXPECT_EQ(samples.back()->GetActualDataLength(), 33);
        BYTE* bytes = nullptr;
        ASSERT_EQ(samples.back()->GetPointer(&bytes), S_OK);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 64, 0U);
        // With what lies before it; the address sanitizer looks on.
        std::memset(bytes - 5, 'a' + i, 38);
    }
    for (int i = 0; i < 3; ++i) {
        BYTE* bytes = nullptr;
        samples[static_cast<std::size_t>(i)]->GetPointer(&bytes);
        EXPECT_EQ(bytes[-5], 'a' + i);
        EXPECT_EQ(bytes[32], 'a' + i);
    }
    ComPtr<IMediaSample> none;
    EXPECT_EQ(allocator->GetBuffer(none.put(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    EXPECT_EQ(none.get(), nullptr);
    samples.pop_back();
    EXPECT_EQ(allocator->GetBuffer(none.put(), nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
    EXPECT_EQ(allocator->GetBuffer(nullptr, nullptr, nullptr, 0), E_POINTER);
}

TEST_F(Allocator, waitsForABufferThatComesBack) {
    ASSERT_EQ(set(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    ComPtr<IMediaSample> only = take();
    IMediaSample* const first = only.get();
    auto waiting = std::async(std::launch::async, [&] { return take(); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    only.reset();
    EXPECT_EQ(waiting.get().get(), first);
}

TEST_F(Allocator, decommitEndsTheWaitAndKeepsWhatIsOut) {
    ASSERT_EQ(set(1, 8), S_OK);
    ComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->GetBuffer(sample.put(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(allocator->Commit(), S_OK);
    sample = take();
    auto waiting = std::async(std::launch::async, [&] {
        ComPtr<IMediaSample> other;
        return allocator->GetBuffer(other.put(), nullptr, nullptr, 0);
    });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    EXPECT_EQ(allocator->Decommit(), S_OK);
    EXPECT_EQ(waiting.get(), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(set(2, 16), VFW_E_BUFFERS_OUTSTANDING);
    BYTE* bytes = nullptr;
    ASSERT_EQ(sample->GetPointer(&bytes), S_OK);
    std::memset(bytes, 1, 8);
    sample.reset();
    EXPECT_EQ(set(2, 16), S_OK);
    EXPECT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(take()->GetSize(), 16);
}

TEST_F(Allocator, livesAsLongAsASampleIsOut) {
    const LONG before = com::moduleCount().count() - 1;
    ASSERT_EQ(set(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    ComPtr<IMediaSample> sample = take();
    allocator.reset();
    BYTE* bytes = nullptr;
    ASSERT_EQ(sample->GetPointer(&bytes), S_OK);
    std::memset(bytes, 1, 8);
    EXPECT_EQ(com::moduleCount().count(), before + 1);
    sample.reset();
    EXPECT_EQ(com::moduleCount().count(), before);
}

class Sample : public Allocator {
protected:
    Sample() {
        EXPECT_EQ(set(1, 32), S_OK);
        EXPECT_EQ(allocator->Commit(), S_OK);
        sample = take();
    }

    ComPtr<IMediaSample> sample;
};

TEST_F(Sample, tellsAsMuchOfItsTimesAsItKnows) {
    REFERENCE_TIME start = 5;
    REFERENCE_TIME stop = 9;
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->SetTime(&start, nullptr), S_OK);
    start = stop = 0;
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(start, 5);
    EXPECT_EQ(stop, 6);
    stop = 4;
    EXPECT_EQ(sample->SetTime(&start, &stop), VFW_E_START_TIME_AFTER_END);
    stop = 9;
    EXPECT_EQ(sample->SetTime(&start, &stop), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 9);
    EXPECT_EQ(sample->SetTime(nullptr, &stop), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->GetTime(nullptr, &stop), E_POINTER);
    LONGLONG number = 3;
    EXPECT_EQ(sample->GetMediaTime(&number, &number), VFW_E_MEDIA_TIME_NOT_SET);
    EXPECT_EQ(sample->SetMediaTime(&number, nullptr), E_POINTER);
    EXPECT_EQ(sample->SetMediaTime(&number, &number), S_OK);
    LONGLONG first = 0;
    LONGLONG last = 0;
    EXPECT_EQ(sample->GetMediaTime(&first, &last), S_OK);
    EXPECT_EQ(first, 3);
}

TEST_F(Sample, keepsItsMarksUntilItComesBack) {
    EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
    EXPECT_EQ(sample->SetSyncPoint(TRUE), S_OK);
    EXPECT_EQ(sample->SetPreroll(TRUE), S_OK);
    EXPECT_EQ(sample->SetDiscontinuity(TRUE), S_OK);
    EXPECT_EQ(sample->IsSyncPoint(), S_OK);
    EXPECT_EQ(sample->IsPreroll(), S_OK);
    EXPECT_EQ(sample->IsDiscontinuity(), S_OK);
    EXPECT_EQ(sample->SetPreroll(FALSE), S_OK);
    EXPECT_EQ(sample->IsPreroll(), S_FALSE);
    EXPECT_EQ(sample->SetActualDataLength(33), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(7), S_OK);
    AM_MEDIA_TYPE type{};
    type.subtype = MEDIASUBTYPE_YUY2;
    EXPECT_EQ(sample->SetMediaType(&type), S_OK);
    AM_MEDIA_TYPE* given = nullptr;
    ASSERT_EQ(sample->GetMediaType(&given), S_OK);
    EXPECT_EQ(given->subtype, MEDIASUBTYPE_YUY2);
    CPinType::freeAllocated(given);

    sample.reset();
    sample = take();
    EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
    EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
    EXPECT_EQ(sample->GetActualDataLength(), 32);
    EXPECT_EQ(sample->GetMediaType(&given), S_FALSE);
    EXPECT_EQ(given, nullptr);
}

TEST_F(Sample, hasAllOfItInOneRecord) {
    const auto second = sample.as<IMediaSample2>();
    ASSERT_TRUE(second);
    REFERENCE_TIME start = 100;
    ASSERT_EQ(sample->SetTime(&start, nullptr), S_OK);
    AM_SAMPLE2_PROPERTIES properties{};
    ASSERT_EQ(second->GetProperties(sizeof properties, reinterpret_cast<BYTE*>(&properties)), S_OK);
    EXPECT_EQ(properties.cbData, sizeof properties);
    EXPECT_EQ(properties.tStart, 100);
    EXPECT_EQ(properties.lActual, 32);
    EXPECT_EQ(properties.dwSampleFlags, static_cast<DWORD>(AM_SAMPLE_TIMEVALID));
    properties.lActual = 5;
    properties.dwSampleFlags |= AM_SAMPLE_SPLICEPOINT;
    EXPECT_EQ(second->SetProperties(sizeof properties, reinterpret_cast<BYTE*>(&properties)), S_OK);
    EXPECT_EQ(sample->GetActualDataLength(), 5);
    EXPECT_EQ(sample->IsSyncPoint(), S_OK);
    properties.lActual = 33;
    EXPECT_EQ(second->SetProperties(sizeof properties, reinterpret_cast<BYTE*>(&properties)),
              VFW_E_BUFFER_OVERFLOW);
    properties.lActual = 5;
    properties.pbBuffer = nullptr;
    EXPECT_EQ(second->SetProperties(sizeof properties, reinterpret_cast<BYTE*>(&properties)), E_INVALIDARG);
    EXPECT_EQ(second->SetProperties(2, reinterpret_cast<BYTE*>(&properties)), E_INVALIDARG);
    EXPECT_EQ(second->GetProperties(sizeof properties, nullptr), E_POINTER);
}

} // namespace
} // namespace tarvo::dshow
