#include "apps/tarvo-dewarp/video/Y4mSource.h"

#include "apps/tarvo-dewarp/PictureCoding.h"
#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/ByteTarget.h"
#include "apps/tarvo-dewarp/video/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace tarvo::apps::video {
namespace {

namespace fs = std::filesystem;

host::VideoFormat formatOf(const fs::path& name, const Y4mHeader& header) {
    try {
        return host::makeVideoFormat(host::FramePixels::yv12, header.width, header.height,
                                     startOf(1, header.rate));
    } catch (const std::invalid_argument& error) {
        throw FileError(name, error.what());
    }
}

/// Bytes that a frame takes in a stream: there odd sides are rounded up for the colours.
std::uint64_t streamFrameBytes(const Y4mHeader& header) {
    const auto width = static_cast<std::uint64_t>(header.width);
    const auto height = static_cast<std::uint64_t>(header.height);
    return width * height + 2 * ((width + 1) / 2) * ((height + 1) / 2);
}

constexpr std::string_view frameMagic = "FRAME";

/// A file together with its stream.
class CY4mFile final : public IVideoSource {
public:
    CY4mFile(const fs::path& path, std::unique_ptr<std::ifstream> stream, const Y4mHeader& header,
             std::uint64_t bytesOfFrames)
        : m_stream(std::move(stream)), m_source(path, *m_stream, header) {
        const std::uint64_t frame = frameMagic.size() + 1 + streamFrameBytes(header);
        if (bytesOfFrames != 0) {
            m_source.expectFrames(static_cast<std::int64_t>(bytesOfFrames / frame));
        }
    }

    const VideoInput& description() const override { return m_source.description(); }
    std::optional<VideoFrame> next() override { return m_source.next(); }

private:
    std::unique_ptr<std::ifstream> m_stream;
    CY4mSource m_source;
};

Y4mHeader readHeader(const fs::path& name, std::istream& stream) {
    try {
        const std::string line = readY4mLine(stream);
        CInterruption::check();
        if (line.empty() && stream.eof()) {
            throw CodingError("it is empty");
        }
        const Y4mHeader header = parseY4mHeader(line);
        if (stream.eof()) {
            throw CodingError("it ends in its first line");
        }
        return header;
    } catch (const CodingError& error) {
        throw FileError(name, error.what());
    }
}

} // namespace

CY4mSource::CY4mSource(const fs::path& name, std::istream& stream, const Y4mHeader& header)
    : m_name(name), m_stream(stream), m_description{formatOf(name, header), header.rate, {}},
      m_planes(yv12Planes(m_description.format)) {
    if (!header.isYv12()) {
        throw FileError(name, "frames of the kind C" + header.colourSpace +
                                  " cannot be read here; C420, C420jpeg, C420mpeg2 and C420paldv can");
    }
}

std::optional<VideoFrame> CY4mSource::next() {
    if (!readFrameLine()) {
        return std::nullopt;
    }
    const host::VideoFormat& format = m_description.format;
    VideoFrame frame;
    frame.bytes.resize(format.frameBytes);
    const auto width = static_cast<std::size_t>(format.width);
    const auto height = static_cast<std::size_t>(format.height);
    readPlane(frame.bytes, m_planes.luma, width, height);
    readPlane(frame.bytes, m_planes.blue, (width + 1) / 2, (height + 1) / 2);
    readPlane(frame.bytes, m_planes.red, (width + 1) / 2, (height + 1) / 2);
    frame.start = startOf(m_index, m_description.rate);
    frame.duration = startOf(m_index + 1, m_description.rate) - frame.start;
    ++m_index;
    return frame;
}

bool CY4mSource::readFrameLine() {
    std::string line;
    try {
        line = readY4mLine(m_stream);
    } catch (const CodingError&) {
        line = "?";
    }
    CInterruption::check();
    if (line.empty() && m_stream.eof()) {
        return false;
    }
    if (m_stream.eof() && frameMagic.starts_with(line)) {
        breakOff();
    }
    if (!line.starts_with(frameMagic) ||
        (line.size() > frameMagic.size() && line[frameMagic.size()] != ' ')) {
        throw FileError(m_name, "frame " + std::to_string(m_index + 1) +
                                    " does not begin with FRAME: the stream is damaged, or its size is not "
                                    "what its first line says");
    }
    return true;
}

void CY4mSource::readPlane(std::vector<std::byte>& frame, const Plane& plane, std::size_t fileWidth,
                           std::size_t fileHeight) {
    // Rows that follow each other are read at once; the transform has no place for the last half of an odd
    // side's colours.
    const bool isDense = plane.stride == fileWidth && plane.width == fileWidth && plane.height == fileHeight;
    std::vector<char> row(isDense ? 0 : fileWidth);
    const std::size_t rows = isDense ? 1 : fileHeight;
    for (std::size_t y = 0; y < rows; ++y) {
        char* const place = reinterpret_cast<char*>(frame.data() + plane.offset + y * plane.stride);
        const std::size_t count = isDense ? fileWidth * fileHeight : fileWidth;
        m_stream.read(isDense ? place : row.data(), static_cast<std::streamsize>(count));
        if (m_stream.gcount() != static_cast<std::streamsize>(count)) {
            CInterruption::check();
            breakOff();
        }
        if (!isDense && y < plane.height) {
            std::copy_n(row.data(), plane.width, place);
        }
    }
}

void CY4mSource::breakOff() const {
    throw FileError(m_name, "it ends in the middle of frame " + std::to_string(m_index + 1));
}

std::unique_ptr<IVideoSource> openY4m(const std::string& name) {
    if (name == standardStream) {
        makeBinary(std::cin);
        const fs::path shown = "standard input";
        return std::make_unique<CY4mSource>(shown, std::cin, readHeader(shown, std::cin));
    }
    const fs::path path = pathFromText(name);
    std::error_code ignored;
    const bool isOrdinary = fs::is_regular_file(path, ignored);
    errno = 0;
    auto stream = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (!*stream) {
        throw FileError(path, errno != 0 ? std::generic_category().message(errno) : "it cannot be opened");
    }
    const Y4mHeader header = readHeader(path, *stream);
    if (!header.isYv12() && isOrdinary) {
        return nullptr;
    }
    std::uint64_t bytesOfFrames = 0;
    if (isOrdinary) {
        bytesOfFrames = ordinaryFileSize(path) - static_cast<std::uint64_t>(stream->tellg());
        // Before memory is taken for a frame that is only a claim.
        if (bytesOfFrames != 0 && bytesOfFrames < streamFrameBytes(header)) {
            throw FileError(path, "it ends in the middle of frame 1");
        }
    }
    return std::make_unique<CY4mFile>(path, std::move(stream), header, bytesOfFrames);
}

} // namespace tarvo::apps::video
