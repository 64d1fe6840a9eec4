#pragma once

#include "apps/tarvo-dewarp/PictureCoding.h"
#include "apps/tarvo-dewarp/Values.h"

#include <CLI/App.hpp>

#include <stdexcept>
#include <string>
#include <utility>

namespace tarvo::apps {

/// Arguments that cannot be served; the text tells the user what would be.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Says that `text` is no value for `option`, and what is.
[[noreturn]] void refuseValue(const std::string& option, const std::string& text, const std::string& allowed);

// Readers of an option's text. What is not wholly a value in range is refused, so are infinities and what is
// no number.

/// A number from `low` to `high`, both included; `allowed` says so in words.
double readNumber(const std::string& option, const std::string& text, double low, double high,
                  const std::string& allowed);
/// Any finite angle that a float can hold, degrees.
double readAngle(const std::string& option, const std::string& text);
/// 0 to 1.
double readFraction(const std::string& option, const std::string& text);
/// 1 to maxPictureSide.
int readSide(const std::string& option, const std::string& text);
/// WIDTHxHEIGHT, each as a side.
PictureSize readSize(const std::string& option, const std::string& text);
/// A,B,C.
LensProfile readLensProfile(const std::string& option, const std::string& text);
/// LEFT,TOP,RIGHT,BOTTOM, fractions in that order.
Edges readExcludeArea(const std::string& option, const std::string& text);
/// The same, but not empty.
Edges readViewRectangle(const std::string& option, const std::string& text);
/// A member of the enumeration by its name; `custom` is refused.
ViewType readBuiltInViewType(const std::string& option, const std::string& text);
/// A member of the enumeration by its name.
ViewType readViewType(const std::string& option, const std::string& text);
CustomTransformControlType readControlType(const std::string& option, const std::string& text);
TiltOrientation readTiltOrientation(const std::string& option, const std::string& text);

/// Three numbers parted by commas, each read as `readNumber` would with the whole text in its message.
struct ThreeNumbers {
    double first;
    double second;
    double third;
};
ThreeNumbers readThreeNumbers(const std::string& option, const std::string& text, const std::string& allowed);

/// Adds an option (or, without dashes in its name, a positional argument) which sets `target`, which must
/// outlive the parsing, to what `read` makes of its name and text.
template<typename Value, typename Read>
CLI::Option* addValue(CLI::App& command, const std::string& name, Value& target, Read read,
                      const std::string& typeName, const std::string& description) {
    auto store = [&target, name, read = std::move(read)](const std::string& text) {
        target = read(name, text);
    };
    return command.add_option_function<std::string>(name, store, description)->type_name(typeName);
}

} // namespace tarvo::apps
