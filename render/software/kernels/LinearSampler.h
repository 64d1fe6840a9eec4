#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// The two neighbouring texels of a coordinate, 0 … 1 over the texture, and the share of the second. Beyond
/// the outermost centres the edge texel goes on; what is no number falls to the first.
struct LinearNeighbours {
    int first;
    int second;
    float share;

    LinearNeighbours(float coordinate, int size) {
        const float position = coordinate * static_cast<float>(size) - 0.5F;
        const float inside = position > 0.0F ? std::min(position, static_cast<float>(size - 1)) : 0.0F;
        first = static_cast<int>(inside);
        second = std::min(first + 1, size - 1);
        share = inside - static_cast<float>(first);
    }
};

/// The linear mix of a channel of the four texels around, in the texels' own units. `Texel` has
/// `Channels` channels; the pitch is bytes.
template<typename Texel, int Channels>
class CLinearSampler {
public:
    CLinearSampler(const std::uint8_t* texels, std::ptrdiff_t pitch, int width, int height, float u, float v)
        : m_x(u, width), m_y(v, height), m_upper(rowOf(texels, pitch, m_y.first)),
          m_lower(rowOf(texels, pitch, m_y.second)) {}

    float channel(int index) const {
        const float above =
            mix(m_upper[m_x.first * Channels + index], m_upper[m_x.second * Channels + index], m_x.share);
        const float below =
            mix(m_lower[m_x.first * Channels + index], m_lower[m_x.second * Channels + index], m_x.share);
        return above + (below - above) * m_y.share;
    }

private:
    static const Texel* rowOf(const std::uint8_t* texels, std::ptrdiff_t pitch, int row) {
        // Rows are aligned and were written as such texels.
        return static_cast<const Texel*>(static_cast<const void*>(texels + row * pitch));
    }
    static float mix(Texel a, Texel b, float share) {
        const auto first = static_cast<float>(a);
        return first + (static_cast<float>(b) - first) * share;
    }

    LinearNeighbours m_x;
    LinearNeighbours m_y;
    const Texel* m_upper;
    const Texel* m_lower;
};

} // namespace tarvo::render::software
