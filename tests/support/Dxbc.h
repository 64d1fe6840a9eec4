#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::tests {

/// What is thrown when bytecode is not laid out as it should be. No reader below looks outside its bytes.
class CBytecodeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Little-endian numbers and texts at places of a piece of memory.
class CByteReader {
public:
    explicit CByteReader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    std::uint8_t byte(std::size_t offset) const;
    std::uint16_t half(std::size_t offset) const;
    std::uint32_t word(std::size_t offset) const;
    /// A text that ends with a zero byte.
    std::string text(std::size_t offset) const;
    std::span<const std::byte> part(std::size_t offset, std::size_t length) const;
    std::size_t size() const { return m_bytes.size(); }

private:
    std::span<const std::byte> m_bytes;
};

using BytecodeSignature = std::array<std::byte, 16>;

/// What a container's signature should be: MD5 over all that follows it, with an ending of its own.
BytecodeSignature bytecodeSignature(std::span<const std::byte> container);

/// A container of Direct3D bytecode. Holds a view of the bytes, which must outlive it.
class CDxbcContainer {
public:
    struct Chunk {
        std::string tag;
        std::span<const std::byte> bytes;
    };

    /// Throws CBytecodeError, also when the signature does not hold.
    explicit CDxbcContainer(std::span<const std::byte> bytes);

    /// The only chunk with this tag; throws when there is none or more than one.
    std::span<const std::byte> chunk(std::string_view tag) const;
    const std::vector<Chunk>& chunks() const { return m_chunks; }

private:
    std::vector<Chunk> m_chunks;
};

} // namespace tarvo::tests
