#include "apps/host/Module.h"

#include "apps/host/HostError.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace tarvo::host {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

/// What loading a file, and making a transform of it, fails with.
template<class Step>
void expectFailure(HRESULT result, const std::string& text, Step&& step) {
    try {
        step();
        FAIL() << "nothing failed";
    } catch (const HostError& error) {
        EXPECT_EQ(error.result(), result);
        EXPECT_THAT(error.what(), HasSubstr(text));
    }
}

TEST(HostModule, makesTransformsAndIsFreeAfterThem) {
    const CModule module(TARVO_PRODUCT_MODULE);
    EXPECT_TRUE(module.canUnload());
    EXPECT_TRUE(module.offers(CLSID_DewarpingTransform));
    EXPECT_FALSE(module.offers(CLSID{}));
    auto transform = module.createTransform();
    ASSERT_TRUE(transform);
    EXPECT_FALSE(module.canUnload());
    LONG viewType = -1;
    EXPECT_EQ(transform->get_ViewType(&viewType), S_OK);
    EXPECT_EQ(viewType, 0);
    transform.reset();
    EXPECT_TRUE(module.canUnload());
}

TEST(HostModule, isFoundBesideTheProgram) {
    // The build puts programs and module into one folder.
    EXPECT_TRUE(std::filesystem::equivalent(defaultModulePath(), TARVO_PRODUCT_MODULE))
        << defaultModulePath();
}

TEST(HostModule, refusesWhatIsNoModule) {
    const tests::CTemporaryFolder folder;
    const std::string text = folder / "text.dll";
    tests::writeFile(text, "This is no library.\n");
    tests::writeFile(folder / "empty.dll", "");
    expectFailure(CO_E_DLLNOTFOUND, "absent.dll\" failed: there is no such file",
                  [&] { CModule(folder / "absent.dll"); });
    expectFailure(CO_E_DLLNOTFOUND, "there is no such file", [] { CModule(std::filesystem::path()); });
    expectFailure(CO_E_ERRORINDLL, "no library that this system can load", [&] { CModule{text}; });
    expectFailure(CO_E_ERRORINDLL, "no library that this system can load",
                  [&] { CModule(folder / "empty.dll"); });
    expectFailure(CO_E_ERRORINDLL, "no library that this system can load", [&] { CModule(folder.path()); });
    expectFailure(CO_E_ERRORINDLL, "no function DllGetClassObject", [] { CModule(TARVO_PLAIN_LIBRARY); });
}

TEST(HostModule, tellsThatItsObjectsAreOfAnotherKind) {
    // The classes of this one are not the product's, whatever their identities.
    const CModule module(TARVO_PROBE_MODULE);
    expectFailure(E_NOINTERFACE, "creating the transform failed", [&] { module.createTransform(); });
    EXPECT_TRUE(module.canUnload());
}

TEST(HostError, namesStepReasonAndNumber) {
    EXPECT_THAT(
        HostError("dancing", HRESULT(0x80004005U)).what(),
        AllOf(HasSubstr("dancing failed: "), EndsWith(" (0x80004005)"), testing::Not(HasSubstr("\n"))));
    EXPECT_STREQ(HostError("dancing", E_FAIL, "the floor is wet").what(),
                 "dancing failed: the floor is wet (0x80004005)");
    EXPECT_STREQ(HostError("dancing", static_cast<HRESULT>(DMO_E_TYPE_NOT_ACCEPTED)).what(),
                 "dancing failed: the media type is not accepted (0x80040205)");
    EXPECT_NO_THROW(requireStep(S_FALSE, "resting"));
    EXPECT_THROW(requireStep(E_POINTER, "pointing"), HostError);
}

} // namespace
} // namespace tarvo::host
