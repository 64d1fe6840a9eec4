#pragma once

#include <cstdint>

namespace tarvo::bench {

/// How much memory the process holds beyond what it held when the object was made. Other threads must not
/// allocate meanwhile.
class CResidentMemory {
public:
    /// Gives back what the allocator keeps without use, and starts the peak anew. Throws std::runtime_error
    /// when the system cannot do so.
    CResidentMemory();

    /// Bytes now, and the most since; 0 rather than a negative number. Throw std::runtime_error.
    std::uint64_t grown() const;
    std::uint64_t peak() const;

private:
    std::uint64_t m_before;
};

} // namespace tarvo::bench
