#include "render/software/TiledPicture.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace tarvo::render::software {
namespace {

constexpr std::size_t pictureCount = 16;
constexpr std::size_t readyBlocks = 3;

std::uint8_t* pixelAt(std::uint8_t* pixels, std::ptrdiff_t pitch, int x, int y) {
    return pixels + y * pitch + static_cast<std::ptrdiff_t>(x) * 4;
}

void fillArea(std::uint8_t* pixels, std::ptrdiff_t pitch, const PixelArea& area, Bgra colour) {
    for (int y = area.top; y < area.bottom; ++y) {
        std::uint8_t* pixel = pixelAt(pixels, pitch, area.left, y);
        for (int x = area.left; x < area.right; ++x, pixel += 4)
            std::memcpy(pixel, &colour, 4);
    }
}

PixelArea intersection(const PixelArea& a, const PixelArea& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

} // namespace

bool CTiledPicture::looksAt(const RawRows& rows) const {
    const bool isOwn =
        std::any_of(m_rows.begin(), m_rows.end(), [&](const auto& r) { return r.get() == &rows; });
    return isOwn || (m_source && m_source->looksAt(rows));
}

PixelView CTiledPicture::view() const {
    return {m_memory.data(), m_pitch, m_width, m_height};
}

void CTiledPicture::forgetSources() {
    m_rows = {};
    m_source = {};
}

void CTiledPicture::unused() {
    forgetSources();
    if (m_memory.data() != nullptr)
        m_store->m_spare.push_back(std::move(m_memory)); // never grows: see bindMemory()
    m_memory = {};
}

bool CTiledPicture::isAreaMade(const PixelArea& area) const {
    const auto columns = static_cast<std::uint32_t>(tileColumns(m_width));
    for (int y = area.top / tileHeight; y * tileHeight < area.bottom; ++y) {
        for (int x = area.left / tileWidth; x * tileWidth < area.right; ++x) {
            if (!isMade(static_cast<std::uint32_t>(y) * columns + static_cast<std::uint32_t>(x)))
                return false;
        }
    }
    return true;
}

void CTiledPicture::produce(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept {
    switch (m_content) {
    case Content::stored:
        for (int y = area.top; y < area.bottom; ++y) {
            std::memcpy(pixelAt(target, pitch, area.left, y), pixelAt(m_memory.data(), m_pitch, area.left, y),
                        static_cast<std::size_t>(area.right - area.left) * 4);
        }
        break;
    case Content::colour:
        fillArea(target, pitch, area, m_colour);
        break;
    case Content::yv12: {
        const auto step = [&](std::size_t i) { return static_cast<std::ptrdiff_t>(m_rows[i]->pitch); };
        convertYv12ToBgra({m_width,
                           m_height,
                           {m_rows[0]->bytes.data(), m_rows[1]->bytes.data(), m_rows[2]->bytes.data()},
                           {step(0), step(1), step(2)}},
                          {target, pitch}, area);
        break;
    }
    case Content::yuy2:
        convertYuy2ToBgra({m_width, m_height, m_rows[0]->bytes.data(), m_rows[0]->rowBytes}, {target, pitch},
                          area);
        break;
    case Content::masked:
        produceMasked(area, target, pitch);
        break;
    }
}

void CTiledPicture::produceMasked(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept {
    // What the source has in memory is copied; else it is made here, and the source need not have it at all.
    if (m_source->isAreaMade(area)) {
        for (int y = area.top; y < area.bottom; ++y) {
            std::memcpy(pixelAt(target, pitch, area.left, y),
                        pixelAt(m_source->m_memory.data(), m_source->m_pitch, area.left, y),
                        static_cast<std::size_t>(area.right - area.left) * 4);
        }
    } else {
        m_source->produce(area, target, pitch);
    }
    fillArea(target, pitch, intersection(area, m_mask), opaqueBlack);
}

CPictureStore::CPictureStore(int width, int height, const MemorySource& memory)
    : m_memory(memory), m_pitch(static_cast<std::ptrdiff_t>(alignedUp(static_cast<std::size_t>(width) * 4))),
      m_tileCount(static_cast<std::size_t>(tileColumns(width)) * static_cast<std::size_t>(tileRows(height))) {
    // A row and a pixel more than there are: samplers read one neighbour further, with no weight.
    m_blockBytes = static_cast<std::size_t>(m_pitch) * (static_cast<std::size_t>(height) + 1) + alignment;
    m_pictures.reserve(pictureCount);
    m_spare.reserve(pictureCount);
    for (std::size_t i = 0; i < readyBlocks; ++i)
        m_spare.emplace_back(m_blockBytes, memory);
    m_runs.reserve(2 * m_tileCount);
    m_allTiles.resize(m_tileCount);
    std::iota(m_allTiles.begin(), m_allTiles.end(), 0U);
}

CPictureStore::~CPictureStore() {
    // While all of them are still there: the end of one ends its share in another.
    for (const auto& picture : m_pictures)
        picture->forgetSources();
}

CTiledPicture& CPictureStore::unusedPicture() {
    for (const auto& picture : m_pictures) {
        if (picture->shares() == 0)
            return *picture;
    }
    auto picture = std::make_unique<CTiledPicture>();
    picture->m_store = this;
    picture->m_tiles.resize(m_tileCount);
    m_spare.reserve(m_pictures.size() + 1 + readyBlocks);
    m_pictures.push_back(std::move(picture));
    return *m_pictures.back();
}

PictureShare CPictureStore::make(CTiledPicture::Content content, int width, int height) {
    CTiledPicture& picture = unusedPicture();
    picture.m_content = content;
    picture.m_width = width;
    picture.m_height = height;
    picture.m_pitch = static_cast<std::ptrdiff_t>(alignedUp(static_cast<std::size_t>(width) * 4));
    std::fill(picture.m_tiles.begin(), picture.m_tiles.end(), CTiledPicture::unmade);
    return PictureShare(picture);
}

PictureShare CPictureStore::filled(int width, int height, Bgra colour) {
    PictureShare picture = make(CTiledPicture::Content::colour, width, height);
    picture->m_colour = colour;
    return picture;
}

PictureShare CPictureStore::fromYv12(int width, int height, const std::array<CShare<RawRows>, 3>& planes) {
    PictureShare picture = make(CTiledPicture::Content::yv12, width, height);
    picture->m_rows = planes;
    return picture;
}

PictureShare CPictureStore::fromYuy2(int width, int height, const CShare<RawRows>& packed) {
    PictureShare picture = make(CTiledPicture::Content::yuy2, width, height);
    picture->m_rows[0] = packed;
    return picture;
}

PictureShare CPictureStore::masked(const PictureShare& source, const PixelArea& area) {
    PictureShare picture = make(CTiledPicture::Content::masked, source->width(), source->height());
    picture->m_source = source;
    picture->m_mask = area;
    return picture;
}

PictureShare CPictureStore::stored(int width, int height) {
    PictureShare picture = make(CTiledPicture::Content::stored, width, height);
    bindMemory(*picture);
    return picture;
}

void CPictureStore::bindMemory(CTiledPicture& picture) {
    if (picture.m_memory.data() != nullptr)
        return;
    if (m_spare.empty()) {
        picture.m_memory = CAlignedBytes(m_blockBytes, m_memory);
        return;
    }
    picture.m_memory = std::move(m_spare.back());
    m_spare.pop_back();
}

void CPictureStore::wantRun(CTiledPicture& picture, std::uint32_t first, std::uint32_t end) {
    const auto columns = static_cast<std::uint32_t>(tileColumns(picture.m_width));
    const int left = static_cast<int>(first % columns) * tileWidth;
    const int top = static_cast<int>(first / columns) * tileHeight;
    m_runs.push_back({&picture,
                      {left, top, std::min(left + static_cast<int>(end - first) * tileWidth, picture.m_width),
                       std::min(top + tileHeight, picture.m_height)}});
    for (std::uint32_t tile = first; tile < end; ++tile)
        picture.m_tiles[tile] = CTiledPicture::scheduled;
}

void CPictureStore::want(CTiledPicture& picture, std::span<const std::uint32_t> tiles) {
    if (picture.isStored())
        return;
    bindMemory(picture);
    // Nothing may fail once tiles are marked.
    if (m_runs.capacity() - m_runs.size() < tiles.size())
        m_runs.reserve(2 * m_runs.capacity() + tiles.size());
    const auto columns = static_cast<std::uint32_t>(tileColumns(picture.m_width));
    // Neighbours in a row of tiles are made in one go, up to a length that still splits well over threads.
    constexpr std::uint32_t longest = 8;
    for (std::size_t i = 0; i < tiles.size();) {
        if (picture.m_tiles[tiles[i]] != CTiledPicture::unmade) {
            ++i;
            continue;
        }
        const std::uint32_t first = tiles[i];
        std::uint32_t end = first + 1;
        for (++i; i < tiles.size() && tiles[i] == end && end % columns != 0 && end - first < longest &&
                  picture.m_tiles[end] == CTiledPicture::unmade;
             ++i) {
            ++end;
        }
        wantRun(picture, first, end);
    }
}

void CPictureStore::wantAll(CTiledPicture& picture) {
    if (picture.isStored())
        return;
    const int count = tileColumns(picture.m_width) * tileRows(picture.m_height);
    want(picture, std::span(m_allTiles).first(static_cast<std::size_t>(count)));
}

void CPictureStore::makeWanted(CThreadPool& pool) {
    // States change only before and after, so that every thread sees the same ones.
    pool.run(static_cast<int>(m_runs.size()), [this](int i) noexcept {
        const Run& run = m_runs[static_cast<std::size_t>(i)];
        run.picture->produce(run.area, run.picture->m_memory.data(), run.picture->m_pitch);
    });
    for (const Run& run : m_runs) {
        const int columns = tileColumns(run.picture->m_width);
        for (int x = run.area.left; x < run.area.right; x += tileWidth) {
            run.picture
                ->m_tiles[static_cast<std::size_t>(run.area.top / tileHeight * columns + x / tileWidth)] =
                CTiledPicture::made;
            ++m_tilesMade;
        }
    }
    m_runs.clear();
}

void CPictureStore::makeStored(CTiledPicture& picture, CThreadPool& pool) {
    if (picture.isStored())
        return;
    wantAll(picture);
    makeWanted(pool);
    picture.m_content = CTiledPicture::Content::stored;
    picture.forgetSources();
}

} // namespace tarvo::render::software
