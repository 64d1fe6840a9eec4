#include "apps/tarvo-dewarp/video/Y4mSink.h"

#include "apps/tarvo-dewarp/video/Interruption.h"
#include "apps/tarvo-dewarp/video/Y4mHeader.h"

#include <string>
#include <string_view>

namespace tarvo::apps::video {
namespace {

std::span<const std::uint8_t> bytesOf(const std::byte* bytes, std::size_t size) {
    return {reinterpret_cast<const std::uint8_t*>(bytes), size};
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

CY4mSink::CY4mSink(std::unique_ptr<IByteTarget> target, const VideoOutput& video)
    : m_target(std::move(target)), m_planes(yv12Planes(video.format)), m_pace(video.rate) {
    m_target->write(bytesOf(
        y4mHeaderLine(video.format.width, video.format.height, video.rate, video.isFullRange) + '\n'));
}

void CY4mSink::put(std::span<const std::byte> frame, std::int64_t start, std::int64_t duration) {
    write(m_pace.repeatsUntil(start, duration));
    m_held.assign(frame.begin(), frame.end());
}

void CY4mSink::finish() {
    write(m_pace.repeatsToEnd());
    m_target->finish();
}

void CY4mSink::write(std::int64_t repeats) {
    for (; repeats > 0; --repeats) {
        CInterruption::check();
        m_target->write(bytesOf("FRAME\n"));
        // The stream wants the blue colours first.
        for (const Plane* const plane : {&m_planes.luma, &m_planes.blue, &m_planes.red}) {
            for (std::size_t y = 0; y < plane->height; ++y) {
                m_target->write(bytesOf(m_held.data() + plane->offset + y * plane->stride, plane->width));
            }
        }
    }
}

} // namespace tarvo::apps::video
