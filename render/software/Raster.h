#pragma once

#include "geometry/ViewLayout.h"
#include "render/Pass.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::render::software {

/// Targets are worked on in bands of this many rows, an even number, and bands in pieces of this many
/// columns: what neighbouring pixels look at, above all in a view that is turned, is then still in the first
/// cache.
inline constexpr int bandHeight = 16;
inline constexpr int pieceLength = 128;

constexpr int bandCount(int height) {
    return (height + bandHeight - 1) / bandHeight;
}

/// A vertex value over a triangle, as a function of the place in the target, pixels.
struct Affine {
    double origin;
    double perX;
    double perY;

    double at(double x, double y) const { return origin + perX * x + perY * y; }
};

struct VertexValues {
    Affine u;
    Affine v;
    Affine colour;
};

/// Pixels left … right − 1 of a row.
struct Span {
    std::int32_t slot;   ///< of the first pixel, in arrays that hold something for every pixel of a raster
    std::int32_t values; ///< which of the raster's values run along it
    std::uint16_t left;
    std::uint16_t right;
};

/// Pixels side by side in each of some rows of a band.
struct Block {
    const Span& span; ///< of the first row, and as good for the others
    int top;
    int rows;
    int left;
    int columns; ///< up to pieceLength
};

/// Slots of a span begin at multiples of this, so that vectors of any width load aligned.
inline constexpr std::int32_t slotAlignment = 16;

/// The pixels that a range of vertices covers, by the rules of the graphics platform: corners are snapped to
/// 1/256 pixel, a centre on an edge belongs to the triangle whose left or top edge it is, and triangles that
/// are counter-clockwise in the picture are left out, as are those with a corner that is no finite number.
/// Values run linearly between the unsnapped corners.
///
/// Coordinates are those of geometry::Vertex. An upright rectangle may reach any distance beyond the target;
/// of other triangles those are left out that reach further than a million pixels.
class CRaster {
public:
    /// Replaces the contents. `indices` matter to a list only; each lies in `vertices`. The target is at most
    /// 65,535 pixels wide. Throws std::bad_alloc, which leaves the raster empty; repeated with as many
    /// pixels it allocates nothing.
    void build(std::span<const geometry::Vertex> vertices, std::span<const std::uint32_t> indices,
               Topology topology, int width, int height);

    /// Rows that may have spans: top … bottom − 1.
    int top() const { return m_top; }
    int bottom() const { return m_bottom; }
    /// In the order in which they are drawn; y within top … bottom − 1.
    std::span<const Span> row(int y) const {
        const auto index = static_cast<std::size_t>(y - m_top);
        return std::span(m_spans).subspan(m_rowStarts[index], m_rowStarts[index + 1] - m_rowStarts[index]);
    }
    const VertexValues& values(const Span& span) const {
        return m_values[static_cast<std::size_t>(span.values)];
    }
    /// Where arrays by slot hold a pixel of a span in row y, the first of a piece. Those of a rectangle lie
    /// in the order in which forEachPiece() visits them.
    std::ptrdiff_t slotOf(const Span& span, int y, int x) const {
        if (!m_isRectangle)
            return span.slot + (x - span.left);
        const int firstRow = std::max(m_top, y / bandHeight * bandHeight);
        const int rows = std::min(m_bottom, (y / bandHeight + 1) * bandHeight) - firstRow;
        return static_cast<std::ptrdiff_t>(firstRow - m_top) * m_paddedWidth +
               static_cast<std::ptrdiff_t>(x - span.left) * rows + (y - firstRow) * slotsOfPiece(span, x);
    }
    std::ptrdiff_t slotOf(const Block& block) const { return slotOf(block.span, block.top, block.left); }
    /// From a row of a block to the next.
    std::ptrdiff_t slotStep(const Block& block) const {
        return m_isRectangle ? slotsOfPiece(block.span, block.left) : 0;
    }
    /// Behind the slots of a band's last row, which itself exists. Those of a band are all before it.
    std::ptrdiff_t endSlot(int band) const {
        const int end = std::min(m_bottom, (band + 1) * bandHeight);
        if (m_isRectangle)
            return static_cast<std::ptrdiff_t>(end - m_top) * m_paddedWidth;
        const std::size_t next = m_rowStarts[static_cast<std::size_t>(end - m_top)];
        return next < m_spans.size() ? m_spans[next].slot : m_slotCount;
    }
    /// Visits the blocks of a band: pieces of a span, and those of a rectangle with all that lie below them
    /// in the band, whose slots follow each other. Pieces of different spans come in the order of the spans
    /// where they overlap.
    template<typename Visit>
    void forEachBlock(int band, Visit visit) const {
        const int first = std::max(m_top, band * bandHeight);
        const int end = std::min(m_bottom, (band + 1) * bandHeight);
        const auto visitSpan = [&](const Span& span, int y, int rows) {
            for (int x = span.left; x < span.right; x += pieceLength)
                visit(Block{span, y, rows, x, std::min(pieceLength, span.right - x)});
        };
        if (m_isRectangle) {
            if (first < end)
                visitSpan(row(first).front(), first, end - first);
            return;
        }
        for (int y = first; y < end; ++y) {
            for (const Span& span : row(y))
                visitSpan(span, y, 1);
        }
    }
    /// The same row by row: `visit(span, y, first column, count)`.
    template<typename Visit>
    void forEachPiece(int band, Visit visit) const {
        forEachBlock(band, [&](const Block& block) {
            for (int row = 0; row < block.rows; ++row)
                visit(block.span, block.top + row, block.left, block.columns);
        });
    }
    /// How long arrays by slot have to be.
    std::size_t slotCount() const { return static_cast<std::size_t>(m_slotCount); }
    /// True when each row has exactly one span and all are alike.
    bool isRectangle() const { return m_isRectangle; }

private:
    struct RowSpan {
        int y;
        Span span;
    };

    std::ptrdiff_t slotsOfPiece(const Span& span, int x) const {
        return std::min(pieceLength, m_paddedWidth - (x - span.left));
    }
    void clear();
    bool buildRectangle(std::span<const geometry::Vertex> vertices, int width, int height);
    void addTriangle(const geometry::Vertex& a, const geometry::Vertex& b, const geometry::Vertex& c,
                     int width, int height);
    void sortIntoRows();
    void assignSlots();

    int m_top = 0;
    int m_bottom = 0;
    bool m_isRectangle = false;
    int m_paddedWidth = 0; ///< of a rectangle
    std::int32_t m_slotCount = 0;
    std::vector<Span> m_spans;
    std::vector<std::size_t> m_rowStarts;
    std::vector<VertexValues> m_values;
    std::vector<RowSpan> m_unsorted;
};

} // namespace tarvo::render::software
