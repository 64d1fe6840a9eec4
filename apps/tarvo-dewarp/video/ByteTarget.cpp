#include "apps/tarvo-dewarp/video/ByteTarget.h"

#include "apps/tarvo-dewarp/Program.h"
#include "apps/tarvo-dewarp/video/Interruption.h"

#include <cerrno>
#include <iostream>
#include <system_error>
#ifdef _WIN32
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#endif

namespace tarvo::apps::video {
namespace {

class CFileTarget final : public IByteTarget {
public:
    explicit CFileTarget(const std::filesystem::path& path) : m_file(path) {}

    void write(std::span<const std::uint8_t> bytes) override { m_file.write(bytes); }
    void finish() override { m_file.replaceTarget(); }

private:
    CReplacement m_file;
};

class CStreamTarget final : public IByteTarget {
public:
    explicit CStreamTarget(std::ostream& stream) : m_stream(stream) { makeBinary(stream); }

    void write(std::span<const std::uint8_t> bytes) override {
        errno = 0;
        m_stream.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        requireGood();
    }

    void finish() override {
        errno = 0;
        m_stream.flush();
        requireGood();
    }

private:
    void requireGood() const {
        if (m_stream) {
            return;
        }
        const int reason = errno;
        // A signal ends waiting for a reader, too.
        CInterruption::check();
        if (reason == EPIPE) {
            // Whoever read has seen enough, and says so.
            throw QuietEnd{exitFailure};
        }
        throw FileError("standard output",
                        reason != 0 ? std::generic_category().message(reason) : "it cannot be written");
    }

    std::ostream& m_stream;
};

} // namespace

std::unique_ptr<IByteTarget> openByteTarget(const std::string& name, std::ostream& standardOutput) {
    if (name == standardStream) {
        return std::make_unique<CStreamTarget>(standardOutput);
    }
    return std::make_unique<CFileTarget>(pathFromText(name));
}

#ifdef _WIN32

void makeBinary(const std::ostream& stream) {
    if (&stream == &std::cout) {
        _setmode(_fileno(stdout), _O_BINARY);
    }
}

void makeBinary(const std::istream& stream) {
    if (&stream == &std::cin) {
        _setmode(_fileno(stdin), _O_BINARY);
    }
}

#else

void makeBinary(const std::ostream&) {}

void makeBinary(const std::istream&) {}

#endif

} // namespace tarvo::apps::video
