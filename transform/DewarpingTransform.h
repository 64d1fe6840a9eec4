#pragma once

#include "com/ConnectionPointContainer.h"
#include "com/OwnTypeLibrary.h"
#include "diagnostics/ObjectLog.h"
#include "interfaces/TarvoVideoTransform.h"
#include "platform/InterfaceTypes.h"
#include "transform/CustomProperties.h"
#include "transform/MediaStreams.h"
#include "transform/OutputProperties.h"
#include "transform/RenderDeviceMaker.h"
#include "transform/SteeringObjects.h"
#include "transform/TransformEvents.h"
#include "transform/TransformSettings.h"
#include "transform/ViewProperties.h"
#include "transform/ViewRenderer.h"
#include "transform/streaming/StreamSettings.h"

namespace tarvo::transform {

/// What an object takes from its surroundings.
struct TransformServices {
    diagnostics::Log& log = diagnostics::moduleLog;
    DeviceMaker makeDevice = makeRenderDevice;
};

/// The object behind the coclass DewarpingTransform: a media object that turns fisheye pictures into views,
/// and the automation object by which hosts steer it. It can be aggregated, as wrappers of media objects do.
///
/// This class only puts the parts together and passes calls on to them. Any thread. Two locks, in this order:
/// that of the streams, under which IMediaObject works, and that of rendering, under which frames are made
/// and setters do what touches the device. Sinks are called under both.
class CDewarpingTransform
    : public com::CObject<
          com::Dual<IDewarpingTransform>, IMediaObject, IDMOQualityControl,
          com::Implementing<com::CConnectionPointContainer<IDewarpingTransformEvents, IImageSourceEvents>,
                            IConnectionPointContainer>> {
public:
    /// Throws std::bad_alloc.
    explicit CDewarpingTransform(com::Outer outer = {}) : CDewarpingTransform(outer, TransformServices{}) {}
    CDewarpingTransform(com::Outer outer, const TransformServices& services);
    ~CDewarpingTransform() override;

    // IDewarpingTransform
    STDMETHODIMP get_LensProfile(SAFEARRAY** theLensProfile) override {
        return m_view.get_LensProfile(theLensProfile);
    }
    STDMETHODIMP put_LensProfile(SAFEARRAY* theLensProfile) override {
        return m_view.put_LensProfile(theLensProfile);
    }
    STDMETHODIMP get_TiltOrientation(LONG* theOrientation) override {
        return m_view.get_TiltOrientation(theOrientation);
    }
    STDMETHODIMP put_TiltOrientation(LONG theOrientation) override {
        return m_view.put_TiltOrientation(theOrientation);
    }
    STDMETHODIMP get_OutputWidth(LONG* theWidth) override { return m_output.get_OutputWidth(theWidth); }
    STDMETHODIMP put_OutputWidth(LONG theWidth) override { return m_output.put_OutputWidth(theWidth); }
    STDMETHODIMP get_OutputHeight(LONG* theHeight) override { return m_output.get_OutputHeight(theHeight); }
    STDMETHODIMP put_OutputHeight(LONG theHeight) override { return m_output.put_OutputHeight(theHeight); }
    STDMETHODIMP get_OutputFrameRate(double* theFrameRate) override {
        return m_output.get_OutputFrameRate(theFrameRate);
    }
    STDMETHODIMP put_OutputFrameRate(double theFrameRate) override {
        return m_output.put_OutputFrameRate(theFrameRate);
    }
    STDMETHODIMP get_Pan(double* thePan) override { return m_view.get_Pan(thePan); }
    STDMETHODIMP put_Pan(double thePan) override { return m_view.put_Pan(thePan); }
    STDMETHODIMP get_Tilt(double* theTilt) override { return m_view.get_Tilt(theTilt); }
    STDMETHODIMP put_Tilt(double theTilt) override { return m_view.put_Tilt(theTilt); }
    STDMETHODIMP get_FieldOfView(double* theFieldOfView) override {
        return m_view.get_FieldOfView(theFieldOfView);
    }
    STDMETHODIMP put_FieldOfView(double theFieldOfView) override {
        return m_view.put_FieldOfView(theFieldOfView);
    }
    STDMETHODIMP get_Bypass(VARIANT_BOOL* isBypassed) override { return m_view.get_Bypass(isBypassed); }
    STDMETHODIMP put_Bypass(VARIANT_BOOL isBypassed) override { return m_view.put_Bypass(isBypassed); }
    STDMETHODIMP get_EffectLevel(double* theEffectLevel) override {
        return m_view.get_EffectLevel(theEffectLevel);
    }
    STDMETHODIMP put_EffectLevel(double theEffectLevel) override {
        return m_view.put_EffectLevel(theEffectLevel);
    }
    STDMETHODIMP get_Options(LONG* theOptions) override { return m_output.get_Options(theOptions); }
    STDMETHODIMP put_Options(LONG theOptions) override { return m_output.put_Options(theOptions); }
    STDMETHODIMP get_ViewType(LONG* theViewType) override { return m_view.get_ViewType(theViewType); }
    STDMETHODIMP put_ViewType(LONG theViewType) override { return m_view.put_ViewType(theViewType); }
    STDMETHODIMP SetPTZPosition(double thePan, double theTilt, double theFieldOfView,
                                VARIANT_BOOL isRelative) override {
        return m_view.SetPTZPosition(thePan, theTilt, theFieldOfView, isRelative);
    }
    STDMETHODIMP CheckDewarpingCapability(VARIANT_BOOL* isCapable) override {
        return m_output.CheckDewarpingCapability(isCapable);
    }
    STDMETHODIMP MapPoint(double theX, double theY, double* thePan, double* theTilt, LONG theFlags) override {
        return m_view.MapPoint(theX, theY, thePan, theTilt, theFlags);
    }
    STDMETHODIMP GetCurrentImage(VARIANT* theImageData, LONGLONG* theTimestamp, LONG theFlags) override {
        return m_streams.producer().getCurrentImage(theImageData, theTimestamp, theFlags);
    }
    STDMETHODIMP get_SelectedView(LONG* theView) override { return m_view.get_SelectedView(theView); }
    STDMETHODIMP put_SelectedView(LONG theView) override { return m_view.put_SelectedView(theView); }
    STDMETHODIMP InjectAcceleratorFilter(IAccelerator** theAccelerator) override;
    STDMETHODIMP MapPointToOverview(double theX, double theY, double* theOverviewX, double* theOverviewY,
                                    LONG) override {
        return m_view.MapPointToOverview(theX, theY, theOverviewX, theOverviewY);
    }
    STDMETHODIMP get_PanoramaFieldOfView(double* theFieldOfView) override {
        return m_view.get_PanoramaFieldOfView(theFieldOfView);
    }
    STDMETHODIMP put_PanoramaFieldOfView(double theFieldOfView) override {
        return m_view.put_PanoramaFieldOfView(theFieldOfView);
    }
    STDMETHODIMP get_PanoramaPanOffset(double* thePanOffset) override {
        return m_view.get_PanoramaPanOffset(thePanOffset);
    }
    STDMETHODIMP put_PanoramaPanOffset(double thePanOffset) override {
        return m_view.put_PanoramaPanOffset(thePanOffset);
    }
    STDMETHODIMP SetCustomTransformData(SAFEARRAY* theData, LONG reserved) override {
        return m_custom.SetCustomTransformData(theData, reserved);
    }
    STDMETHODIMP get_CustomTransformViewRect(IRectangle** theViewRect) override {
        return m_custom.get_CustomTransformViewRect(theViewRect);
    }
    STDMETHODIMP get_ExcludeRect(IRectangle** theExcludeRect) override {
        return m_custom.get_ExcludeRect(theExcludeRect);
    }
    STDMETHODIMP get_CustomTransformControlType(LONG* theControlType) override {
        return m_custom.get_CustomTransformControlType(theControlType);
    }
    STDMETHODIMP put_CustomTransformControlType(LONG theControlType) override {
        return m_custom.put_CustomTransformControlType(theControlType);
    }
    STDMETHODIMP get_CustomTransformControl(IUnknown** theControl) override {
        return m_custom.get_CustomTransformControl(theControl);
    }
    STDMETHODIMP get_HardwareAccelerationActive(VARIANT_BOOL* isActive) override {
        return m_output.get_HardwareAccelerationActive(isActive);
    }

    // IMediaObject
    STDMETHODIMP GetStreamCount(DWORD* inputStreams, DWORD* outputStreams) override;
    STDMETHODIMP GetInputStreamInfo(DWORD stream, DWORD* flags) override;
    STDMETHODIMP GetOutputStreamInfo(DWORD stream, DWORD* flags) override;
    STDMETHODIMP GetInputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) override;
    STDMETHODIMP GetOutputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) override;
    STDMETHODIMP SetInputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) override;
    STDMETHODIMP SetOutputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) override;
    STDMETHODIMP GetInputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) override;
    STDMETHODIMP GetOutputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) override;
    STDMETHODIMP GetInputSizeInfo(DWORD stream, DWORD* bytes, DWORD* lookahead, DWORD* alignment) override;
    STDMETHODIMP GetOutputSizeInfo(DWORD stream, DWORD* bytes, DWORD* alignment) override;
    STDMETHODIMP GetInputMaxLatency(DWORD stream, REFERENCE_TIME* latency) override;
    STDMETHODIMP SetInputMaxLatency(DWORD stream, REFERENCE_TIME latency) override;
    STDMETHODIMP Flush() override;
    STDMETHODIMP Discontinuity(DWORD stream) override;
    STDMETHODIMP AllocateStreamingResources() override;
    STDMETHODIMP FreeStreamingResources() override;
    STDMETHODIMP GetInputStatus(DWORD stream, DWORD* flags) override;
    STDMETHODIMP ProcessInput(DWORD stream, IMediaBuffer* buffer, DWORD flags, REFERENCE_TIME time,
                              REFERENCE_TIME duration) override;
    STDMETHODIMP ProcessOutput(DWORD flags, DWORD count, DMO_OUTPUT_DATA_BUFFER* buffers,
                               DWORD* status) override;
    STDMETHODIMP Lock(LONG isLocking) override;

    // IDMOQualityControl
    STDMETHODIMP SetNow(REFERENCE_TIME now) override { return m_streams.quality().SetNow(now); }
    STDMETHODIMP SetStatus(DWORD flags) override { return m_streams.quality().SetStatus(flags); }
    STDMETHODIMP GetStatus(DWORD* flags) override { return m_streams.quality().GetStatus(flags); }

protected:
    void finalRelease() noexcept override;

private:
    diagnostics::ObjectLog m_log;
    StreamSettings m_streamSettings;
    CTransformSettings m_settings{m_streamSettings};
    CSteeringObjects m_steering;
    CViewRenderer m_renderer;
    CTransformEvents m_events;
    CMediaStreams m_streams;
    CViewProperties m_view;
    COutputProperties m_output;
    CCustomProperties m_custom;
};

} // namespace tarvo::transform
