#include "com/Dispatch.h"

#include "tests/com/AudioObject.h"

#include <gtest/gtest.h>

namespace tarvo::com {
namespace {

TEST(Dispatch, isPartOfTheObject) {
    const ComPtr<CAudio> audio = makeObject<CAudio>();
    EXPECT_EQ(answerFor<IDispatch>(audio->controllingUnknown()), audio.get());
    EXPECT_EQ(answerFor<IBasicAudio>(audio->controllingUnknown()), audio.get());
    EXPECT_EQ(references(audio->controllingUnknown()), 1U);
}

TEST(Dispatch, saysThatItHasNoDescription) {
    const ComPtr<IDispatch> dispatch = makeObject<CAudio>();
    UINT count = 7;
    EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(dispatch->GetTypeInfoCount(nullptr), E_POINTER);
    ComPtr<ITypeInfo> information;
    EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, information.put()), E_NOTIMPL);
    EXPECT_FALSE(information);
    EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr), E_POINTER);
    DISPID id = 0;
    OLECHAR name[] = {u'V', 0};
    OLECHAR* names[] = {name};
    EXPECT_EQ(dispatch->GetIDsOfNames(GUID{}, names, 1, LOCALE_USER_DEFAULT, &id), E_NOTIMPL);
    DISPPARAMS parameters{};
    EXPECT_EQ(dispatch->Invoke(1, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &parameters, nullptr,
                               nullptr, nullptr),
              E_NOTIMPL);
}

} // namespace
} // namespace tarvo::com
