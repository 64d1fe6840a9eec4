#pragma once

#include "tests/support/Dxbc.h"

namespace tarvo::tests {

// What the chunks of a shader of model 4 say about it. Everything below throws CBytecodeError when a chunk is
// not laid out as it should be.

enum class ScalarType : std::uint8_t { unsignedInteger, real, other };

struct ShaderVariable {
    std::string name;
    std::uint32_t offset; ///< bytes
    std::uint32_t size;   ///< bytes
    ScalarType type;
    std::uint32_t rows;
    std::uint32_t columns;
    bool isColumnMajorMatrix;
};

struct ShaderConstantBuffer {
    std::string name;
    std::uint32_t size; ///< bytes
    std::vector<ShaderVariable> variables;
};

enum class BindingKind : std::uint8_t { constantBuffer, texture, sampler, structuredBuffer, other };

struct ShaderBinding {
    std::string name;
    BindingKind kind;
    std::uint32_t slot;
    std::uint32_t count;
    std::uint32_t
        dimensionOrStride; ///< 4 is a two-dimensional texture; for a structured buffer its stride in bytes
};

/// Chunk RDEF.
struct ShaderReflection {
    std::uint32_t majorVersion;
    std::uint32_t minorVersion;
    bool isPixelShader;
    bool isVertexShader;
    std::vector<ShaderConstantBuffer> constantBuffers; ///< without what describes structured buffers
    std::vector<ShaderBinding> bindings;
    std::string creator;
};
ShaderReflection readReflection(std::span<const std::byte> chunk);

struct SignatureElement {
    std::string semantic; ///< in capitals: semantics know no case
    std::uint32_t index;
    bool isPosition; ///< the system's own meaning, the place on the screen
    bool isFloat;
    std::uint32_t registerIndex;
    std::uint8_t mask; ///< components x, y, z, w from the lowest bit
};

/// Chunk ISGN or OSGN.
std::vector<SignatureElement> readSignature(std::span<const std::byte> chunk);

struct ShaderCode {
    std::uint32_t majorVersion;
    std::uint32_t minorVersion;
    bool isPixelShader;
    bool isVertexShader;
    std::vector<std::uint32_t> opcodes;
    /// The declaration of global flags, 0 if there is none.
    std::uint32_t globalFlagsToken;
};

/// Chunk SHDR.
ShaderCode readCode(std::span<const std::byte> chunk);

namespace opcode {
inline constexpr std::uint32_t declareGlobalFlags = 0x6A;
inline constexpr std::uint32_t declareStructuredResource = 0xA2;
} // namespace opcode

} // namespace tarvo::tests
