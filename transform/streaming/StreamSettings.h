#pragma once

#include <atomic>
#include <cstdint>

namespace tarvo::transform {

/// What the host's properties, the negotiation of types and the streaming share, each on a thread of its own.
///
/// Every field stands for itself: nobody relies on two of them changing at once.
struct StreamSettings {
    /// Pixels. What the host put, a negative side as the word it is; 0 before. The check of an input type
    /// overwrites both with the size that it derives.
    std::atomic<std::uint32_t> outputWidth{0};
    std::atomic<std::uint32_t> outputHeight{0};
    /// The host put a side, if only to 0.
    std::atomic<bool> isOutputSizeSet{false};

    /// Frames a second, 0 for no rate of its own. The host puts it; else it is adopted from the output type.
    /// Quality control lowers it.
    std::atomic<double> outputFrameRate{0.0};
    /// The rate that the host put last was positive.
    std::atomic<bool> isOutputRateLimited{false};
    /// Frames a second of the input type that was checked last; 0 when unknown.
    std::atomic<double> inputFrameRate{0.0};

    /// `geometry::OptionFlag` bits, as the host put them.
    std::atomic<std::int32_t> options{0};
};

} // namespace tarvo::transform
