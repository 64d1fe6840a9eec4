#pragma once

#include "interfaces/TarvoVideoTransform.h"
#include "tests/graph/DirectRun.h"
#include "tests/support/graph/FrameSink.h"
#include "tests/support/graph/FrameSource.h"
#include "tests/support/graph/GraphSystem.h"
#include "tests/support/graph/SceneFrames.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace tarvo::tests {

using com::ComPtr;

/// What a graph is made of.
struct GraphPlan {
    GUID input = MEDIASUBTYPE_YUY2;
    GUID output = MEDIASUBTYPE_RGB32;
    LONG viewType = TarvoVideoTransformLib::single;
    int frameCount = 40;
    /// Output frames a second; 0: as many as come in.
    double frameRate = 0.0;
    LONG options = 0;
    /// Changes the source's frame `index`, which lasts from index to index + 1 frame durations at first.
    std::function<void(SourceFrame&, int)> edit;
};

/// source → transform → sink, from 160×120 to 96×64.
class CTransformGraph : public testing::Test {
protected:
    CTransformGraph() = default;
    ~CTransformGraph() override;

    /// Puts the filters into a graph and, unless that is not wanted, connects them.
    void build(const GraphPlan& plan, bool isConnected = true);
    void connectSource();

    /// Plays to the end, stops, and tells what came out. The sink has to hear of the end exactly once.
    std::vector<Delivery> play();
    HRESULT inject() { return transform->InjectAcceleratorFilter(accelerator.put()); }

    /// The source's frames from one on, all or so many.
    std::vector<SourceFrame> framesFrom(int first) const {
        return framesFrom(first, m_plan.frameCount - first);
    }
    std::vector<SourceFrame> framesFrom(int first, int count) const;
    /// What another transform with the same settings makes of these frames, outside of any graph.
    std::vector<Delivery> driven(const std::vector<SourceFrame>& frames);

    /// The filter that delivers to one; null if none does.
    static ComPtr<IBaseFilter> upstreamOf(IBaseFilter& filter);
    int filterCount();

    // Everything below is built anew by build(); the first is there from the beginning.
    CGraphSystem system;
    std::unique_ptr<IGraphPlayer> player;
    ComPtr<CFrameSource> source;
    ComPtr<IBaseFilter> filter; ///< with the transform in it
    ComPtr<CFrameSink> sink;
    ComPtr<IDewarpingTransform> transform;
    ComPtr<IAccelerator> accelerator; ///< the last one that was injected

private:
    SourceFrame makeFrame(int index) const;
    void configure(IDewarpingTransform& settings) const;

    GraphPlan m_plan;
    std::unique_ptr<CSceneFrames> m_frames;
};

/// The same frames with the same times.
void expectSame(const std::vector<Delivery>& actual, const std::vector<Delivery>& expected);

/// Frames that follow one another without a gap, from `start` on.
void expectTimes(const std::vector<Delivery>& actual, std::size_t count, REFERENCE_TIME start,
                 REFERENCE_TIME duration);

} // namespace tarvo::tests
