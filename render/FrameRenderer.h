#pragma once

#include "diagnostics/ObjectLog.h"
#include "geometry/ViewState.h"
#include "render/FrameFormat.h"
#include "render/InputUpload.h"
#include "render/OverviewMarkerFeed.h"
#include "render/RenderDevice.h"
#include "render/Shader.h"

#include <cstddef>
#include <memory>
#include <span>

namespace tarvo::render {

/// The sequence of a frame - upload, passes, read-back - over any device.
///
/// The view is handed in at each call, so that a caller may go on changing its own copy; where the disc, the
/// quads and the exclude area lie is what the last updateGeometry() took over. A shader that was selected
/// lives until another is selected or the device is closed. A frame whose formats and sizes are those of the
/// one before allocates nothing here. All calls belong under one lock, the caller's.
class CFrameRenderer {
    // NOLINTBEGIN(readability-identifier-naming): spelt as log lines name these steps
public:
    CFrameRenderer(std::unique_ptr<IRenderDevice> device, diagnostics::ObjectLog log);
    ~CFrameRenderer();
    CFrameRenderer(const CFrameRenderer&) = delete;
    CFrameRenderer& operator=(const CFrameRenderer&) = delete;

    /// Whether the device can be had; a no is logged. A yes is remembered.
    bool isAvailable();
    bool isOpen() const;
    /// Whether the device holds a frame to draw: not before the first upload since it was opened.
    bool hasInput() const { return m_hasInput; }
    /// Of an open device.
    DeviceKind deviceKind() const;

    /// Opens the device for frames of these formats and readies it for the view and its shader, from scratch.
    /// E_FAIL when the device cannot be had; other failures are those of the device. After a failure, which
    /// is logged, nothing is held.
    HRESULT InitDirect3D(const InputFormat& input, const OutputFormat& output,
                         const geometry::CViewState& view, IShader& shader);
    /// Releases the device and what the shader made on it. Needs no open device.
    void close();

    /// Takes over the view's quads and exclude area. On failure the old ones stay. S_OK without a device.
    HRESULT updateGeometry(const geometry::CViewState& view);
    /// Makes another shader, or the same anew, the one that draws; the one before is released. One that fails
    /// is tried again: twice for the log line about it, if that is wanted, and once more for the result. S_OK
    /// without a device.
    HRESULT selectShader(IShader& shader);

    /// Hands the device a frame of the input format; bytes missing at its end count as zero, and none beyond
    /// it are read. Always S_OK.
    HRESULT UploadInputFrame(std::span<const std::byte> frame);

    /// The same of a frame that stays where it is, unchanged, until KeepInputFrame(): what is drawn and read
    /// back before is drawn from there, and only what was not needed is then copied.
    HRESULT LendInputFrame(std::span<const std::byte> frame);
    /// Ends the loan, if there is one; later drawings still have the whole frame.
    void KeepInputFrame();

    /// Draws the output picture of the last uploaded frame with the shader that was selected. With
    /// `isBypassed` the input is only scaled into the output, letter-boxed. Always S_OK: what fails inside is
    /// logged, and its pass is missing.
    HRESULT RenderFrame(const geometry::CViewState& view, IShader& shader, bool isBypassed);

    /// Writes the rendered picture into `output` in the output format and, before that memory is given back,
    /// shows it to `observer`, if any, even where nothing could be written. E_FAIL without a device, for an
    /// output that is too short, which stays untouched, and for a format that nothing can be converted to;
    /// otherwise failures of the device. When the device was removed or reset it is closed, so that the next
    /// frame may open it anew.
    HRESULT ReadBackOutputFrame(std::span<std::byte> output, IMappedRowsVisitor* observer);

    /// Shows the rendered picture to a visitor, whose result it answers with; E_FAIL without a device. Else
    /// as ReadBackOutputFrame.
    HRESULT ReadBackPicture(IMappedRowsVisitor& visitor);

    /// How the frames that go out lie in memory from now on. The picture keeps its size, whatever the format
    /// says of one.
    void setOutputFormat(const OutputFormat& output) { m_output = output; }

private:
    HRESULT readyDevice(const geometry::CViewState& view, IShader& shader);
    HRESULT ConvertYUVToRGB32();
    bool hasExcludeArea() const { return !m_exclude.box.isEmpty(); }
    void blackOutExcludeArea();
    void drawDewarped(const geometry::CViewState& view, IShader& shader);
    void drawView(const geometry::CViewState& view, const PixelShaderUse& use, Surface source);
    void drawOverview(const geometry::CViewState& view, bool isViewReady);
    void draw(const Pass& pass);

    std::unique_ptr<IRenderDevice> m_device;
    diagnostics::ObjectLog m_log;
    bool m_isKnownAvailable = false;
    InputFormat m_input;
    OutputFormat m_output;
    /// Whose program is on the device; null without a device.
    IShader* m_shader = nullptr;
    /// As the device has it, which may lag behind the view.
    ExcludeGeometry m_exclude;
    COverviewMarkerFeed m_overviewMarker;
    CInputUpload m_upload;
    bool m_hasInput = false;
    // NOLINTEND(readability-identifier-naming)
};

} // namespace tarvo::render
