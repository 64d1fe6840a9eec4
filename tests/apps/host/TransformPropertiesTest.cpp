#include "apps/host/TransformProperties.h"

#include "apps/host/HostError.h"
#include "apps/host/Module.h"
#include "apps/host/TransformStream.h"
#include "com/SafeArray.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::host {
namespace {

class HostProperties : public testing::Test {
protected:
    template<class Value>
    Value got(HRESULT (STDMETHODCALLTYPE IDewarpingTransform::*getter)(Value*)) const {
        Value value{};
        EXPECT_EQ((m_transform.get()->*getter)(&value), S_OK);
        return value;
    }

    void expectFailure(const TransformProperties& properties, HRESULT result, const char* step) {
        try {
            putProperties(*m_transform, properties);
            FAIL() << "nothing failed";
        } catch (const HostError& error) {
            EXPECT_EQ(error.result(), result);
            EXPECT_THAT(error.what(), testing::StartsWith(step));
        }
    }

    CModule m_module{TARVO_PRODUCT_MODULE};
    com::ComPtr<IDewarpingTransform> m_transform = m_module.createTransform();
};

TEST_F(HostProperties, arePut) {
    TransformProperties properties;
    properties.outputWidth = 320;
    properties.outputHeight = 240;
    properties.outputFrameRate = 12.5;
    properties.options = 8 + 1;
    properties.lensProfile = {{0.125, -0.25, 0.5}}; // a float holds each of them whole
    properties.tiltOrientation = 2;
    properties.viewType = 4;
    properties.effectLevel = 0.75;
    properties.panoramaFieldOfView = 120.0;
    properties.panoramaPanOffset = -45.0;
    properties.excludeRect = {0.125, 0.25, 0.5, 0.75};
    properties.isBypassed = true;
    putProperties(*m_transform, properties);
    EXPECT_EQ(got(&IDewarpingTransform::get_OutputWidth), 320);
    EXPECT_EQ(got(&IDewarpingTransform::get_OutputHeight), 240);
    EXPECT_EQ(got(&IDewarpingTransform::get_OutputFrameRate), 12.5);
    EXPECT_EQ(got(&IDewarpingTransform::get_Options), 9);
    EXPECT_EQ(got(&IDewarpingTransform::get_TiltOrientation), 2);
    EXPECT_EQ(got(&IDewarpingTransform::get_ViewType), 4);
    EXPECT_EQ(got(&IDewarpingTransform::get_EffectLevel), 0.75);
    EXPECT_EQ(got(&IDewarpingTransform::get_PanoramaFieldOfView), 120.0);
    EXPECT_EQ(got(&IDewarpingTransform::get_PanoramaPanOffset), -45.0);
    EXPECT_NE(got(&IDewarpingTransform::get_Bypass), VARIANT_FALSE);
    com::CSafeArray profile;
    ASSERT_EQ(m_transform->get_LensProfile(profile.put()), S_OK);
    const com::CSafeArrayAccess<double> coefficients(profile.get());
    EXPECT_THAT(coefficients.elements(), testing::ElementsAre(0.125, -0.25, 0.5));
    com::ComPtr<IRectangle> rectangle;
    ASSERT_EQ(m_transform->get_ExcludeRect(rectangle.put()), S_OK);
    double width = 0.0;
    EXPECT_EQ(rectangle->get_Width(&width), S_OK);
    EXPECT_EQ(width, 0.375);
}

TEST_F(HostProperties, thatAreNotGivenStay) {
    putProperties(*m_transform, {});
    EXPECT_EQ(got(&IDewarpingTransform::get_ViewType), 0);
    EXPECT_EQ(got(&IDewarpingTransform::get_EffectLevel), 1.0);
    EXPECT_EQ(got(&IDewarpingTransform::get_PanoramaFieldOfView), 180.0);
    EXPECT_EQ(got(&IDewarpingTransform::get_Bypass), VARIANT_FALSE);
}

TEST_F(HostProperties, nameTheOneThatIsRefused) {
    TransformProperties rate;
    rate.outputFrameRate = -1.0;
    expectFailure(rate, E_INVALIDARG, "setting OutputFrameRate failed");
    TransformProperties type;
    type.viewType = 6;
    expectFailure(type, E_INVALIDARG, "setting ViewType failed");
    CTransformStream(m_transform).setInput(makeVideoFormat(FramePixels::rgb32, 64, -48));
    TransformProperties width;
    width.outputWidth = 100;
    expectFailure(width, E_FAIL, "setting OutputWidth failed");
}

TEST_F(HostProperties, ofThePositionArePut) {
    CTransformStream(m_transform).setInput(makeVideoFormat(FramePixels::rgb32, 64, -48));
    TransformProperties properties;
    properties.pan = 10.0;
    properties.tilt = 5.0;
    properties.fieldOfView = 40.0;
    putPosition(*m_transform, properties);
    EXPECT_EQ(got(&IDewarpingTransform::get_Pan), 10.0);
    EXPECT_EQ(got(&IDewarpingTransform::get_Tilt), 5.0);
    EXPECT_EQ(got(&IDewarpingTransform::get_FieldOfView), 40.0);
}

} // namespace
} // namespace tarvo::host
