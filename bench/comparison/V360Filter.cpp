#include "bench/comparison/V360Filter.h"

#include "bench/comparison/Pictures.h"
#include "bench/measure/Formatted.h"

#include <cmath>
#include <new>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
}

namespace tarvo::bench {
namespace {

constexpr double degreesPerRadian = 180.0 / std::numbers::pi;

void require(int result, const char* step) {
    if (result < 0) {
        throw std::runtime_error(std::string("FFmpeg: ") + step + " failed (" + std::to_string(result) + ")");
    }
}

/// The lens of all pictures: half a circle over the height, the width in proportion.
std::string inputOptions(const Work& work) {
    return formatted("v360=input=fisheye:ih_fov=%.6f:iv_fov=180:interp=linear",
                     180.0 * work.inputWidth / work.inputHeight);
}

std::string flatFilter(const Work& work, const View& view) {
    std::string text = inputOptions(work);
    text += formatted(":output=flat:w=%d:h=%d:h_fov=%.6f:v_fov=%.6f", view.width, view.height,
                      2.0 * std::atan(view.tanHalfWidth) * degreesPerRadian,
                      2.0 * std::atan(view.tanHalfHeight) * degreesPerRadian);
    if (work.mounting == geometry::TiltOrientation::wall) {
        return text + formatted(":yaw=%.6f:pitch=%.6f", view.panDegrees, view.tiltDegrees);
    }
    // The lens looks straight down: the view is raised from there and then turned about the lens's axis.
    const double roll = std::remainder(view.panDegrees, 360.0);
    return text + formatted(":pitch=%.6f:roll=%.6f:rorder=rpy", view.tiltDegrees + 90.0, roll);
}

/// A cylinder whose middle lies in the middle of the strip, so that all of it shows the room; an upright one
/// would have to be twice as high, half of it black.
std::string cylinderFilter(const Work& work) {
    return inputOptions(work) + formatted(":output=cylindrical:w=%d:h=%d:h_fov=%.6f:v_fov=%.6f:pitch=%.6f",
                                          work.outputWidth, work.outputHeight, panoramaWidthDegrees,
                                          panoramaHeightDegrees, 90.0 - panoramaHeightDegrees / 2.0);
}

std::string graphText(const Work& work) {
    std::string text = formatted("buffer@in=video_size=%dx%d:pix_fmt=yuv420p:time_base=1/25", work.inputWidth,
                                 work.inputHeight);
    if (isPanorama(work)) {
        return text + "," + cylinderFilter(work) + ",buffersink@out0";
    }
    const std::vector<View> views = viewsOf(work);
    if (views.size() == 1) {
        return text + "," + flatFilter(work, views.front()) + ",buffersink@out0";
    }
    text += ",split=" + std::to_string(views.size());
    std::string branches;
    for (std::size_t i = 0; i < views.size(); ++i) {
        text += formatted("[in%zu]", i);
        branches +=
            formatted(";[in%zu]", i) + flatFilter(work, views[i]) + formatted(",buffersink@out%zu", i);
    }
    return text + branches;
}

} // namespace

void CV360Filter::FreeFrame::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

void CV360Filter::FreeGraph::operator()(AVFilterGraph* graph) const {
    avfilter_graph_free(&graph);
}

CV360Filter::CV360Filter(const Work& work, const CInputs& inputs, int threads)
    : m_work(work), m_inputs(inputs), m_graph(avfilter_graph_alloc()) {
    if (m_graph == nullptr) {
        throw std::bad_alloc();
    }
    av_log_set_level(AV_LOG_ERROR);
    m_graph->nb_threads = threads;
    m_graph->thread_type = AVFILTER_THREAD_SLICE;
    AVFilterInOut* openInputs = nullptr;
    AVFilterInOut* openOutputs = nullptr;
    const int parsed =
        avfilter_graph_parse2(m_graph.get(), graphText(work).c_str(), &openInputs, &openOutputs);
    avfilter_inout_free(&openInputs);
    avfilter_inout_free(&openOutputs);
    require(parsed, "reading the graph");
    require(avfilter_graph_config(m_graph.get(), nullptr), "preparing the graph");
    m_source = avfilter_graph_get_filter(m_graph.get(), "buffer@in");
    const std::size_t outputs = isPanorama(work) ? 1 : viewsOf(work).size();
    for (std::size_t i = 0; i < outputs; ++i) {
        m_sinks.push_back(
            avfilter_graph_get_filter(m_graph.get(), formatted("buffersink@out%zu", i).c_str()));
        m_outputs.emplace_back(av_frame_alloc());
        if (m_outputs.back() == nullptr) {
            throw std::bad_alloc();
        }
    }
    if (m_source == nullptr || m_sinks.back() == nullptr) {
        throw std::runtime_error("FFmpeg: the graph lacks an end");
    }
    for (int number = 0; number < CInputs::count; ++number) {
        m_wrapped[number] = wrap(number);
    }
}

CV360Filter::~CV360Filter() = default;

CV360Filter::Frame CV360Filter::wrap(int number) const {
    Frame frame(av_frame_alloc());
    if (frame == nullptr) {
        throw std::bad_alloc();
    }
    const std::size_t luma = static_cast<std::size_t>(m_work.inputWidth) * m_work.inputHeight;
    std::uint8_t* const bytes = m_inputs.bytes(number);
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = m_work.inputWidth;
    frame->height = m_work.inputHeight;
    // YV12 has its planes the other way round.
    frame->data[0] = bytes;
    frame->data[1] = bytes + luma + luma / 4;
    frame->data[2] = bytes + luma;
    frame->linesize[0] = m_work.inputWidth;
    frame->linesize[1] = frame->linesize[2] = m_work.inputWidth / 2;
    frame->buf[0] = av_buffer_create(
        bytes, luma / 2 * 3, [](void*, std::uint8_t*) {}, nullptr, AV_BUFFER_FLAG_READONLY);
    if (frame->buf[0] == nullptr) {
        throw std::bad_alloc();
    }
    return frame;
}

void CV360Filter::turnTo(double sweep) {
    // Commands turn the view on from where it is.
    char answer[64];
    require(avfilter_graph_send_command(m_graph.get(), "v360", "yaw",
                                        formatted("%.6f", sweep - m_sweepDegrees).c_str(), answer,
                                        sizeof answer, 0),
            "turning the view");
    m_sweepDegrees = sweep;
}

void CV360Filter::frame(int number) {
    if (m_work.isMoving) {
        turnTo(sweepDegrees(number));
    }
    AVFrame* const input = m_wrapped[number % CInputs::count].get();
    input->pts = number;
    require(av_buffersrc_add_frame_flags(m_source, input, AV_BUFFERSRC_FLAG_KEEP_REF),
            "handing the frame in");
    for (std::size_t i = 0; i < m_sinks.size(); ++i) {
        // What was given last goes back to the graph's pool only now, as with a host that looks at it
        // meanwhile.
        av_frame_unref(m_outputs[i].get());
        require(av_buffersink_get_frame(m_sinks[i], m_outputs[i].get()), "getting the frame");
    }
}

render::Picture CV360Filter::picture() const {
    render::Picture whole(m_work.outputWidth, m_work.outputHeight);
    int x = 0;
    int y = 0;
    for (const Frame& output : m_outputs) {
        pasteYv12({output->width,
                   output->height,
                   {output->data[0], output->data[2], output->data[1]},
                   {output->linesize[0], output->linesize[2], output->linesize[1]}},
                  x, y, whole);
        x += output->width;
        if (x == m_work.outputWidth) {
            x = 0;
            y += output->height;
        }
    }
    return whole;
}

} // namespace tarvo::bench
