#pragma once

#include <cstddef>

// What tests/platform/ProbeModule.cpp exports.
using ProbeModulePath = const char*();
using ProbeResource = const void*(const char* type, unsigned short id, std::size_t* size);
