#include "apps/tarvo-dewarp/video/Moves.h"

#include "apps/host/HostError.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"
#include "com/ComPtr.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarvo::apps::video {
namespace {

using Read = double (*)(const std::string&, const std::string&);
using Ptz = IVirtualPtzFromPanoramaControl;

double readHorizontal(const std::string& name, const std::string& text) {
    return readNumber(name, text, 1.0, 360.0, "a number of degrees from 1 to 360");
}

double readVertical(const std::string& name, const std::string& text) {
    return readNumber(name, text, 1.0, 180.0, "a number of degrees from 1 to 180");
}

struct Property {
    std::string_view name;
    Read read;
    HRESULT (STDMETHODCALLTYPE IDewarpingTransform::*put)(double);
    HRESULT (STDMETHODCALLTYPE Ptz::*putVirtual)(double);
};

// In the order of putting: a field of view limits how far the virtual camera can be turned, and what the
// panorama is limits both.
constexpr std::array<Property, 14> properties{
    {{"effect-level", readFraction, &IDewarpingTransform::put_EffectLevel, nullptr},
     {"panorama-field-of-view", readHorizontal, &IDewarpingTransform::put_PanoramaFieldOfView, nullptr},
     {"panorama-pan-offset", readAngle, &IDewarpingTransform::put_PanoramaPanOffset, nullptr},
     {"field-of-view", readAngle, &IDewarpingTransform::put_FieldOfView, nullptr},
     {"tilt", readAngle, &IDewarpingTransform::put_Tilt, nullptr},
     {"pan", readAngle, &IDewarpingTransform::put_Pan, nullptr},
     {"virtual-ptz-panorama-horizontal-field-of-view", readHorizontal, nullptr,
      &Ptz::put_PanoramaHorizontalFieldOfView},
     {"virtual-ptz-panorama-vertical-field-of-view", readVertical, nullptr,
      &Ptz::put_PanoramaVerticalFieldOfView},
     {"virtual-ptz-camera-pitch", readAngle, nullptr, &Ptz::put_CameraPitch},
     {"virtual-ptz-camera-roll", readAngle, nullptr, &Ptz::put_CameraRoll},
     {"virtual-ptz-effect-level", readFraction, nullptr, &Ptz::put_EffectLevel},
     {"virtual-ptz-field-of-view", readAngle, nullptr, &Ptz::put_FieldOfView},
     {"virtual-ptz-tilt", readAngle, nullptr, &Ptz::put_Tilt},
     {"virtual-ptz-pan", readAngle, nullptr, &Ptz::put_Pan}}};

std::string propertyNames() {
    std::string names;
    for (const Property& property : properties) {
        names += (names.empty() ? "" : ", ") + std::string(property.name);
    }
    return names;
}

std::size_t propertyOf(const std::string& name) {
    const auto found = std::ranges::find(properties, name, &Property::name);
    if (found == properties.end()) {
        throw UsageError("no property \"" + name + "\"; there are: " + propertyNames());
    }
    return static_cast<std::size_t>(found - properties.begin());
}

/// Seconds, minutes:seconds or hours:minutes:seconds.
std::int64_t readTime(const std::string& text) {
    const std::string allowed = "seconds, or [h:]mm:ss, up to 1000 hours";
    constexpr double longest = 3.6e6;
    double seconds = 0.0;
    std::size_t parts = 0;
    for (std::size_t begin = 0; begin <= text.size(); ++parts) {
        const std::size_t end = std::min(text.find(':', begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        const bool isLast = end == text.size();
        // What follows a colon counts up to 60, and only the last part has decimals.
        const double value = readNumber("time", part, 0.0, longest, allowed);
        if (parts == 3 || (parts > 0 && value >= 60.0) || (!isLast && value != std::floor(value))) {
            refuseValue("time", text, allowed);
        }
        seconds = seconds * 60.0 + value;
        begin = end + 1;
    }
    if (seconds > longest) {
        refuseValue("time", text, allowed);
    }
    return std::llround(seconds * static_cast<double>(ticksPerSecond));
}

Easing readEasing(const std::string& text) {
    if (text == "ease-in-out") {
        return Easing::easeInOut;
    }
    if (text == "linear") {
        return Easing::linear;
    }
    if (text == "hold") {
        return Easing::hold;
    }
    refuseValue("easing", text, "ease-in-out, linear or hold");
}

/// The words of a line up to a remark.
std::vector<std::string> wordsOf(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    line = line.substr(0, line.find('#'));
    std::vector<std::string> words;
    for (;;) {
        const std::size_t begin = line.find_first_not_of(blanks);
        if (begin == std::string_view::npos) {
            return words;
        }
        line.remove_prefix(begin);
        const std::size_t size = std::min(line.find_first_of(blanks), line.size());
        words.emplace_back(line.substr(0, size));
        line.remove_prefix(size);
    }
}

double valueAt(const std::vector<Move>& moves, std::int64_t time) {
    const auto next = std::ranges::upper_bound(moves, time, {}, &Move::time);
    const Move& last = *(next - 1);
    if (next == moves.end() || next->easing == Easing::hold) {
        return last.value;
    }
    double share = static_cast<double>(time - last.time) / static_cast<double>(next->time - last.time);
    if (next->easing == Easing::easeInOut) {
        share = share * share * (3.0 - 2.0 * share);
    }
    return last.value + share * (next->value - last.value);
}

com::ComPtr<Ptz> virtualPtzOf(IDewarpingTransform& transform) {
    com::ComPtr<IUnknown> control;
    host::requireStep(transform.get_CustomTransformControl(control.put()), "getting CustomTransformControl");
    HRESULT result = S_OK;
    auto ptz = control.as<Ptz>(result);
    host::requireStep(result, "getting the virtual camera");
    return ptz;
}

} // namespace

CMoves CMoves::parse(std::string_view text, const std::string& file) {
    CMoves result;
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3); // some editors begin a file with this mark
    }
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        try {
            const std::vector<std::string> words = wordsOf(line);
            if (words.empty()) {
                continue;
            }
            if (words.size() < 3 || words.size() > 4) {
                throw UsageError("a move is a time, a property, a value and perhaps an easing");
            }
            Move move;
            move.time = readTime(words[0]);
            const std::size_t property = propertyOf(words[1]);
            move.value = properties[property].read(words[1], words[2]);
            if (words.size() == 4) {
                move.easing = readEasing(words[3]);
            }
            const auto track = std::ranges::lower_bound(result.m_tracks, property, {}, &Track::property);
            if (track == result.m_tracks.end() || track->property != property) {
                result.m_tracks.insert(track, {property, {move}});
                continue;
            }
            const auto place = std::ranges::lower_bound(track->moves, move.time, {}, &Move::time);
            if (place != track->moves.end() && place->time == move.time) {
                throw UsageError(words[1] + " has a value at this time already");
            }
            track->moves.insert(place, move);
        } catch (const UsageError& error) {
            throw UsageError(file + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return result;
}

bool CMoves::moveVirtualCamera() const {
    return std::ranges::any_of(
        m_tracks, [](const Track& track) { return properties[track.property].putVirtual != nullptr; });
}

std::vector<CMoves::Value> CMoves::at(std::int64_t time) const {
    std::vector<Value> values;
    for (const Track& track : m_tracks) {
        if (track.moves.front().time <= time) {
            values.emplace_back(properties[track.property].name, valueAt(track.moves, time));
        }
    }
    return values;
}

CMoves readMoves(const std::filesystem::path& path) {
    constexpr std::uintmax_t largest = 1 << 24;
    const std::uintmax_t size = ordinaryFileSize(path);
    if (size > largest) {
        throw FileError(path, "it is too large for a file of moves");
    }
    const std::vector<std::uint8_t> bytes = readBeginning(path, static_cast<std::size_t>(size));
    const std::u8string name = path.u8string();
    return CMoves::parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                         {name.begin(), name.end()});
}

void CMover::moveTo(std::int64_t time) {
    std::vector<CMoves::Value> values = m_moves.at(time);
    for (const CMoves::Value& value : values) {
        // A put makes the transform draw a repeated frame anew.
        if (std::ranges::find(m_last, value) != m_last.end()) {
            continue;
        }
        const Property& property = *std::ranges::find(properties, value.first, &Property::name);
        const std::string step = "setting " + std::string(property.name);
        host::requireStep(property.put != nullptr
                              ? (m_transform.*property.put)(value.second)
                              : (*virtualPtzOf(m_transform).*property.putVirtual)(value.second),
                          step.c_str());
    }
    m_last = std::move(values);
}

} // namespace tarvo::apps::video
