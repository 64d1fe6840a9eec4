#pragma once

#include "platform/InterfaceTypes.h"
#include "render/FrameFormat.h"
#include "render/Pass.h"
#include "render/Picture.h"
#include "render/RenderDevice.h"
#include "render/reference/Grid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarvo::render::reference {

/// What a surface's sides may measure, as on graphics hardware.
inline constexpr int longestSide = 16384;

/// The pictures that a device keeps, by their role. What is made anew starts as zeros (BGRA surfaces as
/// opaque black). Creation answers E_INVALIDARG for sides that are not 1 … longestSide and E_OUTOFMEMORY
/// without memory; whatever fails changes nothing.
class CSurfaces {
public:
    /// The targets, the input picture and its masked copy, and the planes of YV12 input.
    HRESULT createTextures(const InputFormat& input, const OutputFormat& output);
    /// Room for the whole words of a frame; E_INVALIDARG when there is none.
    HRESULT createPackedInput(std::uint32_t byteCount);
    /// None for an empty box.
    HRESULT createExcludeArea(const geometry::PixelBox& box);
    /// Keeps the tables that have the size already.
    HRESULT createLookup(int width, int height);
    void releaseLookup() { m_lookup.reset(); }

    bool has(Surface surface) const;

    /// Null when the surface is not there or of another kind.
    Picture* picture(Surface surface);
    const Picture* picture(Surface surface) const;
    Picture* target(Surface surface);
    const Plane* plane(Surface surface) const;
    const LookupTables* lookup(Surface surface) const;
    /// Empty when the surface is not there or of another kind.
    std::span<const std::uint8_t> packedBytes(Surface surface) const;

    /// See IRenderDevice. E_INVALIDARG for a surface that nothing is uploaded to and for rows that are
    /// nowhere, E_FAIL for a surface that is not there.
    HRESULT upload(Surface surface, const SourceRows& rows);

private:
    struct ByteRows {
        std::span<std::byte> bytes;
        std::size_t rowBytes = 0;
    };

    ByteRows writableRows(Surface surface);

    std::array<std::optional<Picture>, 5> m_pictures; ///< outputTarget to excludeArea
    std::array<std::optional<Plane>, 3> m_planes;     ///< yPlane to cbPlane
    std::vector<std::uint8_t> m_packedInput;
    std::optional<LookupTables> m_lookup;
};

} // namespace tarvo::render::reference
