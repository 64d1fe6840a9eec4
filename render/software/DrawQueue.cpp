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
class CDrawnBlock {
public:
    CDrawnBlock(const QueuedDraw& draw, const Block& block) : m_draw(draw), m_block(block) {}

    void drawTo(std::uint8_t* target, std::ptrdiff_t pitch, const RowKernels& kernels) const noexcept {
        if (!m_draw.isBlended) {
            compute(target, pitch, kernels);
            return;
        }
        forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
            if (m_draw.program == ShaderProgram::overviewRegion) {
                markRow(blendOverviewRegion, y, row, kernels);
            } else {
                alignas(alignment) std::uint8_t pixels[pieceLength * 4];
                CDrawnBlock(m_draw, {m_block.span, y, 1, m_block.left, m_block.columns})
                    .compute(pixels, 0, kernels);
                blend(pixels, m_block.columns, row);
            }
        });
    }

private:
    const VertexValues& values() const { return m_draw.range->raster().values(m_block.span); }
    template<typename Visit>
    void forEachRow(std::uint8_t* target, std::ptrdiff_t pitch, Visit visit) const {
        for (int row = 0; row < m_block.rows; ++row)
            visit(m_block.top + row, target + row * pitch);
    }

    void compute(std::uint8_t* target, std::ptrdiff_t pitch, const RowKernels& kernels) const noexcept {
        switch (m_draw.program) {
        case ShaderProgram::overviewRegion:
            forEachRow(target, pitch,
                       [&](int y, std::uint8_t* row) { markRow(overviewRegion, y, row, kernels); });
            break;
        case ShaderProgram::yuy2ToRgb:
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                const RawRows& packed = *m_draw.planes[0];
                yuy2Row({m_draw.inputWidth, m_draw.inputHeight, packed.data(), packed.rowBytes}, m_block.left,
                        y, m_block.columns, row);
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

    /// Of the marker, by its alpha.
    template<typename Mark>
    void markRow(Mark mark, int y, std::uint8_t* target, const RowKernels& kernels) const noexcept {
        float alpha[pieceLength];
        kernels.interpolate(alongRow(values().colour, y), m_block.left, m_block.columns, alpha);
        mark(alpha, m_block.columns, target);
    }

    void convertYv12(int y, std::uint8_t* target, const RowKernels& kernels) const noexcept {
        float u[pieceLength];
        float v[pieceLength];
        kernels.interpolate(alongRow(values().u, y), m_block.left, m_block.columns, u);
        kernels.interpolate(alongRow(values().v, y), m_block.left, m_block.columns, v);
        const auto& planes = m_draw.planes;
        yv12Row({m_draw.inputWidth,
                 m_draw.inputHeight,
                 {planes[0]->data(), planes[1]->data(), planes[2]->data()},
                 {planes[0]->step(), planes[1]->step(), planes[2]->step()}},
                {u, v, m_block.columns}, target);
    }

    void samplePositions(std::uint8_t* target, std::ptrdiff_t pitch,
                         const RowKernels& kernels) const noexcept {
        const CDrawnRange& range = *m_draw.range;
        const CRaster& raster = range.raster();
        const int band = m_block.top / bandHeight;
        const std::uint8_t* const pixels = windowPixels(m_draw);
        const std::ptrdiff_t slot = raster.slotOf(m_block);
        const std::ptrdiff_t step = raster.slotStep(m_block);
        const auto slotOfRow = [&](int y) { return slot + (y - m_block.top) * step; };
        const auto following = [&](int y) { return raster.endSlot(band) - slotOfRow(y) - m_block.columns; };
        if (range.isStraight(band)) {
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                std::memcpy(row, pixels + range.offsets()[slotOfRow(y)],
                            static_cast<std::size_t>(m_block.columns) * 4);
            });
        } else if (m_draw.tables.isThere()) {
            forEachRow(target, pitch, [&](int y, std::uint8_t* row) {
                drawLayers(range.layers(), slotOfRow(y), m_block.columns, pixels, m_draw.window.pitch,
                           following(y), kernels, row);
            });
        } else {
            kernels.sample({pixels, m_draw.window.pitch, range.offsets() + slot, range.fractions() + slot,
                            step, m_block.columns, m_block.rows, bytesOf(m_draw.outside), target, pitch,
                            following(m_block.top + m_block.rows - 1)});
        }
    }

    const QueuedDraw& m_draw;
    const Block m_block;
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

bool CDrawQueue::isRepeatable() const {
    // Planes may be kept only in part. Tables are looked up once, when positions are worked out.
    const auto isLasting = [](const Step& step) {
        return step.isClear || (step.draw.pixels == nullptr && !step.draw.planes[0]);
    };
    return beginsWithClear() && std::all_of(m_steps.begin(), m_steps.end(), isLasting);
}

bool CDrawQueue::isWritingOnly() const {
    // What is seen through tables may be made opaque where it was written.
    return std::all_of(m_steps.begin(), m_steps.end(), [](const Step& step) {
        const QueuedDraw& draw = step.draw;
        return step.isClear || (!draw.isBlended && !draw.tables.isThere());
    });
}

int CDrawQueue::sharesOf(const CTiledPicture& picture) const {
    return static_cast<int>(std::count_if(m_steps.begin(), m_steps.end(), [&](const Step& step) {
        return step.draw.picture.get() == &picture;
    }));
}

void CDrawQueue::clear(Bgra colour) {
    drop();
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

void CDrawQueue::end(bool isToBeRepeated) noexcept {
    for (const Step& step : m_steps) {
        if (isByPositions(step))
            step.draw.range->markEvaluated();
    }
    if (isToBeRepeated) {
        m_isDoneApart = true;
    } else {
        drop();
    }
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
        draw.range->raster().forEachBlock(band, [&](const Block& block) {
            CDrawnBlock(draw, block).drawTo(pixelOf(target, block.left, block.top), target.pitch, kernels);
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
