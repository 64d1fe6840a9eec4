#include "apps/tarvo-dewarp/video/Y4mHeader.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace tarvo::apps::video {
namespace {

constexpr std::string_view magic = "YUV4MPEG2";

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return value;
}

int side(std::string_view text, const char* what) {
    const auto value = wholeNumber(text);
    if (!value || *value < 1 || *value > maxPictureSide) {
        throw CodingError("its " + std::string(what) + " \"" + std::string(text) + "\" is not 1 to " +
                          std::to_string(maxPictureSide));
    }
    return static_cast<int>(*value);
}

FrameRate rateOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    const auto numerator = wholeNumber(text.substr(0, colon));
    const auto denominator =
        colon == std::string_view::npos ? std::nullopt : wholeNumber(text.substr(colon + 1));
    if (numerator && denominator && *numerator == 0 && *denominator == 0) {
        return {}; // says that it is unknown
    }
    const FrameRate rate{numerator.value_or(0), denominator.value_or(0)};
    if (!isPlausible(rate)) {
        throw CodingError("its frame rate \"" + std::string(text) + "\" is none that a video has");
    }
    return rate;
}

} // namespace

bool Y4mHeader::isYv12() const {
    // They differ in where between the pixels the colours were taken, by half a pixel at most.
    constexpr std::array<std::string_view, 4> names{"420", "420jpeg", "420mpeg2", "420paldv"};
    return std::ranges::find(names, std::string_view(colourSpace)) != names.end();
}

std::string readY4mLine(std::istream& stream) {
    std::string line;
    for (char c = 0; stream.get(c) && c != '\n';) {
        if (line.size() == maxY4mLine) {
            throw CodingError("it is no YUV4MPEG2 stream: a line has no end");
        }
        line += c;
    }
    return line;
}

Y4mHeader parseY4mHeader(std::string_view line) {
    if (!line.starts_with(magic) || (line.size() > magic.size() && line[magic.size()] != ' ')) {
        throw CodingError("it is no YUV4MPEG2 stream");
    }
    line.remove_prefix(magic.size());
    Y4mHeader header;
    while (!line.empty()) {
        line.remove_prefix(1); // the blank before each of them
        const std::string_view word = line.substr(0, line.find(' '));
        line.remove_prefix(word.size());
        if (word.empty()) {
            continue;
        }
        const std::string_view value = word.substr(1);
        switch (word[0]) {
        case 'W':
            header.width = side(value, "width");
            break;
        case 'H':
            header.height = side(value, "height");
            break;
        case 'F':
            header.rate = rateOf(value);
            break;
        case 'C':
            header.colourSpace = value;
            break;
        default:
            break; // the shape of pixels, interlacing and remarks change nothing here
        }
    }
    if (header.width == 0 || header.height == 0) {
        throw CodingError("its first line gives no " + std::string(header.width == 0 ? "width" : "height"));
    }
    return header;
}

std::string y4mHeaderLine(int width, int height, const FrameRate& rate, bool isFullRange) {
    return std::string(magic) + " W" + std::to_string(width) + " H" + std::to_string(height) + " F" +
           std::to_string(rate.numerator) + ":" + std::to_string(rate.denominator) +
           " Ip A1:1 C420jpeg XYSCSS=420JPEG XCOLORRANGE=" + (isFullRange ? "FULL" : "LIMITED");
}

} // namespace tarvo::apps::video
