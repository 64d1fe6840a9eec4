#pragma once

#include "custom/tables/CustomConstants.h"
#include "custom/tables/CustomTables.h"
#include "custom/tables/CustomTransformData.h"
#include "diagnostics/ObjectLog.h"
#include "geometry/Enumerations.h"
#include "render/Shader.h"

#include <cstddef>
#include <mutex>
#include <optional>
#include <span>

namespace tarvo::custom {

/// Draws the custom view: looks every output pixel up in the host's tables, which it owns.
///
/// Calls belong under one lock, the caller's who renders, except the setters marked as of any thread: what
/// they are given is taken over as a whole by the next frame.
class CCustomTransformShader final : public render::IShader, public ITablesReceiver {
public:
    explicit CCustomTransformShader(diagnostics::ObjectLog log) : m_log(log) {}

    /// Prepares the control type's program, E_FAIL without its code, and then does UpdateTransform().
    HRESULT initialise(render::IRenderDevice& device) override;
    void release() override;
    /// S_FALSE and no program while there is nothing to look up, which leaves the output black; E_FAIL while
    /// there are tables but no device to draw them on.
    HRESULT pixelShader(render::PixelShaderUse& use) override;

    /// Refused tables leave those in force; with too little memory, E_OUTOFMEMORY, there are none afterwards.
    /// Otherwise the result of UpdateTransform().
    HRESULT SetTransform(const TableDimensions& dimensions, std::span<const std::byte> entries) override;

    /// Brings the lookup surface up to date. S_FALSE without a device or tables; failures of the device,
    /// which are logged.
    HRESULT UpdateTransform();

    /// Takes a level of 0 … 1, limited to it, from the identity to the tables as they are, and does
    /// UpdateTransform() when it changed, else S_OK. What is no number is ignored.
    HRESULT setEffectLevel(float effectLevel);
    float effectLevel() const { return m_effectLevel; }

    /// Chooses the program. With a device a change has the result of initialise(), else S_OK.
    HRESULT setControlType(geometry::CustomTransformControlType controlType);
    geometry::CustomTransformControlType controlType() const { return m_controlType; }

    /// Width / height of the tables' grid, which an output of no given size takes over; none without tables.
    std::optional<float> tableAspect() const;

    /// Any thread. Output width / height; what is no positive finite number is ignored. 1 at first.
    void setOutputAspect(float outputAspect);
    /// Any thread.
    void setViewRectangle(const BoundedRectangle& rectangle);
    /// Any thread. The aspect in the settings does not count here.
    void setVirtualPtz(const VirtualPtzSettings& settings);

private:
    struct ControlValues {
        float outputAspect = 1.0F;
        BoundedRectangle viewRectangle;
        VirtualPtzSettings virtualPtz;
    };

    bool isVirtualPtz() const;
    ControlValues controlValues() const;
    void fillRecord();
    std::span<const std::byte> record() const;
    HRESULT failed(int line, HRESULT result) const;

    diagnostics::ObjectLog m_log;
    render::IRenderDevice* m_device = nullptr;
    geometry::CustomTransformControlType m_controlType = geometry::CustomTransformControlType::digitalZoom;
    float m_effectLevel = 1.0F;
    CustomTables m_tables;
    bool m_hasLookup = false; ///< the device has a lookup surface of the tables' size
    render::CustomTransformConstants m_digitalZoomRecord{};
    render::VirtualPtzConstants m_virtualPtzRecord{};

    mutable std::mutex m_controlLock; ///< guards the values below; nothing else is called under it
    ControlValues m_controlValues;
};

} // namespace tarvo::custom
