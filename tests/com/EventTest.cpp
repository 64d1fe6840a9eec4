#include "com/Event.h"

#include "tests/com/EventObjects.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarvo::com {
namespace {

VARIANT longArgument(LONG value) {
    VARIANT argument{};
    argument.vt = VT_I4;
    argument.lVal = value;
    return argument;
}

class Event : public testing::Test {
protected:
    ~Event() override {
        m_source.reset();
        EXPECT_EQ(CLiving::count(), 0);
    }

    HRESULT fire() {
        const VARIANT arguments[] = {longArgument(0)};
        return fireEvent(m_source->dispatchEvents(), 1, arguments);
    }
    /// A sink that notes its name.
    ComPtr<CSink> named(const std::string& name, HRESULT result = S_OK) {
        return makeSink([this, name, result](DISPID, const DISPPARAMS&) {
            m_called += name;
            return result;
        });
    }

    ComPtr<CSource> m_source = makeObject<CSource>();
    std::string m_called;
};

TEST_F(Event, withoutSinksIsFine) {
    EXPECT_EQ(fire(), S_OK);
}

TEST_F(Event, hasItsArgumentsBackwards) {
    std::vector<LONG> seen;
    DISPID seenMember = 0;
    const ComPtr<CSink> sink = makeSink([&](DISPID member, const DISPPARAMS& parameters) {
        seenMember = member;
        EXPECT_EQ(parameters.cNamedArgs, 0U);
        for (UINT i = 0; i < parameters.cArgs; ++i)
            seen.push_back(parameters.rgvarg[i].lVal);
        return S_OK;
    });
    connect(*m_source, sink);
    const VARIANT arguments[] = {longArgument(1), longArgument(2), longArgument(3)};
    EXPECT_EQ(fireEvent(m_source->dispatchEvents(), 17, arguments), S_OK);
    EXPECT_EQ(seenMember, 17);
    EXPECT_EQ(seen, (std::vector<LONG>{3, 2, 1}));
    EXPECT_TRUE(sink->wasCalledRight());
}

TEST_F(Event, givesEachSinkFreshArguments) {
    std::vector<LONG> seen;
    const auto meddle = [&](DISPID, const DISPPARAMS& parameters) {
        seen.push_back(parameters.rgvarg[0].lVal);
        parameters.rgvarg[0].lVal = 99;
        return S_OK;
    };
    connect(*m_source, makeSink(meddle));
    connect(*m_source, makeSink(meddle));
    const VARIANT arguments[] = {longArgument(5)};
    EXPECT_EQ(fireEvent(m_source->dispatchEvents(), 1, arguments), S_OK);
    EXPECT_EQ(seen, (std::vector<LONG>{5, 5}));
    EXPECT_EQ(arguments[0].lVal, 5);
}

TEST_F(Event, reachesTheSinksInTheOrderOfTheirConnection) {
    connect(*m_source, named("a"));
    const DWORD cookie = connect(*m_source, named("b"));
    connect(*m_source, named("c"));
    fire();
    m_source->dispatchEvents().Unadvise(cookie);
    connect(*m_source, named("d"));
    fire();
    EXPECT_EQ(m_called, "abcacd");
}

TEST_F(Event, goesOnAfterAnErrorAndAnswersAsTheLastSink) {
    connect(*m_source, named("a", E_FAIL));
    connect(*m_source, named("b", S_OK));
    EXPECT_EQ(fire(), S_OK);
    connect(*m_source, named("c", E_ABORT));
    EXPECT_EQ(fire(), E_ABORT);
    EXPECT_EQ(m_called, "ababc");
}

TEST_F(Event, letsASinkDisconnectItself) {
    DWORD cookie = 0;
    ComPtr<CSink> sink = makeSink([&](DISPID, const DISPPARAMS&) {
        m_called += "x";
        // The only reference left is the caller's.
        EXPECT_EQ(m_source->dispatchEvents().Unadvise(cookie), S_OK);
        return S_OK;
    });
    cookie = connect(*m_source, sink);
    sink.reset();
    connect(*m_source, named("y"));
    EXPECT_EQ(CLiving::count(), 3);
    fire();
    EXPECT_EQ(CLiving::count(), 2);
    fire();
    EXPECT_EQ(m_called, "xyy");
}

TEST_F(Event, doesNotReachASinkDisconnectedMeanwhile) {
    DWORD second = 0;
    connect(*m_source, makeSink([&](DISPID, const DISPPARAMS&) {
        m_called += "x";
        m_source->dispatchEvents().Unadvise(second);
        return S_OK;
    }));
    second = connect(*m_source, named("y"));
    connect(*m_source, named("z"));
    fire();
    EXPECT_EQ(m_called, "xz");
}

TEST_F(Event, leavesASinkConnectedMeanwhileForTheNext) {
    bool isFirst = true;
    connect(*m_source, makeSink([&](DISPID, const DISPPARAMS&) {
        m_called += "x";
        if (isFirst)
            connect(*m_source, named("y"));
        isFirst = false;
        return S_OK;
    }));
    fire();
    EXPECT_EQ(m_called, "x");
    fire();
    EXPECT_EQ(m_called, "xxy");
}

TEST_F(Event, mayFireAnother) {
    int depth = 0;
    connect(*m_source, makeSink([&](DISPID, const DISPPARAMS&) {
        m_called += "x";
        if (++depth < 3)
            fire();
        return S_OK;
    }));
    connect(*m_source, named("y"));
    fire();
    EXPECT_EQ(m_called, "xxxyyy");
}

} // namespace
} // namespace tarvo::com
