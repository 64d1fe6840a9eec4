#pragma once

#include "bench/comparison/Contender.h"
#include "bench/comparison/Inputs.h"

#include <memory>
#include <vector>

struct AVFilterContext;
struct AVFilterGraph;
struct AVFrame;

namespace tarvo::bench {

/// FFmpeg's filter v360 in a graph of its own, from yuv420p frames over our memory to yuv420p frames of the
/// graph's pool, with slices of a frame in as many threads as it may have. Its maps are made once; a view
/// that moves gets one command a frame. The inputs outlive it.
class CV360Filter final : public IContender {
public:
    /// YV12 work alone; throws std::runtime_error.
    CV360Filter(const Work& work, const CInputs& inputs, int threads);
    ~CV360Filter() override;
    CV360Filter(const CV360Filter&) = delete;
    CV360Filter& operator=(const CV360Filter&) = delete;

    void frame(int number) override;
    render::Picture picture() const override;

private:
    struct FreeFrame {
        void operator()(AVFrame* frame) const;
    };
    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const;
    };
    using Frame = std::unique_ptr<AVFrame, FreeFrame>;

    Frame wrap(int number) const;
    void turnTo(double sweep);

    Work m_work;
    const CInputs& m_inputs;
    std::unique_ptr<AVFilterGraph, FreeGraph> m_graph;
    AVFilterContext* m_source = nullptr;
    std::vector<AVFilterContext*> m_sinks;
    Frame m_wrapped[CInputs::count];
    std::vector<Frame> m_outputs;
    double m_sweepDegrees = 0.0;
};

} // namespace tarvo::bench
