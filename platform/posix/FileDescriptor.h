#pragma once

#include <unistd.h>
#include <utility>

namespace tarvo::platform {

/// Owns an open file; closing it leaves errno as it was.
class CFileDescriptor {
public:
    CFileDescriptor() = default;
    /// A negative number is no file.
    explicit CFileDescriptor(int number) : m_number(number) {}
    CFileDescriptor(CFileDescriptor&& other) noexcept : m_number(other.release()) {}
    CFileDescriptor& operator=(CFileDescriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~CFileDescriptor();

    explicit operator bool() const { return m_number >= 0; }
    int get() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

} // namespace tarvo::platform
