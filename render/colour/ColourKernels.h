#pragma once

#include "render/simd/InstructionSet.h"

// Also included by files that are compiled for one instruction set: an inline function that came along from
// here could end up in the program in its version for that set, and run on processors without it. So nothing
// but declarations and plain records.
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

/// A stretch of a row of a YV12 picture of even width and height, from an even column on. Of the two chroma
/// rows that a luma row lies between, the nearer has three quarters of the weight. The chroma pointers point
/// at the sample that belongs to the first column; one sample before it and one behind the last are read as
/// well.
struct Yv12Stretch {
    const std::uint8_t* luma;
    const std::uint8_t* nearCr;
    const std::uint8_t* farCr;
    const std::uint8_t* nearCb;
    const std::uint8_t* farCb;
    std::uint8_t* target; ///< BGRA
    int columns;          ///< even
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

namespace sse41 {
int rgb32ToYv12(const RowPairToYv12& rows);
std::ptrdiff_t swapReversed24(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels);
std::ptrdiff_t swapBytes(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes);
int yv12ToBgra(const Yv12Stretch& stretch);
int yuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels);
} // namespace sse41

namespace avx2 {
int rgb32ToYv12(const RowPairToYv12& rows);
std::ptrdiff_t swapReversed24(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels);
std::ptrdiff_t swapBytes(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes);
int yv12ToBgra(const Yv12Stretch& stretch);
int yuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels);
} // namespace avx2

namespace avx512 {
int rgb32ToYv12(const RowPairToYv12& rows);
int yv12ToBgra(const Yv12Stretch& stretch);
int yuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels);
} // namespace avx512

} // namespace tarvo::render
