#include "render/software/TableLayers.h"

#include "render/Picture.h"

#include <bit>
#include <cstring>

namespace tarvo::render::software {
namespace {

constexpr std::size_t slotBytes = sizeof(std::int32_t) + 2 * sizeof(std::uint16_t);

std::uint32_t opaqueBlackBytes() {
    return std::bit_cast<std::uint32_t>(opaqueBlack);
}

/// As if each pixel had been added to opaque black, which saturates its alpha.
void makeOpaque(std::uint8_t* pixels, int count) {
    const std::uint32_t opaque = std::bit_cast<std::uint32_t>(Bgra{0, 0, 0, 255});
    for (int i = 0; i < count; ++i, pixels += 4) {
        std::uint32_t bytes = 0;
        std::memcpy(&bytes, pixels, sizeof(bytes));
        bytes |= opaque;
        std::memcpy(pixels, &bytes, sizeof(bytes));
    }
}

} // namespace

int SeenLayers::alone() const {
    return layers == full && std::has_single_bit(layers) ? std::countr_zero(layers) : -1;
}

void growTo(CAlignedBytes& bytes, std::size_t size, const MemorySource& memory) {
    if (bytes.size() < size) {
        bytes = {}; // first, so that both are never held
        bytes = CAlignedBytes(size, memory);
    }
}

void CTableLayers::reserve(int layers, std::size_t slots, const MemorySource& memory) {
    for (int i = 0; i < mostLayers; ++i) {
        CAlignedBytes& layer = m_layers[static_cast<std::size_t>(i)];
        if (i < layers) {
            growTo(layer, slots * slotBytes, memory);
        } else {
            layer = {};
        }
    }
    // Pieces begin at such slots only.
    growTo(m_seen, (slots / slotAlignment + 1) * sizeof(SeenLayers), memory);
    m_slots = slots;
}

void CTableLayers::clear() {
    m_layers = {};
    m_seen = {};
    m_slots = 0;
}

CTableLayers::Layer CTableLayers::at(int layer, std::ptrdiff_t slot) const {
    auto* const offsets = elementsOf<std::int32_t>(m_layers[static_cast<std::size_t>(layer)]);
    auto* const fractions = static_cast<std::uint16_t*>(static_cast<void*>(offsets + m_slots));
    return {offsets + slot, fractions + slot, fractions + m_slots + slot};
}

SeenLayers& CTableLayers::seen(std::ptrdiff_t slot) const {
    return elementsOf<SeenLayers>(m_seen)[slot / slotAlignment];
}

void drawLayers(const CTableLayers& layers, std::ptrdiff_t slot, int count, const std::uint8_t* window,
                std::ptrdiff_t pitch, std::ptrdiff_t following, const RowKernels& kernels,
                std::uint8_t* target) {
    const SeenLayers seen = layers.seen(slot);
    if (const int alone = seen.alone(); alone >= 0) {
        const CTableLayers::Layer layer = layers.at(alone, slot);
        kernels.sample({window, pitch, layer.offsets, layer.fractions, 0, count, 1, opaqueBlackBytes(),
                        target, 0, following});
        makeOpaque(target, count);
        return;
    }
    std::array<MixLayer, mostLayers> mixed{};
    int mixedCount = 0;
    for (unsigned bits = seen.layers; bits != 0; bits &= bits - 1) {
        const CTableLayers::Layer layer = layers.at(std::countr_zero(bits), slot);
        mixed[static_cast<std::size_t>(mixedCount++)] = {layer.offsets, layer.fractions, layer.weights};
    }
    kernels.mixLayers({window, pitch, mixed.data(), mixedCount, count, target});
}

} // namespace tarvo::render::software
