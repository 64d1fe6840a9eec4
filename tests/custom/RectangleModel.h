#pragma once

#include <algorithm>
#include <cstdint>

namespace tarvo::custom {

/// One direction of a rectangle in whole numbers, where nothing is ever rounded: the model that the real one
/// is held against. One picture is `unit` long.
struct AxisModel {
    using Number = std::int64_t;
    static constexpr Number unit = Number{1} << 50;

    Number low = 0;
    Number high = unit;
    Number lowBound = 0;
    Number highBound = unit;
    Number least = 0;

    void normalise() {
        if (low < lowBound)
            low = lowBound;
        if (high > highBound)
            high = highBound;
        if (const Number missing = least - (high - low); missing > 0) {
            // Half of what is missing goes to the low side; then the high one is where the least size puts
            // it.
            low -= missing / 2;
            high = low + least;
        }
    }

    void inflate(Number by) {
        const Number pastHigh = std::max<Number>(high + by - highBound, 0);
        const Number pastLow = std::max<Number>(lowBound - low + by, 0);
        low -= by + pastHigh;
        high += by + pastLow;
        normalise();
    }

    void move(Number by) {
        if (low + by < lowBound)
            by = lowBound - low;
        else if (high + by > highBound)
            by = highBound - high;
        low += by;
        high += by;
    }

    void init(Number newLow, Number newHigh) {
        low = newLow;
        high = newHigh;
    }

    static double fraction(Number number) { return static_cast<double>(number) / static_cast<double>(unit); }
};

} // namespace tarvo::custom
