#include "transform/ViewProperties.h"

#include "com/SafeArray.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

class ViewProperties : public CTransformTest {
protected:
    ViewProperties() { host.takeLines(); }

    com::CSafeArray doubles(const std::vector<double>& values) {
        com::CSafeArray array = com::CSafeArray::vector(VT_R8, static_cast<std::uint32_t>(values.size()));
        std::ranges::copy(values, com::CSafeArrayAccess<double>(array.get()).elements().begin());
        return array;
    }
    std::vector<double> lensProfile() {
        com::CSafeArray array;
        EXPECT_EQ(transform.get_LensProfile(array.put()), S_OK);
        const com::CSafeArrayAccess<double> access(array.get());
        return {access.elements().begin(), access.elements().end()};
    }
    // Getters are of the platform's calling convention, which no plain member pointer names.
    template<class Getter>
    double get(Getter getter) {
        double value = -12345.0;
        EXPECT_EQ((transform.*getter)(&value), S_OK);
        return value;
    }
    template<class Getter>
    LONG getLong(Getter getter) {
        LONG value = -12345;
        EXPECT_EQ((transform.*getter)(&value), S_OK);
        return value;
    }
    double pan() { return get(&IDewarpingTransform::get_Pan); }
    double tilt() { return get(&IDewarpingTransform::get_Tilt); }
    double fieldOfView() { return get(&IDewarpingTransform::get_FieldOfView); }

    CTransformHost host;
    IDewarpingTransform& transform = *host.transform.get();
};

TEST_F(ViewProperties, beginWithTheirDefaults) {
    EXPECT_THAT(lensProfile(), ElementsAre(-0.022618673741817474, 0.014994083903729916, 0.3681749999523163));
    EXPECT_EQ(getLong(&IDewarpingTransform::get_TiltOrientation), 0);
    EXPECT_EQ(getLong(&IDewarpingTransform::get_ViewType), 0);
    EXPECT_EQ(getLong(&IDewarpingTransform::get_SelectedView), 0);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 1.0);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaFieldOfView), 180.0);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaPanOffset), -90.0);
    EXPECT_EQ(pan(), 0.0);
    VARIANT_BOOL isBypassed = 7;
    EXPECT_EQ(transform.get_Bypass(&isBypassed), S_OK);
    EXPECT_EQ(isBypassed, VARIANT_FALSE);
    EXPECT_THAT(host.takeLines(), IsEmpty());
}

TEST_F(ViewProperties, lensProfileIsThreeNumbers) {
    const com::CSafeArray three = doubles({0.25, -0.5, 0.75});
    EXPECT_EQ(transform.put_LensProfile(three.get()), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - LensProfile - Set: [0.250000 -0.500000 0.750000]");
    EXPECT_THAT(lensProfile(), ElementsAre(0.25, -0.5, 0.75));
    EXPECT_EQ(transform.put_LensProfile(three.get()), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - LensProfile - Set: [0.250000 -0.500000 0.750000]")
        << "also without a change";

    EXPECT_EQ(transform.put_LensProfile(doubles({1.0, 2.0}).get()), E_INVALIDARG);
    EXPECT_EQ(transform.put_LensProfile(doubles({1.0, 2.0, 3.0, 4.0}).get()), E_INVALIDARG);
    EXPECT_EQ(transform.put_LensProfile(doubles({}).get()), E_INVALIDARG);
    EXPECT_EQ(transform.put_LensProfile(nullptr), E_INVALIDARG);
    EXPECT_EQ(transform.put_LensProfile(com::CSafeArray::vector(VT_R4, 3).get()), E_INVALIDARG);
    EXPECT_EQ(transform.put_LensProfile(com::CSafeArray::vector(VT_I8, 3).get()), E_INVALIDARG);
    SAFEARRAYBOUND bounds[2]{{3, 0}, {1, 0}};
    com::CSafeArray plane;
    plane.attach(SafeArrayCreate(VT_R8, 2, bounds));
    EXPECT_EQ(transform.put_LensProfile(plane.get()), E_INVALIDARG);
    EXPECT_THAT(host.takeLines(), IsEmpty());
    EXPECT_THAT(lensProfile(), ElementsAre(0.25, -0.5, 0.75));
    EXPECT_EQ(transform.get_LensProfile(nullptr), E_POINTER);
    com::CSafeArray elsewhere = com::CSafeArray::vector(VT_R8, 3, -7);
    EXPECT_EQ(transform.put_LensProfile(elsewhere.get()), S_OK) << "bounds from -7 to -5";
}

TEST_F(ViewProperties, tiltOrientationTakesAnyNumber) {
    const std::array<std::pair<LONG, const char*>, 6> values{
        {{1, "wall"}, {2, "ceiling"}, {3, "desk"}, {0, "undef"}, {7, "undef"}, {-1, "undef"}}};
    for (const auto& [value, name] : values) {
        EXPECT_EQ(transform.put_TiltOrientation(value), S_OK);
        EXPECT_EQ(host.takeLine(), std::string("_:[1] - TiltOrientation - Set: <") + name + ">");
        EXPECT_EQ(getLong(&IDewarpingTransform::get_TiltOrientation), value);
    }
    EXPECT_EQ(transform.get_TiltOrientation(nullptr), E_POINTER);
}

TEST_F(ViewProperties, anUnknownMountingDrawsAsNone) {
    const auto picture = patternRgb(64, 48);
    host.negotiateRgb(64, 48, 32, 24);
    const auto expected = host.through(picture).bytes;
    ASSERT_EQ(transform.put_TiltOrientation(2), S_OK);
    EXPECT_NE(host.through(picture).bytes, expected);
    ASSERT_EQ(transform.put_TiltOrientation(7), S_OK);
    EXPECT_EQ(host.through(picture).bytes, expected);
}

TEST_F(ViewProperties, viewTypesHaveNames) {
    const std::array<const char*, 6> names{"single",         "quad",           "panoramaSingle",
                                           "panoramaDouble", "singelOverview", "custom"};
    for (LONG i = 0; i < 6; ++i) {
        EXPECT_EQ(transform.put_ViewType(i), S_OK);
        EXPECT_EQ(host.takeLine(),
                  std::string("_:[1] - ViewType - Set: <") + names[static_cast<std::size_t>(i)] + ">");
        EXPECT_EQ(getLong(&IDewarpingTransform::get_ViewType), i);
    }
    for (const LONG value : {-1, 6, 1000}) {
        EXPECT_EQ(transform.put_ViewType(value), E_INVALIDARG);
        EXPECT_EQ(host.takeLine(), "E:[1] - ViewType - Unknown view type: " + std::to_string(value));
    }
    EXPECT_EQ(getLong(&IDewarpingTransform::get_ViewType), 5);
    EXPECT_EQ(transform.get_ViewType(nullptr), E_POINTER);
}

TEST_F(ViewProperties, viewTypeKeepsThePositionAmongSingleViews) {
    ASSERT_EQ(transform.put_Pan(20.0), S_OK);
    ASSERT_EQ(transform.put_ViewType(4), S_OK);
    EXPECT_EQ(pan(), 20.0);
    ASSERT_EQ(transform.put_ViewType(1), S_OK);
    EXPECT_EQ(pan(), 0.0);
    ASSERT_EQ(transform.put_Pan(30.0), S_OK);
    ASSERT_EQ(transform.put_ViewType(1), S_OK);
    EXPECT_EQ(pan(), 30.0) << "the same type is no change";
    ASSERT_EQ(transform.put_ViewType(3), S_OK);
    EXPECT_EQ(pan(), 0.0);
}

TEST_F(ViewProperties, selectedViewsHaveNames) {
    const std::array<const char*, 5> names{"all", "northWest", "northEast", "southWest", "southEast"};
    for (LONG i = 0; i < 5; ++i) {
        EXPECT_EQ(transform.put_SelectedView(i), S_OK);
        EXPECT_EQ(host.takeLine(),
                  std::string("_:[1] - SelectedView - Set: <") + names[static_cast<std::size_t>(i)] + ">");
        EXPECT_EQ(getLong(&IDewarpingTransform::get_SelectedView), i);
    }
    for (const LONG value : {-1, 5}) {
        EXPECT_EQ(transform.put_SelectedView(value), E_INVALIDARG);
        EXPECT_EQ(host.takeLine(), "E:[1] - SelectedView - Unknown view: " + std::to_string(value));
    }
    EXPECT_EQ(getLong(&IDewarpingTransform::get_SelectedView), 4);
}

TEST_F(ViewProperties, positionAddressesTheSelectedView) {
    ASSERT_EQ(transform.put_ViewType(1), S_OK); // the ceiling's limits: all round
    ASSERT_EQ(transform.put_Pan(30.0), S_OK);
    ASSERT_EQ(transform.put_SelectedView(2), S_OK);
    EXPECT_EQ(pan(), 75.0) << "30 and the second view's 45";
    ASSERT_EQ(transform.put_Pan(100.0), S_OK);
    EXPECT_EQ(pan(), 100.0);
    ASSERT_EQ(transform.put_SelectedView(0), S_OK);
    EXPECT_EQ(pan(), 30.0);
    ASSERT_EQ(transform.put_Pan(10.0), S_OK);
    ASSERT_EQ(transform.put_SelectedView(2), S_OK);
    EXPECT_EQ(pan(), 80.0) << "the offset of 70 stays";
    ASSERT_EQ(transform.put_SelectedView(1), S_OK);
    EXPECT_EQ(pan(), -35.0) << "the first view's is still -45";
    EXPECT_THAT(host.takeLines().size(), 5U) << "a position is not logged";
}

TEST_F(ViewProperties, setsAPositionAtOnce) {
    EXPECT_EQ(transform.SetPTZPosition(10.0, -5.0, 20.0, VARIANT_FALSE), S_OK);
    EXPECT_EQ(pan(), 10.0);
    EXPECT_EQ(tilt(), -5.0);
    EXPECT_EQ(fieldOfView(), 20.0);
    EXPECT_EQ(transform.SetPTZPosition(1.0, 2.0, 3.0, VARIANT_TRUE), S_OK);
    EXPECT_EQ(pan(), 11.0);
    EXPECT_EQ(tilt(), -3.0);
    EXPECT_EQ(fieldOfView(), 23.0);
    EXPECT_EQ(transform.SetPTZPosition(notANumber, 4.0, notANumber, VARIANT_TRUE), S_OK);
    EXPECT_EQ(pan(), 11.0);
    EXPECT_EQ(tilt(), 1.0);
    EXPECT_EQ(fieldOfView(), 23.0);
    EXPECT_THAT(host.takeLines(), IsEmpty());
}

TEST_F(ViewProperties, aMoveIsTheSelectedViewsAlone) {
    ASSERT_EQ(transform.put_ViewType(1), S_OK);
    ASSERT_EQ(transform.put_Pan(30.0), S_OK);
    ASSERT_EQ(transform.put_SelectedView(2), S_OK);
    const double mainTilt = tilt();
    // From 30 + 45, and the second view's offset is the rest.
    EXPECT_EQ(transform.SetPTZPosition(10.0, -5.0, 0.0, VARIANT_TRUE), S_OK);
    EXPECT_EQ(pan(), 85.0);
    EXPECT_EQ(tilt(), mainTilt - 5.0);
    ASSERT_EQ(transform.put_SelectedView(0), S_OK);
    EXPECT_EQ(pan(), 30.0);
    EXPECT_EQ(tilt(), mainTilt);
    ASSERT_EQ(transform.put_SelectedView(3), S_OK);
    EXPECT_EQ(pan(), 165.0) << "30 and the third view's 135";
}

TEST_F(ViewProperties, anotherMountingPutsTheSubViewsBack) {
    ASSERT_EQ(transform.put_ViewType(1), S_OK); // no mounting is the ceiling's in this view
    ASSERT_EQ(transform.put_SelectedView(1), S_OK);
    ASSERT_EQ(transform.put_Pan(10.0), S_OK);
    ASSERT_EQ(transform.put_TiltOrientation(2), S_OK);
    EXPECT_EQ(pan(), 10.0) << "the same in force";
    ASSERT_EQ(transform.put_TiltOrientation(3), S_OK);
    const double subView = pan();
    ASSERT_EQ(transform.put_SelectedView(0), S_OK);
    EXPECT_EQ(subView - pan(), -45.0);
}

TEST_F(ViewProperties, effectLevelIsLimited) {
    EXPECT_EQ(transform.put_EffectLevel(1.7), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 1.0);
    EXPECT_EQ(transform.put_EffectLevel(0.5), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 0.5);
    EXPECT_EQ(transform.put_EffectLevel(notANumber), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 0.5);
    EXPECT_EQ(transform.put_EffectLevel(-3.0), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 0.0);
}

TEST_F(ViewProperties, theCustomViewHasAnEffectLevelOfItsOwn) {
    ASSERT_EQ(transform.put_EffectLevel(0.25), S_OK);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 1.0);
    ASSERT_EQ(transform.put_EffectLevel(0.75), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 0.75);
    ASSERT_EQ(transform.put_ViewType(0), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_EffectLevel), 0.25);
}

TEST_F(ViewProperties, panoramaAnglesAreStored) {
    EXPECT_EQ(transform.put_PanoramaFieldOfView(0.2), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaFieldOfView), 1.0);
    EXPECT_EQ(transform.put_PanoramaFieldOfView(-40.0), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaFieldOfView), 1.0);
    EXPECT_EQ(transform.put_PanoramaFieldOfView(270.0), S_OK);
    EXPECT_EQ(transform.put_PanoramaPanOffset(-135.5), S_OK);
    EXPECT_EQ(transform.put_PanoramaFieldOfView(notANumber), S_OK);
    EXPECT_EQ(transform.put_PanoramaPanOffset(infinite), S_OK);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaFieldOfView), 270.0);
    EXPECT_EQ(get(&IDewarpingTransform::get_PanoramaPanOffset), -135.5);
    EXPECT_THAT(host.takeLines(), IsEmpty());
}

TEST_F(ViewProperties, bypassIsABool) {
    VARIANT_BOOL isBypassed = 7;
    EXPECT_EQ(transform.put_Bypass(1), S_OK);
    EXPECT_EQ(transform.get_Bypass(&isBypassed), S_OK);
    EXPECT_EQ(isBypassed, VARIANT_TRUE);
    EXPECT_EQ(transform.put_Bypass(VARIANT_FALSE), S_OK);
    EXPECT_EQ(transform.get_Bypass(&isBypassed), S_OK);
    EXPECT_EQ(isBypassed, VARIANT_FALSE);
    EXPECT_THAT(host.takeLines(), IsEmpty());
}

TEST_F(ViewProperties, aProgramThatFailsIsTheSettersResult) {
    CTransformHost other(CTransformHost::Device::recording);
    other.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(other.through(patternRgb(64, 48)).result, S_OK);
    other.takeLines();
    other.recording->fail(tests::Verb::prepare, static_cast<HRESULT>(0x887A0005U));
    EXPECT_EQ(other.transform->put_ViewType(2), static_cast<HRESULT>(0x887A0005U));
    std::vector<std::string> lines = other.takeLines();
    EXPECT_EQ(lines.front(), "_:[1] - ViewType - Set: <panoramaSingle>");
    EXPECT_EQ(lines.back(), "E:[1] - ViewType - HR=0x887A0005 D3DERR=5");
    LONG viewType = -1;
    EXPECT_EQ(other.transform->get_ViewType(&viewType), S_OK);
    EXPECT_EQ(viewType, 2) << "what passed validation stays";
    EXPECT_EQ(other.transform->put_TiltOrientation(3), static_cast<HRESULT>(0x887A0005U));
    EXPECT_EQ(other.takeLines().back(), "E:[1] - TiltOrientation - HR=0x887A0005 D3DERR=5");
    EXPECT_EQ(other.transform->put_LensProfile(doubles({0.0, 0.0, 0.4}).get()),
              static_cast<HRESULT>(0x887A0005U));
    EXPECT_EQ(other.takeLines().back(), "E:[1] - LensProfile - HR=0x887A0005 D3DERR=5");
    const int tries = other.recording->count(tests::Verb::prepare);
    EXPECT_EQ(other.through(patternRgb(64, 48), 1).result, S_OK) << "a frame without its view";
    EXPECT_EQ(other.recording->count(tests::Verb::prepare), tries) << "not tried with every frame";
    other.recording->answer = nullptr;
    EXPECT_EQ(other.transform->put_LensProfile(doubles({0.0, 0.0, 0.5}).get()), S_OK);
}

TEST_F(ViewProperties, geometryThatFailsIsTheSettersResultOrALine) {
    CTransformHost other(CTransformHost::Device::recording);
    other.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(other.through(patternRgb(64, 48)).result, S_OK);
    other.takeLines();
    other.recording->fail(tests::Verb::geometry, E_OUTOFMEMORY);
    EXPECT_EQ(other.transform->put_PanoramaFieldOfView(90.0), E_OUTOFMEMORY);
    EXPECT_EQ(other.takeLine(), "E:[1] - PanoramaFieldOfView - HR=0x8007000E D3DERR=14");
    EXPECT_EQ(other.transform->put_PanoramaPanOffset(10.0), E_OUTOFMEMORY);
    EXPECT_EQ(other.takeLine(), "E:[1] - PanoramaPanOffset - HR=0x8007000E D3DERR=14");
    EXPECT_EQ(other.transform->put_Options(1), E_OUTOFMEMORY);
    EXPECT_EQ(other.takeLine(), "E:[1] - Options - HR=0x8007000E D3DERR=14");
    EXPECT_EQ(other.transform->put_TiltOrientation(2), S_OK);
    EXPECT_THAT(other.takeLines(),
                ElementsAre("_:[1] - TiltOrientation - Set: <ceiling>", "E:[1] - Failed to update geometry"));
    other.recording->answer = nullptr;
    const int before = other.recording->count(tests::Verb::geometry);
    EXPECT_EQ(other.through(patternRgb(64, 48), 1).result, S_OK);
    EXPECT_EQ(other.recording->count(tests::Verb::geometry), before + 1) << "made good with the next frame";
    EXPECT_EQ(other.through(patternRgb(64, 48), 2).result, S_OK);
    EXPECT_EQ(other.recording->count(tests::Verb::geometry), before + 1);
}

TEST_F(ViewProperties, drawingDoesNotCountAsTheHostsPosition) {
    // Defaults follow the output's aspect until the host sets a position of its own.
    const auto fieldOfViewFor = [](CTransformHost& some, LONG width, LONG height) {
        some.media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR);
        some.negotiateRgb(64, 48, width, height);
        EXPECT_EQ(some.through(patternRgb(64, 48)).result, S_OK);
        double degrees = 0.0;
        EXPECT_EQ(some.transform->get_FieldOfView(&degrees), S_OK);
        return degrees;
    };
    for (const LONG viewType : {0, 1, 4}) {
        CTransformHost fresh;
        CTransformHost used;
        ASSERT_EQ(fresh.transform->put_ViewType(viewType), S_OK);
        ASSERT_EQ(used.transform->put_ViewType(viewType), S_OK);
        used.transform->put_TiltOrientation(2);
        fresh.transform->put_TiltOrientation(2);
        const double before = fieldOfViewFor(used, 32, 24);
        const double expected = fieldOfViewFor(fresh, 32, 8);
        EXPECT_NE(before, expected) << viewType;
        EXPECT_EQ(fieldOfViewFor(used, 32, 8), expected) << viewType;
    }
}

TEST_F(ViewProperties, mapsPointsOfSingleViews) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(transform.put_TiltOrientation(2), S_OK);
    ASSERT_EQ(transform.SetPTZPosition(35.0, -40.0, 20.0, VARIANT_FALSE), S_OK);
    double one = 0.0;
    double other = 0.0;
    EXPECT_EQ(transform.MapPoint(0.5, 0.5, &one, &other, 0), S_OK);
    EXPECT_NEAR(one, 35.0, 1e-5);
    EXPECT_NEAR(other, -40.0, 1e-5);

    ASSERT_EQ(transform.put_ViewType(4), S_OK);
    // The disc's centre: half the picture's height from the right and from the bottom edge, of a 4:3 picture.
    const double x = 1.0 - 0.25 / (4.0 / 3.0);
    EXPECT_EQ(transform.MapPoint(x, 0.75, &one, &other, 0), S_OK);
    EXPECT_NEAR(other, -90.0, 1e-3);
    double past = 0.0;
    EXPECT_EQ(transform.MapPoint(x, 0.75, &one, &past, 1), S_OK);
    EXPECT_GT(past, -80.0) << "the view behind the disc";
    ASSERT_EQ(transform.put_Options(1), S_OK);
    EXPECT_EQ(transform.MapPoint(1.0 - x, 0.75, &one, &other, 0), S_OK);
    EXPECT_NEAR(other, -90.0, 1e-3) << "on the other side";

    EXPECT_EQ(transform.MapPointToOverview(0.5, 0.5, &one, &other, 0), S_OK);
    EXPECT_GT(std::hypot(one - 0.5, other - 0.5), 0.05) << "50 degrees off the lens's axis";
    EXPECT_LT(std::hypot(one - 0.5, other - 0.5), 0.5);
}

TEST_F(ViewProperties, mapsThePointOfThePicturesEdgeToTheHorizon) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(transform.put_TiltOrientation(2), S_OK);
    ASSERT_EQ(transform.put_EffectLevel(0.0), S_OK);
    double pan = 0.0;
    double tilt = -1.0;
    EXPECT_EQ(transform.MapPoint(50.0, 0.5, &pan, &tilt, 0), S_OK);
    EXPECT_NEAR(tilt, 0.0, 1e-4) << "90 degrees off the axis, never beyond";
}

TEST_F(ViewProperties, refusesToMapPointsOfOtherViews) {
    for (const LONG viewType : {1, 2, 3, 5}) {
        ASSERT_EQ(transform.put_ViewType(viewType), S_OK);
        host.takeLines();
        double one = 1.5;
        double other = 2.5;
        EXPECT_EQ(transform.MapPoint(0.5, 0.5, &one, &other, 0), E_NOTIMPL);
        EXPECT_EQ(host.takeLine(), "E:[1] - MapPoint - Point mapping only supported in single dewarp view.");
        EXPECT_EQ(transform.MapPointToOverview(0.5, 0.5, &one, &other, 0), E_NOTIMPL);
        EXPECT_EQ(host.takeLine(),
                  "E:[1] - MapPointToOverview - Point mapping only supported in single dewarp view.");
        EXPECT_EQ(one, 1.5);
        EXPECT_EQ(other, 2.5);
    }
    ASSERT_EQ(transform.put_ViewType(0), S_OK);
    double value = 1.5;
    EXPECT_EQ(transform.MapPoint(0.5, 0.5, nullptr, &value, 0), E_POINTER);
    EXPECT_EQ(transform.MapPoint(0.5, 0.5, &value, nullptr, 0), E_POINTER);
    EXPECT_EQ(transform.MapPointToOverview(0.5, 0.5, nullptr, &value, 0), E_POINTER);
    EXPECT_EQ(transform.MapPointToOverview(0.5, 0.5, &value, nullptr, 0), E_POINTER);
    EXPECT_EQ(value, 1.5);
}

TEST_F(ViewProperties, takeNullPointersAndStrangeNumbers) {
    EXPECT_EQ(transform.get_ViewType(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_SelectedView(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_Pan(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_Tilt(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_FieldOfView(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_Bypass(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_EffectLevel(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_PanoramaFieldOfView(nullptr), E_POINTER);
    EXPECT_EQ(transform.get_PanoramaPanOffset(nullptr), E_POINTER);

    host.negotiateRgb(64, 48, 32, 24);
    const auto picture = patternRgb(64, 48);
    for (const double value : {notANumber, infinite, -infinite, 1e300, -1e300, 0.0}) {
        EXPECT_EQ(transform.put_LensProfile(doubles({value, value, value}).get()), S_OK);
        EXPECT_EQ(transform.put_Pan(value), S_OK);
        EXPECT_EQ(transform.put_Tilt(value), S_OK);
        EXPECT_EQ(transform.put_FieldOfView(value), S_OK);
        EXPECT_EQ(transform.SetPTZPosition(value, value, value, VARIANT_TRUE), S_OK);
        EXPECT_EQ(transform.put_EffectLevel(value), S_OK);
        EXPECT_EQ(transform.put_PanoramaFieldOfView(value), S_OK);
        EXPECT_EQ(transform.put_PanoramaPanOffset(value), S_OK);
        double one = 0.0;
        double other = 0.0;
        for (LONG viewType = 0; viewType < 6; ++viewType) {
            EXPECT_EQ(transform.put_ViewType(viewType), S_OK);
            EXPECT_EQ(host.through(picture).result, S_OK);
            transform.MapPoint(value, value, &one, &other, -1);
            transform.MapPointToOverview(value, value, &one, &other, -1);
        }
        EXPECT_LE(std::abs(pan()), 180.0);
        EXPECT_LE(std::abs(tilt()), 90.0);
        EXPECT_GE(fieldOfView(), 2.0);
        EXPECT_LE(fieldOfView(), 60.0);
    }
}

} // namespace
} // namespace tarvo::transform
