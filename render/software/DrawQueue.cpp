#include "render/software/DrawQueue.h"

#include "render/software/kernels/Blending.h"
#include "render/software/kernels/YuvConversion.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::software {
namespace {

std::uint8_t* pixelOf(const TargetView& target, int x, int y) {
    return target.pixels + y * target.pitch + static_cast<std::ptrdiff_t>(x) * 4;
}

std::uint32_t bytesOf(Bgra pixel) {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, &pixel, sizeof(bytes));
    return bytes;
}

const std::uint8_t* windowPixels(const QueuedDraw& draw) {
    const std::uint8_t* const pixels = draw.picture ? draw.picture->view().pixels : draw.pixels;
    return pixels + draw.window.top * draw.window.pitch + static_cast<std::ptrdiff_t>(draw.window.left) * 4;
}

/// One block of one pass.
class CBlock {
public:
    CBlock(const QueuedDraw& draw, const Span& span, int y, int rows, int x, int count)
        : m_draw(draw), m_span(span), m_y(y), m_rows(rows), m_x(x), m_count(count) {}

    void drawTo(std::uint8_t* target, std::ptrdiff_t pitch, const RowKernels& kernels) const noexcept {
        if (!m_draw.isBlended) {
            compute(target, pitch, kernels);
            return;
        }
        forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
            if (m_draw.program == ShaderProgram::overviewRegion) {
                float alpha[pieceLength];
                kernels.interpolate(alongRow(values().colour, y), m_x, m_count, alpha);
                blendOverviewRegion(alpha, m_count, row);
            } else {
                alignas(alignment) std::uint8_t pixels[pieceLength * 4];
                CBlock(m_draw, m_span, y, 1, m_x, m_count).compute(pixels, 0, kernels);
                blend(pixels, m_count, row);
            }
        });
    }

private:
    const VertexValues& values() const { return m_draw.range->raster().values(m_span); }
    template<typename Visit>
    void forEachRow(std::uint8_t* target, std::ptrdiff_t pitch, Visit visit) const {
        for (int row = 0; row < m_rows; ++row)
            visit(m_y + row, target + row * pitch);
    }

    void compute(std::uint8_t* target, std::ptrdiff_t pitch, const RowKernels& kernels) const noexcept {
        switch (m_draw.program) {
        case ShaderProgram::overviewRegion:
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                float alpha[pieceLength];
                kernels.interpolate(alongRow(values().colour, y), m_x, m_count, alpha);
                overviewRegion(alpha, m_count, row);
            });
            break;
        case ShaderProgram::yuy2ToRgb:
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                const RawRows& packed = *m_draw.planes[0];
                yuy2Row({m_draw.inputWidth, m_draw.inputHeight, packed.data(), packed.rowBytes}, m_x, y,
                        m_count, row);
            });
            break;
        case ShaderProgram::yv12ToRgb:
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) { convertYv12(y, row, kernels); });
            break;
        default:
            samplePositions(target, pitch, kernels);
            break;
        }
    }

    void convertYv12(int y, std::uint8_t* target, const RowKernels& kernels) const noexcept {
        float u[pieceLength];
        float v[pieceLength];
        kernels.interpolate(alongRow(values().u, y), m_x, m_count, u);
        kernels.interpolate(alongRow(values().v, y), m_x, m_count, v);
        const auto& planes = m_draw.planes;
        yv12Row({m_draw.inputWidth,
                 m_draw.inputHeight,
                 {planes[0]->data(), planes[1]->data(), planes[2]->data()},
                 {planes[0]->step(), planes[1]->step(), planes[2]->step()}},
                {u, v, m_count}, target);
    }

    void samplePositions(std::uint8_t* target, std::ptrdiff_t pitch,
                         const RowKernels& kernels) const noexcept {
        const CDrawnRange& range = *m_draw.range;
        const CRaster& raster = range.raster();
        const int band = m_y / bandHeight;
        const std::uint8_t* const pixels = windowPixels(m_draw);
        const std::ptrdiff_t slot = raster.slotOf(m_span, m_y, m_x);
        const std::ptrdiff_t step = m_rows > 1 ? raster.slotOf(m_span, m_y + 1, m_x) - slot : 0;
        const std::ptrdiff_t end = raster.endSlot(band);
        if (range.isStraight(band)) {
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                std::memcpy(row, pixels + range.offsets()[slot + (y - m_y) * step],
                            static_cast<std::size_t>(m_count) * 4);
            });
        } else if (m_draw.tables.isThere()) {
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                const std::ptrdiff_t first = slot + (y - m_y) * step;
                drawLayers(range.layers(), first, m_count, pixels, m_draw.window.pitch, end - first - m_count,
                           kernels, row);
            });
        } else {
            kernels.sample({pixels, m_draw.window.pitch, range.offsets() + slot, range.fractions() + slot,
                            step, m_count, m_rows, bytesOf(m_draw.outside), target, pitch,
                            end - slot - (m_rows - 1) * step - m_count});
        }
    }

    const QueuedDraw& m_draw;
    const Span& m_span;
    int m_y;
    int m_rows;
    int m_x;
    int m_count;
};

/// The part of a row that an opaque rectangle covers; empty for anything else.
Span coveredBy(const QueuedDraw& draw, int y) {
    const CRaster& raster = draw.range->raster();
    if (draw.isBlended || !raster.isRectangle() || y < raster.top() || y >= raster.bottom())
        return {};
    return raster.row(y).front();
}

} // namespace

/// Whether the step samples a picture where its range says.
bool CDrawQueue::isByPositions(const Step& step) {
    return !step.isClear && (step.draw.picture || step.draw.pixels != nullptr);
}

void CDrawQueue::clear(Bgra colour) {
    m_steps.clear();
    m_steps.push_back({true, colour, {}});
}

void CDrawQueue::add(QueuedDraw draw) {
    m_steps.push_back({false, {}, std::move(draw)});
}

void CDrawQueue::begin(CPictureStore& store, WorkCounters& counters) {
    try {
        for (const Step& step : m_steps) {
            const QueuedDraw& draw = step.draw;
            if (isByPositions(step) && !draw.range->isEvaluated())
                ++counters.rangesEvaluated;
            if (!step.isClear && draw.picture)
                store.bindMemory(*draw.picture);
        }
    } catch (...) {
        drop();
        throw;
    }
}

void CDrawQueue::end() noexcept {
    for (const Step& step : m_steps) {
        if (isByPositions(step))
            step.draw.range->markEvaluated();
    }
    drop();
}

std::uint64_t CDrawQueue::executeBand(const TargetView& target, int band, CPictureStore& store,
                                      const RowKernels& kernels) const noexcept {
    const int begin = band * bandHeight;
    const int end = std::min(begin + bandHeight, target.height);
    for (const Step& step : m_steps) {
        const QueuedDraw& draw = step.draw;
        if (!isByPositions(step))
            continue;
        draw.range->evaluateBand(band, kernels);
        if (draw.picture)
            store.makeTiles(*draw.picture, draw.range->tiles(band), draw.range->allTiles());
    }
    std::uint64_t cleared = 0;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        if (m_steps[i].isClear) {
            for (int y = begin; y < end; ++y)
                cleared += clearRow(target, y, i);
            continue;
        }
        const QueuedDraw& draw = m_steps[i].draw;
        draw.range->raster().forEachBlock(band, [&](const Span& span, int y, int rows, int x, int count) {
            CBlock(draw, span, y, rows, x, count).drawTo(pixelOf(target, x, y), target.pitch, kernels);
        });
    }
    return cleared;
}

std::uint64_t CDrawQueue::clearRow(const TargetView& target, int y, std::size_t step) const noexcept {
    // From the left: always to where the next rectangle begins that is drawn later, then behind it.
    std::uint64_t cleared = 0;
    int x = 0;
    while (x < target.width) {
        int end = target.width;
        int behind = x;
        for (std::size_t i = step + 1; i < m_steps.size(); ++i) {
            if (m_steps[i].isClear)
                continue;
            const Span covered = coveredBy(m_steps[i].draw, y);
            if (covered.left <= x && covered.right > x) {
                behind = std::max(behind, static_cast<int>(covered.right));
            } else if (covered.left > x && covered.left < covered.right) {
                end = std::min(end, static_cast<int>(covered.left));
            }
        }
        if (behind > x) {
            x = behind;
            continue;
        }
        const std::uint32_t colour = bytesOf(m_steps[step].colour);
        for (std::uint8_t* pixel = pixelOf(target, x, y); x < end; ++x, ++cleared, pixel += 4)
            std::memcpy(pixel, &colour, 4);
    }
    return cleared;
}

} // namespace tarvo::render::software
