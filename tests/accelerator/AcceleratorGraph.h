#pragma once

#include "accelerator/AcceleratorFilter.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/GraphFakes.h"

#include <gtest/gtest.h>

namespace tarvo::accelerator {

constexpr std::int64_t frameDuration = 400'000;
inline const tests::VideoKind usualKind{MEDIASUBTYPE_YUY2, 4, 2, 16, 16, frameDuration};

/// A source, the accelerator and a sink, connected but for what a test does by itself.
class CAcceleratorTest : public testing::Test {
protected:
    CAcceleratorTest() {
        m_services.setDword("DBGView", 2);
        filter = com::makeObject<CAcceleratorFilter>(com::Outer{}, m_log);
    }
    ~CAcceleratorTest() override {
        // Connected pins hold one another's filters.
        for (IBaseFilter* one :
             {static_cast<IBaseFilter*>(sink.get()), static_cast<IBaseFilter*>(filter.get()),
              static_cast<IBaseFilter*>(source.get())}) {
            if (one == nullptr)
                continue;
            EXPECT_EQ(one->Stop(), S_OK);
            for (const PIN_DIRECTION direction : {PINDIR_INPUT, PINDIR_OUTPUT}) {
                if (const auto pin = tests::pinOf(*one, direction)) {
                    EXPECT_GE(pin->Disconnect(), S_OK);
                }
            }
        }
    }

    void connect(const tests::VideoKind& kind = usualKind, const tests::VideoKind* sinkKind = nullptr) {
        source = com::makeObject<tests::CFakeSource>(kind);
        const dshow::CPinType type = tests::typeOf(kind);
        ASSERT_EQ(source->pin().Connect(input().get(), &type.get()), S_OK);
        const dshow::CPinType given = tests::typeOf(sinkKind != nullptr ? *sinkKind : kind);
        ASSERT_EQ(output()->Connect(&sink->pin(), &given.get()), S_OK);
    }
    void run() {
        ASSERT_EQ(sink->Run(0), S_OK);
        ASSERT_EQ(filter->Run(0), S_OK);
        ASSERT_EQ(source->Run(0), S_OK);
    }
    /// As a graph does it: from the end.
    void stop() {
        EXPECT_EQ(sink->Stop(), S_OK);
        EXPECT_EQ(filter->Stop(), S_OK);
        EXPECT_EQ(source->Stop(), S_OK);
    }

    com::ComPtr<IPin> input() { return tests::pinOf(*filter, PINDIR_INPUT); }
    com::ComPtr<IPin> output() { return tests::pinOf(*filter, PINDIR_OUTPUT); }
    com::ComPtr<IMemInputPin> transport() { return input().as<IMemInputPin>(); }

    std::vector<std::string> takeLines() { return std::exchange(m_services.debuggerLines, {}); }

private:
    // Before the filter, which logs to the end.
    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log{m_services};

public:
    com::ComPtr<tests::CFakeSource> source;
    com::ComPtr<CAcceleratorFilter> filter;
    com::ComPtr<tests::CFakeSink> sink = com::makeObject<tests::CFakeSink>();
};

} // namespace tarvo::accelerator
