#pragma once

#include "render/simd/InstructionSet.h"

// Also included by files that are compiled for one instruction set: an inline function that came along from
// here could end up in the program in its version for that set, and run on processors without it. So nothing
// but declarations, plain records and what is always inlined.
#include <cstddef>
#include <cstdint>

namespace tarvo::render {

/// Two rows of 4-byte pixels and what becomes of them in a YV12 picture.
struct RowPairToYv12 {
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    std::uint8_t* upperLuma;
    std::uint8_t* lowerLuma;
    std::uint8_t* chroma1;
    std::uint8_t* chroma2;
    int columns; ///< even
};

/// What convertYv12ToBgra() multiplies with, 2^15 being 1, each product rounded: a and b are the chroma in
/// sixteenths of a level,
///
///     cr = ofCr · 8·a    R = y + red · cr    G = y − green · (cr + ofCb · 4·b)    B = y + blue · 4·b
///
/// Every product of two of them is one of the formula's factors. They were found by trying: R, G and B miss
/// the nearest level by no more than 0.003, 0.006 and 0.002 of one, and only next to a half.
struct YuvFactors {
    static constexpr std::int16_t ofCr = 30338;
    static constexpr std::int16_t ofCb = 29350;
    static constexpr std::int16_t red = 379;
    static constexpr std::int16_t green = 193;
    static constexpr std::int16_t blue = 887;
};

/// A stretch of one row of a YV12 picture of even width and height, or of pairs of rows, from an even column
/// on. Of the two chroma rows that a luma row lies between, the nearer has three quarters of the weight; the
/// next row lies between the same two, nearer to the other. The chroma pointers point at the sample that
/// belongs to the first column; one sample before it and one behind the last are read as well.
struct Yv12Stretch {
    const std::uint8_t* luma;
    const std::uint8_t* nearCr;
    const std::uint8_t* farCr;
    const std::uint8_t* nearCb;
    const std::uint8_t* farCb;
    std::uint8_t* target;         ///< BGRA
    const std::uint8_t* nextLuma; ///< null if there is one row only
    std::uint8_t* nextTarget;
    int columns; ///< even
    int pairs = 1;
    // Bytes from a pair to the next.
    std::ptrdiff_t lumaStep = 0;
    std::ptrdiff_t crStep = 0;
    std::ptrdiff_t cbStep = 0;
    std::ptrdiff_t targetStep = 0;

    [[gnu::always_inline]] void moveToNextPair() {
        luma += lumaStep;
        nextLuma += lumaStep;
        nearCr += crStep;
        farCr += crStep;
        nearCb += cbStep;
        farCb += cbStep;
        target += targetStep;
        nextTarget += targetStep;
    }
};

/// The vectorised inner loops of one instruction set. Each does as much of its work as fills its vectors,
/// from the front, and returns how much that is, perhaps nothing; the caller has the narrower kernels do what
/// is left, and the last few plainly. None reads or writes beyond what it is told, none wants alignment. An
/// entry may be null: the set has nothing better there than the narrower one.
struct ColourKernels {
    /// Returns all columns or none.
    int (*rgb32ToYv12)(const RowPairToYv12& rows);
    /// Exchanges the pixel k behind `front` with the pixel k before `backEnd`, 3 bytes each, for k from 0 on.
    /// The two ranges do not overlap. Returns pixels.
    std::ptrdiff_t (*swapReversed24)(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels);
    /// Exchanges the bytes of two ranges that do not overlap. Returns bytes.
    std::ptrdiff_t (*swapBytes)(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes);
    /// Returns all columns or none.
    int (*yv12ToBgra)(const Yv12Stretch& stretch);
    /// From `words`, two pixels in 4 bytes, to BGRA. Returns all pixels, less one if they are odd, or none.
    int (*yuy2ToBgra)(const std::uint8_t* words, std::uint8_t* target, int pixels);
    /// The kernels of the set before; null if there is none.
    const ColourKernels* narrower;
};

/// The kernels of one level; to be used only where detectInstructionSet() is at least that.
const ColourKernels& colourKernels(InstructionSet set);

/// The kernels for this processor.
const ColourKernels& colourKernels();

/// Those with no kernels at all, and those of the sets.
extern const ColourKernels plainKernels;
extern const ColourKernels sse41Kernels;
extern const ColourKernels avx2Kernels;
extern const ColourKernels avx512Kernels;

} // namespace tarvo::render
