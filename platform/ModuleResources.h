#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::platform {

/// A resource of the program or dynamic library that this code is linked into; empty if absent. The bytes
/// stay until that is unloaded. Resources are declared with tarvo_resources() of cmake/Resources.cmake; types
/// are capitals, ids 1 to 65535.
std::span<const std::byte> findModuleResource(const char* type, std::uint16_t id);

} // namespace tarvo::platform
