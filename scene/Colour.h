#pragma once

namespace tarvo::scene {

/// Red, green and blue as displayed (gamma-encoded), 0 to 1. Mixing and averaging happen in this space, as
/// they do in the video pictures the room is compared with.
struct Colour {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;

    friend constexpr bool operator==(const Colour&, const Colour&) = default;
};

constexpr Colour operator+(const Colour& a, const Colour& b) {
    return {a.red + b.red, a.green + b.green, a.blue + b.blue};
}

constexpr Colour operator*(double factor, const Colour& a) {
    return {factor * a.red, factor * a.green, factor * a.blue};
}

/// `below` at share 0, `above` at share 1.
constexpr Colour mix(const Colour& below, const Colour& above, double share) {
    return (1.0 - share) * below + share * above;
}

} // namespace tarvo::scene
