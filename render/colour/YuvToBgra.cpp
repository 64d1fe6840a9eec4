#include "render/colour/YuvToBgra.h"

#include "render/colour/KernelChain.h"

#include <algorithm>
#include <cmath>

namespace tarvo::render {
namespace {

// Everywhere here channels are counted in levels, 0 … 255, so that luma is a whole number.

std::uint8_t saturated(long level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0L, 255L));
}

PixelArea clipped(const PixelArea& area, int width, int height) {
    return {std::max(area.left, 0), std::max(area.top, 0), std::min(area.right, width),
            std::min(area.bottom, height)};
}

/// The two chroma samples around a pixel's centre, along one direction, and the share of the second.
struct Neighbours {
    int first;
    int second;
    float share;
};

/// The centre of pixel x of `size` lies at (x + 0.5) / size · chromaSize − 0.5 in the row of chroma samples.
/// Kept as a fraction, the shares of an even size are the quarters that they should be, and exactly so.
Neighbours chromaNeighbours(int x, int size, int chromaSize) {
    const std::int64_t denominator = 2 * static_cast<std::int64_t>(size);
    const std::int64_t numerator = (2 * static_cast<std::int64_t>(x) + 1) * chromaSize - size;
    if (numerator < 0)
        return {0, 0, 0.0F};
    const int first = static_cast<int>(numerator / denominator);
    const auto remainder = static_cast<float>(numerator % denominator);
    return {first, std::min(first + 1, chromaSize - 1), remainder / static_cast<float>(denominator)};
}

float mix(float a, float b, float share) {
    return a + (b - a) * share;
}

/// A chroma plane between two of its rows.
struct ChromaRow {
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    float share;

    /// The linear sample less one half of full scale.
    float sample(const Neighbours& x) const {
        return mix(mix(upper[x.first], upper[x.second], x.share),
                   mix(lower[x.first], lower[x.second], x.share), share) -
               127.5F;
    }
};

ChromaRow chromaRow(const Yv12Source& source, std::size_t plane, const Neighbours& y) {
    const auto row = [&](int index) { return source.planes[plane] + index * source.steps[plane]; };
    return {row(y.first), row(y.second), y.share};
}

void convertOddPixel(int luma, float a, float b, std::uint8_t* target) {
    // Luma is whole, so rounding the sum is rounding what chroma adds.
    target[0] = saturated(luma + std::lrint(1.732446F * b));
    target[1] = saturated(luma - std::lrint(0.698001F * a + 0.337633F * b));
    target[2] = saturated(luma + std::lrint(1.370705F * a));
    target[3] = 255;
}

/// One row of a YV12 picture of odd width or height, whose samples have all kinds of weights.
class COddRow {
public:
    COddRow(const Yv12Source& source, std::uint8_t* target, int y)
        : m_width(source.width), m_luma(source.planes[0] + y * source.steps[0]), m_target(target),
          m_y(chromaNeighbours(y, source.height, source.height / 2)), m_cr(chromaRow(source, 1, m_y)),
          m_cb(chromaRow(source, 2, m_y)) {}

    void convert(int left, int right) const {
        for (int x = left; x < right; ++x) {
            const Neighbours neighbours = chromaNeighbours(x, m_width, m_width / 2);
            convertOddPixel(m_luma[x], m_cr.sample(neighbours), m_cb.sample(neighbours),
                            m_target + static_cast<std::ptrdiff_t>(x) * 4);
        }
    }

private:
    int m_width;
    const std::uint8_t* m_luma;
    std::uint8_t* m_target;
    Neighbours m_y;
    ChromaRow m_cr;
    ChromaRow m_cb;
};

/// The product, 2^15 being 1, rounded.
int scaled(int value, int factor) {
    return (value * factor + (1 << 14)) >> 15;
}

/// In whole numbers, which give the same in vectors: a and b are sixteenths of a level.
void convertPixel(int luma, int a, int b, std::uint8_t* target) {
    const int ofCr = scaled(8 * a, YuvFactors::ofCr);
    const int ofBoth = ofCr + scaled(4 * b, YuvFactors::ofCb);
    target[0] = saturated(luma + scaled(4 * b, YuvFactors::blue));
    target[1] = saturated(luma - scaled(ofBoth, YuvFactors::green));
    target[2] = saturated(luma + scaled(ofCr, YuvFactors::red));
    target[3] = 255;
}

/// One row of a YV12 picture of even width and height, or pairs of rows, each between two rows of chroma.
/// There the weights of samples are quarters. Small areas consist of many short rows, so nothing is worked
/// out that can be told.
class CEvenRows {
public:
    /// Row y or, if it is the first of a pair, all pairs before `bottom`.
    CEvenRows(const Yv12Source& source, const BgraTarget& target, int y, int bottom)
        : m_width(source.width), m_pairs(y % 2 != 0 ? (bottom - y) / 2 : 0) {
        const int upper = y == 0 ? 0 : (y - 1) / 2;
        const int lower = y == 0 ? 0 : std::min(upper + 1, source.height / 2 - 1);
        // An odd row is the upper one of the two that lie between the same rows of chroma.
        const int nearRow = y % 2 != 0 ? upper : lower;
        const int farRow = y % 2 != 0 ? lower : upper;
        const auto chroma = [&](std::size_t plane, int row) {
            return source.planes[plane] + row * source.steps[plane];
        };
        m_whole = {source.planes[0] + y * source.steps[0],
                   chroma(1, nearRow),
                   chroma(1, farRow),
                   chroma(2, nearRow),
                   chroma(2, farRow),
                   target.pixels + y * target.step,
                   nullptr,
                   nullptr,
                   source.width};
        if (m_pairs != 0) {
            m_whole.nextLuma = m_whole.luma + source.steps[0];
            m_whole.nextTarget = m_whole.target + target.step;
            m_whole.pairs = m_pairs;
            m_whole.lumaStep = 2 * source.steps[0];
            m_whole.crStep = source.steps[1];
            m_whole.cbStep = source.steps[2];
            m_whole.targetStep = 2 * target.step;
        }
    }

    int count() const { return std::max(1, 2 * m_pairs); }

    void convert(int left, int right, const ColourKernels& kernels) const {
        // What has neighbours on either side, from an even column on.
        const int first = std::max(2, left + left % 2);
        const int end = std::min(m_width - 2, right / 2 * 2);
        const int done =
            first < end ? firstThatServes(kernels, &ColourKernels::yv12ToBgra, stretch(first, end)) : 0;
        convertPlainly(left, done == 0 ? right : first);
        convertPlainly(done == 0 ? right : first + done, right);
    }

private:
    Yv12Stretch stretch(int first, int end) const {
        Yv12Stretch part = m_whole;
        part.luma += first;
        for (const std::uint8_t** row : {&part.nearCr, &part.farCr, &part.nearCb, &part.farCb})
            *row += first / 2;
        part.target += static_cast<std::ptrdiff_t>(first) * 4;
        if (m_pairs != 0) {
            part.nextLuma += first;
            part.nextTarget += static_cast<std::ptrdiff_t>(first) * 4;
        }
        part.columns = end - first;
        return part;
    }

    void convertPlainly(int left, int right) const {
        if (left >= right)
            return;
        Yv12Stretch rows = m_whole;
        convertPlainly(rows, left, right);
        for (int pair = 1; pair < m_pairs; ++pair) {
            rows.moveToNextPair();
            convertPlainly(rows, left, right);
        }
    }

    void convertPlainly(const Yv12Stretch& rows, int left, int right) const {
        for (int x = left; x < right; ++x) {
            const int own = x / 2;
            const int neighbour = std::clamp(x % 2 != 0 ? own + 1 : own - 1, 0, m_width / 2 - 1);
            const auto across = [&](const std::uint8_t* row) { return 3 * row[own] + row[neighbour]; };
            const int nearCr = across(rows.nearCr);
            const int farCr = across(rows.farCr);
            const int nearCb = across(rows.nearCb);
            const int farCb = across(rows.farCb);
            const std::ptrdiff_t place = static_cast<std::ptrdiff_t>(x) * 4;
            convertPixel(rows.luma[x], mixed(nearCr, farCr), mixed(nearCb, farCb), rows.target + place);
            if (m_pairs != 0)
                convertPixel(rows.nextLuma[x], mixed(farCr, nearCr), mixed(farCb, nearCb),
                             rows.nextTarget + place);
        }
    }

    /// From fourfold samples sixteenths of a level, less the half of full scale.
    static int mixed(int nearRow, int farRow) { return 3 * nearRow + farRow - 2040; }

    int m_width;
    int m_pairs; ///< 0: one row
    Yv12Stretch m_whole;
};

std::uint8_t storedOf256(float value) {
    return saturated(std::lrint(value / 256.0F * 255.0F));
}

void convertYuy2Pixel(int luma, int cb, int cr, std::uint8_t* target) {
    const auto y = static_cast<float>(luma);
    const auto u = static_cast<float>(cb - 128);
    const auto v = static_cast<float>(cr - 128);
    target[0] = storedOf256(y + 1.772F * u);
    target[1] = storedOf256(y - 0.344F * u - 0.714F * v);
    target[2] = storedOf256(y + 1.402F * v);
    target[3] = storedOf256(1.0F);
}

/// Pixels from number `first` up to `end` of the buffer, the first of which goes to the target's first pixel.
void convertYuy2Plainly(const Yuy2Source& source, std::int64_t first, std::int64_t end,
                        std::uint8_t* target) {
    const auto words = static_cast<std::int64_t>(source.length / 4);
    for (std::int64_t pixel = first; pixel < end; ++pixel, target += 4) {
        if (pixel / 2 >= words) {
            convertYuy2Pixel(0, 0, 0, target);
            continue;
        }
        const std::uint8_t* const word = source.bytes + pixel / 2 * 4;
        convertYuy2Pixel(word[pixel % 2 * 2], word[1], word[3], target);
    }
}

void convertYuy2Row(const Yuy2Source& source, std::int64_t first, std::int64_t end, std::uint8_t* target,
                    const ColourKernels& kernels) {
    const auto stored = static_cast<std::int64_t>(source.length / 4 * 2);
    std::int64_t done = first;
    const std::int64_t even = first + first % 2;
    if (const std::int64_t inside = std::min(end, stored); even < inside) {
        convertYuy2Plainly(source, first, even, target);
        done = even + firstThatServes(kernels, &ColourKernels::yuy2ToBgra, source.bytes + even * 2,
                                      target + (even - first) * 4, static_cast<int>(inside - even));
    }
    convertYuy2Plainly(source, done, end, target + (done - first) * 4);
}

} // namespace

void convertYv12ToBgra(const Yv12Source& source, const BgraTarget& target, PixelArea area,
                       const ColourKernels& kernels) {
    if (source.width < 2 || source.height < 2)
        return;
    const PixelArea inside = clipped(area, source.width, source.height);
    if (inside.left >= inside.right)
        return;
    if (source.width % 2 != 0 || source.height % 2 != 0) {
        for (int y = inside.top; y < inside.bottom; ++y)
            COddRow(source, target.pixels + y * target.step, y).convert(inside.left, inside.right);
        return;
    }
    for (int y = inside.top; y < inside.bottom;) {
        const CEvenRows rows(source, target, y, inside.bottom);
        rows.convert(inside.left, inside.right, kernels);
        y += rows.count();
    }
}

void convertYuy2ToBgra(const Yuy2Source& source, const BgraTarget& target, PixelArea area,
                       const ColourKernels& kernels) {
    const PixelArea inside = clipped(area, source.width, source.height);
    if (inside.left >= inside.right)
        return;
    for (int y = inside.top; y < inside.bottom; ++y) {
        const std::int64_t row = static_cast<std::int64_t>(y) * source.width;
        std::uint8_t* const pixels =
            target.pixels + y * target.step + static_cast<std::ptrdiff_t>(inside.left) * 4;
        convertYuy2Row(source, row + inside.left, row + inside.right, pixels, kernels);
    }
}

} // namespace tarvo::render
