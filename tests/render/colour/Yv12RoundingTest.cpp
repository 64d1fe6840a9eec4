#include "render/colour/YuvToBgra.h"
#include "tests/render/colour/Plane.h"
#include "tests/render/colour/VariantTest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

// Pictures of even size are converted in whole numbers: how near that is to the formula, for everything that
// can be made of four samples of either chroma plane.

namespace tarvo::render {
namespace {

/// Sixteen times a mix of four samples, 9, 3, 3 and 1 times each, is 0 … 4080.
constexpr int sumCount = 16 * 255 + 1;

/// A row of pixels of any two such sums. Each takes four columns and rows of its own, in which it lies in
/// column and row 1, so that its samples are shared with no other.
class CSums {
public:
    CSums()
        : m_luma(static_cast<std::size_t>(width)), m_cr(2 * chromaWidth), m_cb(2 * chromaWidth),
          m_target(static_cast<std::size_t>(width) * 4) {}

    void setLuma(std::uint8_t luma) { std::fill(m_luma.begin(), m_luma.end(), luma); }
    void setCr(int place, int sum) { setSamples(m_cr, place, sum); }
    void setCb(int place, int sum) { setSamples(m_cb, place, sum); }

    const std::vector<std::uint8_t>& convert(const ColourKernels& kernels) {
        const Yv12Source source{
            width, 4, {m_luma.data(), m_cr.data(), m_cb.data()}, {0, chromaWidth, chromaWidth}};
        convertYv12ToBgra(source, {m_target.data(), 0}, {0, 1, width, 2}, kernels);
        return m_target;
    }

    static const std::uint8_t* pixel(const std::vector<std::uint8_t>& row, int place) {
        return row.data() + (static_cast<std::size_t>(place) * 4 + 1) * 4;
    }

private:
    static constexpr int width = 4 * sumCount;
    static constexpr int chromaWidth = 2 * sumCount;

    static void setSamples(std::vector<std::uint8_t>& plane, int place, int sum) {
        const int own = std::min(sum / 9, 255);
        const int beside = std::min((sum - 9 * own) / 3, 255);
        const int below = std::min((sum - 9 * own - 3 * beside) / 3, 255);
        const int across = sum - 9 * own - 3 * beside - 3 * below;
        ASSERT_LE(across, 255);
        const std::size_t first = static_cast<std::size_t>(place) * 2;
        plane[first] = static_cast<std::uint8_t>(own);
        plane[first + 1] = static_cast<std::uint8_t>(beside);
        plane[first + chromaWidth] = static_cast<std::uint8_t>(below);
        plane[first + chromaWidth + 1] = static_cast<std::uint8_t>(across);
    }

    std::vector<std::uint8_t> m_luma;
    std::vector<std::uint8_t> m_cr;
    std::vector<std::uint8_t> m_cb;
    std::vector<std::uint8_t> m_target;
};

/// How far a level is from the saturated value.
double distance(int level, double value) {
    return std::abs(level - std::clamp(value, 0.0, 255.0));
}

TEST(Yv12Rounding, everyLevelIsTheNearestButForLessThanAHundredth) {
    CSums sums;
    for (int place = 0; place < sumCount; ++place)
        sums.setCb(place, place);
    std::array<double, 3> most{};
    for (int cr = 0; cr < sumCount; ++cr) {
        for (int place = 0; place < sumCount; ++place)
            sums.setCr(place, cr);
        // Whatever chroma adds or takes away stays within the range of one of them.
        for (const int luma : {0, 255}) {
            sums.setLuma(static_cast<std::uint8_t>(luma));
            const std::vector<std::uint8_t>& row = sums.convert(colourKernels(InstructionSet::reference));
            const double a = cr / 16.0 - 127.5;
            for (int cb = 0; cb < sumCount; ++cb) {
                const double b = cb / 16.0 - 127.5;
                const std::uint8_t* const pixel = CSums::pixel(row, cb);
                const std::array<double, 3> values{luma + 1.732446 * b, luma - 0.698001 * a - 0.337633 * b,
                                                   luma + 1.370705 * a};
                for (std::size_t channel = 0; channel < 3; ++channel)
                    most[channel] = std::max(most[channel], distance(pixel[channel], values[channel]));
            }
        }
    }
    EXPECT_LE(most[0], 0.502);
    EXPECT_LE(most[1], 0.506);
    EXPECT_LE(most[2], 0.503);
    EXPECT_GE(*std::min_element(most.begin(), most.end()), 0.49); // values next to a half did come
}

TEST(Yv12Rounding, exactlyNeutralChromaIsExactlyGrey) {
    CSums sums;
    for (int place = 0; place < sumCount; ++place) {
        sums.setCr(place, 2040);
        sums.setCb(place, 2040);
    }
    for (int luma = 0; luma < 256; ++luma) {
        sums.setLuma(static_cast<std::uint8_t>(luma));
        const std::uint8_t* const pixel = CSums::pixel(sums.convert(colourKernels()), 7);
        ASSERT_EQ((std::array<int, 4>{pixel[0], pixel[1], pixel[2], pixel[3]}),
                  (std::array<int, 4>{luma, luma, luma, 255}));
    }
}

using Yv12RoundingVariants = CVariantTest;
TARVO_FOR_ALL_VARIANTS(Yv12RoundingVariants);

TEST_P(Yv12RoundingVariants, areTheSameForEverySum) {
    CSums expected;
    CSums actual;
    const auto ofBoth = [&](auto set) {
        set(expected);
        set(actual);
    };
    // Red and blue depend on one sum each, green on both: all of the one with many of the other.
    for (int round = 0; round < 64; ++round) {
        for (int place = 0; place < sumCount; ++place) {
            ofBoth([&](CSums& sums) { sums.setCr(place, place); });
            ofBoth([&](CSums& sums) { sums.setCb(place, (place * 1021 + round * 63) % sumCount); });
        }
        for (const int luma : {0, 128, 255}) {
            ofBoth([&](CSums& sums) { sums.setLuma(static_cast<std::uint8_t>(luma)); });
            ASSERT_EQ(actual.convert(variant()), expected.convert(reference())) << round << ' ' << luma;
        }
    }
}

} // namespace
} // namespace tarvo::render
