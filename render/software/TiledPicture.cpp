#include "render/software/TiledPicture.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <thread>

namespace tarvo::render::software {
namespace {

constexpr std::size_t pictureCount = 16;
constexpr std::size_t readyBlocks = 3;

template<typename Byte>
Byte* pixelAt(Byte* pixels, std::ptrdiff_t pitch, int x, int y) {
    return pixels + y * pitch + static_cast<std::ptrdiff_t>(x) * 4;
}

void copyArea(const std::uint8_t* source, std::ptrdiff_t sourcePitch, const PixelArea& area,
              std::uint8_t* target, std::ptrdiff_t pitch) {
    for (int y = area.top; y < area.bottom; ++y)
        std::memcpy(pixelAt(target, pitch, area.left, y), pixelAt(source, sourcePitch, area.left, y),
                    static_cast<std::size_t>(area.right - area.left) * 4);
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

PixelArea CTiledPicture::areaOf(std::uint32_t first, std::uint32_t end) const {
    const auto columns = static_cast<std::uint32_t>(tileColumns(m_width));
    const int left = static_cast<int>(first % columns) * tileWidth;
    const int top = static_cast<int>(first / columns) * tileHeight;
    return {left, top, std::min(left + static_cast<int>(end - first) * tileWidth, m_width),
            std::min(top + tileHeight, m_height)};
}

void CTiledPicture::makeRun(std::uint32_t first, std::uint32_t end) noexcept {
    produce(areaOf(first, end), m_memory.data(), m_pitch);
    for (std::uint32_t tile = first; tile < end; ++tile)
        state(tile).store(made, std::memory_order_release);
    m_store->m_tilesMade.fetch_add(end - first, std::memory_order_relaxed);
}

void CTiledPicture::produce(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept {
    switch (m_content) {
    case Content::stored:
        copyArea(m_memory.data(), m_pitch, area, target, pitch);
        break;
    case Content::colour:
        fillArea(target, pitch, area, m_colour);
        break;
    case Content::yv12: {
        convertYv12ToBgra({m_width,
                           m_height,
                           {m_rows[0]->data(), m_rows[1]->data(), m_rows[2]->data()},
                           {m_rows[0]->step(), m_rows[1]->step(), m_rows[2]->step()}},
                          {target, pitch}, area);
        break;
    }
    case Content::yuy2:
        convertYuy2ToBgra({m_width, m_height, m_rows[0]->data(), m_rows[0]->rowBytes}, {target, pitch}, area);
        break;
    case Content::masked:
        produceMasked(area, target, pitch);
        break;
    }
}

void CTiledPicture::produceMasked(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept {
    // What the source has in memory is copied; else it is made here, and the source need not have it at all.
    const auto columns = static_cast<std::uint32_t>(tileColumns(m_width));
    for (int left = area.left; left < area.right; left += tileWidth) {
        const PixelArea tile{left, area.top, std::min(left + tileWidth, area.right), area.bottom};
        const std::uint32_t number = static_cast<std::uint32_t>(area.top / tileHeight) * columns +
                                     static_cast<std::uint32_t>(left / tileWidth);
        if (m_source->isMade(number)) {
            copyArea(m_source->m_memory.data(), m_source->m_pitch, tile, target, pitch);
        } else {
            m_source->produce(tile, target, pitch);
        }
    }
    fillArea(target, pitch, intersection(area, m_mask), opaqueBlack);
}

CPictureStore::CPictureStore(int width, int height, const MemorySource& memory)
    : m_memory(memory),
      // A row and a pixel more than there are: samplers read one neighbour further, with no weight.
      m_blockBytes(rowPitch(static_cast<std::size_t>(width) * 4) * (static_cast<std::size_t>(height) + 1) +
                   alignment),
      m_tileCount(static_cast<std::size_t>(tileColumns(width)) * static_cast<std::size_t>(tileRows(height))) {
    m_pictures.reserve(pictureCount);
    m_spare.reserve(pictureCount);
    for (std::size_t i = 0; i < readyBlocks; ++i)
        m_spare.emplace_back(m_blockBytes, memory);
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
    picture.m_pitch = static_cast<std::ptrdiff_t>(rowPitch(static_cast<std::size_t>(width) * 4));
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

void CPictureStore::makeTiles(CTiledPicture& picture, std::span<const std::uint64_t> tiles,
                              std::span<const std::uint64_t> soon) noexcept {
    if (picture.isStored())
        return;
    const auto columns = static_cast<std::uint32_t>(tileColumns(picture.m_width));
    const auto isWanted = [&](std::uint32_t tile) {
        return ((tiles[tile / 64] | soon[tile / 64]) >> tile % 64 & 1) != 0;
    };
    const auto forEachWanted = [&](auto visit) {
        for (std::size_t word = 0; word < tiles.size(); ++word) {
            for (std::uint64_t bits = tiles[word]; bits != 0; bits &= bits - 1)
                visit(static_cast<std::uint32_t>(word * 64 + static_cast<unsigned>(std::countr_zero(bits))));
        }
    };
    bool isSomeElsewhere = false;
    forEachWanted([&](std::uint32_t first) {
        if (picture.isMade(first))
            return;
        if (!picture.claim(first)) {
            isSomeElsewhere = true;
            return;
        }
        // Neighbours in a row of tiles are made in one go.
        std::uint32_t begin = first;
        while (begin % columns != 0 && isWanted(begin - 1) && picture.claim(begin - 1))
            --begin;
        std::uint32_t end = first + 1;
        while (end % columns != 0 && isWanted(end) && picture.claim(end))
            ++end;
        picture.makeRun(begin, end);
    });
    if (!isSomeElsewhere)
        return;
    // Whoever claimed one is at work on it and waits for nobody.
    forEachWanted([&](std::uint32_t tile) {
        while (!picture.isMade(tile))
            std::this_thread::yield();
    });
}

void CPictureStore::makeAll(CTiledPicture& picture, CThreadPool& pool) {
    if (picture.isStored())
        return;
    bindMemory(picture);
    const auto columns = static_cast<std::uint32_t>(tileColumns(picture.m_width));
    pool.run(tileRows(picture.m_height), [&](int row) noexcept {
        const std::uint32_t begin = static_cast<std::uint32_t>(row) * columns;
        const std::uint32_t rowEnd = begin + columns;
        // The queue's passes are done: nobody else is at work on this picture.
        for (std::uint32_t first = begin; first < rowEnd; ++first) {
            std::uint32_t end = first;
            while (end < rowEnd && picture.claim(end))
                ++end;
            if (end != first) {
                picture.makeRun(first, end);
                first = end;
            }
        }
    });
}

void CPictureStore::makeStored(CTiledPicture& picture, CThreadPool& pool) {
    if (picture.isStored())
        return;
    makeAll(picture, pool);
    picture.m_content = CTiledPicture::Content::stored;
    picture.forgetSources();
}

} // namespace tarvo::render::software
