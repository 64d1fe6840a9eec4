#include "com/BStr.h"
#include "com/ComPtr.h"
#include "interfaces/TarvoVideoTransform.h"
#include "tests/interfaces/windows/TypeText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace tarvo::interfaces {
namespace {

using com::CBStr;
using com::ComPtr;

/// The library as hosts and the system find it: resource 1 of the program.
ComPtr<ITypeLib> loadOwnLibrary() {
    std::array<WCHAR, 1024> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    EXPECT_GT(length, 0U);
    ComPtr<ITypeLib> library;
    EXPECT_EQ(LoadTypeLibEx(path.data(), REGKIND_NONE, library.put()), S_OK);
    return library;
}

ComPtr<ITypeInfo> findType(const GUID& id) {
    ComPtr<ITypeInfo> type;
    EXPECT_EQ(loadOwnLibrary()->GetTypeInfoOfGuid(id, type.put()), S_OK);
    return type;
}

/// The face of a dual interface that has a method table; the library gives out the other one first.
ComPtr<ITypeInfo> tableOf(const GUID& id) {
    const ComPtr<ITypeInfo> dispatch = findType(id);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> table;
    EXPECT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    EXPECT_EQ(dispatch->GetRefTypeInfo(reference, table.put()), S_OK);
    return table;
}

std::vector<std::string> membersOf(const GUID& id) {
    const ComPtr<ITypeInfo> table = tableOf(id);
    const CTypeAttributes attributes(*table.get());
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_TRUE((attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0);
    std::vector<std::string> members;
    for (UINT index = 0; index < attributes->cFuncs; ++index) {
        const CFunctionDescription function(*table.get(), index);
        EXPECT_EQ(function->oVft, static_cast<SHORT>((7 + index) * sizeof(void*))) << index;
        EXPECT_NE(helpOf(*table.get(), function->memid), "") << index;
        members.push_back(describeFunction(*table.get(), index));
    }
    return members;
}

TEST(TypeLibrary, isTheComponents) {
    const ComPtr<ITypeLib> library = loadOwnLibrary();
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, LIBID_TarvoVideoTransformLib);
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    library->ReleaseTLibAttr(attributes);
    CBStr name;
    CBStr help;
    ASSERT_EQ(library->GetDocumentation(-1, name.put(), help.put(), nullptr, nullptr), S_OK);
    EXPECT_EQ(name.view(), OLESTR("TarvoVideoTransformLib"));
    EXPECT_EQ(help.view(), OLESTR("TarvoVideoTransform 1.0 Type Library"));
}

TEST(TypeLibrary, namesItsTypes) {
    const auto expectType = [](const GUID& id, TYPEKIND kind, const char* name, const char* help) {
        const ComPtr<ITypeInfo> type = findType(id);
        ASSERT_TRUE(type) << name;
        EXPECT_EQ(CTypeAttributes(*type.get())->typekind, kind) << name;
        EXPECT_EQ(nameOf(*type.get()), name);
        EXPECT_EQ(helpOf(*type.get(), MEMBERID_NIL), help);
    };
    expectType(CLSID_DewarpingTransform, TKIND_COCLASS, "DewarpingTransform", "Dewarping Transform Class");
    expectType(CLSID_AcceleratorFilter, TKIND_COCLASS, "AcceleratorFilter", "Accelerator Filter Class");
    expectType(IID_IDewarpingTransform, TKIND_DISPATCH, "IDewarpingTransform",
               "IDewarpingTransform Interface");
    expectType(IID_IAccelerator, TKIND_DISPATCH, "IAccelerator", "IAccelerator Interface");
    expectType(IID_IRectangle, TKIND_DISPATCH, "IRectangle", "IRectangle Interface");
    expectType(IID_IDigitalZoomControl, TKIND_DISPATCH, "IDigitalZoomControl",
               "IDigitalZoomControl Interface");
    expectType(IID_IVirtualPtzFromPanoramaControl, TKIND_DISPATCH, "IVirtualPtzFromPanoramaControl",
               "IVirtualPtzFromPanoramaControl Interface");
    expectType(IID_IImageBuffer, TKIND_DISPATCH, "IImageBuffer", "IImageBuffer Interface");
    expectType(DIID_IDewarpingTransformEvents, TKIND_DISPATCH, "IDewarpingTransformEvents",
               "IDewarpingTransformEvents Interface");
    expectType(DIID_IImageSourceEvents, TKIND_DISPATCH, "IImageSourceEvents", "IImageSourceEvents Interface");
    // Two classes, six interfaces, two of events, seven enumerations.
    EXPECT_EQ(loadOwnLibrary()->GetTypeInfoCount(), 17U);
}

TEST(TypeLibrary, describesTheDewarpingTransform) {
    EXPECT_THAT(
        membersOf(IID_IDewarpingTransform),
        testing::ElementsAre(
            "1 get LensProfile(out retval SAFEARRAY(R8)* theLensProfile)",
            "1 put LensProfile(in SAFEARRAY(R8) theLensProfile)",
            "2 get TiltOrientation(out retval I4* theOrientation)",
            "2 put TiltOrientation(in I4 theOrientation)", "3 get OutputWidth(out retval I4* theWidth)",
            "3 put OutputWidth(in I4 theWidth)", "4 get OutputHeight(out retval I4* theHeight)",
            "4 put OutputHeight(in I4 theHeight)", "5 get OutputFrameRate(out retval R8* theFrameRate)",
            "5 put OutputFrameRate(in R8 theFrameRate)", "6 get Pan(out retval R8* thePan)",
            "6 put Pan(in R8 thePan)", "7 get Tilt(out retval R8* theTilt)", "7 put Tilt(in R8 theTilt)",
            "8 get FieldOfView(out retval R8* theFieldOfView)", "8 put FieldOfView(in R8 theFieldOfView)",
            "9 get Bypass(out retval BOOL* isBypassed)", "9 put Bypass(in BOOL isBypassed)",
            "10 get EffectLevel(out retval R8* theEffectLevel)", "10 put EffectLevel(in R8 theEffectLevel)",
            "11 get Options(out retval I4* theOptions)", "11 put Options(in I4 theOptions)",
            "12 get ViewType(out retval I4* theViewType)", "12 put ViewType(in I4 theViewType)",
            "100 SetPTZPosition(in R8 thePan, in R8 theTilt, in R8 theFieldOfView, in BOOL isRelative)",
            "101 CheckDewarpingCapability(out retval BOOL* isCapable)",
            "102 MapPoint(in R8 theX, in R8 theY, out R8* thePan, out R8* theTilt, in I4 theFlags)",
            "103 GetCurrentImage(out VARIANT* theImageData, out I8* theTimestamp, in I4 theFlags)",
            "104 get SelectedView(out retval I4* theView)", "104 put SelectedView(in I4 theView)",
            "105 InjectAcceleratorFilter(out IAccelerator** theAccelerator)",
            "106 MapPointToOverview(in R8 theX, in R8 theY, out R8* theOverviewX, out R8* theOverviewY, "
            "in I4 reserved)",
            "107 get PanoramaFieldOfView(out retval R8* theFieldOfView)",
            "107 put PanoramaFieldOfView(in R8 theFieldOfView)",
            "108 get PanoramaPanOffset(out retval R8* thePanOffset)",
            "108 put PanoramaPanOffset(in R8 thePanOffset)",
            "109 SetCustomTransformData(in SAFEARRAY(UI1) theData, in I4 reserved)",
            "110 get CustomTransformViewRect(out retval IRectangle** theViewRect)",
            "111 get ExcludeRect(out retval IRectangle** theExcludeRect)",
            "112 get CustomTransformControlType(out retval I4* theControlType)",
            "112 put CustomTransformControlType(in I4 theControlType)",
            "113 get CustomTransformControl(out retval UNKNOWN* theControl)",
            "114 get HardwareAccelerationActive(out retval BOOL* isActive)"));
    EXPECT_EQ(
        helpOf(*findType(IID_IDewarpingTransform).get(), 105),
        "Adds the accelerator filter before the video transform filter when used in a DirectShow graph");
}

TEST(TypeLibrary, describesTheRectangle) {
    EXPECT_THAT(
        membersOf(IID_IRectangle),
        testing::ElementsAre("1 get Left(out retval R8* theLeft)", "1 put Left(in R8 theLeft)",
                             "2 get Top(out retval R8* theTop)", "2 put Top(in R8 theTop)",
                             "3 get Right(out retval R8* theRight)", "3 put Right(in R8 theRight)",
                             "4 get Bottom(out retval R8* theBottom)", "4 put Bottom(in R8 theBottom)",
                             "5 get Width(out retval R8* theWidth)", "6 get Height(out retval R8* theHeight)",
                             "7 InflateRect(in R8 theX, in R8 theY)", "8 DeflateRect(in R8 theX, in R8 theY)",
                             "9 OffsetRect(in R8 theX, in R8 theY)",
                             "10 Init(in R8 theLeft, in R8 theTop, in R8 theRight, in R8 theBottom)"));
}

TEST(TypeLibrary, describesTheControls) {
    EXPECT_THAT(membersOf(IID_IDigitalZoomControl),
                testing::ElementsAre("1 get ViewRect(out retval IRectangle** theViewRect)"));
    EXPECT_THAT(membersOf(IID_IVirtualPtzFromPanoramaControl),
                testing::ElementsAre(
                    "1 get PanoramaHorizontalFieldOfView(out retval R8* theFieldOfView)",
                    "1 put PanoramaHorizontalFieldOfView(in R8 theFieldOfView)",
                    "2 get PanoramaVerticalFieldOfView(out retval R8* theFieldOfView)",
                    "2 put PanoramaVerticalFieldOfView(in R8 theFieldOfView)",
                    "3 get CameraPitch(out retval R8* thePitch)", "3 put CameraPitch(in R8 thePitch)",
                    "4 get CameraRoll(out retval R8* theRoll)", "4 put CameraRoll(in R8 theRoll)",
                    "5 get EffectLevel(out retval R8* theEffectLevel)",
                    "5 put EffectLevel(in R8 theEffectLevel)", "6 get Pan(out retval R8* thePan)",
                    "6 put Pan(in R8 thePan)", "7 get Tilt(out retval R8* theTilt)",
                    "7 put Tilt(in R8 theTilt)", "8 get FieldOfView(out retval R8* theFieldOfView)",
                    "8 put FieldOfView(in R8 theFieldOfView)",
                    "9 MapPoint(in R8 theX, in R8 theY, out R8* thePan, out R8* theTilt, in I4 theFlags)",
                    "10 get UseStrictBorderMode(out retval BOOL* isStrict)",
                    "10 put UseStrictBorderMode(in BOOL isStrict)"));
}

TEST(TypeLibrary, describesTheImageBuffer) {
    // An address is a whole number of 64 bits on this system.
    EXPECT_THAT(membersOf(IID_IImageBuffer),
                testing::ElementsAre(
                    "1 get DataPointer(out retval I8* theDataPointer)", "2 get Size(out retval I4* theSize)",
                    "3 get Width(out retval I4* theWidth)", "4 get Height(out retval I4* theHeight)",
                    "5 get Format(out retval I4* theFormat)", "6 get Timestamp(out retval I8* theTimestamp)",
                    "7 get Duration(out retval I8* theDuration)",
                    "8 LockBuffer(in I4 theTimeoutMs, out retval BOOL* isLocked)", "9 UnlockBuffer()"));
}

TEST(TypeLibrary, describesTheAccelerator) {
    EXPECT_THAT(membersOf(IID_IAccelerator),
                testing::ElementsAre("1 get Settings(out retval I4* theSettings)",
                                     "1 put Settings(in I4 theSettings)"));
}

TEST(TypeLibrary, describesTheEvents) {
    const auto onlyMember = [](const GUID& id) {
        const ComPtr<ITypeInfo> type = findType(id);
        EXPECT_EQ(CTypeAttributes(*type.get())->cFuncs, 1);
        EXPECT_NE(helpOf(*type.get(), 1), "");
        return describeFunction(*type.get(), 0);
    };
    EXPECT_EQ(onlyMember(DIID_IDewarpingTransformEvents),
              "1 OnPrepareImage(in I8 theTimestamp, in I4 reserved)");
    EXPECT_EQ(onlyMember(DIID_IImageSourceEvents), "1 OnNewImage(in IImageBuffer* theImageBuffer)");
}

/// What a class offers and calls: "default IThing", "default source IEvents".
std::vector<std::string> facesOf(const GUID& id) {
    const ComPtr<ITypeInfo> coclass = findType(id);
    const CTypeAttributes attributes(*coclass.get());
    std::vector<std::string> faces;
    for (UINT index = 0; index < attributes->cImplTypes; ++index) {
        INT flags = 0;
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> face;
        EXPECT_EQ(coclass->GetImplTypeFlags(index, &flags), S_OK);
        EXPECT_EQ(coclass->GetRefTypeOfImplType(index, &reference), S_OK);
        EXPECT_EQ(coclass->GetRefTypeInfo(reference, face.put()), S_OK);
        faces.push_back(std::string((flags & IMPLTYPEFLAG_FDEFAULT) != 0 ? "default " : "") +
                        ((flags & IMPLTYPEFLAG_FSOURCE) != 0 ? "source " : "") + nameOf(*face.get()));
    }
    return faces;
}

TEST(TypeLibrary, saysWhatTheClassesOffer) {
    EXPECT_THAT(facesOf(CLSID_DewarpingTransform),
                testing::ElementsAre("default IDewarpingTransform",
                                     "default source IDewarpingTransformEvents",
                                     "source IImageSourceEvents"));
    EXPECT_THAT(facesOf(CLSID_AcceleratorFilter), testing::ElementsAre("default IAccelerator"));
}

TEST(TypeLibrary, listsTheEnumerations) {
    const ComPtr<ITypeLib> library = loadOwnLibrary();
    std::vector<std::string> enumerations;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind{};
        ASSERT_EQ(library->GetTypeInfoType(index, &kind), S_OK);
        if (kind != TKIND_ENUM)
            continue;
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(library->GetTypeInfo(index, type.put()), S_OK);
        EXPECT_NE(helpOf(*type.get(), MEMBERID_NIL), "");
        enumerations.push_back(describeEnumeration(*type.get()));
    }
    EXPECT_THAT(
        enumerations,
        testing::ElementsAre(
            "TiltOrientation: undef 0, wall 1, ceiling 2, desk 3",
            "ViewType: single 0, quad 1, panoramaSingle 2, panoramaDouble 3, singleOverview 4, custom 5",
            "View: all 0, northWest 1, northEast 2, southWest 3, southEast 4",
            "OptionFlag: overviewMapPlacementLeft 1, outputFormat_16_9 2, forceRgbOutput 4, "
            "noOutputFpsDecimation 8",
            "PointMapFlag: ignoreOverviewMap 1",
            "CustomTransformControlType: digitalZoom 0, virtualPtzFromPanorama 1",
            "AcceleratorSettingFlag: insertFillFrames 1"));
}

} // namespace
} // namespace tarvo::interfaces
