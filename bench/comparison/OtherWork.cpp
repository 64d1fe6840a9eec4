#include "bench/comparison/OtherWork.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <sys/times.h>
#include <unistd.h>

namespace tarvo::bench {

COtherWork::COtherWork() : m_before(read()) {}

std::optional<COtherWork::Account> COtherWork::read() {
    std::ifstream file("/proc/stat");
    std::string name;
    file >> name;
    // user, nice, system, idle, waiting for a disk, two kinds of interrupts, stolen by the machine's host;
    // what follows is part of user and nice.
    double all = 0.0;
    double idle = 0.0;
    for (int column = 0; column < 8; ++column) {
        double ticks = 0.0;
        if (!(file >> ticks)) {
            return std::nullopt;
        }
        all += ticks;
        idle += column == 3 || column == 4 ? ticks : 0.0;
    }
    tms own{};
    const auto ticksPerSecond = static_cast<double>(sysconf(_SC_CLK_TCK));
    if (name != "cpu" || !(ticksPerSecond > 0.0) || times(&own) == static_cast<clock_t>(-1)) {
        return std::nullopt;
    }
    return Account{all / ticksPerSecond, idle / ticksPerSecond,
                   static_cast<double>(own.tms_utime + own.tms_stime) / ticksPerSecond};
}

std::optional<double> COtherWork::share() const {
    const std::optional<Account> now = read();
    if (!m_before || !now || !(now->all > m_before->all)) {
        return std::nullopt;
    }
    const double all = now->all - m_before->all;
    const double others = all - (now->idle - m_before->idle) - (now->own - m_before->own);
    return std::clamp(others / all, 0.0, 1.0);
}

} // namespace tarvo::bench
