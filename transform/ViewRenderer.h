#pragma once

#include "custom/tables/CustomTransformShader.h"
#include "diagnostics/ObjectLog.h"
#include "geometry/ViewState.h"
#include "platform/InterfaceTypes.h"
#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#include "transform/SteeringObjects.h"
#include "transform/TransformSettings.h"
#include "transform/streaming/NegotiatedFormats.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace tarvo::transform {

/// Draws the view that the host has set: takes its settings up, as a whole, where they become visible, and
/// keeps device, layout and program in step with them.
///
/// Its lock is the transform's lock of rendering. It is recursive, since an event's sink may change what the
/// frame under way is drawn with. Every method takes it for itself, but for those that say otherwise.
class CViewRenderer {
public:
    CViewRenderer(CTransformSettings& settings, CSteeringObjects& steering,
                  std::unique_ptr<render::IRenderDevice> device, diagnostics::ObjectLog log);
    CViewRenderer(const CViewRenderer&) = delete;
    CViewRenderer& operator=(const CViewRenderer&) = delete;

    std::recursive_mutex& lock() { return m_lock; }

    /// Whether a device can be had; a no is logged.
    bool isAvailable();
    bool isOpen();
    /// Builds the device for frames of these formats. After a failure there is none.
    HRESULT open(const NegotiatedFormats& formats);
    void close();
    /// Another layout of the output frames in memory.
    void setOutputFormat(const render::OutputFormat& format);
    /// Without the lock: VARIANT_TRUE before the first device, then 1 on the graphics adapter and 0
    /// elsewhere.
    VARIANT_BOOL hardwareAccelerationActive() const { return m_hardwareAccelerationActive; }

    /// Makes the program of the view anew; its failures, also where the settings were set long ago. S_OK
    /// without a device.
    HRESULT refreshShader();
    /// Brings the device's layout in step; S_OK without a device.
    HRESULT updateGeometry();
    /// Brings the custom view in step, whose failures are logged and found again by the next frame.
    void updateCustomTransform();
    /// The exclude rectangle is another.
    void excludeAreaChanged();
    /// Takes over the host's tables. As custom::SetCustomTransformData.
    HRESULT setCustomTransformData(SAFEARRAY* data, LONG reserved);
    /// Width / height of the tables, if there are any.
    std::optional<float> tableAspect();
    /// Width / height of the output.
    void setOutputAspect(float aspect);

    // Steps of a frame, under the lock of the caller.
    /// The frame stays where it is, unchanged, until keepInput().
    HRESULT upload(std::span<const std::byte> frame);
    void keepInput();
    /// Whether there is a frame to draw again; not on a device that was built since.
    bool hasInput() const { return m_renderer.hasInput(); }
    /// Whether what is set differs from what the last delivered frame was drawn with.
    bool haveSettingsChanged() const;
    HRESULT render();
    /// As CFrameRenderer's.
    HRESULT readBack(std::span<std::byte> output, render::IMappedRowsVisitor* observer);
    HRESULT readBack(render::IMappedRowsVisitor& visitor);
    /// The frame is on its way: what it was drawn with needs no drawing again. What a sink has set since
    /// does.
    void frameDelivered() { m_deliveredVersion = m_drawnVersion; }
    /// Whether anything was drawn since the device was built.
    bool hasPicture() const { return m_hasPicture; }

private:
    /// What decides which program draws the view.
    struct Program {
        bool isCustom = false;
        geometry::PanoramaMode panoramaMode = geometry::PanoramaMode::singleView; ///< built-in views
        geometry::CustomTransformControlType controlType =
            geometry::CustomTransformControlType::digitalZoom; ///< custom view

        friend constexpr bool operator==(const Program&, const Program&) = default;
    };

    HRESULT takeUpSettings();
    void takeUpSettingsLoggingFailure();
    HRESULT selectShader();
    Program neededProgram() const;
    render::IShader& activeShader();
    void forgetDevice();

    CTransformSettings& m_settings;
    CSteeringObjects& m_steering;
    diagnostics::ObjectLog m_log;
    std::recursive_mutex m_lock;

    // As taken up.
    geometry::CViewState m_view;
    bool m_isBypassed = false;
    std::uint64_t m_takenVersion = 0;
    std::uint64_t m_takenLayoutVersion = 0;

    // Of the device.
    /// What the last picture shows; older than what is taken up if a setter has done so since.
    std::uint64_t m_drawnVersion = 0;
    /// 0: nothing delivered yet.
    std::uint64_t m_deliveredVersion = 0;
    /// 0: no layout.
    std::uint64_t m_layoutVersion = 0;
    std::optional<Program> m_selected;
    /// With which settings the program could not be made.
    std::uint64_t m_failedVersion = 0;
    bool m_hasPicture = false;
    std::atomic<VARIANT_BOOL> m_hardwareAccelerationActive{VARIANT_TRUE};

    // The renderer lets go of the shaders when it ends, so they end after it.
    render::CDewarpPixelShader m_dewarpShader;
    custom::CCustomTransformShader m_customShader;
    render::CFrameRenderer m_renderer;
};

} // namespace tarvo::transform
