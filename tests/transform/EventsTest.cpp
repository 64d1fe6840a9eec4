#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <optional>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Events : public CTransformTest {
protected:
    Events() { host.negotiateRgb(64, 48, 32, 24); }

    CTransformHost host;
    const std::vector<std::uint8_t> picture = patternRgb(64, 48);
};

/// What an object shows that was set up by `set` from the beginning.
template<class Set>
std::vector<std::uint8_t> pictureWith(const Set& set, const std::vector<std::uint8_t>& picture) {
    CTransformHost host;
    host.negotiateRgb(64, 48, 32, 24);
    set(*host.transform);
    return host.through(picture).bytes;
}

std::vector<std::uint8_t> pixelsOf(IImageBuffer& image) {
    INT_PTR address = 0;
    LONG size = 0;
    EXPECT_EQ(image.get_DataPointer(&address), S_OK);
    EXPECT_EQ(image.get_Size(&size), S_OK);
    const auto* data = reinterpret_cast<const std::uint8_t*>(address);
    return {data, data + size};
}

TEST_F(Events, prepareEveryFrameRepeatsIncluded) {
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    std::vector<std::int64_t> times;
    {
        PrepareSink sink(host, [&](const DISPPARAMS& parameters) {
            EXPECT_EQ(parameters.cArgs, 2U);
            EXPECT_EQ(parameters.rgvarg[1].vt, VT_I8);
            EXPECT_EQ(parameters.rgvarg[0].vt, VT_I4);
            EXPECT_EQ(parameters.rgvarg[0].lVal, 0);
            times.push_back(parameters.rgvarg[1].llVal);
            return S_OK;
        });
        host.through(picture, 1'000'000);
        host.frame();
    }
    host.through(picture, 2'000'000);
    EXPECT_THAT(times, ElementsAre(1'000'000, 1'200'000));
}

TEST_F(Events, handOutTheDeliveredPicture) {
    int count = 0;
    std::vector<std::uint8_t> seen;
    LONGLONG time = 0;
    LONGLONG duration = 0;
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        ++count;
        const auto image = imageOf(parameters);
        LONG value = 0;
        EXPECT_EQ(image->get_Width(&value), S_OK);
        EXPECT_EQ(value, 32);
        EXPECT_EQ(image->get_Height(&value), S_OK);
        EXPECT_EQ(value, 24);
        EXPECT_EQ(image->get_Format(&value), S_OK);
        EXPECT_EQ(value, 0);
        EXPECT_EQ(image->get_Timestamp(&time), S_OK);
        EXPECT_EQ(image->get_Duration(&duration), S_OK);
        seen = pixelsOf(*image);
        return S_OK;
    });
    const Delivered frame = host.through(picture, 7'000'000);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(time, 7'000'000);
    EXPECT_EQ(duration, 400'000);
    EXPECT_EQ(seen, frame.bytes) << "the same rows, from the top";
    const Delivered next = host.through(patternRgb(64, 48, 3), 7'400'000);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(time, 7'400'000);
    EXPECT_EQ(seen, next.bytes);
}

TEST_F(Events, makeNoImageBufferForNobody) {
    EXPECT_EQ(com::moduleCount().count(), 5) << "the object, rectangles and controls";
    host.through(picture);
    EXPECT_EQ(com::moduleCount().count(), 5);
    {
        ImageSink sink(host, [](const DISPPARAMS&) { return S_OK; });
    }
    host.through(picture, 400'000);
    EXPECT_EQ(com::moduleCount().count(), 6) << "somebody has once wanted one";
    EXPECT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(com::moduleCount().count(), 5);
}

TEST_F(Events, letTheImageBufferGoWithItsFormat) {
    ImageSink sink(host, [](const DISPPARAMS&) { return S_OK; });
    const LONG without = com::moduleCount().count();
    EXPECT_EQ(host.through(picture).result, S_OK);
    EXPECT_EQ(com::moduleCount().count(), without + 1);
    EXPECT_EQ(host.setOutput(rgbType(32, 24), DMO_SET_TYPEF_TEST_ONLY), S_OK);
    EXPECT_EQ(com::moduleCount().count(), without) << "an output type, if only tried";
    EXPECT_EQ(host.through(picture, 400'000).result, S_OK);
    EXPECT_EQ(com::moduleCount().count(), without + 1);
    EXPECT_EQ(host.media->FreeStreamingResources(), S_OK);
    EXPECT_EQ(com::moduleCount().count(), without);
    EXPECT_EQ(host.through(picture, 800'000).result, S_OK);
    EXPECT_EQ(host.media->SetOutputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    EXPECT_EQ(com::moduleCount().count(), without);
}

TEST_F(Events, bringPicturesOfTheSizeOfTheMoment) {
    std::vector<LONG> sizes;
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        LONG size = 0;
        EXPECT_EQ(imageOf(parameters)->get_Size(&size), S_OK);
        sizes.push_back(size);
        return S_OK;
    });
    host.through(picture);
    ASSERT_EQ(host.media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    host.negotiateRgb(64, 48, 16, 12);
    host.through(picture);
    EXPECT_THAT(sizes, ElementsAre(32 * 24 * 4, 16 * 12 * 4));
}

TEST_F(Events, goToEachSinkInTheOrderOfConnectionAndTheLastOneAnswers) {
    std::string order;
    const auto sinkCalled = [&](char name, HRESULT result) {
        return [&order, name, result](const DISPPARAMS&) {
            order += name;
            return result;
        };
    };
    PrepareSink first(host, sinkCalled('a', E_FAIL));
    ImageSink firstImage(host, sinkCalled('A', S_OK));
    PrepareSink second(host, sinkCalled('b', S_OK));
    ImageSink secondImage(host, sinkCalled('B', E_FAIL));
    host.takeLines();
    EXPECT_EQ(host.through(picture).result, S_OK);
    EXPECT_EQ(order, "abAB");
    EXPECT_EQ(host.takeLine(),
              "E:[1] - CDewarpingTransform::InternalProcessOutput - OnNewImage callback returned "
              "an error (0x80004005)");
}

TEST_F(Events, onceWantedEveryRepeatIsReadBack) {
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    int count = 0;
    ImageSink sink(host, [&](const DISPPARAMS&) {
        ++count;
        return S_OK;
    });
    const Delivered first = host.through(picture);
    EXPECT_EQ(host.frame().bytes, first.bytes);
    EXPECT_EQ(count, 2);
}

TEST_F(Events, passOverABufferThatIsKeptLocked) {
    int count = 0;
    ComPtr<IImageBuffer> kept;
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        ++count;
        kept = imageOf(parameters);
        VARIANT_BOOL isLocked = VARIANT_FALSE;
        EXPECT_EQ(kept->LockBuffer(0, &isLocked), S_OK);
        EXPECT_EQ(isLocked, VARIANT_TRUE);
        return S_OK;
    });
    const Delivered first = host.through(picture, 0);
    ASSERT_EQ(count, 1);
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(host.through(patternRgb(64, 48, i), 400'000 * i).result, S_OK) << "the stream goes on";
    EXPECT_EQ(count, 1);
    EXPECT_EQ(pixelsOf(*kept), first.bytes);
    EXPECT_EQ(kept->UnlockBuffer(), S_OK);
    const Delivered last = host.through(patternRgb(64, 48, 5), 2'000'000);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(pixelsOf(*kept), last.bytes);
    EXPECT_EQ(kept->UnlockBuffer(), S_OK);
    kept.reset();
}

TEST_F(Events, aBufferThatAClientKeepsOutlivesAFlush) {
    ComPtr<IImageBuffer> kept;
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        if (!kept)
            kept = imageOf(parameters);
        else
            EXPECT_NE(imageOf(parameters).get(), kept.get()) << "another one after the flush";
        return S_OK;
    });
    const Delivered first = host.through(picture, 0);
    ASSERT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(host.through(patternRgb(64, 48, 2), 0).result, S_OK);
    EXPECT_EQ(pixelsOf(*kept), first.bytes) << "no longer updated";
}

TEST_F(Events, errorsOfSinksAreLoggedAndSwallowed) {
    PrepareSink one(host, [](const DISPPARAMS&) { return E_ACCESSDENIED; });
    ImageSink other(host, [](const DISPPARAMS&) { return DISP_E_MEMBERNOTFOUND; });
    host.takeLines();
    EXPECT_EQ(host.through(picture).result, S_OK);
    const std::string place = "E:[1] - CDewarpingTransform::InternalProcessOutput - ";
    EXPECT_THAT(host.takeLines(),
                ElementsAre(place + "OnPrepareImage callback returned an error (0x80070005)",
                            place + "OnNewImage callback returned an error (0x80020003)"));
}

TEST_F(Events, theFrameBeingPreparedShowsWhatItsSinkSets) {
    using Set = std::function<void(IDewarpingTransform&)>;
    const std::vector<Set> settings{
        [](IDewarpingTransform& t) { t.put_Pan(25.0); },
        [](IDewarpingTransform& t) { t.SetPTZPosition(10.0, -20.0, 15.0, VARIANT_FALSE); },
        [](IDewarpingTransform& t) { t.put_TiltOrientation(3); },
        [](IDewarpingTransform& t) { t.put_EffectLevel(0.5); },
        [](IDewarpingTransform& t) {
            com::CSafeArray profile = com::CSafeArray::vector(VT_R8, 3);
            com::CSafeArrayAccess<double>(profile.get()).elements()[2] = 0.6;
            t.put_LensProfile(profile.get());
        },
        [](IDewarpingTransform& t) {
            t.put_ViewType(1);
            t.put_SelectedView(3);
            t.put_Tilt(-70.0);
        },
        [](IDewarpingTransform& t) { t.put_Bypass(VARIANT_TRUE); },
        [](IDewarpingTransform& t) { t.put_ViewType(1); },
        [](IDewarpingTransform& t) { t.put_ViewType(2); },
        [](IDewarpingTransform& t) { t.put_ViewType(3); },
        [](IDewarpingTransform& t) { t.put_ViewType(4); },
        [](IDewarpingTransform& t) { t.put_ViewType(5); },
        [](IDewarpingTransform& t) {
            t.put_ViewType(2);
            t.put_PanoramaFieldOfView(90.0);
            t.put_PanoramaPanOffset(-45.0);
        },
        [](IDewarpingTransform& t) {
            t.put_ViewType(4);
            t.put_Options(1);
        },
        [](IDewarpingTransform& t) {
            ComPtr<IRectangle> rectangle;
            t.get_ExcludeRect(rectangle.put());
            rectangle->Init(0.25, 0.25, 0.75, 0.75);
        },
    };
    const auto plain = pictureWith([](IDewarpingTransform&) {}, picture);
    for (std::size_t i = 0; i < settings.size(); ++i) {
        CTransformHost other;
        other.negotiateRgb(64, 48, 32, 24);
        EXPECT_EQ(other.through(picture, 0).bytes, plain);
        PrepareSink sink(other, [&](const DISPPARAMS&) {
            settings[i](*other.transform);
            return S_OK;
        });
        const Delivered frame = other.through(picture, 400'000);
        EXPECT_EQ(frame.bytes, pictureWith(settings[i], picture)) << i;
        EXPECT_NE(frame.bytes, plain) << i;
    }
}

TEST_F(Events, sinksMayAskForTheImage) {
    std::optional<HRESULT> preparing;
    std::vector<std::uint8_t> before;
    PrepareSink prepare(host, [&](const DISPPARAMS&) {
        HRESULT result = S_OK;
        before = currentImage(*host.transform, nullptr, &result);
        preparing = result;
        return S_OK;
    });
    std::vector<std::uint8_t> during;
    ImageSink image(host, [&](const DISPPARAMS&) {
        HRESULT result = S_OK;
        during = currentImage(*host.transform, nullptr, &result);
        return S_OK;
    });
    host.through(picture, 0);
    EXPECT_EQ(preparing, E_FAIL) << "before the first frame";
    const auto first = currentImage(*host.transform);
    host.through(patternRgb(64, 48, 4), 400'000);
    EXPECT_EQ(preparing, S_OK);
    EXPECT_EQ(before, first);
    EXPECT_EQ(during, currentImage(*host.transform));
    EXPECT_NE(during, first);
}

TEST_F(Events, sinksMayLeave) {
    int count = 0;
    std::optional<PrepareSink> prepare;
    prepare.emplace(host, [&](const DISPPARAMS&) {
        ++count;
        return prepare->disconnect();
    });
    std::optional<ImageSink> image;
    image.emplace(host, [&](const DISPPARAMS&) {
        ++count;
        return image->disconnect();
    });
    host.takeLines();
    EXPECT_EQ(host.through(picture, 0).result, S_OK);
    EXPECT_EQ(host.through(picture, 400'000).result, S_OK);
    EXPECT_EQ(count, 2);
    EXPECT_THAT(host.takeLines(), IsEmpty());
}

TEST_F(Events, sinksMustNotPullTheGroundAway) {
    CFakeBuffer buffer(picture);
    int count = 0;
    const auto attempt = [&](const DISPPARAMS&) {
        ++count;
        DMO_OUTPUT_DATA_BUFFER data{};
        DWORD status = 0;
        EXPECT_EQ(host.media->Flush(), E_UNEXPECTED);
        EXPECT_EQ(host.media->FreeStreamingResources(), E_UNEXPECTED);
        EXPECT_EQ(host.media->ProcessInput(0, &buffer, 0, 0, 0), E_UNEXPECTED);
        EXPECT_EQ(host.media->ProcessOutput(0, 1, &data, &status), E_UNEXPECTED);
        EXPECT_EQ(host.setInput(rgbType(32, 24)), E_UNEXPECTED);
        EXPECT_EQ(host.setOutput(rgbType(32, 24), DMO_SET_TYPEF_CLEAR), E_UNEXPECTED);
        EXPECT_EQ(host.media->Lock(FALSE), E_FAIL);
        EXPECT_EQ(host.media->AllocateStreamingResources(), S_OK) << "they are there";
        EXPECT_EQ(host.media->GetInputStatus(0, &status), S_OK);
        return S_OK;
    };
    PrepareSink prepare(host, attempt);
    ImageSink image(host, attempt);
    EXPECT_EQ(host.through(picture, 0).bytes, pictureWith([](IDewarpingTransform&) {}, picture));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(host.media->Flush(), S_OK) << "from outside again";
}

TEST_F(Events, aChangeWhileAFrameIsShownComesWithTheNext) {
    // Some setters wait for the next frame, others bring the device in step at once.
    using Set = void (*)(IDewarpingTransform&);
    const std::vector<Set> settings{
        [](IDewarpingTransform& t) { t.put_Pan(30.0); },
        [](IDewarpingTransform& t) { t.put_ViewType(1); },
        [](IDewarpingTransform& t) { t.put_TiltOrientation(3); },
        [](IDewarpingTransform& t) {
            ComPtr<IRectangle> rectangle;
            t.get_ExcludeRect(rectangle.put());
            rectangle->Init(0.25, 0.25, 0.75, 0.75);
        },
    };
    for (const Set& set : settings) {
        CTransformHost other;
        other.negotiateRgb(64, 48, 32, 24);
        ASSERT_EQ(other.transform->put_OutputFrameRate(50.0), S_OK);
        bool isFirst = true;
        ImageSink sink(other, [&](const DISPPARAMS&) {
            if (std::exchange(isFirst, false))
                set(*other.transform);
            return S_OK;
        });
        const Delivered first = other.through(picture);
        const Delivered repeat = other.frame();
        EXPECT_NE(repeat.bytes, first.bytes) << "the change is not lost with the end of the frame";
        EXPECT_EQ(repeat.bytes, pictureWith(set, picture));
    }
}

TEST_F(Events, bringNoPictureThatItsBufferCannotHold) {
    // The size follows the input's, and the output type stays that of the old one.
    CTransformHost other;
    ASSERT_EQ(other.transform->put_Options(2), S_OK);
    ASSERT_EQ(other.setInput(rgbType(32, -24)), S_OK);
    ASSERT_EQ(other.setOutput(rgbType(32, -18)), S_OK);
    int count = 0;
    ImageSink sink(other, [&](const DISPPARAMS&) {
        ++count;
        return S_OK;
    });
    EXPECT_EQ(other.through(patternRgb(32, 24)).result, S_OK);
    EXPECT_EQ(count, 1);
    ASSERT_EQ(other.setInput(rgbType(64, -48)), S_OK);
    CFakeBuffer buffer(picture);
    ASSERT_EQ(other.input(buffer, 400'000), S_OK);
    CFakeBuffer room(std::size_t{64} * 36 * 4);
    Delivered delivered;
    EXPECT_EQ(other.output(room, delivered), S_OK);
    EXPECT_EQ(count, 1);
}

TEST_F(Events, lettingGoOfALockedImageWaitsForItsReader) {
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        VARIANT_BOOL isLocked = VARIANT_FALSE;
        return imageOf(parameters)->LockBuffer(0, &isLocked); // and never unlocked
    });
    ASSERT_EQ(host.through(picture).result, S_OK);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(host.media->Flush(), S_OK);
    const auto taken = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(taken, std::chrono::milliseconds(4'900));
    EXPECT_LT(taken, std::chrono::milliseconds(20'000));
}

} // namespace
} // namespace tarvo::transform
