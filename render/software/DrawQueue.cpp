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

/// One piece of a row of one pass.
class CPiece {
public:
    CPiece(const QueuedDraw& draw, const Span& span, int x, int y, int count)
        : m_draw(draw), m_span(span), m_x(x), m_y(y), m_count(count) {}

    void drawTo(std::uint8_t* target, const RowKernels& kernels) const noexcept {
        if (!m_draw.isBlended) {
            compute(target, kernels);
        } else if (m_draw.program == ShaderProgram::overviewRegion) {
            float alpha[pieceLength];
            kernels.interpolate(alongRow(values().colour, m_y), m_x, m_count, alpha);
            blendOverviewRegion(alpha, m_count, target);
        } else {
            alignas(alignment) std::uint8_t pixels[pieceLength * 4];
            compute(pixels, kernels);
            blend(pixels, m_count, target);
        }
    }

private:
    const VertexValues& values() const { return m_draw.range->raster().values(m_span); }

    void compute(std::uint8_t* target, const RowKernels& kernels) const noexcept {
        switch (m_draw.program) {
        case ShaderProgram::overviewRegion: {
            float alpha[pieceLength];
            kernels.interpolate(alongRow(values().colour, m_y), m_x, m_count, alpha);
            overviewRegion(alpha, m_count, target);
            break;
        }
        case ShaderProgram::yuy2ToRgb:
            yuy2Row(
                {m_draw.inputWidth, m_draw.inputHeight, m_draw.planes[0]->data(), m_draw.planes[0]->rowBytes},
                m_x, m_y, m_count, target);
            break;
        case ShaderProgram::yv12ToRgb:
            convertYv12(target, kernels);
            break;
        default:
            samplePositions(target, kernels);
            break;
        }
    }

    void convertYv12(std::uint8_t* target, const RowKernels& kernels) const noexcept {
        float u[pieceLength];
        float v[pieceLength];
        kernels.interpolate(alongRow(values().u, m_y), m_x, m_count, u);
        kernels.interpolate(alongRow(values().v, m_y), m_x, m_count, v);
        const auto& planes = m_draw.planes;
        yv12Row({m_draw.inputWidth,
                 m_draw.inputHeight,
                 {planes[0]->data(), planes[1]->data(), planes[2]->data()},
                 {planes[0]->step(), planes[1]->step(), planes[2]->step()}},
                {u, v, m_count}, target);
    }

    void samplePositions(std::uint8_t* target, const RowKernels& kernels) const noexcept {
        const CDrawnRange& range = *m_draw.range;
        const std::ptrdiff_t slot = range.raster().slotOf(m_span, m_y, m_x);
        const std::uint8_t* const pixels = windowPixels(m_draw);
        if (range.isStraight(m_y / bandHeight)) {
            std::memcpy(target, pixels + range.offsets()[slot], static_cast<std::size_t>(m_count) * 4);
            return;
        }
        // About as much later as memory takes to answer.
        constexpr std::ptrdiff_t distance = 6 * pieceLength;
        const bool isInBand = slot + distance + m_count <= range.raster().endSlot(m_y / bandHeight);
        if (m_draw.tables.isThere()) {
            drawLayers(range.layers(), slot, m_count, pixels, m_draw.window.pitch, isInBand ? distance : 0,
                       kernels, target);
            return;
        }
        const std::int32_t* const offsets = range.offsets() + slot;
        kernels.sample({pixels, m_draw.window.pitch, offsets, range.fractions() + slot, m_count,
                        bytesOf(m_draw.outside), target, isInBand ? offsets + distance : nullptr});
    }

    const QueuedDraw& m_draw;
    const Span& m_span;
    int m_x;
    int m_y;
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
        draw.range->raster().forEachPiece(band, [&](const Span& span, int y, int x, int count) {
            CPiece(draw, span, x, y, count).drawTo(pixelOf(target, x, y), kernels);
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
