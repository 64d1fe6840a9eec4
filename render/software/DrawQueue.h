#pragma once

#include "render/ShaderProgram.h"
#include "render/software/BandRows.h"
#include "render/software/DrawnRange.h"
#include "render/software/InputPlanes.h"
#include "render/software/LookupTables.h"
#include "render/software/TiledPicture.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

namespace tarvo::render::software {

/// A pass with everything it looks at, which stays as it is until the pass is done.
struct QueuedDraw {
    ShaderProgram program = ShaderProgram::plainCopy;
    bool isBlended = false;
    Bgra outside = opaqueBlack;
    CDrawnRange* range = nullptr;
    RecordBytes record{};
    PictureShare picture;                  ///< where the program samples one
    const std::uint8_t* pixels = nullptr;  ///< where it samples the output target instead
    SampledWindow window{};                ///< of it
    std::array<CShare<RawRows>, 3> planes; ///< Y, Cr, Cb, or the packed frame first
    int inputWidth = 0;                    ///< of the planes
    int inputHeight = 0;
    TableView tables{}; ///< where it looks through some
};

struct TargetView {
    std::uint8_t* pixels = nullptr;
    std::ptrdiff_t pitch = 0;
    int width = 0;
    int height = 0;

    /// The same with the rows of a band somewhere else; no others may be touched.
    TargetView withBandAt(std::uint8_t* rows, int band) const {
        // Row 0 would lie outside of that memory.
        const auto offset = static_cast<std::uintptr_t>(band * bandHeight * pitch);
        return {reinterpret_cast<std::uint8_t*>(reinterpret_cast<std::uintptr_t>(rows) - offset), pitch,
                width, height};
    }
};

/// Where a queue is done.
struct Destination {
    TargetView target;
    /// If not null, rows of bands are drawn here instead, and are only there while somebody is told of them.
    CBandRows* bandRows = nullptr;
    /// Whether the target's memory is not what holds the picture for those who ask later: then it is done
    /// apart, and can be done again.
    bool isApart = false;

    /// Whether it is done in memory of whoever asks for it now.
    bool isFilled() const { return isApart && bandRows == nullptr; }
};

/// How much work was done since the device was opened; for tests and measurements.
struct WorkCounters {
    std::uint64_t tilesMade = 0;       ///< of input pictures: converted, filled, masked
    std::uint64_t rangesEvaluated = 0; ///< projections worked out
    std::uint64_t pixelsCleared = 0;   ///< written by clears
    std::uint64_t rowsCopied = 0;      ///< by copies of surfaces that could not be avoided
};

/// What was asked of one target and not yet done.
class CDrawQueue {
public:
    CDrawQueue() { m_steps.reserve(32); }

    bool hasWork() const { return !m_steps.empty() && !m_isDoneApart; }
    /// Makes everything asked before superfluous.
    void clear(Bgra colour);
    /// Not while there is something to repeat. Throws std::bad_alloc.
    void add(QueuedDraw draw);
    void drop() {
        m_steps.clear();
        m_isDoneApart = false;
    }

    /// Whether nothing depends on what the target held.
    bool beginsWithClear() const { return !m_steps.empty() && m_steps.front().isClear; }
    /// Whether it can be done apart, and then again.
    bool isRepeatable() const;
    /// Whether it was done apart and can be asked for again, until it is cleared.
    bool canRepeat() const { return m_isDoneApart; }
    void askAgain() { m_isDoneApart = false; }
    /// Of a queue that can be repeated: whether nothing it does looks at what it wrote to the target.
    bool isWritingOnly() const;
    /// How many shares of a picture it holds.
    int sharesOf(const CTiledPicture& picture) const;

    /// Does it all and forgets it, unless it is done apart. `rowsFinished(rows, first, end)` is told about
    /// every row once, in bands, by any thread, and throws nothing. Writes nothing but the target's pixels.
    /// Throws std::bad_alloc when the pictures that are looked at find no memory; nothing is drawn then, and
    /// all is forgotten.
    template<typename RowsFinished>
    void execute(const Destination& destination, CPictureStore& store, CThreadPool& pool,
                 const RowKernels& kernels, WorkCounters& counters, RowsFinished rowsFinished) {
        const TargetView& target = destination.target;
        begin(store, counters);
        // All passes band by band: what one leaves behind is still in the cache for what follows from it.
        std::atomic<std::uint64_t> cleared{0};
        const auto executeTo = [&](const TargetView& rows, int band) noexcept {
            cleared.fetch_add(executeBand(rows, band, store, kernels), std::memory_order_relaxed);
            rowsFinished(rows, band * bandHeight, std::min((band + 1) * bandHeight, target.height));
        };
        pool.run(bandCount(target.height), [&](int band) noexcept {
            if (destination.bandRows == nullptr) {
                executeTo(target, band);
            } else {
                const CBandRows::CLoan loan(*destination.bandRows);
                executeTo(target.withBandAt(loan.rows(), band), band);
            }
        });
        counters.pixelsCleared += cleared.load(std::memory_order_relaxed);
        end(destination.isApart);
    }

private:
    struct Step {
        bool isClear = false;
        Bgra colour{};
        QueuedDraw draw{};
    };

    static bool isByPositions(const Step& step);
    void begin(CPictureStore& store, WorkCounters& counters);
    /// All bands have the positions of the passes now; those are forgotten unless they are to be repeated.
    void end(bool isToBeRepeated) noexcept;
    /// The pixels that were cleared.
    std::uint64_t executeBand(const TargetView& target, int band, CPictureStore& store,
                              const RowKernels& kernels) const noexcept;
    std::uint64_t clearRow(const TargetView& target, int y, std::size_t step) const noexcept;

    std::vector<Step> m_steps;
    bool m_isDoneApart = false;
};

} // namespace tarvo::render::software
