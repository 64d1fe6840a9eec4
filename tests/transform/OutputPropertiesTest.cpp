#include "transform/OutputProperties.h"

#include "com/SafeArray.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OutputProperties : public CTransformTest {
protected:
    OutputProperties() { host.takeLines(); }

    std::pair<LONG, LONG> size() {
        std::pair<LONG, LONG> size{-7, -7};
        EXPECT_EQ(transform.get_OutputWidth(&size.first), S_OK);
        EXPECT_EQ(transform.get_OutputHeight(&size.second), S_OK);
        return size;
    }
    /// The output size for an input of this size.
    std::pair<LONG, LONG> sizeFor(std::int32_t width, std::int32_t height) {
        EXPECT_EQ(host.setInput(rgbType(width, height)), S_OK);
        return size();
    }

    CTransformHost host;
    IDewarpingTransform& transform = *host.transform.get();
};

using Size = std::pair<LONG, LONG>;

TEST_F(OutputProperties, sizeIsStoredAsItIsPut) {
    EXPECT_EQ(size(), Size(0, 0));
    EXPECT_EQ(transform.put_OutputWidth(801), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - OutputWidth - Set: 801");
    EXPECT_EQ(transform.put_OutputHeight(-601), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - OutputHeight - Set: -601");
    EXPECT_EQ(size(), Size(801, -601));
    EXPECT_EQ(transform.get_OutputWidth(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_OutputHeight(nullptr), E_POINTER);
}

TEST_F(OutputProperties, sizeIsFixedByTheInputType) {
    EXPECT_EQ(sizeFor(2048, 1536), Size(1024, 768));
    host.takeLines();
    EXPECT_EQ(transform.put_OutputWidth(640), E_FAIL);
    EXPECT_EQ(host.takeLine(),
              "E:[1] - OutputWidth - Cannot change output width when input media type is already set");
    EXPECT_EQ(transform.put_OutputHeight(480), E_FAIL);
    EXPECT_EQ(host.takeLine(),
              "E:[1] - OutputHeight - Cannot change output width when input media type is already set");
    EXPECT_EQ(size(), Size(1024, 768));
    ASSERT_EQ(host.media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    EXPECT_EQ(transform.put_OutputWidth(640), S_OK);
}

TEST_F(OutputProperties, aMissingSideFollowsFromTheInput) {
    ASSERT_EQ(transform.put_OutputWidth(800), S_OK);
    EXPECT_EQ(sizeFor(1280, 720), Size(800, 450));
}

TEST_F(OutputProperties, sidesAreMadeEven) {
    ASSERT_EQ(transform.put_OutputWidth(801), S_OK);
    ASSERT_EQ(transform.put_OutputHeight(601), S_OK);
    EXPECT_EQ(sizeFor(1280, 720), Size(802, 602));
}

TEST_F(OutputProperties, aPanoramaIsFlatter) {
    ASSERT_EQ(transform.put_ViewType(2), S_OK);
    EXPECT_EQ(sizeFor(2048, 1536), Size(1024, 384));
}

TEST_F(OutputProperties, aTestedTypeLeavesItsSizeBehind) {
    ASSERT_EQ(host.setInput(rgbType(2048, 1536), DMO_SET_TYPEF_TEST_ONLY), S_OK);
    EXPECT_EQ(size(), Size(1024, 768));
    EXPECT_EQ(transform.put_OutputWidth(640), S_OK) << "no type is set";
}

TEST_F(OutputProperties, aCustomViewHasTheTablesShape) {
    // Two tables of 3 columns and 2 rows: 4 header words and 2·3·2·3 entry words.
    std::vector<std::uint16_t> words{2, 0, 3, 2};
    words.resize(4 + 36, 0);
    com::CSafeArray blob = com::CSafeArray::vector(VT_UI1, static_cast<std::uint32_t>(words.size() * 2));
    std::memcpy(com::CSafeArrayAccess<std::uint8_t>(blob.get()).elements().data(), words.data(),
                words.size() * 2);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    EXPECT_EQ(sizeFor(640, 400), Size(640, 400)) << "without tables the input's";
    ASSERT_EQ(host.media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    ASSERT_EQ(transform.put_OutputWidth(0), S_OK);
    ASSERT_EQ(transform.put_OutputHeight(0), S_OK);
    ASSERT_EQ(transform.SetCustomTransformData(blob.get(), 0), S_FALSE) << "no device to put them on yet";
    EXPECT_EQ(sizeFor(640, 400), Size(600, 400));
}

TEST_F(OutputProperties, frameRateIsNotNegative) {
    double rate = 5.0;
    EXPECT_EQ(transform.get_OutputFrameRate(&rate), S_OK);
    EXPECT_EQ(rate, 0.0);
    EXPECT_EQ(transform.put_OutputFrameRate(29.97), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - OutputFrameRate - Set: 30.0");
    EXPECT_EQ(transform.put_OutputFrameRate(-0.5), E_INVALIDARG);
    EXPECT_EQ(transform.put_OutputFrameRate(std::numeric_limits<double>::quiet_NaN()), E_INVALIDARG);
    EXPECT_THAT(host.takeLines(), IsEmpty());
    EXPECT_EQ(transform.get_OutputFrameRate(&rate), S_OK);
    EXPECT_EQ(rate, 29.97);
    EXPECT_EQ(transform.put_OutputFrameRate(0.0), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - OutputFrameRate - Set: 0.0");
    EXPECT_EQ(transform.get_OutputFrameRate(nullptr), E_POINTER);
}

TEST_F(OutputProperties, aRateOfZeroTakesOverTheTypes) {
    ASSERT_EQ(transform.put_OutputFrameRate(60.0), S_OK);
    host.negotiateRgb(32, 24, 32, 24, 400'000);
    double rate = 0.0;
    EXPECT_EQ(transform.get_OutputFrameRate(&rate), S_OK);
    EXPECT_EQ(rate, 60.0);
    ASSERT_EQ(transform.put_OutputFrameRate(0.0), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -24, 400'000)), S_OK);
    EXPECT_EQ(transform.get_OutputFrameRate(&rate), S_OK);
    EXPECT_EQ(rate, 25.0);
}

TEST_F(OutputProperties, strangeRatesStream) {
    const auto picture = patternRgb(32, 24);
    host.negotiateRgb(32, 24, 32, 24, 400'000);
    for (const double rate : {std::numeric_limits<double>::infinity(), 1e300, 1e-300, 5e-324}) {
        ASSERT_EQ(transform.put_OutputFrameRate(rate), S_OK);
        EXPECT_EQ(host.through(picture).result, S_OK) << rate;
        EXPECT_EQ(host.frame().result, S_OK) << rate;
    }
}

TEST_F(OutputProperties, optionsAreBits) {
    LONG options = -1;
    EXPECT_EQ(transform.get_Options(&options), S_OK);
    EXPECT_EQ(options, 0);
    EXPECT_EQ(transform.put_Options(2 + 8), S_OK);
    EXPECT_EQ(sizeFor(2048, 1536), Size(2048, 1152));
    host.takeLines();
    EXPECT_EQ(transform.put_Options(8), E_FAIL);
    EXPECT_EQ(host.takeLine(),
              "E:[1] - Options - Cannot change output format when input media type is already set");
    EXPECT_EQ(transform.get_Options(&options), S_OK);
    EXPECT_EQ(options, 10);
    EXPECT_EQ(transform.put_Options(2 + 4 + 8), S_OK);
    EXPECT_EQ(transform.put_Options(2 + 1), S_OK);
    EXPECT_EQ(transform.get_Options(&options), S_OK);
    EXPECT_EQ(options, 3);
    EXPECT_EQ(transform.put_Options(0x7FFFFF02), S_OK) << "bits that mean nothing yet";
    EXPECT_EQ(transform.get_Options(&options), S_OK);
    EXPECT_EQ(options, 0x7FFFFF02);
    EXPECT_THAT(host.takeLines(), IsEmpty());
    EXPECT_EQ(transform.get_Options(nullptr), E_POINTER);
}

TEST_F(OutputProperties, forcedRgbRefusesYv12WhileItStreams) {
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.setOutput(yv12Input(32, 24)), S_OK);
    EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);
    EXPECT_EQ(transform.put_Options(4), S_OK);
    EXPECT_EQ(host.setOutput(yv12Input(32, 24)), typeIsNotAccepted);
    DMO_MEDIA_TYPE type{};
    ASSERT_EQ(host.media->GetOutputType(0, 2, &type), S_OK) << "but it is offered";
    com::CMediaType owned;
    owned.attach(type);
    EXPECT_EQ(owned->subtype, MEDIASUBTYPE_YV12);
    EXPECT_EQ(host.through(patternRgb(32, 24), 400'000).result, S_OK);
}

TEST_F(OutputProperties, tellsThatItCanDewarp) {
    VARIANT_BOOL isCapable = 3;
    EXPECT_EQ(transform.CheckDewarpingCapability(&isCapable), S_OK);
    EXPECT_EQ(isCapable, VARIANT_TRUE);
    EXPECT_EQ(transform.CheckDewarpingCapability(nullptr), E_POINTER);
    CTransformHost other(CTransformHost::Device::recording);
    other.recording->isThere = false;
    EXPECT_EQ(other.transform->CheckDewarpingCapability(&isCapable), S_OK);
    EXPECT_EQ(isCapable, VARIANT_FALSE);
    other.recording->isThere = true;
    EXPECT_EQ(other.transform->CheckDewarpingCapability(&isCapable), S_OK);
    EXPECT_EQ(isCapable, VARIANT_TRUE) << "asked anew";
    other.recording->isThere = false;
    EXPECT_EQ(other.transform->CheckDewarpingCapability(&isCapable), S_OK);
    EXPECT_EQ(isCapable, VARIANT_TRUE) << "remembered";
}

TEST_F(OutputProperties, hardwareAccelerationIsKnownWithTheDevice) {
    VARIANT_BOOL isActive = 3;
    EXPECT_EQ(transform.get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, VARIANT_TRUE);
    host.negotiateRgb(32, 24, 32, 24);
    ASSERT_EQ(host.media->AllocateStreamingResources(), S_OK);
    EXPECT_EQ(transform.get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, 0);
    EXPECT_EQ(transform.get_HardwareAccelerationActive(nullptr), E_POINTER);
}

/// Draws on the graphics adapter, as far as others can tell.
class CHardwareDevice final : public render::IRenderDevice {
public:
    explicit CHardwareDevice(diagnostics::ObjectLog log) : m_device(log) {}
    bool isAvailable() override { return true; }
    HRESULT open(const render::InputFormat& input, const render::OutputFormat& output) override {
        return m_device.open(input, output);
    }
    HRESULT openStates() override { return m_device.openStates(); }
    bool isOpen() const override { return m_device.isOpen(); }
    render::DeviceKind kind() const override { return render::DeviceKind::hardware; }
    HRESULT geometry(const geometry::ViewVertices& vertices,
                     const render::ExcludeGeometry& exclude) override {
        return m_device.geometry(vertices, exclude);
    }
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override {
        return m_device.overviewMarker(vertices);
    }
    bool hasProgram(render::ShaderProgram program) const override { return m_device.hasProgram(program); }
    HRESULT prepare(render::ShaderProgram program, render::ConstantSlot slot,
                    std::span<const std::byte> constants) override {
        return m_device.prepare(program, slot, constants);
    }
    void releaseProgram() override { m_device.releaseProgram(); }
    HRESULT lookup(int width, int height) override { return m_device.lookup(width, height); }
    void releaseLookup() override { m_device.releaseLookup(); }
    HRESULT upload(render::Surface surface, const render::SourceRows& rows) override {
        return m_device.upload(surface, rows);
    }
    void clear(render::Surface target, const std::array<float, 4>& colour) override {
        m_device.clear(target, colour);
    }
    HRESULT draw(const render::Pass& pass) override { return m_device.draw(pass); }
    void copy(render::Surface from, render::Surface to) override { m_device.copy(from, to); }
    void copyBox(render::Surface from, const geometry::PixelBox& box, render::Surface to) override {
        m_device.copyBox(from, box, to);
    }
    void flush() override { m_device.flush(); }
    HRESULT readBack(render::IMappedRowsVisitor& visitor) override { return m_device.readBack(visitor); }
    void close() override { m_device.close(); }

private:
    render::reference::CReferenceDevice m_device;
};

TEST_F(OutputProperties, hardwareAccelerationIsOneOnTheGraphicsAdapter) {
    diagnostics::FakeLogServices services;
    diagnostics::Log log(services);
    ComPtr<CDewarpingTransform> object;
    object.attach(new CDewarpingTransform(com::Outer{},
                                          TransformServices{log, [](diagnostics::ObjectLog its) {
                                                                return std::make_unique<CHardwareDevice>(its);
                                                            }}));
    const auto media = object.as<IMediaObject>();
    VARIANT_BOOL isActive = 0;
    EXPECT_EQ(object->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, -1) << "before the first device";
    ASSERT_EQ(media->SetInputType(0, &rgbType(32, -24).make().get(), 0), S_OK);
    DMO_MEDIA_TYPE type{};
    ASSERT_EQ(media->GetOutputType(0, 1, &type), S_OK) << "which builds one";
    com::CMediaType owned;
    owned.attach(type);
    EXPECT_EQ(object->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, 1);
    ASSERT_EQ(media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    EXPECT_EQ(object->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, 1) << "of the last device";
}

TEST_F(OutputProperties, typesAreLogged) {
    ASSERT_EQ(host.setInput(rgbType(640, -480, 333'333)), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - InternalCheckInputType - RGB32:640x480@30.0");
    EXPECT_EQ(host.setInput(rgbType(0, 1080, 333'333)), typeIsNotAccepted);
    EXPECT_EQ(host.takeLine(), "E:[1] - InternalCheckInputType - Invalid resolution: 0x1080");
    VideoType output = rgbType(1024, -768, 400'000);
    output.target = {0, 0, 1024, 768};
    ASSERT_EQ(host.setOutput(output), S_OK);
    EXPECT_THAT(host.takeLines(),
                ElementsAre("_:[1] - InternalCheckOutputType - RGB32:1024x768@25.0 (STRIDE: 4096)",
                            "_:[1] - InternalCheckOutputType - WARNING: Output frame rate not a multiple of "
                            "input frame rate"));
    output.target = {0, 0, 1000, 768};
    EXPECT_EQ(host.setOutput(output), typeIsNotAccepted);
    EXPECT_EQ(host.takeLine(),
              "_:[1] - InternalCheckOutputType - RGB32:Suggested width does not match (1000 != 1024)");
}

TEST_F(OutputProperties, offersTypesBeforeAndAfterTheInputsIsKnown) {
    for (DWORD i = 0; i < 4; ++i) {
        DMO_MEDIA_TYPE type{};
        ASSERT_EQ(host.media->GetOutputType(0, i, &type), S_OK);
        EXPECT_EQ(type.pbFormat, nullptr);
        EXPECT_EQ(type.subtype, i % 2 == 0 ? MEDIASUBTYPE_YV12 : MEDIASUBTYPE_RGB32);
    }
    EXPECT_EQ(host.media->GetOutputType(0, 4, nullptr), noItemsLeft);
    ASSERT_EQ(host.setInput(rgbType(2048, 1536)), S_OK);
    for (DWORD i = 0; i < 4; ++i) {
        DMO_MEDIA_TYPE type{};
        ASSERT_EQ(host.media->GetOutputType(0, i, &type), S_OK);
        com::CMediaType owned;
        owned.attach(type);
        EXPECT_EQ(host.media->SetOutputType(0, &owned.get(), DMO_SET_TYPEF_TEST_ONLY), S_OK)
            << "what is offered is taken";
    }
}

TEST_F(OutputProperties, hugeSizesAreRefusedOrFailToGetADevice) {
    EXPECT_EQ(host.setInput(rgbType(32, std::numeric_limits<std::int32_t>::min())), typeIsNotAccepted);
    EXPECT_EQ(host.setInput(rgbType(-32, 24)), typeIsNotAccepted);
    ASSERT_EQ(transform.put_OutputWidth(2'000'000'000), S_OK);
    ASSERT_EQ(transform.put_OutputHeight(2'000'000'000), S_OK);
    ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
    VideoType output = rgbType(32, -24);
    ASSERT_EQ(host.setOutput(output), S_OK);
    EXPECT_EQ(host.media->AllocateStreamingResources(), E_FAIL);
    CFakeBuffer buffer(patternRgb(32, 24));
    EXPECT_EQ(host.input(buffer), E_FAIL);
    EXPECT_EQ(buffer.references(), 0);
}

} // namespace
} // namespace tarvo::transform
