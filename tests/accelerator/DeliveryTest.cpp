#include "dshow/MemoryAllocator.h"
#include "tests/accelerator/AcceleratorGraph.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>
#include <ostream>
#include <thread>

namespace tarvo::accelerator {
namespace {

using testing::ElementsAre;
using tests::Delivery;

std::vector<std::uint8_t> frame(std::uint8_t fill) {
    std::vector<std::uint8_t> bytes(16);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(fill + i);
    return bytes;
}

using Times = std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>;

std::vector<Times> timesOf(const std::vector<Delivery>& deliveries) {
    std::vector<Times> times;
    for (const Delivery& delivery : deliveries)
        times.emplace_back(delivery.start, delivery.stop);
    return times;
}

class DeliveryTest : public CAcceleratorTest {};

TEST_F(DeliveryTest, framesPassWithTheirTimes) {
    connect();
    run();
    EXPECT_EQ(source->push(frame(10), 100, 300), S_OK);
    EXPECT_EQ(source->push(frame(20), 400), S_OK);
    EXPECT_EQ(source->push(frame(30)), S_OK);
    ASSERT_TRUE(sink->waitForEvents(3));
    const auto deliveries = sink->deliveries();
    EXPECT_THAT(timesOf(deliveries),
                ElementsAre(Times{100, 300}, Times{400, std::nullopt}, Times{std::nullopt, std::nullopt}));
    EXPECT_EQ(deliveries[0].bytes, frame(10));
    EXPECT_EQ(deliveries[1].bytes, frame(20));
    EXPECT_EQ(deliveries[2].bytes, frame(30));
    stop();
}

TEST_F(DeliveryTest, withoutAFollowerFramesAreTakenAndDropped) {
    source = com::makeObject<tests::CFakeSource>(usualKind);
    const dshow::CPinType type = tests::typeOf(usualKind);
    ASSERT_EQ(source->pin().Connect(input().get(), &type.get()), S_OK);
    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(source->push(frame(1), 0, 1), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    EXPECT_EQ(source->pin().deliverBeginFlush(), S_OK);
    EXPECT_EQ(source->pin().deliverEndFlush(), S_OK);
}

TEST_F(DeliveryTest, aStoppedFilterTakesAndDrops) {
    connect();
    ASSERT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(source->push(frame(1), 0, 1), S_OK);
    EXPECT_EQ(transport()->Receive(nullptr), E_POINTER);
    EXPECT_THAT(sink->events(), ElementsAre());
}

TEST_F(DeliveryTest, rowsAreTurnedForAFollowerThatWantsThemSo) {
    const tests::VideoKind topDown{MEDIASUBTYPE_RGB32, 2, -2, 32, 16, frameDuration};
    tests::VideoKind bottomUp = topDown;
    bottomUp.height = 2;
    connect(topDown, &bottomUp);
    run();
    EXPECT_EQ(source->push({1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16, 17, 18}), S_OK);
    ASSERT_TRUE(sink->waitForEvents(1));
    EXPECT_THAT(sink->deliveries()[0].bytes,
                ElementsAre(11, 12, 13, 14, 15, 16, 17, 18, 1, 2, 3, 4, 5, 6, 7, 8));
    stop();
}

// What becomes of a gap between two frames, in halves of a frame's duration from the first start to the
// second.
struct Gap {
    std::int64_t length;
    LONG settings;
    std::int64_t duration = frameDuration;
    bool isFilled;

    friend void PrintTo(const Gap& gap, std::ostream* out) {
        *out << gap.length << " in units of 100 ns, settings " << gap.settings << ", duration "
             << gap.duration;
    }
};

class FillFrames : public CAcceleratorTest, public testing::WithParamInterface<Gap> {};

TEST_P(FillFrames, comeOncePerLongGap) {
    const Gap gap = GetParam();
    tests::VideoKind kind = usualKind;
    kind.frameDuration = gap.duration;
    connect(kind);
    ASSERT_EQ(filter->put_Settings(gap.settings), S_OK);
    run();
    const std::int64_t first = 1'000'000;
    const std::int64_t second = first + gap.length;
    ASSERT_EQ(source->push(frame(1), first, first + frameDuration), S_OK);
    ASSERT_EQ(source->push(frame(2), second, second + frameDuration), S_OK);
    ASSERT_TRUE(sink->waitForEvents(gap.isFilled ? 3 : 2));
    stop();
    const auto deliveries = sink->deliveries();
    const Times one{first, first + frameDuration};
    const Times two{second, second + frameDuration};
    if (gap.isFilled) {
        EXPECT_THAT(timesOf(deliveries), ElementsAre(one, Times{first + gap.duration, second}, two));
        EXPECT_EQ(deliveries[1].bytes, frame(1)) << "the frame before the gap";
    } else {
        EXPECT_THAT(timesOf(deliveries), ElementsAre(one, two));
    }
    EXPECT_EQ(deliveries.back().bytes, frame(2));
}

INSTANTIATE_TEST_SUITE_P(Gaps, FillFrames,
                         testing::Values(Gap{560'000, 1, frameDuration, false},   // 1.4 durations
                                         Gap{600'000, 1, frameDuration, false},   // exactly 1.5
                                         Gap{600'001, 1, frameDuration, true},    //
                                         Gap{640'000, 1, frameDuration, true},    // 1.6
                                         Gap{800'000, 1, frameDuration, true},    // 2
                                         Gap{8'000'000, 1, frameDuration, true},  // 20
                                         Gap{8'000'000, 0, frameDuration, false}, // not wanted
                                         Gap{8'000'000, 2, frameDuration, false}, // a setting of another name
                                         Gap{8'000'000, 3, frameDuration, true},  //
                                         Gap{8'000'000, 1, 0, false}));           // of unknown duration

TEST_F(DeliveryTest, framesWithoutTimesAreNotFilledUp) {
    connect();
    ASSERT_EQ(filter->put_Settings(1), S_OK);
    run();
    ASSERT_EQ(source->push(frame(1)), S_OK);
    ASSERT_EQ(source->push(frame(2), 9'000'000, 9'400'000), S_OK);
    ASSERT_EQ(source->push(frame(3)), S_OK);
    ASSERT_TRUE(sink->waitForEvents(3));
    stop();
    EXPECT_EQ(sink->events().size(), 3U);
}

TEST_F(DeliveryTest, theEndComesOnceAndAfterTheLastFrame) {
    connect();
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(2));
    stop();
    EXPECT_THAT(sink->events(), ElementsAre("frame", "end"));
}

TEST_F(DeliveryTest, theEndNeedsNoFrame) {
    connect();
    run();
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(1));
    stop();
    EXPECT_THAT(sink->events(), ElementsAre("end"));
}

TEST_F(DeliveryTest, theEndEndsTheWaitForAFillFrame) {
    connect();
    ASSERT_EQ(filter->put_Settings(1), S_OK);
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    ASSERT_TRUE(sink->waitForEvents(1));
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(2));
    stop();
    EXPECT_THAT(sink->events(), ElementsAre("frame", "end"));
}

TEST_F(DeliveryTest, aFlushBeginsAStreamOfItsOwn) {
    connect();
    ASSERT_EQ(filter->put_Settings(1), S_OK);
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    ASSERT_TRUE(sink->waitForEvents(1));
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(2));
    EXPECT_EQ(source->pin().deliverBeginFlush(), S_OK);
    EXPECT_EQ(source->push(frame(9), 5, 6), S_OK) << "dropped";
    EXPECT_EQ(source->pin().deliverEndFlush(), S_OK);
    // No fill frame from before the flush, and an end of its own.
    ASSERT_EQ(source->push(frame(2), 90'000'000, 90'000'001), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(6));
    stop();
    EXPECT_THAT(sink->events(), ElementsAre("frame", "end", "flush", "flushed", "frame", "end"));
    EXPECT_EQ(sink->deliveries()[1].bytes, frame(2));
}

TEST_F(DeliveryTest, aFlushFreesASourceThatIsHeldUp) {
    std::promise<void> mayLeave;
    std::shared_future<void> leaving = mayLeave.get_future().share();
    std::atomic<int> received{0};
    sink->onReceive = [&](IMediaSample&) {
        ++received;
        leaving.wait();
        return S_FALSE;
    };
    connect();
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    while (received == 0)
        std::this_thread::yield();
    // The only buffer is on its way: this one waits for it.
    std::future<HRESULT> second =
        std::async(std::launch::async, [&] { return source->push(frame(2), 2, 3); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(source->pin().deliverBeginFlush(), S_OK);
    EXPECT_EQ(second.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    mayLeave.set_value();
    EXPECT_EQ(source->pin().deliverEndFlush(), S_OK);
    stop();
    EXPECT_EQ(received, 1);
}

TEST_F(DeliveryTest, stoppingFreesASourceThatIsHeldUp) {
    std::promise<void> mayLeave;
    std::shared_future<void> leaving = mayLeave.get_future().share();
    std::atomic<int> received{0};
    sink->onReceive = [&](IMediaSample&) {
        ++received;
        leaving.wait();
        return S_OK;
    };
    connect();
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    while (received == 0)
        std::this_thread::yield();
    std::future<HRESULT> second =
        std::async(std::launch::async, [&] { return source->push(frame(2), 2, 3); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    std::future<HRESULT> stopping = std::async(std::launch::async, [&] { return filter->Stop(); });
    EXPECT_EQ(second.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(second.get(), S_OK);
    mayLeave.set_value();
    EXPECT_EQ(stopping.get(), S_OK);
    stop();
    EXPECT_EQ(received, 1);
}

TEST_F(DeliveryTest, aSegmentBeginsBehindTheFramesBeforeIt) {
    connect();
    EXPECT_EQ(source->pin().deliverNewSegment(0, 10, 1.0), S_OK);
    EXPECT_THAT(sink->events(), ElementsAre("segment")) << "nothing is under way yet";
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    EXPECT_EQ(source->pin().deliverNewSegment(10, 20, 1.0), S_OK);
    ASSERT_EQ(source->push(frame(2), 10, 11), S_OK);
    EXPECT_EQ(source->pin().deliverNewSegment(20, 30, 1.0), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    ASSERT_TRUE(sink->waitForEvents(6));
    stop();
    EXPECT_THAT(sink->events(), ElementsAre("segment", "frame", "segment", "frame", "segment", "end"));
}

/// Fails to give buffers as often as it is told.
class CMoodyAllocator final : public com::CObject<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        return m_allocator->SetProperties(request, actual);
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override {
        return m_allocator->GetProperties(properties);
    }
    STDMETHODIMP Commit() override { return commit == S_OK ? m_allocator->Commit() : commit; }
    STDMETHODIMP Decommit() override { return m_allocator->Decommit(); }
    STDMETHODIMP GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override {
        if (failures > 0) {
            --failures;
            return E_OUTOFMEMORY;
        }
        return m_allocator->GetBuffer(sample, start, stop, flags);
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample* sample) override { return m_allocator->ReleaseBuffer(sample); }

    std::atomic<int> failures{0};
    HRESULT commit = S_OK;

private:
    com::ComPtr<dshow::CMemoryAllocator> m_allocator = com::makeObject<dshow::CMemoryAllocator>();
};

TEST_F(DeliveryTest, withoutABufferFramesAreDroppedUntilThereIsOne) {
    const auto allocator = com::makeObject<CMoodyAllocator>();
    sink->allocator = allocator;
    allocator->failures = 3;
    connect();
    run();
    // Each attempt comes 5 ms after the last: until then frames are dropped at once, and then one finds a
    // buffer.
    std::int64_t pushed = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (sink->events().empty() && std::chrono::steady_clock::now() < deadline) {
        ASSERT_EQ(source->push(frame(1), pushed, pushed + 1), S_OK);
        ++pushed;
    }
    EXPECT_GT(pushed, 1);
    EXPECT_EQ(allocator->failures, 0);
    stop();
}

TEST_F(DeliveryTest, aFollowerWithoutMemoryKeepsTheFilterStopped) {
    const auto allocator = com::makeObject<CMoodyAllocator>();
    sink->allocator = allocator;
    connect();
    allocator->commit = E_OUTOFMEMORY;
    EXPECT_EQ(filter->Run(0), E_OUTOFMEMORY);
    FILTER_STATE state{};
    EXPECT_EQ(filter->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
    allocator->commit = S_OK;
    run();
    ASSERT_EQ(source->push(frame(1), 0, 1), S_OK);
    EXPECT_TRUE(sink->waitForEvents(1));
    stop();
}

TEST_F(DeliveryTest, aNewTypeOfTheSourceComesWithItsFirstFrame) {
    const tests::VideoKind narrow{MEDIASUBTYPE_RGB32, 1, -2, 32, 8, frameDuration};
    tests::VideoKind wide = narrow;
    wide.width = 2;
    wide.imageBytes = 16;
    // Memory for the larger one from the start.
    connect(wide);
    run();
    const dshow::CPinType narrower = tests::typeOf(narrow);
    ASSERT_EQ(source->push({1, 2, 3, 4, 5, 6, 7, 8}, 0, 1, &narrower.get()), S_OK);
    ASSERT_TRUE(sink->waitForEvents(1));
    EXPECT_THAT(sink->deliveries()[0].bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    AM_MEDIA_TYPE now{};
    ASSERT_EQ(sink->pin().ConnectionMediaType(&now), S_OK);
    dshow::CPinType owner;
    *owner.put() = now;
    EXPECT_EQ(now.lSampleSize, 8U);
    // One that the follower does not take costs its frame and nothing else.
    sink->accepts = [](const AM_MEDIA_TYPE& type) { return type.lSampleSize == 8; };
    const dshow::CPinType again = tests::typeOf(wide);
    ASSERT_EQ(source->push(std::vector<std::uint8_t>(16), 2, 3, &again.get()), S_OK);
    ASSERT_EQ(source->push({8, 7, 6, 5, 4, 3, 2, 1}, 4, 5), S_OK);
    ASSERT_TRUE(sink->waitForEvents(2));
    EXPECT_THAT(sink->deliveries()[1].bytes, ElementsAre(8, 7, 6, 5, 4, 3, 2, 1));
    stop();
}

TEST_F(DeliveryTest, qualityIsTheSourcesBusiness) {
    connect();
    const auto quality = output().as<IQualityControl>();
    ASSERT_TRUE(quality);
    EXPECT_EQ(quality->Notify(sink.get(), Quality{Famine, 500, 7, 9}), S_OK);
    ASSERT_EQ(source->pin().messages.size(), 1U);
    EXPECT_EQ(source->pin().messages[0].Late, 7);
    EXPECT_EQ(quality->SetSink(nullptr), E_NOTIMPL);
}

} // namespace
} // namespace tarvo::accelerator
