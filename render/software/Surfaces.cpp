#include "render/software/Surfaces.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::software {
namespace {

constexpr int largestSide = 16384;
constexpr std::size_t packedPlane = 3;
constexpr std::size_t excludeIndex = 3;

void endLoan(RawRows& rows, bool isWhole) {
    rows.isWhole = isWhole;
    rows.lender = {};
}

bool isPossibleSide(int side) {
    return side >= 1 && side <= largestSide;
}

} // namespace

bool CSurfaces::isPossible(const InputFormat& input, const OutputFormat& output) {
    if (!isPossibleSide(input.width) || !isPossibleSide(input.height) || !isPossibleSide(output.width) ||
        !isPossibleSide(output.height)) {
        return false;
    }
    if (input.format == PixelFormat::yv12)
        return input.width >= 2 && input.height >= 2;
    return input.format != PixelFormat::yuy2 || input.frameBytes >= 4;
}

CSurfaces::CSurfaces(const InputFormat& input, const OutputFormat& output, const MemorySource& memory)
    : m_memory(memory), m_input(input), m_store(input.width, input.height, memory) {
    const std::size_t pitch = rowPitch(static_cast<std::size_t>(output.width) * 4);
    // With the row and the pixel more that samplers of pictures may read.
    m_output = CAlignedBytes(pitch * (static_cast<std::size_t>(output.height) + 1) + alignment, memory);
    m_outputView = {m_output.data(), static_cast<std::ptrdiff_t>(pitch), output.width, output.height};
    if (input.format == PixelFormat::yv12) {
        for (int i = 0; i < 3; ++i) {
            const PlaneFormat plane = yv12Plane(input, i);
            m_planes[static_cast<std::size_t>(i)] =
                std::make_unique<CInputPlane>(plane.width, static_cast<int>(plane.height), memory);
        }
    } else if (input.format == PixelFormat::yuy2) {
        m_planes[packedPlane] = std::make_unique<CInputPlane>(yuy2PictureBytes(input), 1, memory);
    }
    const Shown blank = whole(m_store.filled(input.width, input.height, Bgra{}));
    m_shown[0] = m_shown[1] = m_shown[2] = blank;
}

CSurfaces::Shown CSurfaces::whole(PictureShare picture) const {
    const int width = picture->width();
    const int height = picture->height();
    return {std::move(picture), 0, 0, width, height};
}

std::optional<std::size_t> CSurfaces::pictureIndex(Surface surface) {
    switch (surface) {
    case Surface::conversionTarget:
        return 0;
    case Surface::inputPicture:
        return 1;
    case Surface::maskedInput:
        return 2;
    case Surface::excludeArea:
        return excludeIndex;
    default:
        return std::nullopt;
    }
}

std::optional<std::size_t> CSurfaces::planeIndex(Surface surface) const {
    std::optional<std::size_t> index;
    if (surface == Surface::yPlane)
        index = 0;
    else if (surface == Surface::crPlane)
        index = 1;
    else if (surface == Surface::cbPlane)
        index = 2;
    else if (surface == Surface::packedInput)
        index = packedPlane;
    return index && m_planes[*index] != nullptr ? index : std::nullopt;
}

const PictureShare* CSurfaces::picture(Surface surface) const {
    const std::optional<std::size_t> index = pictureIndex(surface);
    return index && m_shown[*index].picture ? &m_shown[*index].picture : nullptr;
}

SampledWindow CSurfaces::window(Surface surface) const {
    const Shown& s = m_shown[*pictureIndex(surface)];
    return {s.left, s.top, s.width, s.height, s.picture->width(), s.picture->height(), s.picture->pitch()};
}

const CShare<RawRows>* CSurfaces::plane(Surface surface) const {
    const std::optional<std::size_t> index = planeIndex(surface);
    return index ? &m_planes[*index]->current() : nullptr;
}

void CSurfaces::setExcludeBox(const geometry::PixelBox& box) {
    Shown& area = m_shown[excludeIndex];
    area = box.isEmpty() ? Shown{} : whole(m_store.filled(box.width(), box.height(), Bgra{}));
}

void CSurfaces::fillConversionTarget(Bgra colour) {
    shown(Surface::conversionTarget) = whole(m_store.filled(m_input.width, m_input.height, colour));
}

void CSurfaces::convertYv12() {
    if (!m_converted) {
        m_converted =
            m_store.fromYv12(m_input.width, m_input.height,
                             {m_planes[0]->current(), m_planes[1]->current(), m_planes[2]->current()});
    }
    shown(Surface::conversionTarget) = whole(m_converted);
}

void CSurfaces::convertYuy2() {
    if (!m_converted)
        m_converted = m_store.fromYuy2(m_input.width, m_input.height, m_planes[packedPlane]->current());
    shown(Surface::conversionTarget) = whole(m_converted);
}

void CSurfaces::mask(Surface source, const PixelArea& area) {
    shown(Surface::conversionTarget) = whole(m_store.masked(shown(source).picture, area));
}

bool CSurfaces::has(Surface surface) const {
    return boxOf(surface) || plane(surface) != nullptr || (surface == Surface::lookup && m_lookup);
}

std::optional<geometry::PixelBox> CSurfaces::boxOf(Surface surface) const {
    if (surface == Surface::outputTarget)
        return geometry::PixelBox{0, 0, m_outputView.width, m_outputView.height};
    if (picture(surface) == nullptr)
        return std::nullopt;
    const SampledWindow shown = window(surface);
    return geometry::PixelBox{0, 0, shown.width, shown.height};
}

PixelView CSurfaces::readable(Surface surface, CThreadPool& pool) {
    if (surface == Surface::outputTarget)
        return {m_outputView.pixels, m_outputView.pitch, m_outputView.width, m_outputView.height};
    const Shown& s = shown(surface);
    m_store.makeStored(*s.picture, pool);
    const PixelView all = s.picture->view();
    return {all.pixels + s.top * all.pitch + static_cast<std::ptrdiff_t>(s.left) * 4, all.pitch, s.width,
            s.height};
}

HRESULT CSurfaces::copy(Surface from, const geometry::PixelBox& box, Surface to, CThreadPool& pool,
                        WorkCounters& counters) {
    const std::optional<geometry::PixelBox> source = boxOf(from);
    const std::optional<geometry::PixelBox> target = boxOf(to);
    if (!source || !target || from == to || box.left < 0 || box.top < 0 || box.isEmpty() ||
        box.right > source->right || box.bottom > source->bottom || box.width() > target->right ||
        box.height() > target->bottom) {
        return E_INVALIDARG;
    }
    if (from != Surface::outputTarget && to != Surface::outputTarget && box.width() == target->right &&
        box.height() == target->bottom) {
        const Shown& seen = shown(from);
        const bool isWholePicture =
            seen.picture->width() == box.width() && seen.picture->height() == box.height();
        // A window is good enough for the exclude area; the others are drawn on and masked as a whole.
        if (isWholePicture || to == Surface::excludeArea) {
            shown(to) = {seen.picture, seen.left + box.left, seen.top + box.top, box.width(), box.height()};
            return S_OK;
        }
    }
    std::uint8_t* written = m_outputView.pixels;
    std::ptrdiff_t pitch = m_outputView.pitch;
    if (to != Surface::outputTarget) {
        CTiledPicture& picture = writablePicture(to, pool);
        written = picture.pixels();
        pitch = picture.pitch();
    }
    const PixelView view = readable(from, pool);
    for (int y = 0; y < box.height(); ++y) {
        std::memcpy(written + y * pitch,
                    view.pixels + (box.top + y) * view.pitch + static_cast<std::ptrdiff_t>(box.left) * 4,
                    static_cast<std::size_t>(box.width()) * 4);
        ++counters.rowsCopied;
    }
    return S_OK;
}

CTiledPicture& CSurfaces::writablePicture(Surface surface, CThreadPool& pool) {
    Shown& s = shown(surface);
    m_store.makeStored(*s.picture, pool);
    if (s.picture->shares() == 1 && s.width == s.picture->width() && s.height == s.picture->height())
        return *s.picture;
    PictureShare own = m_store.stored(s.width, s.height);
    const PixelView view = readable(surface, pool);
    for (int y = 0; y < s.height; ++y)
        std::memcpy(own->pixels() + y * own->pitch(), view.pixels + y * view.pitch,
                    static_cast<std::size_t>(s.width) * 4);
    s = whole(std::move(own));
    return *s.picture;
}

TargetView CSurfaces::drawableConversionTarget(CThreadPool& pool) {
    CTiledPicture& picture = writablePicture(Surface::conversionTarget, pool);
    return {picture.pixels(), picture.pitch(), picture.width(), picture.height()};
}

HRESULT CSurfaces::upload(Surface surface, const SourceRows& rows, CThreadPool& pool) {
    if (surface == Surface::inputPicture)
        return uploadPicture(surface, rows, pool);
    if (surface == Surface::lookup) {
        if (!m_lookup)
            return E_FAIL;
        m_lookup->upload(rows, pool, ++m_lookupVersion);
        return S_OK;
    }
    if (const std::optional<std::size_t> index = planeIndex(surface))
        return uploadPlane(*m_planes[*index], rows, pool);
    const bool isPlane = surface == Surface::yPlane || surface == Surface::crPlane ||
                         surface == Surface::cbPlane || surface == Surface::packedInput;
    return isPlane ? E_FAIL : E_INVALIDARG;
}

HRESULT CSurfaces::uploadPicture(Surface surface, const SourceRows& rows, CThreadPool& pool) {
    Shown& s = shown(surface);
    if (!s.picture->isStored() || s.picture->shares() != 1)
        s = whole(m_store.stored(m_input.width, m_input.height));
    // Rows without gaps are copied in large pieces, which takes a fifth less.
    const auto rowBytes = static_cast<std::size_t>(s.width) * 4;
    const bool keepsLayout = rows.stepBytes == static_cast<std::ptrdiff_t>(rowBytes) && isSpread(rowBytes);
    s.picture->setPitch(static_cast<std::ptrdiff_t>(keepsLayout ? rowBytes : rowPitch(rowBytes)));
    // A loan would gain nothing: what is sampled needs room behind its rows, so that tiles would be copied
    // one by one, which takes longer than all of it at once.
    copyRows(pool, rows, s.picture->pixels(), static_cast<std::size_t>(s.picture->pitch()), rowBytes,
             s.height);
    return S_OK;
}

HRESULT CSurfaces::uploadPlane(CInputPlane& plane, const SourceRows& rows, CThreadPool& pool) {
    // From now on the planes are of another frame.
    m_converted = {};
    if (plane.writable() == nullptr) {
        // Some surface still shows the frame before the last. It gets its pixels now, once, and is not in
        // the way from then on.
        for (const Shown& s : m_shown) {
            if (s.picture && s.picture->looksAt(plane.other()))
                m_store.makeStored(*s.picture, pool);
        }
    }
    RawRows* const target = plane.writable();
    if (target == nullptr)
        return E_FAIL;
    if (canBeLent(rows, target->rowBytes, target->rows)) {
        target->lend(rows);
    } else {
        endLoan(*target, true);
        copyRows(pool, rows, target->bytes.data(), target->pitch, target->rowBytes, target->rows);
    }
    plane.replaceWith(*target);
    return S_OK;
}

void CSurfaces::keepInput(CThreadPool& pool, CopyBytes copyBytes) noexcept {
    const auto isLent = [this](std::size_t index) {
        return m_planes[index] != nullptr && m_planes[index]->current()->isLent();
    };
    for (std::size_t i = 0; i < m_planes.size(); ++i) {
        if (isLent(i))
            m_planes[i]->chooseMemory();
    }
    if (isLent(0) && isLent(1) && isLent(2))
        keepPlanes(m_converted.get(), pool, copyBytes);
    if (isLent(packedPlane))
        keepPacked(m_converted.get(), pool, copyBytes);
    for (const auto& plane : m_planes) {
        if (plane == nullptr)
            continue;
        for (RawRows& rows : plane->sets()) {
            if (rows.isLent()) {
                rows.keep(0, rows.rows, copyBytes);
                endLoan(rows, true);
            }
        }
    }
}

namespace {

/// Whether all tiles of some rows of tiles are made.
bool areMade(const CTiledPicture* picture, int firstRow, int endRow) {
    if (picture == nullptr)
        return false;
    const int columns = tileColumns(picture->width());
    const int end = std::min(endRow, tileRows(picture->height())) * columns;
    for (int tile = std::max(firstRow, 0) * columns; tile < end; ++tile) {
        if (!picture->isMade(static_cast<std::uint32_t>(tile)))
            return false;
    }
    return true;
}

/// Does rows of tiles in pieces of this many bytes, in which memory is copied fastest, but in pieces enough
/// for all threads: `keep(first row, end)`, by any thread.
template<typename Keep>
void keepInPieces(int tileRowCount, std::size_t tileRowBytes, CThreadPool& pool, Keep keep) noexcept {
    constexpr std::size_t pieceBytes = 256 * 1024;
    const int most = std::max(tileRowCount / (2 * pool.threadCount()), 1);
    const int atOnce = std::clamp(static_cast<int>(pieceBytes / tileRowBytes), 1, most);
    pool.run((tileRowCount + atOnce - 1) / atOnce,
             [&](int piece) noexcept { keep(piece * atOnce, std::min((piece + 1) * atOnce, tileRowCount)); });
}

/// Hands on in one piece what lies side by side and is wanted, of the rows of tiles `first` … `end` − 1.
template<typename IsWanted, typename Keep>
void forEachRun(int first, int end, IsWanted isWanted, Keep keep) {
    for (int row = first; row < end; ++row) {
        if (isWanted(row))
            continue;
        keep(first, row);
        first = row + 1;
    }
    keep(first, end);
}

} // namespace

// Rows of tiles are kept as a whole or not at all: in one long piece, memory is copied twice as fast as in
// pieces of a few hundred bytes.

void CSurfaces::keepPlanes(const CTiledPicture* converted, CThreadPool& pool, CopyBytes copyBytes) noexcept {
    RawRows& luma = *m_planes[0]->current();
    RawRows& cr = *m_planes[1]->current();
    RawRows& cb = *m_planes[2]->current();
    keepInPieces(
        tileRows(m_input.height), luma.rowBytes * tileHeight, pool, [&](int first, int end) noexcept {
            forEachRun(
                first, end, [&](int row) { return !areMade(converted, row, row + 1); },
                [&](int begin, int behind) {
                    luma.keep(begin * tileHeight, behind * tileHeight, copyBytes);
                });
            // Tiles look at the chroma next to them.
            const auto isChromaWanted = [&](int row) { return !areMade(converted, row - 1, row + 2); };
            for (RawRows* chroma : {&cr, &cb})
                forEachRun(first, end, isChromaWanted, [&](int begin, int behind) {
                    chroma->keep(begin * tileHeight / 2, behind * tileHeight / 2, copyBytes);
                });
        });
    for (RawRows* plane : {&luma, &cr, &cb})
        endLoan(*plane, converted == nullptr);
}

void CSurfaces::keepPacked(const CTiledPicture* converted, CThreadPool& pool, CopyBytes copyBytes) noexcept {
    // Rows of an odd width begin in the middle of two pixels' common bytes.
    if (m_input.width % 2 != 0)
        return;
    RawRows& packed = *m_planes[packedPlane]->current();
    const std::size_t tileRowBytes = static_cast<std::size_t>(m_input.width) * 2 * tileHeight;
    const int rows = tileRows(m_input.height);
    keepInPieces(rows, tileRowBytes, pool, [&](int first, int end) noexcept {
        forEachRun(
            first, end, [&](int row) { return !areMade(converted, row, row + 1); },
            [&](int begin, int behind) {
                packed.keepBytes(static_cast<std::size_t>(begin) * tileRowBytes,
                                 behind == rows ? packed.rowBytes
                                                : static_cast<std::size_t>(behind) * tileRowBytes,
                                 copyBytes);
            });
    });
    endLoan(packed, converted == nullptr);
}

void CSurfaces::setLookup(int width, int height) {
    if (m_lookup && m_lookup->width() == width && m_lookup->height() == height)
        return;
    m_lookup.reset();
    m_lookup.emplace(width, height, m_memory, ++m_lookupVersion);
}

} // namespace tarvo::render::software
