#pragma once

#include "apps/tarvo-dewarp/WholeFile.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>

namespace tarvo::apps::video {

/// The name by which the command line means standard input or output.
inline constexpr const char* standardStream = "-";

/// Where the bytes of a video go, in order. Methods may throw FileError, QuietEnd.
class IByteTarget {
public:
    virtual ~IByteTarget() = default;
    virtual void write(std::span<const std::uint8_t> bytes) = 0;
    /// Everything was written.
    virtual void finish() = 0;
};

/// A file, which is there once it is finished, or for "-" the stream. Throws FileError.
std::unique_ptr<IByteTarget> openByteTarget(const std::string& name, std::ostream& standardOutput);

/// Takes standard output or input for bytes as they are, where that is not so anyway; streams that stand for
/// them in a test are not touched.
void makeBinary(const std::ostream& stream);
void makeBinary(const std::istream& stream);

} // namespace tarvo::apps::video
