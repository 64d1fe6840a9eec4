// The accelerator spliced into graphs in which it then has to work; the steps that only a graph of fakes can
// make fail are tested with the transform.

#include "com/Object.h"
#include "tests/graph/TransformGraph.h"

namespace tarvo::tests {
namespace {

using namespace TarvoVideoTransformLib;

class Injection : public CTransformGraph {
protected:
    LONG settings() {
        LONG value = -1;
        EXPECT_EQ(accelerator->get_Settings(&value), S_OK);
        return value;
    }
    /// Four frames, so many missing between the second and the third.
    static GraphPlan withGap(int missing) {
        GraphPlan plan;
        plan.frameCount = 4;
        plan.edit = [missing](SourceFrame& frame, int index) {
            frame.start += (index < 2 ? 0 : missing) * frameDuration;
            frame.stop += (index < 2 ? 0 : missing) * frameDuration;
        };
        return plan;
    }
    bool deliversTo(IUnknown* upstream, IBaseFilter& downstream) {
        const ComPtr<IBaseFilter> found = upstreamOf(downstream);
        return found ? com::isSameObject(found.get(), upstream) : upstream == nullptr;
    }
    /// As build() left them.
    void expectUntouched() {
        EXPECT_EQ(accelerator.get(), nullptr);
        EXPECT_EQ(filterCount(), 3);
        EXPECT_TRUE(deliversTo(static_cast<IBaseFilter*>(source.get()), *filter));
        EXPECT_TRUE(deliversTo(filter.get(), *sink));
    }
};

TEST_F(Injection, findsTheAcceleratorUnderItsName) {
    build({});
    ASSERT_EQ(inject(), S_OK);
    EXPECT_EQ(filterCount(), 4);
    ComPtr<IBaseFilter> found;
    ASSERT_EQ(player->graph().FindFilterByName(OLESTR("Accelerator"), found.put()), S_OK);
    EXPECT_TRUE(com::isSameObject(found.get(), accelerator.get()));
    EXPECT_TRUE(deliversTo(found.get(), *filter));
    EXPECT_TRUE(deliversTo(static_cast<IBaseFilter*>(source.get()), *found));
    EXPECT_EQ(settings(), 1);
}

TEST_F(Injection, twoOfThemDeliverTheSameFrames) {
    build({});
    const std::vector<Delivery> before = play();
    EXPECT_EQ(before.size(), 41U);
    ASSERT_EQ(inject(), S_OK);
    const auto first = accelerator.as<IBaseFilter>();
    // The graph finds another name for the second.
    ASSERT_GE(inject(), S_OK);
    const auto second = accelerator.as<IBaseFilter>();
    EXPECT_EQ(filterCount(), 5);
    EXPECT_TRUE(deliversTo(second.get(), *filter));
    EXPECT_TRUE(deliversTo(first.get(), *second));
    EXPECT_TRUE(deliversTo(static_cast<IBaseFilter*>(source.get()), *first));
    expectSame(play(), before);
    expectSame(play(), before);
}

TEST_F(Injection, fillsGapsOfABuiltInView) {
    for (const int missing : {1, 10}) {
        SCOPED_TRACE(missing);
        build(withGap(missing));
        EXPECT_EQ(play().size(), 5U) << "four and the repeat";
        ASSERT_EQ(inject(), S_OK);
        EXPECT_EQ(settings(), 1);
        // The fill frame lasts for the whole gap, of which the transform makes frames at its rate.
        const std::vector<Delivery> filled = play();
        expectTimes(filled, static_cast<std::size_t>(5 + missing), 0, frameDuration);
        const std::size_t next = filled.size() - 3;
        for (std::size_t i = 2; i < next; ++i)
            EXPECT_TRUE(filled[i].bytes == filled[1].bytes) << "frame " << i;
        EXPECT_TRUE(filled[next].bytes != filled[1].bytes);
    }
}

TEST_F(Injection, leavesGapsOfACustomView) {
    GraphPlan plan = withGap(10);
    plan.viewType = custom;
    build(plan);
    const std::vector<Delivery> before = play();
    ASSERT_EQ(before.size(), 5U);
    ASSERT_EQ(inject(), S_OK);
    EXPECT_EQ(settings(), 0);
    expectSame(play(), before);
}

TEST_F(Injection, isNothingForATransformByItself) {
    const auto alone = system.makeTransform().as<IDewarpingTransform>();
    EXPECT_EQ(alone->InjectAcceleratorFilter(accelerator.put()), E_NOINTERFACE);
    EXPECT_EQ(accelerator.get(), nullptr);
}

TEST_F(Injection, wantsAGraphAndAConnection) {
    const ComPtr<IBaseFilter> outside = system.makeTransformFilter();
    EXPECT_EQ(outside.as<IDewarpingTransform>()->InjectAcceleratorFilter(accelerator.put()),
              VFW_E_NOT_IN_GRAPH);

    build({}, false);
    EXPECT_EQ(inject(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(accelerator.get(), nullptr);
    EXPECT_EQ(filterCount(), 3);
    connectSource();
    EXPECT_EQ(inject(), S_OK) << "without a sink";
    EXPECT_EQ(filterCount(), 4);
}

TEST_F(Injection, whileTheGraphRunsLeavesAnAcceleratorThatNobodyDeliversTo) {
    build({});
    const std::vector<Delivery> before = play();
    ASSERT_GE(player->run(), S_OK);
    EXPECT_EQ(inject(), VFW_E_NOT_STOPPED);
    EXPECT_TRUE(player->waitForCompletion());
    EXPECT_GE(player->stop(), S_OK);
    expectSame(sink->takeFrames(), before);
    EXPECT_EQ(accelerator.get(), nullptr);
    EXPECT_TRUE(deliversTo(static_cast<IBaseFilter*>(source.get()), *filter));
    ASSERT_EQ(filterCount(), 4);
    ComPtr<IBaseFilter> left;
    ASSERT_EQ(player->graph().FindFilterByName(OLESTR("Accelerator"), left.put()), S_OK);
    EXPECT_EQ(upstreamOf(*left).get(), nullptr);
    EXPECT_EQ(player->graph().RemoveFilter(left.get()), S_OK);
    left.reset();
    expectUntouched();
    ASSERT_FALSE(HasFailure());
    ASSERT_EQ(inject(), S_OK);
    expectSame(play(), before);
}

TEST_F(Injection, restoresAConnectionThatTheSourceRefused) {
    build({});
    const std::vector<Delivery> before = play();
    source->refuseConnections(1);
    EXPECT_EQ(inject(), VFW_E_TYPE_NOT_ACCEPTED);
    expectUntouched();
    ASSERT_FALSE(HasFailure());
    expectSame(play(), before);
    ASSERT_EQ(inject(), S_OK);
    expectSame(play(), before);
}

TEST_F(Injection, aFailedRestorationLeavesTheTransformFree) {
    build({});
    const std::vector<Delivery> before = play();
    source->refuseConnections(2);
    EXPECT_EQ(inject(), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(filterCount(), 3);
    EXPECT_EQ(upstreamOf(*filter).get(), nullptr);
    EXPECT_TRUE(deliversTo(filter.get(), *sink));
    connectSource();
    expectUntouched();
    ASSERT_FALSE(HasFailure());
    expectSame(play(), before);
}

} // namespace
} // namespace tarvo::tests
