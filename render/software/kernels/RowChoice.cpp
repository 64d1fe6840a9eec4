#include "render/software/kernels/RowChoice.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace tarvo::render::software {
namespace {

constexpr std::array variants{
    RowVariant{"plain", InstructionSet::reference, &plainRows},
    RowVariant{"sse41", InstructionSet::sse41, &sse41Rows},
    RowVariant{"avx2", InstructionSet::avx2, &avx2Rows},
    RowVariant{"avx512", InstructionSet::avx512, &avx512Rows},
    RowVariant{"avx512ByLoads", InstructionSet::avx512, &avx512RowsByLoads},
};

/// A block to try kernels on: a view that is turned a little, of a picture that fits into the first cache.
class CTrial {
public:
    CTrial() {
        for (int row = 0; row < rows; ++row) {
            for (int i = 0; i < columns; ++i) {
                const auto place = static_cast<std::size_t>(row * columns + i);
                m_offsets[place] = (row + i / 8) * pitch + i * 4;
                m_fractions[place] = static_cast<std::uint16_t>(place * 37);
            }
        }
    }

    /// Some microseconds' work.
    std::chrono::nanoseconds timeOf(const RowKernels& kernels) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 8; ++i)
            kernels.sample({m_picture.data(), pitch, m_offsets.data(), m_fractions.data(), columns, columns,
                            rows, 0, m_target.data(), pitch});
        return std::chrono::steady_clock::now() - start;
    }

private:
    static constexpr int columns = 64;
    static constexpr int rows = 8;
    static constexpr int pitch = columns * 4;

    std::array<std::uint8_t, static_cast<std::size_t>(pitch) * (rows + columns / 8 + 1)> m_picture{};
    std::array<std::int32_t, static_cast<std::size_t>(columns) * rows> m_offsets;
    std::array<std::uint16_t, static_cast<std::size_t>(columns) * rows> m_fractions;
    std::array<std::uint8_t, static_cast<std::size_t>(pitch) * rows> m_target;
};

const RowKernels& chooseRows() {
    const InstructionSet set = detectInstructionSet();
    const RowKernels* chosen = nullptr;
    for (const RowVariant& variant : variants) {
        if (variant.needs == set)
            chosen = chosen == nullptr ? variant.kernels : &fasterRows(*chosen, *variant.kernels);
    }
    return *chosen;
}

} // namespace

std::span<const RowVariant> rowVariants() {
    return variants;
}

const RowKernels& rowKernels() {
    static const RowKernels& chosen = chooseRows();
    return chosen;
}

const RowKernels& fasterRows(const RowKernels& first, const RowKernels& second) {
    CTrial trial;
    // The first run of either makes wide registers and caches ready, and the best of several is what nobody
    // interrupted.
    constexpr int turns = 8;
    auto ofFirst = std::chrono::nanoseconds::max();
    auto ofSecond = ofFirst;
    for (int i = 0; i < turns; ++i) {
        ofFirst = std::min(ofFirst, trial.timeOf(first));
        ofSecond = std::min(ofSecond, trial.timeOf(second));
    }
    return ofSecond < ofFirst ? second : first;
}

} // namespace tarvo::render::software
