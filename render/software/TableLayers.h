#pragma once

#include "render/software/AlignedBytes.h"
#include "render/software/LookupTables.h"
#include "render/software/Raster.h"
#include "render/software/kernels/RowKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// The tables that a piece of a row looks through.
struct SeenLayers {
    std::uint8_t layers = 0; ///< those with a weight somewhere in the piece, a bit for each
    std::uint8_t full = 0;   ///< those of them whose weights are nothing but full or 0

    /// A single table that is all there is to see; −1: none or several.
    int alone() const;
};

/// Where the pixels of a drawn range look through each of several tables, by the slots of its raster.
class CTableLayers {
public:
    struct Layer {
        std::int32_t* offsets;
        std::uint16_t* fractions;
        std::uint16_t* weights;
    };

    /// Room for so many slots in every one of `layers` tables; what was there is lost. Throws std::bad_alloc.
    void reserve(int layers, std::size_t slots, const MemorySource& memory);
    /// Gives the memory back.
    void clear();

    /// From a slot on.
    Layer at(int layer, std::ptrdiff_t slot) const;
    /// By the first slot of a piece.
    SeenLayers& seen(std::ptrdiff_t slot) const;

private:
    std::size_t m_slots = 0;
    std::array<CAlignedBytes, mostLayers> m_layers;
    CAlignedBytes m_seen;
};

/// Draws a piece of up to pieceLength pixels from its first slot on; `window` is the upper left pixel of what
/// is looked at, `following` as in SampleBlock. Opaque everywhere, and black where no table sees anything.
void drawLayers(const CTableLayers& layers, std::ptrdiff_t slot, int count, const std::uint8_t* window,
                std::ptrdiff_t pitch, std::ptrdiff_t following, const RowKernels& kernels,
                std::uint8_t* target);

/// A growing block: makes it at least so large, of undefined contents. Throws std::bad_alloc.
void growTo(CAlignedBytes& bytes, std::size_t size, const MemorySource& memory);

/// A block as an array.
template<typename Element>
Element* elementsOf(const CAlignedBytes& bytes) {
    return static_cast<Element*>(static_cast<void*>(bytes.data()));
}

} // namespace tarvo::render::software
