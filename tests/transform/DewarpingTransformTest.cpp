#include "transform/DewarpingTransform.h"

#include "tests/com/FailingNew.h"
#include "tests/com/TestObjects.h"
#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::transform {
namespace {

using com::answerFor;
using com::references;
using testing::ElementsAre;

class DewarpingTransform : public CTransformTest {};

TEST_F(DewarpingTransform, answersForItsInterfacesAndNoOthers) {
    CTransformHost host;
    IUnknown* unknown = host.object->controllingUnknown();
    EXPECT_NE(answerFor<IDewarpingTransform>(unknown), nullptr);
    EXPECT_NE(answerFor<IDispatch>(unknown), nullptr);
    EXPECT_NE(answerFor<IMediaObject>(unknown), nullptr);
    EXPECT_NE(answerFor<IDMOQualityControl>(unknown), nullptr);
    EXPECT_NE(answerFor<IConnectionPointContainer>(unknown), nullptr);
    EXPECT_EQ(answerFor<IUnknown>(host.media.get()), unknown);
    EXPECT_EQ(answerFor<IUnknown>(host.transform.get()), unknown);
    EXPECT_EQ(answerFor<IMediaObject>(host.transform.get()), host.media.get());
    EXPECT_EQ(answerFor<IDispatch>(unknown), static_cast<IDispatch*>(host.transform.get()));

    EXPECT_EQ(answerFor<IRectangle>(unknown), nullptr);
    EXPECT_EQ(answerFor<IImageBuffer>(unknown), nullptr);
    EXPECT_EQ(answerFor<IAccelerator>(unknown), nullptr);
    EXPECT_EQ(answerFor<IConnectionPoint>(unknown), nullptr);
    EXPECT_EQ(answerFor<IBaseFilter>(unknown), nullptr);
    EXPECT_EQ(answerFor<IMediaBuffer>(unknown), nullptr);
    EXPECT_EQ(unknown->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(references(unknown), 3U) << "the host's three and none besides";
}

TEST_F(DewarpingTransform, introducesItselfToTheLog) {
    diagnostics::FakeLogServices services;
    services.setDword("DBGView", 2);
    diagnostics::Log log(services);
    const auto make = [](diagnostics::ObjectLog objectLog) {
        return std::make_unique<render::reference::CReferenceDevice>(objectLog);
    };
    {
        ComPtr<CDewarpingTransform> one;
        one.attach(new CDewarpingTransform(com::Outer{}, TransformServices{log, make}));
        ComPtr<CDewarpingTransform> two;
        two.attach(new CDewarpingTransform(com::Outer{}, TransformServices{log, make}));
        two.reset();
    }
    EXPECT_THAT(services.debuggerLines,
                ElementsAre("TvVideoTransform:_:[1] - TARVO Dewarping Transform DMO - initializing\n",
                            "TvVideoTransform:_:[2] - TARVO Dewarping Transform DMO - initializing\n",
                            "TvVideoTransform:_:[2] - TARVO Dewarping Transform DMO - destructor\n",
                            "TvVideoTransform:_:[1] - TARVO Dewarping Transform DMO - destructor\n"));
}

TEST_F(DewarpingTransform, isMadeByTheClassFactorysWay) {
    void* object = nullptr;
    ASSERT_EQ(com::createInstance<CDewarpingTransform>(nullptr, __uuidof(IDewarpingTransform), &object),
              S_OK);
    ComPtr<IDewarpingTransform> transform;
    transform.attach(static_cast<IDewarpingTransform*>(object));
    EXPECT_EQ(references(transform.get()), 1U);
    VARIANT_BOOL isActive = 0;
    EXPECT_EQ(transform->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, VARIANT_TRUE);
    EXPECT_EQ(com::createInstance<CDewarpingTransform>(nullptr, __uuidof(IBaseFilter), &object),
              E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

/// The filter around a media object, as far as the media object is concerned.
class CWrapper final : public com::CObject<ISupportErrorInfo> {
public:
    CWrapper() {
        com::throwIfFailed(com::createInstance<CDewarpingTransform>(controllingUnknown(), __uuidof(IUnknown),
                                                                    m_inner.putVoid()));
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }
    IUnknown* inner() const { return m_inner.get(); }

protected:
    HRESULT queryOwn(REFIID iid, void** object) noexcept override {
        const HRESULT result = CObjectOn::queryOwn(iid, object);
        return result == E_NOINTERFACE && m_inner ? m_inner->QueryInterface(iid, object) : result;
    }

private:
    ComPtr<IUnknown> m_inner;
};

TEST_F(DewarpingTransform, canBeAggregated) {
    const auto wrapper = com::makeObject<CWrapper>();
    IUnknown* outer = wrapper->controllingUnknown();
    {
        const auto media = ComPtr<IUnknown>(outer).as<IMediaObject>();
        ASSERT_TRUE(media);
        EXPECT_EQ(references(outer), 2U) << "counted on the outer object";
        EXPECT_EQ(answerFor<IUnknown>(media.get()), outer);
        EXPECT_NE(answerFor<ISupportErrorInfo>(media.get()), nullptr) << "the outer object's own";
        const auto transform = media.as<IDewarpingTransform>();
        const auto quality = media.as<IDMOQualityControl>();
        const auto container = media.as<IConnectionPointContainer>();
        const auto dispatch = media.as<IDispatch>();
        ASSERT_TRUE(transform && quality && container && dispatch);
        EXPECT_EQ(answerFor<IUnknown>(transform.get()), outer);
        EXPECT_EQ(answerFor<IUnknown>(quality.get()), outer);
        EXPECT_EQ(answerFor<IUnknown>(container.get()), outer);
        ComPtr<IConnectionPoint> point;
        ASSERT_EQ(container->FindConnectionPoint(__uuidof(IImageSourceEvents), point.put()), S_OK);
        EXPECT_EQ(references(outer), 7U) << "the connection point holds its container, the outer object";
        EXPECT_EQ(quality->SetStatus(DMO_QUALITY_STATUS_ENABLED), S_OK);
        EXPECT_EQ(references(outer), 7U) << "nothing holds its own outer object";
    }
    EXPECT_EQ(references(outer), 1U);
    EXPECT_EQ(references(wrapper->inner()), 1U);
}

TEST_F(DewarpingTransform, refusesToBeAnyPartButTheWhole) {
    const auto outer = com::makeObject<CWrapper>();
    void* object = nullptr;
    EXPECT_EQ(com::createInstance<CDewarpingTransform>(outer->controllingUnknown(), __uuidof(IMediaObject),
                                                       &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
}

TEST_F(DewarpingTransform, withoutMemoryThereIsNoObjectAndNothingIsLeft) {
    const int failures = com::failuresUntilSuccess([&](int granted) {
        void* object = nullptr;
        HRESULT result = S_OK;
        {
            const com::CFailingNew failing(granted);
            result = com::createInstance<CDewarpingTransform>(nullptr, __uuidof(IUnknown), &object);
        }
        if (FAILED(result)) {
            EXPECT_EQ(result, E_OUTOFMEMORY);
            EXPECT_EQ(object, nullptr);
            EXPECT_EQ(com::moduleCount().count(), 0);
            return false;
        }
        static_cast<IUnknown*>(object)->Release();
        return true;
    });
    EXPECT_GT(failures, 5);
}

TEST_F(DewarpingTransform, hasTwoConnectionPoints) {
    CTransformHost host;
    const auto container = host.object.as<IConnectionPointContainer>();
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(points.put()), S_OK);
    IConnectionPoint* found[3]{};
    ULONG count = 0;
    EXPECT_EQ(points->Next(3, found, &count), S_FALSE);
    ASSERT_EQ(count, 2U);
    IID ids[2]{};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(found[i]->GetConnectionInterface(&ids[i]), S_OK);
        found[i]->Release();
    }
    EXPECT_EQ(ids[0], __uuidof(IDewarpingTransformEvents));
    EXPECT_EQ(ids[1], __uuidof(IImageSourceEvents));
    ComPtr<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(__uuidof(IDispatch), point.put()), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(container->FindConnectionPoint(__uuidof(IImageSourceEvents), nullptr), E_POINTER);
    // A sink of the one event is none of the other.
    const auto sink =
        com::makeObject<CEventSink<IDewarpingTransformEvents>>([](const DISPPARAMS&) { return S_OK; });
    ASSERT_EQ(container->FindConnectionPoint(__uuidof(IImageSourceEvents), point.put()), S_OK);
    DWORD cookie = 0;
    EXPECT_EQ(point->Advise(sink.get(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(point->Advise(nullptr, &cookie), E_POINTER);
}

TEST_F(DewarpingTransform, letsItsSinksGoInTheEnd) {
    const auto sink = com::makeObject<CEventSink<IImageSourceEvents>>([](const DISPPARAMS&) { return S_OK; });
    {
        CTransformHost host;
        ComPtr<IConnectionPoint> point;
        const auto container = host.object.as<IConnectionPointContainer>();
        ASSERT_EQ(container->FindConnectionPoint(__uuidof(IImageSourceEvents), point.put()), S_OK);
        DWORD cookie = 0;
        ASSERT_EQ(point->Advise(sink.get(), &cookie), S_OK);
        EXPECT_EQ(references(sink.get()), 2U);
    }
    EXPECT_EQ(references(sink.get()), 1U);
}

TEST_F(DewarpingTransform, endsWithAnInputStillHeld) {
    CFakeBuffer buffer(patternRgb(32, 24));
    {
        CTransformHost host;
        host.negotiateRgb(32, 24, 32, 24);
        ASSERT_EQ(host.input(buffer), S_OK);
        EXPECT_EQ(buffer.references(), 1);
    }
    EXPECT_EQ(buffer.references(), 0);
}

TEST_F(DewarpingTransform, injectsNothingOutsideOfAGraph) {
    CTransformHost host;
    EXPECT_EQ(host.transform->InjectAcceleratorFilter(nullptr), E_POINTER);
    auto* accelerator = reinterpret_cast<IAccelerator*>(&host);
    EXPECT_EQ(host.transform->InjectAcceleratorFilter(&accelerator), E_NOINTERFACE);
    EXPECT_EQ(accelerator, nullptr);
}

} // namespace
} // namespace tarvo::transform
