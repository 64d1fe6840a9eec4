#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

namespace tarvo::bench {

using Clock = std::chrono::steady_clock;

inline double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// How long the runs of one piece of work took, milliseconds.
class CTimes {
public:
    /// The time is finite and not negative; throws std::invalid_argument.
    void add(double milliseconds);

    std::size_t count() const { return m_sorted.size(); }
    /// The run that other work disturbed least. Throws std::logic_error without any run, as the others do.
    double best() const;
    /// Of an even number of runs the mean of the two in the middle.
    double median() const;

private:
    void requireRuns() const;

    std::vector<double> m_sorted;
};

/// How many times as fast as `other` the `own` work is: other's time by own time. Throws std::logic_error
/// when own took no time at all, since nothing was measured then.
double speedRatio(double otherMilliseconds, double ownMilliseconds);

} // namespace tarvo::bench
