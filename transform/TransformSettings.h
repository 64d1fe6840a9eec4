#pragma once

#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"
#include "geometry/LensProfile.h"
#include "geometry/ViewState.h"
#include "transform/streaming/StreamSettings.h"

#include <cstdint>
#include <mutex>
#include <optional>

namespace tarvo::transform {

/// A position of the virtual PTZ, degrees.
struct PtzPosition {
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
    double fieldOfViewDegrees = 0.0;
};

/// What a frame is drawn with, at one moment.
struct ViewSettings {
    geometry::CViewState view;
    bool isBypassed = false;
    /// Of the custom view; the view's own level is that of the built-in ones.
    float customEffectLevel = 1.0F;
    geometry::CustomTransformControlType controlType = geometry::CustomTransformControlType::digitalZoom;

    /// Grows with every change of what is drawn.
    std::uint64_t version = 1;
    /// Grows with every change of where things are drawn.
    std::uint64_t layoutVersion = 1;
};

/// What the host has set, with the arithmetic of every setter.
///
/// Any thread: a setter is one step for all others, and what frames are drawn with is read as a whole. The
/// lock inside is held for arithmetic alone. Setters say whether something changed that is to be seen.
class CTransformSettings {
public:
    /// The options are kept in the stream's settings too, which negotiation and pacing read.
    explicit CTransformSettings(StreamSettings& streamSettings) : m_streamSettings(streamSettings) {}
    CTransformSettings(const CTransformSettings&) = delete;
    CTransformSettings& operator=(const CTransformSettings&) = delete;

    ViewSettings snapshot() const;
    /// Of the settings as they are now.
    std::uint64_t version() const;

    /// The result of `query(const geometry::CViewState&)`.
    template<class Query>
    auto ask(const Query& query) const {
        const std::lock_guard lock(m_lock);
        return query(m_state.view);
    }

    bool setLensProfile(const geometry::LensProfile& profile);
    /// True when the mounting in force changed.
    bool setTiltOrientation(geometry::TiltOrientation orientation);
    bool setViewType(geometry::ViewType viewType);
    void setSelectedView(geometry::View view);

    bool setPan(double degrees);
    bool setTilt(double degrees);
    bool setFieldOfView(double degrees);
    bool setPtzPosition(const PtzPosition& position, bool isRelative);

    bool setBypass(bool isBypassed);
    bool isBypassed() const;

    /// Of the custom view while that is the view type, else of the built-in ones. Limited to 0 … 1; what is
    /// no number is ignored.
    bool setEffectLevel(double level);
    double effectLevel() const;

    bool setPanoramaFieldOfView(double degrees);
    bool setPanoramaPanOffset(double degrees);

    bool setControlType(geometry::CustomTransformControlType controlType);
    geometry::CustomTransformControlType controlType() const;

    /// Which bits changed; none is stored, and there is no value, if the output's format is fixed and
    /// `outputFormat_16_9` would change.
    std::optional<std::int32_t> setOptions(std::int32_t options, bool isFormatFixed);

    void setExcludeArea(const geometry::ExcludeArea& area);
    /// Pixels; sides of 0 keep what is known.
    void setSizes(geometry::PictureSize input, geometry::PictureSize output);

    /// Something changed that is drawn but not kept here.
    void markChanged();

private:
    bool markIf(bool hasChanged);
    void markLayout();

    StreamSettings& m_streamSettings;
    mutable std::mutex m_lock;
    ViewSettings m_state;
};

} // namespace tarvo::transform
