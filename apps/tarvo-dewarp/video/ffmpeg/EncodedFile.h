#pragma once

#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/ffmpeg/Ffmpeg.h"

#include <exception>
#include <filesystem>
#include <string>

namespace tarvo::apps::video::ffmpeg {

/// The kind of file that a name stands for. Throws FileError for none, and for kinds that are several files.
const AVOutputFormat& outputFormatOf(const std::string& name);

/// A file that the libraries write; it takes its name only when it is whole. Methods may throw FileError,
/// std::bad_alloc.
class CEncodedFile {
public:
    explicit CEncodedFile(const std::string& name);
    ~CEncodedFile();
    CEncodedFile(const CEncodedFile&) = delete;
    CEncodedFile& operator=(const CEncodedFile&) = delete;

    const std::filesystem::path& name() const { return m_name; }
    const AVOutputFormat& format() const { return *m_context->oformat; }

    /// Adds the one stream that there is and writes what stands before the frames.
    void begin(const AVCodecContext& encoder);
    /// Writes an encoded frame with times in the encoder's units; the packet is empty then.
    void write(AVPacket& packet, AVRational timeBase);
    /// Writes what stands behind the frames; the file is there then.
    void finish();

private:
    struct FreeContext {
        void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    };

    static int writeBytes(void* file, std::uint8_t* bytes, int count) noexcept;
    static std::int64_t seek(void* file, std::int64_t offset, int origin) noexcept;
    void require(int result, const char* step);

    std::filesystem::path m_name;
    CReplacement m_file;
    std::int64_t m_position = 0;
    std::int64_t m_size = 0;
    std::exception_ptr m_failure; ///< of our file: exceptions do not pass through the libraries
    AVIOContext* m_io = nullptr;
    std::unique_ptr<AVFormatContext, FreeContext> m_context;
    AVStream* m_stream = nullptr; ///< the context's
};

} // namespace tarvo::apps::video::ffmpeg
