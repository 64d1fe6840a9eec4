// States change at random moments while a source keeps pushing into a sink that is slow, full or out of
// memory: nothing may hang, nothing may be left.

#include "dshow/MemoryAllocator.h"
#include "tests/accelerator/AcceleratorGraph.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

namespace tarvo::accelerator {
namespace {

/// Ends the whole program, with a word why, if it lives too long: a thread that hangs cannot be ended alone.
class CWatchdog {
public:
    explicit CWatchdog(std::chrono::seconds limit) : m_thread([this, limit] { watch(limit); }) {}
    CWatchdog(const CWatchdog&) = delete;
    CWatchdog& operator=(const CWatchdog&) = delete;
    ~CWatchdog() {
        {
            const std::lock_guard lock(m_lock);
            m_isDone = true;
        }
        m_done.notify_all();
        m_thread.join();
    }

private:
    void watch(std::chrono::seconds limit) {
        std::unique_lock lock(m_lock);
        if (!m_done.wait_for(lock, limit, [&] { return m_isDone; })) {
            std::cerr << "it hangs\n" << std::flush;
            std::_Exit(99);
        }
    }

    std::mutex m_lock;
    std::condition_variable m_done;
    bool m_isDone = false;
    std::thread m_thread;
};

/// An allocator that fails now and then.
class CForgetfulAllocator final : public com::CObject<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        return m_allocator->SetProperties(request, actual);
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override {
        return m_allocator->GetProperties(properties);
    }
    STDMETHODIMP Commit() override { return m_allocator->Commit(); }
    STDMETHODIMP Decommit() override { return m_allocator->Decommit(); }
    STDMETHODIMP GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override {
        return ++m_calls % 5 == 0 ? E_OUTOFMEMORY : m_allocator->GetBuffer(sample, start, stop, flags);
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample* sample) override { return m_allocator->ReleaseBuffer(sample); }

private:
    std::atomic<unsigned> m_calls{0};
    com::ComPtr<dshow::CMemoryAllocator> m_allocator = com::makeObject<dshow::CMemoryAllocator>();
};

void breathe(std::uint_fast32_t choice) {
    if (choice % 4 == 0)
        std::this_thread::sleep_for(std::chrono::microseconds(static_cast<int>(choice % 3000)));
    else if (choice % 4 == 1)
        std::this_thread::yield();
}

class Cycles : public CAcceleratorTest {};

TEST_F(Cycles, endWhereverTheyAreBegun) {
    const LONG objectsBefore = com::moduleCount().count();
    const CWatchdog watchdog(std::chrono::seconds(240));
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << std::endl;
    std::mt19937 random(seed);

    const tests::VideoKind kind{MEDIASUBTYPE_YUY2, 320, 240, 16, 320 * 240 * 2, frameDuration};
    std::atomic<unsigned> received{0};
    sink->onReceive = [&](IMediaSample&) {
        breathe(++received * 7);
        return received % 11 == 0 ? S_FALSE : S_OK;
    };
    sink->allocator = com::makeObject<CForgetfulAllocator>();
    connect(kind);
    ASSERT_EQ(filter->put_Settings(1), S_OK);

    std::atomic<bool> isEnding{false};
    std::thread pushing([&] {
        const std::vector<std::uint8_t> bytes(320 * 240 * 2, 0x40);
        std::mt19937 own(seed + 1);
        std::int64_t time = 0;
        while (!isEnding) {
            time += own() % 5 == 0 ? 3 * frameDuration : frameDuration;
            source->push(bytes, time, time + frameDuration);
            if (own() % 40 == 0)
                source->pin().deliverEndOfStream();
            if (own() % 30 == 0)
                source->pin().deliverNewSegment(time, time + 1, 1.0);
            breathe(own());
        }
    });
    ASSERT_EQ(sink->Run(0), S_OK);
    ASSERT_EQ(source->Run(0), S_OK);
    for (int cycle = 0; cycle < TARVO_CYCLES; ++cycle) {
        EXPECT_EQ(filter->Pause(), S_OK);
        breathe(random());
        if (random() % 3 != 0) {
            EXPECT_EQ(filter->Run(0), S_OK);
        }
        breathe(random());
        if (random() % 2 == 0) {
            source->pin().deliverBeginFlush();
            breathe(random());
            source->pin().deliverEndFlush();
        }
        if (random() % 4 == 0) {
            EXPECT_EQ(filter->put_Settings(static_cast<LONG>(random() % 2)), S_OK);
        }
        breathe(random());
        EXPECT_EQ(filter->Stop(), S_OK);
        breathe(random());
    }
    isEnding = true;
    stop();
    pushing.join();
    EXPECT_GT(received, 0U);

    EXPECT_EQ(output()->Disconnect(), S_OK);
    EXPECT_EQ(input()->Disconnect(), S_OK);
    sink->pin().Disconnect();
    source->pin().Disconnect();
    source.reset();
    sink.reset();
    // The filter was there before, and is all that is left.
    EXPECT_EQ(com::moduleCount().count(), objectsBefore - 1);
}

} // namespace
} // namespace tarvo::accelerator
