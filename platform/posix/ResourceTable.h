#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvo::platform {

/// One resource compiled into a program or library. The sources that cmake/Resources.cmake generates put
/// these into a section of their own, which the linker joins to one table: nothing has to run before it can
/// be read.
struct ResourceRecord {
    const char* type;
    std::uint16_t id;
    const std::byte* begin;
    const std::byte* end;
};

} // namespace tarvo::platform
