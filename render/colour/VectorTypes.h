#pragma once

// The inner loops for vectors of any width are templates over a set of instructions. Every file that is
// compiled for one set includes them and so has its own: all of it is local to the including file, and
// nothing of the standard library is called that could come along as an inline function, end up in the
// program in its version for that set, and run on processors without it.
//
// A set is a class derived from VectorTypes, with those instructions that operators on vectors do not stand
// for, each in every lane separately:
//
//     load, store              a whole vector, wherever it lies
//     repeated                 a lane's content in all of them
//     shuffled                 the bytes with these numbers, zero for negative ones
//     packed                   two vectors in half as many bits, saturated, without sign
//     lowInTurns, highInTurns  the lower or upper halves, numbers of the one and the other in turns
//     even, odd                numbers 0 and 2, or 1 and 3, of the one and then of the other
//     multiplied               the product's 16 bits from bit 15 on, rounded
//     multipliedBytes          bytes times bytes with sign, neighbours added
//     multipliedPairs          16-bit numbers, neighbours added
//     rounded                  two vectors of floats to 16-bit numbers, saturated
//
// and what orders things across lanes:
//
//     storeFours           in lane k fours k, k + lanes, k + 2·lanes … of bytes
//     storeEights          the same with pairs; the lanes' lower halves to one place and the upper to another
//     loadThird            from a lane to the next 48 bytes further
//     storeReversedThird   and back, the first lane last
//     loadApart            in lane k 8 bytes from 8·k on and 8 from 8·(k + lanes) on
//     lumaWords            the same with fours of bytes, widened to 16 bits
//     chromaParts          so many vectors of such pixels make a block for which chroma is loaded
//     chromaPairs          for pixels as in lumaWords the own sample of each and the next on its side
//
// Of chroma, one sample more than the block's is read on either side.

#include "render/colour/ColourKernels.h"

#include <immintrin.h>

namespace tarvo::render {
namespace {

/// A vector of so many lanes of 16 bytes, as numbers of 8, 16 and 32 bits, which the usual operators work on.
template<int count>
struct VectorTypes {
    static constexpr int lanes = count;
    using Bytes __attribute__((vector_size(16 * count))) = std::uint8_t;
    using Words __attribute__((vector_size(16 * count))) = std::int16_t;
    using Longs __attribute__((vector_size(16 * count))) = std::int32_t;
    using Floats __attribute__((vector_size(16 * count))) = float;
};

template<typename Set>
using Bytes = typename Set::Bytes;
template<typename Set>
using Words = typename Set::Words;
template<typename Set>
using Longs = typename Set::Longs;
template<typename Set>
using Floats = typename Set::Floats;

/// Calls convert(x) for blocks of so many columns that cover all of them; says how many it covered, which is
/// none if there is not enough for one. The last block overlaps the one before it where they do not come out
/// even, and writes the same again.
template<int block, typename Convert>
int inBlocks(int columns, Convert convert) {
    if (columns < block)
        return 0;
    const int last = columns - block;
    for (int x = 0;; x = x + block < last ? x + block : last) {
        convert(x);
        if (x == last)
            return columns;
    }
}

} // namespace
} // namespace tarvo::render
