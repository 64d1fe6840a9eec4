#pragma once

#include "render/software/DrawnRange.h"
#include "render/software/Raster.h"
#include "render/software/kernels/RowKernels.h"

#include <cstdint>
#include <span>

namespace tarvo::render::software {

/// Where the pixels of a view look that runs smoothly, from the positions of every knotDistance-th of them:
/// for the rows that a band has of some neighbouring pieces of a rectangle.
class CKnots {
public:
    static constexpr int mostPieces = 8;
    /// Which of the pieces that are projected together a block is.
    static int pieceOf(const Block& block) {
        return (block.left - block.span.left) / pieceLength % mostPieces;
    }

    /// The tiles of the pieces are set in `tiles`, whose bits outlive the knots, as do the other two.
    CKnots(const PositionKey& positions, const RowKernels& kernels, std::span<std::uint64_t> tiles)
        : m_positions(positions), m_kernels(kernels), m_tiles(tiles) {}

    /// Projects the knots of the rows from `firstRow` to `endRow` − 1 and of the pieces from column x on, up
    /// to mostPieces of them and column `right`.
    void project(const VertexValues& values, int firstRow, int endRow, int x, int right) noexcept;

    /// The positions of a row of a block; false where they do not run smoothly. Rows come in their order.
    bool spread(const Block& block, int row, float* x, float* y) noexcept;
    /// Sets the tiles of the block of so many columns whose rows were spread.
    void touch(int columns) noexcept;
    /// Whether all that it looks at, where it was spread, lies well inside the picture; once it was touched.
    bool isInside() const { return m_isInside; }

private:
    static constexpr int perPiece = pieceLength / knotDistance;
    static constexpr int mostColumns = (mostPieces - 1) * perPiece + knotCount;

    /// Whether a row looks elsewhere than the one above it: one box around both would hold what neither looks
    /// at. `knot` is one of the lower row.
    bool isTorn(const float* knots, int knot) const;
    void reachNothing();

    const PositionKey& m_positions;
    const RowKernels& m_kernels;
    std::span<std::uint64_t> m_tiles;
    int m_columns = 0;
    alignas(alignment) float m_x[bandHeight * mostColumns];
    alignas(alignment) float m_y[bandHeight * mostColumns];
    // What they reach of the piece that is worked on.
    Reach m_reachX;
    Reach m_reachY;
    bool m_isInside = false;
};

} // namespace tarvo::render::software
