#include "tests/accelerator/AcceleratorGraph.h"

#include <gmock/gmock.h>

#include <limits>

namespace tarvo::accelerator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using tests::VideoKind;

class Pins : public CAcceleratorTest {
protected:
    static HRESULT accepts(IPin& pin, const VideoKind& kind) {
        const dshow::CPinType type = tests::typeOf(kind);
        return pin.QueryAccept(&type.get());
    }
};

TEST_F(Pins, theFilterIsAFilterAndItsSettings) {
    EXPECT_TRUE(filter.as<IBaseFilter>());
    EXPECT_TRUE(filter.as<IMediaFilter>());
    EXPECT_TRUE(filter.as<IPersist>());
    EXPECT_TRUE(filter.as<IDispatch>());
    EXPECT_FALSE(filter.as<IPin>());
    CLSID id{};
    EXPECT_EQ(filter->GetClassID(&id), S_OK);
    EXPECT_EQ(id, CLSID_AcceleratorFilter);
    LONG settings = -1;
    EXPECT_EQ(filter->get_Settings(nullptr), E_POINTER);
    EXPECT_EQ(filter->get_Settings(&settings), S_OK);
    EXPECT_EQ(settings, 0);
    for (const LONG value : {LONG{1}, LONG{0}, LONG{7}, std::numeric_limits<LONG>::min()}) {
        EXPECT_EQ(filter->put_Settings(value), S_OK);
        EXPECT_EQ(filter->get_Settings(&settings), S_OK);
        EXPECT_EQ(settings, value);
    }
}

TEST_F(Pins, itsBeginningIsLogged) {
    EXPECT_THAT(takeLines(),
                ElementsAre("TvVideoTransform:_:[1] - TARVO Accelerator Filter - initializing\n"));
}

TEST_F(Pins, inputTakesVideoOfAnySubtypeInTwoFormats) {
    const auto pin = input();
    EXPECT_EQ(accepts(*pin, usualKind), S_OK);
    VideoKind kind = usualKind;
    kind.formatType = FORMAT_VideoInfo2;
    kind.subtype = GUID{1, 2, 3, {4}};
    EXPECT_EQ(accepts(*pin, kind), S_OK);
    kind.subtype = GUID{};
    EXPECT_EQ(accepts(*pin, kind), S_FALSE);
    kind = usualKind;
    kind.formatType = FORMAT_MPEGVideo;
    EXPECT_EQ(accepts(*pin, kind), S_FALSE);
    AM_MEDIA_TYPE audio = tests::typeOf(usualKind).get();
    audio.majortype = MEDIATYPE_Audio;
    audio.pbFormat = nullptr;
    EXPECT_EQ(pin->QueryAccept(&audio), S_FALSE);
    EXPECT_EQ(pin->QueryAccept(nullptr), E_POINTER);
}

TEST_F(Pins, inputPrefersVideoAndNothingElse) {
    com::ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(input()->EnumMediaTypes(types.put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    ULONG fetched = 0;
    ASSERT_EQ(types->Next(1, &type, &fetched), S_OK);
    EXPECT_EQ(type->majortype, MEDIATYPE_Video);
    EXPECT_EQ(type->subtype, GUID{});
    EXPECT_EQ(type->formattype, GUID{});
    dshow::CPinType::freeAllocated(type);
    EXPECT_EQ(types->Next(1, &type, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 0U);
    dshow::CPinType direct;
    auto& pin = dynamic_cast<CVideoInputPin&>(*filter->pins()[0]);
    EXPECT_EQ(pin.mediaType(-1, direct), E_INVALIDARG);
    EXPECT_EQ(pin.mediaType(1, direct), VFW_S_NO_MORE_ITEMS);
}

TEST_F(Pins, outputTakesWhatHasTheInputsRows) {
    EXPECT_EQ(accepts(*output(), usualKind), S_FALSE) << "nothing, while there is no input";
    connect();
    const auto pin = output();
    EXPECT_EQ(accepts(*pin, usualKind), S_OK);
    const auto with = [](auto change) {
        VideoKind kind = usualKind;
        change(kind);
        return kind;
    };
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.width = 400; })), S_OK) << "rows may be padded";
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.height = -kind.height; })), S_OK);
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.imageBytes = 99; })), S_OK);
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.height = 3; })), S_FALSE);
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.bitCount = 12; })), S_FALSE);
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.subtype = MEDIASUBTYPE_YV12; })), S_FALSE);
    EXPECT_EQ(accepts(*pin, with([](VideoKind& kind) { kind.formatType = FORMAT_VideoInfo2; })), S_FALSE);
    const dshow::CPinType usual = tests::typeOf(usualKind);
    AM_MEDIA_TYPE cut = usual.get();
    cut.cbFormat = 40;
    EXPECT_EQ(pin->QueryAccept(&cut), S_FALSE);
}

TEST_F(Pins, outputPrefersTheInputsTypeWhileThereIsOne) {
    com::ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(output()->EnumMediaTypes(types.put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    ULONG fetched = 0;
    EXPECT_EQ(types->Next(1, &type, &fetched), S_FALSE);
    connect();
    EXPECT_EQ(types->Next(1, &type, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Reset(), S_OK);
    ASSERT_EQ(types->Next(1, &type, &fetched), S_OK);
    EXPECT_EQ(type->subtype, MEDIASUBTYPE_YUY2);
    dshow::CPinType::freeAllocated(type);
    EXPECT_EQ(types->Skip(1), S_FALSE);
}

TEST_F(Pins, areFoundByName) {
    com::ComPtr<IPin> found;
    EXPECT_EQ(filter->FindPin(OLESTR("video"), found.put()), S_OK);
    EXPECT_EQ(found.get(), output().get());
    PIN_INFO info{};
    ASSERT_EQ(found->QueryPinInfo(&info), S_OK);
    com::ComPtr<IBaseFilter> owner;
    owner.attach(info.pFilter);
    EXPECT_TRUE(com::isSameObject(owner.get(), filter->controllingUnknown()));
    EXPECT_EQ(com::OleStringView(info.achName), com::OleStringView(OLESTR("video")));
    EXPECT_EQ(filter->FindPin(OLESTR("Video"), found.put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(found.get(), nullptr);
}

/// Answers as it is told.
class CFakeAllocator final : public com::CObject<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        asked = *request;
        *actual = *request;
        actual->cBuffers -= missingBuffers;
        actual->cbBuffer -= missingBytes;
        return result;
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Commit() override { return S_OK; }
    STDMETHODIMP Decommit() override { return S_OK; }
    STDMETHODIMP GetBuffer(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample*) override { return S_OK; }

    ALLOCATOR_PROPERTIES asked{};
    HRESULT result = S_OK;
    LONG missingBuffers = 0;
    LONG missingBytes = 0;
};

TEST_F(Pins, outputAsksForOneBufferOfTheSamplesSize) {
    auto& pin = dynamic_cast<CVideoOutputPin&>(*filter->pins()[1]);
    const auto allocator = com::makeObject<CFakeAllocator>();
    ALLOCATOR_PROPERTIES wanted{7, 1000, 16, 32};
    EXPECT_EQ(pin.decideBufferSize(*allocator, wanted), VFW_E_NOT_CONNECTED);
    connect();
    takeLines();
    EXPECT_EQ(pin.decideBufferSize(*allocator, wanted), S_OK);
    EXPECT_EQ(allocator->asked.cBuffers, 1);
    EXPECT_EQ(allocator->asked.cbBuffer, 16);
    EXPECT_EQ(allocator->asked.cbPrefix, 0);
    EXPECT_EQ(allocator->asked.cbAlign, 16);
    EXPECT_THAT(takeLines(), ElementsAre());

    allocator->result = VFW_E_BADALIGN;
    EXPECT_EQ(pin.decideBufferSize(*allocator, wanted), VFW_E_BADALIGN);
    EXPECT_THAT(takeLines(), ElementsAre(testing::AllOf(HasSubstr("CVideoOutputPin::DecideBufferSize"),
                                                        HasSubstr("Failed in SetProperties"))));
    allocator->result = S_OK;
    for (const auto& [buffers, bytes] : {std::pair<LONG, LONG>{1, 0}, std::pair<LONG, LONG>{0, 1}}) {
        allocator->missingBuffers = buffers;
        allocator->missingBytes = bytes;
        EXPECT_EQ(pin.decideBufferSize(*allocator, wanted), E_FAIL);
        EXPECT_THAT(takeLines(), ElementsAre(HasSubstr("DecideBufferSize: Failed in checking properties")));
    }
}

TEST_F(Pins, aFormatThatIsNoneIsLogged) {
    const VideoKind kind = usualKind;
    source = com::makeObject<tests::CFakeSource>(kind);
    const dshow::CPinType whole = tests::typeOf(kind);
    AM_MEDIA_TYPE cut = whole.get();
    cut.cbFormat = 50;
    // The input takes a type by its names, and finds out when both sides are connected.
    ASSERT_EQ(source->pin().Connect(input().get(), &cut), S_OK);
    takeLines();
    filter->outputConnected();
    EXPECT_THAT(takeLines(), ElementsAre(HasSubstr("Unexpected media type!")));
}

TEST_F(Pins, keepTheFilterAliveAndLetItGo) {
    const LONG before = com::moduleCount().count();
    {
        com::ComPtr<IPin> pin;
        {
            const auto other = com::makeObject<CAcceleratorFilter>();
            pin = tests::pinOf(*other, PINDIR_OUTPUT);
        }
        PIN_DIRECTION direction{};
        EXPECT_EQ(pin->QueryDirection(&direction), S_OK);
        EXPECT_EQ(direction, PINDIR_OUTPUT);
        EXPECT_GT(com::moduleCount().count(), before);
    }
    EXPECT_EQ(com::moduleCount().count(), before);
}

} // namespace
} // namespace tarvo::accelerator
