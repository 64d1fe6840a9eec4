#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace tarvo::custom {

/// Words as the bytes of custom transform data.
inline std::vector<std::byte> bytesOfWords(const std::vector<std::uint16_t>& words) {
    std::vector<std::byte> bytes;
    for (const std::uint16_t word : words) {
        bytes.push_back(static_cast<std::byte>(word & 0xFF));
        bytes.push_back(static_cast<std::byte>(word >> 8));
    }
    return bytes;
}

/// A heap block of just these bytes, so that a tool notices the first byte read behind them.
class CExactBlock {
public:
    explicit CExactBlock(std::span<const std::byte> bytes)
        : m_size(bytes.size()), m_bytes(new std::byte[bytes.size()]) {
        if (!bytes.empty())
            std::memcpy(m_bytes.get(), bytes.data(), bytes.size());
    }

    std::span<const std::byte> bytes() const { return {m_bytes.get(), m_size}; }

private:
    std::size_t m_size;
    std::unique_ptr<std::byte[]> m_bytes;
};

} // namespace tarvo::custom
