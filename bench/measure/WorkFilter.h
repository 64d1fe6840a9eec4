#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::bench {

/// Which rows of a table are wanted: those whose name contains one of the parts given, or all without any.
class CWorkFilter {
public:
    explicit CWorkFilter(std::vector<std::string> parts) : m_parts(std::move(parts)) {}

    bool wants(std::string_view row) const;

private:
    std::vector<std::string> m_parts;
};

} // namespace tarvo::bench
