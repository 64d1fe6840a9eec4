#include "bench/measure/Times.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace tarvo::bench {

void CTimes::add(double milliseconds) {
    if (!std::isfinite(milliseconds) || milliseconds < 0.0) {
        throw std::invalid_argument("a run takes a finite time that is not negative");
    }
    m_sorted.insert(std::ranges::upper_bound(m_sorted, milliseconds), milliseconds);
}

double CTimes::best() const {
    requireRuns();
    return m_sorted.front();
}

double CTimes::median() const {
    requireRuns();
    const std::size_t middle = m_sorted.size() / 2;
    return m_sorted.size() % 2 == 1 ? m_sorted[middle] : (m_sorted[middle - 1] + m_sorted[middle]) / 2.0;
}

void CTimes::requireRuns() const {
    if (m_sorted.empty()) {
        throw std::logic_error("nothing was measured");
    }
}

double speedRatio(double otherMilliseconds, double ownMilliseconds) {
    if (!(ownMilliseconds > 0.0)) {
        throw std::logic_error("what takes no time was not measured");
    }
    return otherMilliseconds / ownMilliseconds;
}

} // namespace tarvo::bench
