#pragma once

#include "geometry/OverviewMarker.h"
#include "geometry/ViewLayout.h"
#include "render/ShaderProgram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::render {

/// What pictures a device keeps, by their role.
enum class Surface {
    none,
    outputTarget,     ///< BGRA, output size; all output passes draw here
    conversionTarget, ///< BGRA, input size; YUV conversion and the blackout of the exclude area
    inputPicture,     ///< BGRA, input size; what the projections look at
    maskedInput,      ///< BGRA, input size; the input with the exclude area black
    excludeArea,      ///< BGRA, the exclude area's pixels as they came; absent without an area
    yPlane,           ///< 8 bits, input size; these three with YV12 input only
    crPlane,          ///< 8 bits, half the input size
    cbPlane,          ///< 8 bits, half the input size
    packedInput,      ///< the bytes of a YUY2 frame; with YUY2 input only
    lookup,           ///< four 16-bit channels; the tables of the custom view
};

/// Which constant record of the pixel stage a pass fills.
enum class ConstantSlot {
    none = -1,
    dewarp = 0,  ///< DewarpConstants
    exclude = 1, ///< ExcludeConstants
    width = 3,   ///< Yuy2Constants
    custom = 4,  ///< CustomTransformConstants or VirtualPtzConstants
};

enum class VertexSource {
    view,           ///< the quads and the overview disc: geometry::ViewVertices
    overviewMarker, ///< geometry::OverviewMarkerVertices
};

enum class Topology {
    triangleStrip, ///< vertices one after the other
    triangleList,  ///< through the indices of the overview disc
};

/// What a pass draws: `count` vertices from `first`, or `count` indices from index `first`, each index
/// counting from vertex `baseVertex`.
struct DrawRange {
    VertexSource source = VertexSource::view;
    Topology topology = Topology::triangleStrip;
    int first = 0;
    int count = 0;
    int baseVertex = 0;

    friend constexpr bool operator==(const DrawRange&, const DrawRange&) = default;
};

constexpr DrawRange quadRange(int firstVertex) {
    return {VertexSource::view, Topology::triangleStrip, firstVertex, geometry::verticesPerQuad, 0};
}
inline constexpr DrawRange overviewDiscRange{VertexSource::view, Topology::triangleList, 0,
                                             geometry::overviewDiscIndexCount,
                                             geometry::overviewDiscBaseVertex};
inline constexpr DrawRange overviewMarkerRange{VertexSource::overviewMarker, Topology::triangleStrip, 0,
                                               geometry::overviewMarkerVertexCount, 0};

/// Pictures by texture slot, t0 to t4.
using TextureSlots = std::array<Surface, 5>;

/// One draw with everything it needs; nothing sticks from one pass to the next. The viewport is the whole
/// target. Without blending the program's colour replaces the target's; with blending it is mixed in by its
/// alpha, which also becomes the target's alpha.
struct Pass {
    ShaderProgram program = ShaderProgram::plainCopy;
    Surface target = Surface::outputTarget;
    TextureSlots textures{};
    ConstantSlot constantSlot = ConstantSlot::none;
    /// The record's bytes; read during the call only.
    std::span<const std::byte> constants{};
    DrawRange range{};
    bool isBlended = false;
};

/// A record as a pass takes it.
template<typename Record>
std::span<const std::byte> recordBytes(const Record& record) {
    return std::as_bytes(std::span(&record, 1));
}

} // namespace tarvo::render
