#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>

namespace tarvo::transform {

/// The last output frame, kept while repeats of it are made by copying. Under the lock of rendering, but for
/// requestFree().
class CCachedFrame {
public:
    /// Makes room for a frame unless there is one of this size; empty without memory. What stands in new
    /// room is zero.
    std::span<std::byte> allocate(std::size_t bytes);
    /// The frame; empty if there is none.
    std::span<const std::byte> frame();
    void free();

    /// Any thread, without waiting: the frame is gone for whoever asks next.
    void requestFree() { m_isFreeRequested = true; }

private:
    void honourRequest();

    std::unique_ptr<std::byte[]> m_bytes;
    std::size_t m_size = 0;
    std::atomic<bool> m_isFreeRequested{false};
};

} // namespace tarvo::transform
