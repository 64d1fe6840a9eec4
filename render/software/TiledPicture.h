#pragma once

#include "render/Picture.h"
#include "render/colour/YuvToBgra.h"
#include "render/software/AlignedBytes.h"
#include "render/software/Counted.h"
#include "render/software/InputPlanes.h"
#include "render/software/ThreadPool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarvo::render::software {

/// What of a picture is made at once.
inline constexpr int tileWidth = 64;
inline constexpr int tileHeight = 16;

constexpr int tileColumns(int width) {
    return (width + tileWidth - 1) / tileWidth;
}
constexpr int tileRows(int height) {
    return (height + tileHeight - 1) / tileHeight;
}

/// How many words hold a bit for each of so many tiles.
constexpr std::size_t tileWords(std::size_t tiles) {
    return (tiles + 63) / 64;
}

/// Pixels in memory. One pixel to the right and below can be read as well, whatever it holds.
struct PixelView {
    const std::uint8_t* pixels = nullptr;
    std::ptrdiff_t pitch = 0;
    int width = 0;
    int height = 0;
};

class CPictureStore;

/// A picture that knows how its pixels come about and makes them tile by tile when somebody wants to look.
/// Until then it costs nothing; what is shared between surfaces is made once.
///
/// Contents never change while the picture is shared: a surface whose contents change gets another picture.
class CTiledPicture : public CCounted {
public:
    int width() const { return m_width; }
    int height() const { return m_height; }
    bool isStored() const { return m_content == Content::stored; }
    /// Whether a tile has its pixels in memory, so that everybody may read them. Any thread.
    bool isMade(std::uint32_t tile) const {
        return m_content == Content::stored || state(tile).load(std::memory_order_acquire) == made;
    }
    /// Whether unmade tiles would be made from these rows.
    bool looksAt(const RawRows& rows) const;

    /// The memory of the pixels; only tiles that are made mean anything. Needs bound memory.
    PixelView view() const;
    /// For stored pictures.
    std::uint8_t* pixels() { return m_memory.data(); }
    std::ptrdiff_t pitch() const { return m_pitch; }
    /// For stored pictures that nobody shares: bytes from one row to the next, from those of a row's pixels
    /// up to their rowPitch(). What the pixels were is lost.
    void setPitch(std::ptrdiff_t pitch) { m_pitch = pitch; }

    void unused();

private:
    friend class CPictureStore;
    enum class Content { stored, colour, yv12, yuy2, masked };
    static constexpr std::uint8_t unmade = 0;
    static constexpr std::uint8_t inTheMaking = 1;
    static constexpr std::uint8_t made = 2;

    std::atomic_ref<std::uint8_t> state(std::uint32_t tile) const { return std::atomic_ref(m_tiles[tile]); }
    /// True for the one thread that is to make the tile.
    bool claim(std::uint32_t tile) const {
        std::uint8_t expected = unmade;
        return state(tile).compare_exchange_strong(expected, inTheMaking, std::memory_order_acquire);
    }
    /// Tiles `first` … `end` − 1, which lie in one row and were claimed.
    void makeRun(std::uint32_t first, std::uint32_t end) noexcept;
    PixelArea areaOf(std::uint32_t first, std::uint32_t end) const;
    void produce(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept;
    void produceMasked(PixelArea area, std::uint8_t* target, std::ptrdiff_t pitch) const noexcept;
    void forgetSources();

    CPictureStore* m_store = nullptr;
    Content m_content = Content::stored;
    int m_width = 0;
    int m_height = 0;
    std::ptrdiff_t m_pitch = 0;
    CAlignedBytes m_memory;
    mutable std::vector<std::uint8_t> m_tiles;
    Bgra m_colour;
    std::array<CShare<RawRows>, 3> m_rows;
    CShare<CTiledPicture> m_source;
    PixelArea m_mask;
};

using PictureShare = CShare<CTiledPicture>;

/// Makes pictures, up to the size it was opened for, and keeps their memory for the next ones.
class CPictureStore {
public:
    /// Has memory for three pictures ready; throws std::bad_alloc.
    CPictureStore(int width, int height, const MemorySource& memory);
    /// Nobody may hold a share any more.
    ~CPictureStore();
    CPictureStore(const CPictureStore&) = delete;
    CPictureStore& operator=(const CPictureStore&) = delete;

    /// Each may throw std::bad_alloc where there was never need of so many pictures at once before.
    PictureShare filled(int width, int height, Bgra colour);
    PictureShare fromYv12(int width, int height, const std::array<CShare<RawRows>, 3>& planes);
    PictureShare fromYuy2(int width, int height, const CShare<RawRows>& packed);
    /// The source with the area black, which is opaque.
    PictureShare masked(const PictureShare& source, const PixelArea& area);
    /// Of undefined contents, for somebody who is about to write all of it.
    PictureShare stored(int width, int height);

    /// Gives the picture its memory, without which no tile can be made. Throws std::bad_alloc.
    void bindMemory(CTiledPicture& picture);
    /// Makes those of these tiles, bits of a picture with memory, that are not made yet. Several threads may
    /// do so for the same picture at once: a tile is made by the first that comes, and the others wait. Tiles
    /// of `soon` are made as well where they continue a row of others: long rows cost
    /// far less than short ones.
    void makeTiles(CTiledPicture& picture, std::span<const std::uint64_t> tiles,
                   std::span<const std::uint64_t> soon) noexcept;
    /// Throws std::bad_alloc.
    void makeAll(CTiledPicture& picture, CThreadPool& pool);
    /// The same; afterwards the picture depends on nothing.
    void makeStored(CTiledPicture& picture, CThreadPool& pool);

    std::uint64_t tilesMade() const { return m_tilesMade.load(std::memory_order_relaxed); }

private:
    friend class CTiledPicture;

    CTiledPicture& unusedPicture();
    PictureShare make(CTiledPicture::Content content, int width, int height);

    const MemorySource& m_memory;
    std::size_t m_blockBytes;
    std::size_t m_tileCount;
    std::vector<CAlignedBytes> m_spare;
    std::atomic<std::uint64_t> m_tilesMade{0};
    /// Last, so that its members' ends still find the spare blocks.
    std::vector<std::unique_ptr<CTiledPicture>> m_pictures;
};

} // namespace tarvo::render::software
