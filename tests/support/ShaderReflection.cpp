#include "tests/support/ShaderReflection.h"

namespace tarvo::tests {
namespace {

constexpr std::uint32_t customData = 0x35;
constexpr std::uint32_t resourceBindInfo = 3;

ScalarType scalarType(std::uint16_t code) {
    switch (code) {
    case 3:
        return ScalarType::real;
    case 19:
        return ScalarType::unsignedInteger;
    default:
        return ScalarType::other;
    }
}

BindingKind bindingKind(std::uint32_t code) {
    switch (code) {
    case 0:
        return BindingKind::constantBuffer;
    case 2:
        return BindingKind::texture;
    case 3:
        return BindingKind::sampler;
    case 5:
        return BindingKind::structuredBuffer;
    default:
        return BindingKind::other;
    }
}

/// Element `index` of an array that starts at `start`.
std::size_t elementAt(std::uint32_t start, std::uint32_t index, std::size_t size) {
    return start + std::size_t{index} * size;
}

ShaderVariable readVariable(const CByteReader& reader, std::size_t at) {
    const std::uint32_t type = reader.word(at + 16);
    return {reader.text(reader.word(at)),
            reader.word(at + 4),
            reader.word(at + 8),
            scalarType(reader.half(std::size_t{type} + 2)),
            reader.half(std::size_t{type} + 4),
            reader.half(std::size_t{type} + 6),
            reader.half(type) == 3};
}

void readConstantBuffer(const CByteReader& reader, std::size_t at,
                        std::vector<ShaderConstantBuffer>& buffers) {
    ShaderConstantBuffer buffer{reader.text(reader.word(at)), reader.word(at + 12), {}};
    const std::uint32_t count = reader.word(at + 4);
    for (std::uint32_t i = 0; i < count; ++i)
        buffer.variables.push_back(readVariable(reader, elementAt(reader.word(at + 8), i, 24)));
    if (reader.word(at + 20) != resourceBindInfo)
        buffers.push_back(std::move(buffer));
}

ShaderBinding readBinding(const CByteReader& reader, std::size_t at) {
    const BindingKind kind = bindingKind(reader.word(at + 4));
    // The format keeps a structured buffer's stride where textures have their number of samples.
    const std::size_t detail = kind == BindingKind::structuredBuffer ? 16 : 12;
    return {reader.text(reader.word(at)), kind, reader.word(at + 20), reader.word(at + 24),
            reader.word(at + detail)};
}

std::string inCapitals(std::string text) {
    for (char& letter : text) {
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    }
    return text;
}

} // namespace

ShaderReflection readReflection(std::span<const std::byte> chunk) {
    const CByteReader reader(chunk);
    ShaderReflection result{};
    result.minorVersion = reader.byte(16);
    result.majorVersion = reader.byte(17);
    result.isPixelShader = reader.half(18) == 0xFFFF;
    result.isVertexShader = reader.half(18) == 0xFFFE;
    result.creator = reader.text(reader.word(24));
    const std::uint32_t bufferCount = reader.word(0);
    for (std::uint32_t i = 0; i < bufferCount; ++i)
        readConstantBuffer(reader, elementAt(reader.word(4), i, 24), result.constantBuffers);
    const std::uint32_t bindingCount = reader.word(8);
    for (std::uint32_t i = 0; i < bindingCount; ++i)
        result.bindings.push_back(readBinding(reader, elementAt(reader.word(12), i, 32)));
    return result;
}

std::vector<SignatureElement> readSignature(std::span<const std::byte> chunk) {
    const CByteReader reader(chunk);
    const std::uint32_t count = reader.word(0);
    const std::uint32_t start = reader.word(4);
    std::vector<SignatureElement> result;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t at = elementAt(start, i, 24);
        reader.part(at, 24);
        result.push_back({inCapitals(reader.text(reader.word(at))), reader.word(at + 4),
                          reader.word(at + 8) == 1, reader.word(at + 12) == 3, reader.word(at + 16),
                          reader.byte(at + 20)});
    }
    return result;
}

ShaderCode readCode(std::span<const std::byte> chunk) {
    const CByteReader reader(chunk);
    const std::uint32_t version = reader.word(0);
    const std::size_t end = std::size_t{reader.word(4)} * 4;
    if (end != chunk.size())
        throw CBytecodeError("a program is not as long as it says");
    ShaderCode result{version >> 4 & 0xF, version & 0xF, version >> 16 == 0, version >> 16 == 1, {}, 0};
    std::size_t at = 8;
    while (at < end) {
        const std::uint32_t token = reader.word(at);
        const std::uint32_t code = token & 0x7FF;
        const std::uint32_t length = code == customData ? reader.word(at + 4) : token >> 24 & 0x7F;
        if (length == 0)
            throw CBytecodeError("an instruction without a length");
        reader.part(at, std::size_t{length} * 4);
        result.opcodes.push_back(code);
        if (code == opcode::declareGlobalFlags)
            result.globalFlagsToken = token;
        at += std::size_t{length} * 4;
    }
    return result;
}

} // namespace tarvo::tests
