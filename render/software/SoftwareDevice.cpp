#include "render/software/SoftwareDevice.h"

#include "render/software/ProgramNeeds.h"
#include "render/software/SoftwareFrame.h"
#include "render/software/StreamingCopy.h"
#include "render/software/WholePicture.h"
#include "render/software/kernels/Blending.h"
#include "render/software/kernels/RowChoice.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tarvo::render::software {
namespace {

MappedRows mapped(const TargetView& view) {
    return {static_cast<const std::byte*>(static_cast<const void*>(view.pixels)),
            static_cast<std::size_t>(view.pitch), view.width, view.height};
}

} // namespace

CSoftwareDevice::CSoftwareDevice(diagnostics::ObjectLog log, std::shared_ptr<CThreadPool> pool,
                                 const MemorySource& memory)
    : m_log(log), m_givenPool(std::move(pool)), m_memory(memory) {}

CSoftwareDevice::~CSoftwareDevice() = default;

HRESULT CSoftwareDevice::failed(HRESULT result, int line) const noexcept {
    m_log.failedCall("CDewarpingTransform::CreateTextures()", line, result);
    return result;
}

template<typename Verb>
HRESULT CSoftwareDevice::guarded(Verb verb) noexcept {
    if (m_frame == nullptr)
        return E_FAIL;
    try {
        return verb(*m_frame);
    } catch (const std::bad_alloc&) {
        return failed(E_OUTOFMEMORY, __LINE__);
    } catch (...) {
        return failed(E_FAIL, __LINE__);
    }
}

HRESULT CSoftwareDevice::open(const InputFormat& input, const OutputFormat& output) {
    close();
    if (!CSurfaces::isPossible(input, output))
        return failed(E_INVALIDARG, __LINE__);
    try {
        m_frame = std::make_unique<Frame>(input, output, m_givenPool ? m_givenPool : CThreadPool::shared(),
                                          m_memory);
    } catch (const std::bad_alloc&) {
        return failed(E_OUTOFMEMORY, __LINE__);
    } catch (...) {
        return failed(E_FAIL, __LINE__);
    }
    return S_OK;
}

HRESULT CSoftwareDevice::openStates() {
    return isOpen() ? S_OK : E_FAIL;
}

void CSoftwareDevice::close() {
    m_frame.reset();
}

WorkCounters CSoftwareDevice::counters() const {
    if (!isOpen())
        return {};
    WorkCounters counters = m_frame->counters;
    counters.tilesMade = m_frame->surfaces.store().tilesMade();
    return counters;
}

HRESULT CSoftwareDevice::geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) {
    return guarded([&](Frame& frame) -> HRESULT {
        const geometry::PixelBox& box = exclude.box;
        const InputFormat& input = frame.surfaces.input();
        if (!box.isEmpty() && (box.width() > input.width || box.height() > input.height))
            return E_INVALIDARG;
        frame.surfaces.setExcludeBox(box);
        // The same vertices keep everything that was worked out for them.
        if (!frame.hasVertices || std::memcmp(&frame.vertices, &vertices, sizeof(vertices)) != 0) {
            frame.vertices = vertices;
            frame.hasVertices = true;
            ++frame.vertexVersion;
        }
        return S_OK;
    });
}

HRESULT CSoftwareDevice::overviewMarker(const geometry::OverviewMarkerVertices& vertices) {
    return guarded([&](Frame& frame) -> HRESULT {
        if (!frame.hasMarker || std::memcmp(&frame.marker, &vertices, sizeof(vertices)) != 0) {
            frame.marker = vertices;
            frame.hasMarker = true;
            ++frame.markerVersion;
        }
        return S_OK;
    });
}

bool CSoftwareDevice::hasProgram(ShaderProgram program) const {
    return static_cast<std::size_t>(program) < shaderResources.size();
}

HRESULT CSoftwareDevice::prepare(ShaderProgram program, ConstantSlot slot,
                                 std::span<const std::byte> constants) {
    return guarded([&](Frame& frame) -> HRESULT {
        frame.program.reset();
        const ProgramNeeds needs = needsOf(program);
        if (!needs.isPrepared || !needs.fits(slot, constants))
            return E_INVALIDARG;
        frame.program = program;
        return S_OK;
    });
}

void CSoftwareDevice::releaseProgram() {
    if (isOpen())
        m_frame->program.reset();
}

HRESULT CSoftwareDevice::lookup(int width, int height) {
    return guarded([&](Frame& frame) -> HRESULT {
        constexpr int largestSide = 16384;
        if (width < 1 || height < 1 || width > largestSide || height > largestSide)
            return E_INVALIDARG;
        execute(); // queued passes still look at the old one
        frame.surfaces.setLookup(width, height);
        return S_OK;
    });
}

void CSoftwareDevice::releaseLookup() {
    if (!isOpen())
        return;
    execute();
    m_frame->surfaces.releaseLookup();
}

HRESULT CSoftwareDevice::upload(Surface surface, const SourceRows& rows) {
    return guarded([&](Frame& frame) -> HRESULT {
        const bool isNowhere = rows.data == nullptr && rows.rowCount > 0 && rows.rowBytes > 0;
        if (rows.rowCount < 0 || isNowhere)
            return E_INVALIDARG;
        execute();
        if (surface == Surface::inputPicture) {
            frame.waitingPicture.reset();
            if (frame.isInputPictureFree()) {
                frame.waitingPicture = rows;
                if (!rows.isLent)
                    takeInEarly();
                return S_OK;
            }
        }
        const HRESULT result = frame.surfaces.upload(surface, rows, *frame.pool);
        if (result != E_FAIL || !frame.queue.canRepeat())
            return result;
        // What was handed over may look at the planes that are to be written.
        settle();
        return frame.surfaces.upload(surface, rows, *frame.pool);
    });
}

void CSoftwareDevice::takeIn() {
    Frame& frame = *m_frame;
    const std::optional<SourceRows> rows = std::exchange(frame.waitingPicture, std::nullopt);
    if (!rows)
        return;
    if (frame.queue.canRepeat())
        settle();
    // Takes no memory: while it waited, nobody took a share of the one in its place.
    frame.surfaces.upload(Surface::inputPicture, *rows, *frame.pool);
}

void CSoftwareDevice::takeInEarly() {
    // The next one may not be able to wait either: its output is better drawn into memory at once than twice.
    m_frame->wasPictureAskedFor = true;
    takeIn();
}

void CSoftwareDevice::keepInput() {
    guarded([&](Frame& frame) {
        execute(); // queued passes still look at the lender's memory
        if (frame.waitingPicture)
            takeInEarly();
        // About as many devices as share these threads. The frames of a few find room in the caches until
        // they are overwritten; those of many would only displace each other.
        constexpr long many = 3;
        const bool isOneOfMany = frame.pool.use_count() >= many;
        frame.surfaces.keepInput(*frame.pool, isOneOfMany ? copyPastCaches : copyThroughCaches);
        return S_OK;
    });
}

void CSoftwareDevice::clear(Surface target, const std::array<float, 4>& colour) {
    guarded([&](Frame& frame) -> HRESULT {
        const Bgra stored = storedColour({colour[0], colour[1], colour[2], colour[3]});
        if (target == Surface::outputTarget) {
            if (frame.queue.canRepeat())
                frame.ranges.release();
            frame.queue.clear(stored);
            takeIn(); // before anything is queued
        } else if (target == Surface::conversionTarget) {
            frame.surfaces.fillConversionTarget(stored);
        }
        return S_OK;
    });
}

HRESULT CSoftwareDevice::draw(const Pass& pass) {
    return guarded([&](Frame&) {
        takeIn();
        return drawQueued(pass);
    });
}

HRESULT CSoftwareDevice::drawQueued(const Pass& pass) {
    Frame& frame = *m_frame;
    const bool isConversion = pass.target == Surface::conversionTarget;
    if (pass.program == ShaderProgram::vertex || (!isConversion && pass.target != Surface::outputTarget))
        return E_INVALIDARG;
    if (!isConversion && frame.queue.canRepeat())
        settle(); // the pass draws on it
    QueuedDraw draw;
    RasterKey key;
    std::span<const geometry::Vertex> corners;
    std::span<const std::uint32_t> corner;
    if (const HRESULT result = frame.find(pass, draw, key, corners, corner); FAILED(result))
        return result;

    const auto acquire = [&](const PositionKey& positions) {
        CDrawnRange* range = frame.ranges.acquire(key, positions, corners, corner);
        if (range == nullptr) {
            settle(); // which ends all uses
            range = frame.ranges.acquire(key, positions, corners, corner);
        }
        return range;
    };
    if (isConversion && note(pass, draw, acquire({})->raster()))
        return S_OK;
    // Of rows that were lent, what was converted is not kept a second time.
    const auto& planes = draw.planes;
    if (std::any_of(planes.begin(), planes.end(), [](const auto& rows) { return rows && !rows->isWhole; }))
        return E_FAIL;
    PositionKey positions;
    if (const ProgramNeeds needs = needsOf(pass.program); needs.kernel != nullptr)
        positions = {rowKernels().*needs.kernel,
                     needs.isProjection,
                     needs.isBounded,
                     draw.record,
                     draw.window,
                     draw.tables};
    draw.range = acquire(positions);
    if (!isConversion) {
        frame.queue.add(std::move(draw));
        return S_OK;
    }
    if (pass.textures[0] == Surface::outputTarget) {
        if (const HRESULT result = settle(); FAILED(result))
            return result;
    }
    const TargetView target = frame.surfaces.drawableConversionTarget(*frame.pool);
    CDrawQueue now;
    now.add(std::move(draw));
    now.execute({target}, frame.surfaces.store(), *frame.pool, rowKernels(), frame.counters,
                [](const TargetView&, int, int) {});
    return S_OK;
}

bool CSoftwareDevice::note(const Pass& pass, const QueuedDraw& draw, const CRaster& raster) {
    CSurfaces& surfaces = m_frame->surfaces;
    const int width = surfaces.input().width;
    const int height = surfaces.input().height;
    if (pass.isBlended || !coversAll(raster, width, height))
        return false;
    if (pass.program == ShaderProgram::yuy2ToRgb && draw.inputWidth == width) {
        surfaces.convertYuy2();
        return true;
    }
    if (!isOneToOne(raster, width, height))
        return false;
    if (pass.program == ShaderProgram::yv12ToRgb) {
        surfaces.convertYv12();
        return true;
    }
    const SampledWindow whole{0, 0, width, height, width, height, draw.window.pitch};
    if (pass.program == ShaderProgram::excludeRegion && draw.picture && draw.window == whole) {
        surfaces.mask(pass.textures[0],
                      areaOf(recordAs<ExcludeConstants>(draw.record), raster, width, height));
        return true;
    }
    return false;
}

void CSoftwareDevice::copy(Surface from, Surface to) {
    guarded([&](Frame& frame) -> HRESULT {
        takeIn();
        const std::optional<geometry::PixelBox> box = frame.surfaces.boxOf(from);
        if (!box || box != frame.surfaces.boxOf(to))
            return E_INVALIDARG;
        return copyPixels(from, *box, to);
    });
}

void CSoftwareDevice::copyBox(Surface from, const geometry::PixelBox& box, Surface to) {
    guarded([&](Frame&) {
        takeIn();
        return copyPixels(from, box, to);
    });
}

HRESULT CSoftwareDevice::copyPixels(Surface from, const geometry::PixelBox& box, Surface to) {
    Frame& frame = *m_frame;
    const bool isToOutput = to == Surface::outputTarget;
    if (from == Surface::outputTarget || isToOutput) {
        const HRESULT result = settle();
        if (FAILED(result) && !isToOutput)
            return result;
    }
    const HRESULT result = frame.surfaces.copy(from, box, to, *frame.pool, frame.counters);
    const TargetView& output = frame.surfaces.output();
    if (SUCCEEDED(result) && isToOutput && box.width() == output.width && box.height() == output.height)
        frame.isPictureInMemory = true;
    return result;
}

Destination CSoftwareDevice::destinationFor(IMappedRowsVisitor& reader) noexcept {
    Frame& frame = *m_frame;
    const TargetView& output = frame.surfaces.output();
    if (frame.queue.isWritingOnly()) {
        const WritableRows rows = reader.rowsToFill(output.width, output.height);
        if (rows.data != nullptr)
            return {{static_cast<std::uint8_t*>(static_cast<void*>(rows.data)), rows.pitchBytes, output.width,
                     output.height},
                    nullptr,
                    true};
    }
    return {output, &frame.bandRows, true};
}

HRESULT CSoftwareDevice::execute(IMappedRowsVisitor* observer) noexcept {
    Frame& frame = *m_frame;
    HRESULT result = S_OK;
    if (frame.queue.hasWork()) {
        // Drawn upon a picture that is lost, it is lost as well.
        const bool isWhole = frame.isPictureInMemory || frame.queue.beginsWithClear();
        // Who asked for the last picture later may do so with each of them.
        const bool isApart = observer != nullptr && observer->takesRowsAlone() &&
                             !std::exchange(frame.wasPictureAskedFor, false) && frame.queue.isRepeatable();
        const Destination destination =
            isApart ? destinationFor(*observer) : Destination{frame.surfaces.output()};
        try {
            frame.queue.execute(
                destination, frame.surfaces.store(), *frame.pool, rowKernels(), frame.counters,
                [&](const TargetView& rows, int first, int end) {
                    if (destination.isFilled())
                        observer->rowsFinished({nullptr, 0, rows.width, rows.height}, first, end);
                    else if (observer != nullptr)
                        observer->rowsFinished(mapped(rows), first, end);
                });
            frame.isPictureInMemory = !destination.isApart && isWhole;
        } catch (...) {
            frame.failure = result = failed(E_OUTOFMEMORY, __LINE__);
        }
    }
    if (!frame.queue.canRepeat())
        frame.ranges.release();
    return result;
}

HRESULT CSoftwareDevice::settle() noexcept {
    HRESULT result = execute();
    if (SUCCEEDED(result) && m_frame->queue.canRepeat()) {
        m_frame->queue.askAgain();
        result = execute();
    }
    return FAILED(result) || m_frame->isPictureInMemory ? result : E_FAIL;
}

void CSoftwareDevice::flush() {
    // Drawing begins when somebody waits for it, so that rows can be handed over as they are finished.
}

HRESULT CSoftwareDevice::readBack(IMappedRowsVisitor& visitor) {
    return guarded([&](Frame& frame) -> HRESULT {
        const bool isDrawnNow = frame.queue.hasWork();
        execute(&visitor);
        const bool isHandedOver = isDrawnNow && frame.queue.canRepeat();
        if (!isHandedOver)
            settle();
        frame.wasPictureAskedFor = frame.wasPictureAskedFor || !isDrawnNow;
        if (FAILED(frame.failure))
            return std::exchange(frame.failure, S_OK);
        MappedRows rows = mapped(frame.surfaces.output());
        if (isHandedOver) {
            rows.data = nullptr;
        } else if (!frame.isPictureInMemory) {
            return E_FAIL; // it was handed over, and the next one could not be drawn
        }
        return visitor.visit(rows);
    });
}

} // namespace tarvo::render::software
