#include "render/reference/Sampler.h"

#include <algorithm>

namespace tarvo::render::reference {
namespace {

/// The two neighbouring texels of a coordinate and the share of the second.
struct Neighbours {
    int first;
    int second;
    float share;
};

Neighbours neighbours(float coordinate, int size) {
    // Texel i has its centre at i + 0.5. Compared this way round, what is no number falls to the first texel.
    const float position = coordinate * static_cast<float>(size) - 0.5F;
    const float last = static_cast<float>(size - 1);
    const float inside = position > 0.0F ? std::min(position, last) : 0.0F;
    const int first = static_cast<int>(inside);
    return {first, std::min(first + 1, size - 1), inside - static_cast<float>(first)};
}

float mix(float a, float b, float share) {
    return a + (b - a) * share;
}

Colour mix(const Colour& a, const Colour& b, float share) {
    return {mix(a.red, b.red, share), mix(a.green, b.green, share), mix(a.blue, b.blue, share),
            mix(a.alpha, b.alpha, share)};
}

LookupEntry mix(const LookupEntry& a, const LookupEntry& b, float share) {
    return {mix(a.sourceX, b.sourceX, share), mix(a.sourceY, b.sourceY, share),
            mix(a.weight, b.weight, share)};
}

LookupEntry fromTexel(const LookupTexel& texel) {
    constexpr float unit = 1.0F / 65535.0F;
    return {static_cast<float>(texel.sourceX) * unit, static_cast<float>(texel.sourceY) * unit,
            static_cast<float>(texel.weight) * unit};
}

/// `read` turns a texel into what can be mixed.
template<typename Texels, typename Read>
auto sample(const Texels& texels, float u, float v, Read read) {
    const Neighbours x = neighbours(u, texels.width);
    const Neighbours y = neighbours(v, texels.height);
    const auto row = [&](int index) {
        return mix(read(texels.at(x.first, index)), read(texels.at(x.second, index)), x.share);
    };
    return mix(row(y.first), row(y.second), y.share);
}

} // namespace

Colour sampleBilinear(const Picture& picture, float u, float v) {
    return sample(picture, u, v, fromBgra);
}

LookupEntry sampleBilinear(const LookupTables& tables, float u, float v) {
    return sample(tables, u, v, fromTexel);
}

} // namespace tarvo::render::reference
