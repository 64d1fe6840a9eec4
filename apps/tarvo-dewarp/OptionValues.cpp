#include "apps/tarvo-dewarp/OptionValues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tarvo::apps {
namespace {

// Beyond it a number would not fit the floats of the projection.
constexpr auto largestNumber = static_cast<double>(std::numeric_limits<float>::max());

const std::string sideAllowed = "a whole number of pixels from 1 to " + std::to_string(maxPictureSide);

/// The text as a value of type Number when it is one as a whole; a leading + is welcome.
template<typename Number>
std::optional<Number> wholeText(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return value;
}

/// The finite number from low to high that the text is.
std::optional<double> numberInRange(std::string_view text, double low, double high) {
    const std::optional<double> value = wholeText<double>(text);
    if (!value || !std::isfinite(*value) || *value < low || *value > high) {
        return std::nullopt;
    }
    return value;
}

std::optional<int> side(std::string_view text) {
    const std::optional<int> value = wholeText<int>(text);
    return value && *value >= 1 && *value <= maxPictureSide ? value : std::nullopt;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

/// `Count` numbers parted by commas, each from low to high.
template<std::size_t Count>
std::optional<std::array<double, Count>> numberList(std::string_view text, double low, double high) {
    const std::vector<std::string_view> parts = split(text, ',');
    std::array<double, Count> values{};
    if (parts.size() != Count) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < Count; ++i) {
        const std::optional<double> value = numberInRange(parts[i], low, high);
        if (!value) {
            return std::nullopt;
        }
        values[i] = *value;
    }
    return values;
}

template<typename Member>
struct Named {
    std::string_view name;
    Member member;
};

constexpr std::array<Named<ViewType>, 6> viewTypes{{{"single", ViewType::single},
                                                    {"quad", ViewType::quad},
                                                    {"panoramaSingle", ViewType::panoramaSingle},
                                                    {"panoramaDouble", ViewType::panoramaDouble},
                                                    {"singleOverview", ViewType::singleOverview},
                                                    {"custom", ViewType::custom}}};

constexpr std::array<Named<CustomTransformControlType>, 2> controlTypes{
    {{"digitalZoom", CustomTransformControlType::digitalZoom},
     {"virtualPtzFromPanorama", CustomTransformControlType::virtualPtzFromPanorama}}};

constexpr std::array<Named<TiltOrientation>, 4> tiltOrientations{{{"undef", TiltOrientation::undef},
                                                                  {"wall", TiltOrientation::wall},
                                                                  {"ceiling", TiltOrientation::ceiling},
                                                                  {"desk", TiltOrientation::desk}}};

template<typename Member, std::size_t Count>
Member readMember(std::span<const Named<Member>, Count> members, const std::string& option,
                  const std::string& text) {
    std::string allowed = "one of";
    for (const Named<Member>& candidate : members) {
        if (candidate.name == text) {
            return candidate.member;
        }
        allowed += (&candidate == members.data() ? " " : ", ") + std::string(candidate.name);
    }
    refuseValue(option, text, allowed);
}

} // namespace

void refuseValue(const std::string& option, const std::string& text, const std::string& allowed) {
    throw UsageError(option + ": \"" + text + "\" is not allowed; give " + allowed);
}

double readNumber(const std::string& option, const std::string& text, double low, double high,
                  const std::string& allowed) {
    if (const auto value = numberInRange(text, low, high)) {
        return *value;
    }
    refuseValue(option, text, allowed);
}

double readAngle(const std::string& option, const std::string& text) {
    return readNumber(option, text, -largestNumber, largestNumber,
                      "a finite number of degrees, such as 12.5");
}

double readFraction(const std::string& option, const std::string& text) {
    return readNumber(option, text, 0.0, 1.0, "a number from 0 to 1");
}

int readSide(const std::string& option, const std::string& text) {
    if (const auto value = side(text)) {
        return *value;
    }
    refuseValue(option, text, sideAllowed);
}

PictureSize readSize(const std::string& option, const std::string& text) {
    const std::vector<std::string_view> parts = split(text, 'x');
    if (parts.size() == 2) {
        const std::optional<int> width = side(parts[0]);
        const std::optional<int> height = side(parts[1]);
        if (width && height) {
            return {static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height)};
        }
    }
    refuseValue(option, text, "WIDTHxHEIGHT, such as 640x480, each " + sideAllowed);
}

ThreeNumbers readThreeNumbers(const std::string& option, const std::string& text,
                              const std::string& allowed) {
    if (const auto values = numberList<3>(text, -largestNumber, largestNumber)) {
        return {(*values)[0], (*values)[1], (*values)[2]};
    }
    refuseValue(option, text, allowed);
}

LensProfile readLensProfile(const std::string& option, const std::string& text) {
    const ThreeNumbers values = readThreeNumbers(
        option, text, "three finite numbers A,B,C parted by commas, such as -0.0226,0.015,0.3682");
    return {values.first, values.second, values.third};
}

Edges readExcludeArea(const std::string& option, const std::string& text) {
    const auto edges = numberList<4>(text, 0.0, 1.0);
    if (edges && (*edges)[0] <= (*edges)[2] && (*edges)[1] <= (*edges)[3]) {
        return {(*edges)[0], (*edges)[1], (*edges)[2], (*edges)[3]};
    }
    refuseValue(
        option, text,
        "LEFT,TOP,RIGHT,BOTTOM, each a number from 0 to 1, LEFT at most RIGHT and TOP at most BOTTOM");
}

Edges readViewRectangle(const std::string& option, const std::string& text) {
    const auto edges = numberList<4>(text, 0.0, 1.0);
    if (edges && (*edges)[0] < (*edges)[2] && (*edges)[1] < (*edges)[3]) {
        return {(*edges)[0], (*edges)[1], (*edges)[2], (*edges)[3]};
    }
    refuseValue(
        option, text,
        "LEFT,TOP,RIGHT,BOTTOM, each a number from 0 to 1, LEFT less than RIGHT and TOP less than BOTTOM");
}

ViewType readBuiltInViewType(const std::string& option, const std::string& text) {
    if (text == "custom") {
        throw UsageError(option + ": \"custom\" needs lookup tables, which this command cannot take");
    }
    return readMember(std::span(viewTypes).first<viewTypes.size() - 1>(), option, text);
}

ViewType readViewType(const std::string& option, const std::string& text) {
    return readMember(std::span(viewTypes), option, text);
}

CustomTransformControlType readControlType(const std::string& option, const std::string& text) {
    return readMember(std::span(controlTypes), option, text);
}

TiltOrientation readTiltOrientation(const std::string& option, const std::string& text) {
    return readMember(std::span(tiltOrientations), option, text);
}

} // namespace tarvo::apps
