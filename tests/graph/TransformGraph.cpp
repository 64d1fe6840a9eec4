#include "tests/graph/TransformGraph.h"

#include "com/SafeArray.h"

#include <cstring>

namespace tarvo::tests {
namespace {

using namespace TarvoVideoTransformLib;

/// A table of 4×3 cells that shows the input mirrored left to right: its number, a reserved word, its size,
/// and of each cell where it looks, in 65535ths of the input, with full weight.
com::CSafeArray mirrorTable() {
    std::vector<std::uint16_t> words{1, 0, 4, 3};
    constexpr std::uint16_t columns[] = {65535, 43690, 21845, 0};
    constexpr std::uint16_t rows[] = {0, 32768, 65535};
    for (const std::uint16_t y : rows) {
        for (const std::uint16_t x : columns)
            words.insert(words.end(), {x, y, 65535});
    }
    com::CSafeArray table = com::CSafeArray::vector(VT_UI1, static_cast<std::uint32_t>(words.size() * 2));
    std::memcpy(com::CSafeArrayAccess<std::uint8_t>(table.get()).elements().data(), words.data(),
                words.size() * 2);
    return table;
}

} // namespace

CTransformGraph::~CTransformGraph() {
    accelerator.reset();
    transform.reset();
    // With it the connections go, by which filters hold one another.
    player.reset();
}

void CTransformGraph::configure(IDewarpingTransform& settings) const {
    EXPECT_EQ(settings.put_TiltOrientation(ceiling), S_OK);
    EXPECT_EQ(settings.put_OutputWidth(96), S_OK);
    EXPECT_EQ(settings.put_OutputHeight(64), S_OK);
    EXPECT_EQ(settings.put_OutputFrameRate(m_plan.frameRate), S_OK);
    EXPECT_EQ(settings.put_Options(m_plan.options), S_OK);
    EXPECT_EQ(settings.put_ViewType(m_plan.viewType), S_OK);
    if (m_plan.viewType == custom) {
        EXPECT_EQ(settings.SetCustomTransformData(mirrorTable().get(), 0), S_FALSE) << "no device has it yet";
    }
}

void CTransformGraph::build(const GraphPlan& plan, bool isConnected) {
    accelerator.reset();
    player.reset();
    m_plan = plan;
    m_frames = std::make_unique<CSceneFrames>(plan.input);
    source = com::makeObject<CFrameSource>(m_frames->type(), plan.frameCount,
                                           [this](int index) { return makeFrame(index); });
    sink = com::makeObject<CFrameSink>(plan.output);
    filter = system.makeTransformFilter();
    transform = filter.as<IDewarpingTransform>();
    ASSERT_TRUE(transform) << "the filter answers for the transform";
    configure(*transform);

    player = system.makePlayer();
    IFilterGraph& graph = player->graph();
    ASSERT_EQ(graph.AddFilter(source.get(), OLESTR("Source")), S_OK);
    ASSERT_EQ(graph.AddFilter(filter.get(), OLESTR("Transform")), S_OK);
    ASSERT_EQ(graph.AddFilter(sink.get(), OLESTR("Sink")), S_OK);
    if (!isConnected)
        return;
    connectSource();
    ASSERT_EQ(graph.ConnectDirect(pinOf(*filter, PINDIR_OUTPUT).get(), &sink->input(), nullptr), S_OK);
}

void CTransformGraph::connectSource() {
    ASSERT_EQ(player->graph().ConnectDirect(&source->output(), pinOf(*filter, PINDIR_INPUT).get(), nullptr),
              S_OK);
}

std::vector<Delivery> CTransformGraph::play() {
    const int ends = sink->ends();
    EXPECT_GE(player->run(), S_OK);
    EXPECT_TRUE(player->waitForCompletion());
    EXPECT_GE(player->stop(), S_OK);
    EXPECT_EQ(sink->ends(), ends + 1);
    return sink->takeFrames();
}

SourceFrame CTransformGraph::makeFrame(int index) const {
    SourceFrame frame{m_frames->frame(index), index * frameDuration, (index + 1) * frameDuration};
    if (m_plan.edit)
        m_plan.edit(frame, index);
    return frame;
}

std::vector<SourceFrame> CTransformGraph::framesFrom(int first, int count) const {
    std::vector<SourceFrame> frames;
    for (int i = first; i < first + count; ++i)
        frames.push_back(makeFrame(i));
    return frames;
}

std::vector<Delivery> CTransformGraph::driven(const std::vector<SourceFrame>& frames) {
    const ComPtr<IUnknown> other = system.makeTransform();
    configure(*other.as<IDewarpingTransform>());
    return driveDirectly(*other, m_frames->type(), sink->type(), frames);
}

ComPtr<IBaseFilter> CTransformGraph::upstreamOf(IBaseFilter& filter) {
    ComPtr<IPin> other;
    PIN_INFO info{};
    ComPtr<IBaseFilter> upstream;
    if (SUCCEEDED(pinOf(filter, PINDIR_INPUT)->ConnectedTo(other.put())) &&
        SUCCEEDED(other->QueryPinInfo(&info)))
        upstream.attach(info.pFilter);
    return upstream;
}

int CTransformGraph::filterCount() {
    ComPtr<IEnumFilters> filters;
    com::throwIfFailed(player->graph().EnumFilters(filters.put()));
    ComPtr<IBaseFilter> one;
    ULONG fetched = 0;
    int count = 0;
    while (filters->Next(1, one.put(), &fetched) == S_OK)
        ++count;
    return count;
}

void expectSame(const std::vector<Delivery>& actual, const std::vector<Delivery>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        ASSERT_EQ(actual[i].start, expected[i].start) << "frame " << i;
        ASSERT_EQ(actual[i].stop, expected[i].stop) << "frame " << i;
        ASSERT_TRUE(actual[i].bytes == expected[i].bytes) << "frame " << i << " has another picture";
    }
}

void expectTimes(const std::vector<Delivery>& actual, std::size_t count, REFERENCE_TIME start,
                 REFERENCE_TIME duration) {
    ASSERT_EQ(actual.size(), count);
    for (const Delivery& frame : actual) {
        ASSERT_EQ(frame.start, start);
        start += duration;
        ASSERT_EQ(frame.stop, start);
    }
}

} // namespace tarvo::tests
