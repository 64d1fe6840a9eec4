#include "bench/measure/WorkFilter.h"

#include <algorithm>

namespace tarvo::bench {

bool CWorkFilter::wants(std::string_view row) const {
    return m_parts.empty() || std::ranges::any_of(m_parts, [row](const std::string& part) {
               return row.find(part) != std::string_view::npos;
           });
}

} // namespace tarvo::bench
