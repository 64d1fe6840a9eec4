#pragma once

#include "render/FrameFormat.h"
#include "render/Pass.h"
#include "render/RenderDevice.h"
#include "render/software/DrawQueue.h"
#include "render/software/LookupTables.h"
#include "render/software/TiledPicture.h"

#include <array>
#include <memory>
#include <optional>

namespace tarvo::render::software {

/// The surfaces of the input's side and the output target, as a device of ours keeps them: filling, copying,
/// converting and masking a whole surface only notes what it now shows.
///
/// The caller sees to it that nothing queued still looks at what an upload or a copy overwrites; pictures
/// take care of themselves.
class CSurfaces {
public:
    /// Throws std::bad_alloc.
    CSurfaces(const InputFormat& input, const OutputFormat& output, const MemorySource& memory);

    /// Whether a format has surfaces at all: sides of 1 … 16,384 pixels, chroma planes of at least one pixel,
    /// a packed frame of at least one word.
    static bool isPossible(const InputFormat& input, const OutputFormat& output);

    const InputFormat& input() const { return m_input; }
    const TargetView& output() const { return m_outputView; }
    CPictureStore& store() { return m_store; }

    bool has(Surface surface) const;
    /// Of a picture surface or the output target, from its own upper left corner; none when absent.
    std::optional<geometry::PixelBox> boxOf(Surface surface) const;
    /// A picture surface that can be looked at; none when it is absent or no picture.
    const PictureShare* picture(Surface surface) const;
    SampledWindow window(Surface surface) const;
    /// A plane or the packed frame, as it is now; null when absent.
    const CShare<RawRows>* plane(Surface surface) const;

    /// The exclude area's surface, blank; an empty box takes it away. Throws std::bad_alloc.
    void setExcludeBox(const geometry::PixelBox& box);

    /// All of these throw std::bad_alloc and then have changed nothing.
    void fillConversionTarget(Bgra colour);
    void convertYv12();
    void convertYuy2();
    void mask(Surface source, const PixelArea& area);

    /// A box to the upper left corner of another surface; shared where it is all that one shows, else copied.
    /// E_INVALIDARG when a surface is absent or the box does not fit.
    HRESULT copy(Surface from, const geometry::PixelBox& box, Surface to, CThreadPool& pool,
                 WorkCounters& counters);
    HRESULT upload(Surface surface, const SourceRows& rows, CThreadPool& pool);
    /// Copies what was lent, as far as it may still be looked at.
    void keepInput(CThreadPool& pool, CopyBytes copyBytes) noexcept;
    /// The conversion target with its pixels in memory, shared with nobody.
    TargetView drawableConversionTarget(CThreadPool& pool);

    /// The lookup surface; kept when it has the size already.
    void setLookup(int width, int height);
    void releaseLookup() { m_lookup.reset(); }
    /// The first tables of it, which is there.
    TableView tables(int layers) const { return m_lookup->view(layers); }

private:
    /// What a picture surface shows.
    struct Shown {
        PictureShare picture;
        int left = 0; ///< of the picture
        int top = 0;
        int width = 0;
        int height = 0;
    };

    static std::optional<std::size_t> pictureIndex(Surface surface);
    std::optional<std::size_t> planeIndex(Surface surface) const;
    Shown& shown(Surface surface) { return m_shown[*pictureIndex(surface)]; }
    Shown whole(PictureShare picture) const;
    HRESULT uploadPicture(Surface surface, const SourceRows& rows, CThreadPool& pool);
    HRESULT uploadPlane(CInputPlane& plane, const SourceRows& rows, CThreadPool& pool);
    void keepPlanes(const CTiledPicture* converted, CThreadPool& pool, CopyBytes copyBytes) noexcept;
    void keepPacked(const CTiledPicture* converted, CThreadPool& pool, CopyBytes copyBytes) noexcept;
    CTiledPicture& writablePicture(Surface surface, CThreadPool& pool);
    PixelView readable(Surface surface, CThreadPool& pool);

    const MemorySource& m_memory;
    InputFormat m_input;
    CAlignedBytes m_output;
    TargetView m_outputView;
    // Pictures look at planes, so those come first and end last.
    std::array<std::unique_ptr<CInputPlane>, 4> m_planes; ///< Y, Cr, Cb, packed
    CPictureStore m_store;
    std::array<Shown, 4> m_shown; ///< conversion target, input picture, masked input, exclude area
    /// What became of the planes as they are now: another conversion gives the same picture, tiles and all.
    PictureShare m_converted;
    std::optional<CLookupTables> m_lookup;
    std::uint64_t m_lookupVersion = 0; ///< the last one given
};

} // namespace tarvo::render::software
