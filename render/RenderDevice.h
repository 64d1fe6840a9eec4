#pragma once

#include "geometry/ExcludeArea.h"
#include "geometry/OverviewMarker.h"
#include "geometry/ViewLayout.h"
#include "platform/InterfaceTypes.h"
#include "render/ConstantRecords.h"
#include "render/FrameFormat.h"
#include "render/Pass.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::render {

enum class DeviceKind {
    hardware, ///< the graphics adapter
    fallback, ///< the platform's own software rasteriser
    software, ///< ours
};

/// Rows that lie in somebody else's memory. `data` is the first row; the step may be negative or larger than
/// the rows.
struct SourceRows {
    const std::byte* data = nullptr;
    std::ptrdiff_t stepBytes = 0;
    std::size_t rowBytes = 0;
    int rowCount = 0;
    /// Whether the memory stays as it is until IRenderDevice::keepInput(); else for the call only.
    bool isLent = false;
};

/// The rendered picture while it is mapped: BGRA rows, top row first.
struct MappedRows {
    const std::byte* data = nullptr;
    std::size_t pitchBytes = 0;
    int width = 0;  ///< pixels
    int height = 0; ///< rows
};

/// Rows that a picture is to be written to: BGRA, top row first, at any address. Nothing but the pixels of
/// its rows may be written; `data` is the first row, null where there are none, and the step may be negative.
struct WritableRows {
    std::byte* data = nullptr;
    std::ptrdiff_t pitchBytes = 0;
};

/// Takes the rendered picture. Must not use the device.
class IMappedRowsVisitor {
public:
    virtual HRESULT visit(const MappedRows& rows) = 0;

    /// Whether rowsFinished() takes all that it needs. A device that called it for all rows may then show
    /// visit() rows without pixels (`data` is null), which only asks for the result.
    virtual bool takesRowsAlone() const { return false; }

    /// Where the visitor wants the rows of a picture of so many pixels, if it takes them alone and as they
    /// are; none otherwise. The memory may be slow to read. A device may ask for it before it draws, and draw
    /// there.
    virtual WritableRows rowsToFill(int width, int height) noexcept {
        static_cast<void>(width);
        static_cast<void>(height);
        return {};
    }

    /// Rows `first` up to `end` of the picture have their final pixels, which are still in the cache; both
    /// are even, but for the end of the last rows. No others may be looked at, and these only until the call
    /// returns. Without pixels (`data` is null) they are where rowsToFill() wanted them. Devices that draw
    /// when the picture is asked for call this before visit(), for all rows, on several threads at once;
    /// others, and when nothing was to be drawn, not at all. Should drawing fail, visit() does not follow.
    virtual void rowsFinished(const MappedRows& picture, int first, int end) noexcept {
        static_cast<void>(picture);
        static_cast<void>(first);
        static_cast<void>(end);
    }

protected:
    ~IMappedRowsVisitor() = default;
};

/// The exclude area as a device needs it.
struct ExcludeGeometry {
    ExcludeConstants constants{};
    geometry::PixelBox box{}; ///< in the input; empty: no surface is made for it
};

/// What draws: surfaces named by role, passes as plain records and the few verbs around them. The sequence of
/// a frame is written once over this; what it takes to serve it stays behind.
///
/// A device is owned by one renderer and used by one thread at a time. Results are HRESULTs of the platform;
/// a device logs the failures of what it creates itself. Before open() and after close() only isAvailable(),
/// open(), isOpen() and close() may be called.
class IRenderDevice {
public:
    virtual ~IRenderDevice() = default;

    /// Whether this kind of device can be had on this machine. A no is logged and asked anew the next time.
    virtual bool isAvailable() = 0;

    /// Makes the device and every surface for frames of these formats; what was held is released first. After
    /// a failure, which is logged, nothing is held.
    virtual HRESULT open(const InputFormat& input, const OutputFormat& output) = 0;

    /// What is made last, once geometry and programs are there. After a failure, which is logged, the caller
    /// closes.
    virtual HRESULT openStates() = 0;

    virtual bool isOpen() const = 0;
    /// Of an open device.
    virtual DeviceKind kind() const = 0;

    /// Replaces the view's vertices and what belongs to the exclude area. After a failure the old ones stay.
    virtual HRESULT geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) = 0;
    /// Replaces the overview marker's vertices; until the first time there are none.
    virtual HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) = 0;

    /// Whether the program's code is there to be prepared.
    virtual bool hasProgram(ShaderProgram program) const = 0;
    /// Makes one of the view's programs ready to draw: a projection or a custom program, with the record it
    /// starts from in the slot that it reads. Releases the one before. The other programs are ready once the
    /// device is open.
    virtual HRESULT prepare(ShaderProgram program, ConstantSlot slot,
                            std::span<const std::byte> constants) = 0;
    /// Gives up what prepare() made.
    virtual void releaseProgram() = 0;

    /// A lookup surface of this size, in texels of four 16-bit channels; kept when it has the size already.
    virtual HRESULT lookup(int width, int height) = 0;
    virtual void releaseLookup() = 0;

    /// Replaces the contents of an input surface: inputPicture, a plane, packedInput (one row) or lookup.
    /// What the rows do not cover becomes zero, what goes beyond the surface is ignored. A failure leaves the
    /// surface as it was.
    virtual HRESULT upload(Surface surface, const SourceRows& rows) = 0;

    /// Ends the loan of the rows that were uploaded as lent: surfaces keep what they show.
    virtual void keepInput() {}

    /// Red, green, blue and alpha, 0 … 1, for a whole target.
    virtual void clear(Surface target, const std::array<float, 4>& colour) = 0;
    /// Fails without drawing when something the pass names is absent.
    virtual HRESULT draw(const Pass& pass) = 0;
    /// A whole surface into another of the same size and format.
    virtual void copy(Surface from, Surface to) = 0;
    /// A box, which lies inside `from`, to the upper left corner of `to`.
    virtual void copyBox(Surface from, const geometry::PixelBox& box, Surface to) = 0;
    /// Lets the device begin with what was asked.
    virtual void flush() = 0;

    /// Waits for the picture in outputTarget, maps it for the visitor and answers with the visitor's result,
    /// or with the failure of mapping it.
    virtual HRESULT readBack(IMappedRowsVisitor& visitor) = 0;

    /// Releases everything.
    virtual void close() = 0;
};

} // namespace tarvo::render
