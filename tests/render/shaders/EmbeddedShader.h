#pragma once

#include "platform/ModuleResources.h"
#include "render/ShaderProgram.h"
#include "tests/support/ShaderReflection.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace tarvo::render {

/// The bytecode that this program carries.
inline std::span<const std::byte> embeddedBytecode(const ShaderResource& resource) {
    return platform::findModuleResource(resource.type, resource.id);
}

inline tests::CDxbcContainer embeddedContainer(const ShaderResource& resource) {
    return tests::CDxbcContainer(embeddedBytecode(resource));
}

inline tests::ShaderReflection embeddedReflection(const ShaderResource& resource) {
    return tests::readReflection(embeddedContainer(resource).chunk("RDEF"));
}

inline tests::ShaderCode embeddedCode(const ShaderResource& resource) {
    return tests::readCode(embeddedContainer(resource).chunk("SHDR"));
}

inline bool isVertexProgram(const ShaderResource& resource) {
    return resource.program == ShaderProgram::vertex;
}

// Test cases bear the source's name, also in the list that ctest makes of them.

inline void PrintTo(const ShaderResource& resource, std::ostream* stream) {
    *stream << resource.sourceName;
}

inline std::string nameOfCase(const testing::TestParamInfo<ShaderResource>& info) {
    return std::string(info.param.sourceName);
}

} // namespace tarvo::render
