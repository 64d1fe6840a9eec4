#include "apps/tarvo-dewarp/PnmPicture.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace tarvo::apps {
namespace {

constexpr int largestSample = 65535;

constexpr bool isSpace(std::uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

constexpr bool isDigit(std::uint8_t byte) {
    return byte >= '0' && byte <= '9';
}

class CPnmReader {
public:
    /// `bytes` start with the two letters of the kind.
    explicit CPnmReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes.subspan(2)) {}

    /// The next number of the head, 1 to `largest`.
    int number(const std::string& meaning, int largest) {
        skipSpaceAndComments();
        if (atEnd() || !isDigit(m_bytes.front())) {
            throw CodingError("it cannot be read as a picture: its head holds no " + meaning);
        }
        int value = 0;
        while (!atEnd() && isDigit(m_bytes.front())) {
            // Stopping to count above the limit keeps the sum from overflowing.
            value = std::min(value * 10 + (take() - '0'), largest + 1);
        }
        if (value < 1 || value > largest) {
            throw CodingError("it cannot be read as a picture: its " + meaning + " is not 1 to " +
                              std::to_string(largest));
        }
        return value;
    }

    /// The one white-space character between the head and the samples.
    void endHead() {
        if (atEnd() || !isSpace(take())) {
            throw CodingError("it cannot be read as a picture: its head does not end");
        }
    }

    std::span<const std::uint8_t> rest() const { return m_bytes; }

private:
    bool atEnd() const { return m_bytes.empty(); }

    std::uint8_t take() {
        const std::uint8_t byte = m_bytes.front();
        m_bytes = m_bytes.subspan(1);
        return byte;
    }

    void skipSpaceAndComments() {
        while (!atEnd() && (isSpace(m_bytes.front()) || m_bytes.front() == '#')) {
            if (take() == '#') {
                while (!atEnd() && m_bytes.front() != '\n' && m_bytes.front() != '\r') {
                    take();
                }
            }
        }
    }

    std::span<const std::uint8_t> m_bytes;
};

/// Sample `index` of the picture, scaled to 0 … 255.
std::uint8_t sampleAt(std::span<const std::uint8_t> samples, std::size_t index, int maximum) {
    int value = 0;
    if (maximum > 255) {
        value = samples[2 * index] * 256 + samples[2 * index + 1];
    } else {
        value = samples[index];
    }
    return static_cast<std::uint8_t>((std::min(value, maximum) * 255 + maximum / 2) / maximum);
}

} // namespace

bool isPnm(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 3 && bytes[0] == 'P' && (bytes[1] == '5' || bytes[1] == '6') &&
           (isSpace(bytes[2]) || bytes[2] == '#');
}

Picture decodePnm(std::span<const std::uint8_t> bytes) {
    const bool isColoured = bytes[1] == '6';
    CPnmReader reader(bytes);
    const int width = reader.number("width", maxPictureSide);
    const int height = reader.number("height", maxPictureSide);
    const int maximum = reader.number("largest sample", largestSample);
    reader.endHead();

    const std::span<const std::uint8_t> samples = reader.rest();
    const std::size_t channels = isColoured ? 3 : 1;
    const std::size_t bytesPerSample = maximum > 255 ? 2 : 1;
    const std::size_t pixelCount = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (samples.size() < pixelCount * channels * bytesPerSample) {
        throw CodingError("it cannot be read as a picture: its end is missing");
    }
    Picture picture(width, height);
    for (std::size_t i = 0; i < pixelCount; ++i) {
        const std::size_t first = i * channels;
        const std::uint8_t red = sampleAt(samples, first, maximum);
        const std::uint8_t green = isColoured ? sampleAt(samples, first + 1, maximum) : red;
        const std::uint8_t blue = isColoured ? sampleAt(samples, first + 2, maximum) : red;
        picture.pixels[i] = {blue, green, red, 255};
    }
    return picture;
}

} // namespace tarvo::apps
