#include "tests/support/Dxbc.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tarvo::tests {
namespace {

constexpr std::size_t headerSize = 32;
constexpr std::size_t signatureOffset = 4;
constexpr std::size_t signedFrom = 20;
constexpr std::size_t blockSize = 64;

using Md5State = std::array<std::uint32_t, 4>;

/// The rounds of MD5 (RFC 1321) on one block.
void addBlock(Md5State& state, const CByteReader& block) {
    constexpr std::array<std::array<int, 4>, 4> shifts{
        {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};
    auto [a, b, c, d] = state;
    for (std::uint32_t i = 0; i < 64; ++i) {
        const std::uint32_t round = i / 16;
        std::uint32_t mixed = 0;
        std::uint32_t index = 0;
        if (round == 0) {
            mixed = (b & c) | (~b & d);
            index = i;
        } else if (round == 1) {
            mixed = (d & b) | (~d & c);
            index = 5 * i + 1;
        } else if (round == 2) {
            mixed = b ^ c ^ d;
            index = 3 * i + 5;
        } else {
            mixed = c ^ (b | ~d);
            index = 7 * i;
        }
        const auto sine = static_cast<std::uint32_t>(std::abs(std::sin(i + 1.0)) * 4294967296.0);
        const std::uint32_t sum = a + mixed + sine + block.word(index % 16 * 4);
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, shifts[round][i % 4]);
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
}

void putWord(std::span<std::byte> target, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i)
        target[i] = static_cast<std::byte>(word >> (8 * i) & 0xFF);
}

} // namespace

std::uint8_t CByteReader::byte(std::size_t offset) const {
    return std::to_integer<std::uint8_t>(part(offset, 1)[0]);
}

std::uint16_t CByteReader::half(std::size_t offset) const {
    part(offset, 2);
    return static_cast<std::uint16_t>(byte(offset) | byte(offset + 1) << 8);
}

std::uint32_t CByteReader::word(std::size_t offset) const {
    part(offset, 4);
    return half(offset) | static_cast<std::uint32_t>(half(offset + 2)) << 16;
}

std::string CByteReader::text(std::size_t offset) const {
    std::string result;
    for (std::uint8_t letter = byte(offset); letter != 0; letter = byte(++offset))
        result += static_cast<char>(letter);
    return result;
}

std::span<const std::byte> CByteReader::part(std::size_t offset, std::size_t length) const {
    if (offset > m_bytes.size() || length > m_bytes.size() - offset)
        throw CBytecodeError("something lies outside its " + std::to_string(m_bytes.size()) + " bytes");
    return m_bytes.subspan(offset, length);
}

BytecodeSignature bytecodeSignature(std::span<const std::byte> container) {
    const std::span<const std::byte> data = container.subspan(std::min(signedFrom, container.size()));
    const std::size_t tailSize = data.size() % blockSize;
    const std::span<const std::byte> tail = data.last(tailSize);
    const auto bits = static_cast<std::uint32_t>(data.size() * 8);

    // MD5 would put the length behind the padding. Here it leads the last block, which ends with a variant of
    // it.
    const bool tailHasOwnBlock = tailSize >= blockSize - 8;
    std::vector<std::byte> closing(tailHasOwnBlock ? 2 * blockSize : blockSize);
    const auto last = std::span(closing).last(blockSize);
    putWord(last, bits);
    putWord(last.last(4), bits >> 2 | 1);
    const std::size_t tailAt = tailHasOwnBlock ? 0 : 4;
    std::ranges::copy(tail, closing.begin() + static_cast<std::ptrdiff_t>(tailAt));
    closing[tailAt + tailSize] = std::byte{0x80};

    Md5State state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    for (const std::span<const std::byte> part :
         {data.first(data.size() - tailSize), std::span<const std::byte>(closing)}) {
        for (std::size_t start = 0; start < part.size(); start += blockSize)
            addBlock(state, CByteReader(part.subspan(start, blockSize)));
    }
    BytecodeSignature signature{};
    for (std::size_t i = 0; i < state.size(); ++i)
        putWord(std::span(signature).subspan(4 * i), state[i]);
    return signature;
}

CDxbcContainer::CDxbcContainer(std::span<const std::byte> bytes) {
    const CByteReader reader(bytes);
    reader.part(0, headerSize);
    if (reader.word(0) != 0x43425844)
        throw CBytecodeError("no bytecode container");
    if (reader.word(20) != 1 || reader.word(24) != bytes.size())
        throw CBytecodeError("wrong version or size in the container's header");
    if (!std::ranges::equal(bytes.subspan(signatureOffset, 16), bytecodeSignature(bytes)))
        throw CBytecodeError("the container's signature does not hold");
    const std::uint32_t count = reader.word(28);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t offset = reader.word(headerSize + std::size_t{4} * i);
        std::string tag;
        for (std::size_t letter = 0; letter < 4; ++letter)
            tag += static_cast<char>(reader.byte(std::size_t{offset} + letter));
        const std::uint32_t length = reader.word(std::size_t{offset} + 4);
        m_chunks.push_back({tag, reader.part(std::size_t{offset} + 8, length)});
    }
}

std::span<const std::byte> CDxbcContainer::chunk(std::string_view tag) const {
    if (std::ranges::count(m_chunks, tag, &Chunk::tag) != 1)
        throw CBytecodeError("not exactly one chunk " + std::string(tag));
    return std::ranges::find(m_chunks, tag, &Chunk::tag)->bytes;
}

} // namespace tarvo::tests
