#include "module/Registration.h"

#include "module/RegistryRecords.h"
#include "tests/module/FailingRegistry.h"
#include "tests/module/ProbeClasses.h"
#include "tests/module/Scripts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;
using Steps = std::vector<std::string>;

constexpr const char* path = "/opt/tarvo/libTarvoVideoTransform.so";

/// Notes each step and answers as told; scripts go to a registry in memory.
class CServices final : public IRegistrationServices {
public:
    HRESULT registerMediaObject(const MediaObject& object) noexcept override {
        EXPECT_EQ(object.id, CLSID_DewarpingTransform);
        return step("media object");
    }
    HRESULT unregisterMediaObject(const CLSID& id, const GUID& category) noexcept override {
        EXPECT_EQ(guidText(id), dewarpingId);
        EXPECT_EQ(guidText(category), "{D990EE14-776C-4723-BE46-3DA2F56F10B9}");
        return step("no media object");
    }
    HRESULT registerCategories(const CLSID& id,
                               std::span<const ComponentCategory> categories) noexcept override {
        return step("categories " + guidText(id) + " " + std::to_string(categories.size()));
    }
    HRESULT registerTypeLibrary() noexcept override { return step("type library"); }
    HRESULT unregisterTypeLibrary() noexcept override { return step("no type library"); }

    platform::IRegistry& registry() noexcept override { return memory; }
    std::string_view script(std::uint16_t id) noexcept override {
        steps.push_back("script " + std::to_string(id));
        const auto found = scripts.find(id);
        return found == scripts.end() ? std::string_view() : found->second;
    }
    std::string modulePath() override {
        if (hasNoMemory)
            throw std::bad_alloc();
        return ownPath;
    }

    Snapshot keys() const { return snapshotOf(memory.regFile()); }

    CFailingRegistry memory;
    std::map<std::uint16_t, std::string> scripts{{100, scriptOf("DewarpingTransform")},
                                                 {101, scriptOf("AcceleratorFilter")}};
    std::string ownPath = path;
    bool hasNoMemory = false;
    /// For each step the answers in turn; then S_OK.
    std::map<std::string, std::vector<HRESULT>> answers;
    Steps steps;

private:
    HRESULT step(const std::string& name) {
        steps.push_back(name);
        std::vector<HRESULT>& left = answers[name];
        if (left.empty())
            return S_OK;
        const HRESULT answer = left.front();
        left.erase(left.begin());
        return answer;
    }
};

class Registration : public testing::Test {
protected:
    HRESULT registerAll() { return registerModule(probeContents(m_classes), m_services); }
    HRESULT unregisterAll() { return unregisterModule(probeContents(m_classes), m_services); }

    /// Registers as a preparation, and forgets the steps.
    void prepare() {
        ASSERT_EQ(registerAll(), S_OK);
        m_services.steps.clear();
    }

    std::array<ModuleClass, 2> m_classes = probeClasses();
    CServices m_services;
};

const Snapshot onlyTheRoot{{"CLSID", {}}};

TEST_F(Registration, goesInOrder) {
    EXPECT_EQ(registerAll(), S_OK);
    EXPECT_EQ(m_services.steps, (Steps{"media object", "script 100", "script 101", "type library"}));
    EXPECT_EQ(m_services.keys(), allClassKeys(path));
    m_services.steps.clear();
    EXPECT_EQ(unregisterAll(), S_OK);
    EXPECT_EQ(m_services.steps, (Steps{"no media object", "script 100", "script 101", "no type library"}));
    EXPECT_EQ(m_services.keys(), onlyTheRoot);
}

TEST_F(Registration, twiceLeavesOneSetOfKeys) {
    prepare();
    EXPECT_EQ(registerAll(), S_OK);
    EXPECT_EQ(m_services.keys(), allClassKeys(path));
}

TEST_F(Registration, registersCategoriesAfterTheClassTheyBelongTo) {
    const std::array<ComponentCategory, 2> categories{
        {{ComponentCategory::Relation::implemented, someCategory},
         {ComponentCategory::Relation::required, otherCategory}}};
    m_classes[0].categories = categories;
    EXPECT_EQ(registerAll(), S_OK);
    EXPECT_EQ(m_services.steps, (Steps{"media object", "script 100", "categories " + dewarpingId + " 2",
                                       "script 101", "type library"}));
}

TEST_F(Registration, doesNotMindAMediaObjectThatCannotBeRecorded) {
    m_services.answers["media object"] = {E_ACCESSDENIED};
    EXPECT_EQ(registerAll(), S_OK);
    EXPECT_EQ(m_services.keys(), allClassKeys(path));
}

TEST_F(Registration, endsAtAClassThatFails) {
    m_services.memory.failOnceAfter(0, platform::registryError::accessDenied);
    EXPECT_EQ(registerAll(), E_ACCESSDENIED);
    EXPECT_EQ(m_services.steps, (Steps{"media object", "script 100"}));
    EXPECT_EQ(m_services.keys(), Snapshot());
}

TEST_F(Registration, endsAtASecondClassThatFails) {
    m_services.scripts[101] = "HKCR {";
    EXPECT_EQ(registerAll(), HRESULT(0x8007000DU));
    EXPECT_EQ(m_services.steps, (Steps{"media object", "script 100", "script 101"}));
    EXPECT_EQ(m_services.keys(), classKeys("DewarpingTransform", dewarpingId, path));
}

TEST_F(Registration, endsAtCategoriesThatFail) {
    const std::array<ComponentCategory, 1> categories{
        {{ComponentCategory::Relation::implemented, someCategory}}};
    m_classes[0].categories = categories;
    m_services.answers["categories " + dewarpingId + " 1"] = {REGDB_E_CLASSNOTREG};
    EXPECT_EQ(registerAll(), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(m_services.steps, (Steps{"media object", "script 100", "categories " + dewarpingId + " 1"}));
}

TEST_F(Registration, endsWithWhatTheTypeLibraryGives) {
    m_services.answers["type library"] = {TYPE_E_REGISTRYACCESS, S_FALSE};
    EXPECT_EQ(registerAll(), TYPE_E_REGISTRYACCESS);
    EXPECT_EQ(m_services.steps.size(), 4U) << "only the removal is tried again";
    EXPECT_EQ(registerAll(), S_FALSE);
}

TEST_F(Registration, needsScriptsAndPath) {
    m_services.ownPath.clear();
    EXPECT_EQ(registerAll(), HRESULT(0x8007007EU));
    EXPECT_EQ(m_services.keys(), Snapshot());
    m_services.ownPath = path;
    m_services.scripts.erase(100);
    EXPECT_EQ(registerAll(), HRESULT(0x80070716U));
    EXPECT_EQ(m_services.keys(), Snapshot());
    m_services.scripts[100] = scriptOf("DewarpingTransform");
    m_services.hasNoMemory = true;
    EXPECT_EQ(registerAll(), E_OUTOFMEMORY);
    EXPECT_EQ(unregisterAll(), E_OUTOFMEMORY);
}

TEST_F(Registration, removalNeedsNoPath) {
    prepare();
    m_services.ownPath.clear();
    EXPECT_EQ(unregisterAll(), S_OK);
    EXPECT_EQ(m_services.keys(), onlyTheRoot);
}

TEST_F(Registration, removesNothingWhenTheMediaObjectStays) {
    prepare();
    m_services.answers["no media object"] = {E_FAIL};
    EXPECT_EQ(unregisterAll(), E_FAIL);
    EXPECT_EQ(m_services.steps, (Steps{"no media object"}));
    EXPECT_EQ(m_services.keys(), allClassKeys(path));
}

TEST_F(Registration, goesOnWhenTheMediaObjectWasNotThere) {
    prepare();
    // Some runtimes say so without a failure.
    m_services.answers["no media object"] = {S_FALSE};
    EXPECT_EQ(unregisterAll(), S_OK);
    EXPECT_EQ(m_services.keys(), onlyTheRoot);
}

TEST_F(Registration, triesTheRemovalTwice) {
    prepare();
    m_services.answers["no type library"] = {TYPE_E_REGISTRYACCESS, S_OK};
    EXPECT_EQ(unregisterAll(), S_OK);
    EXPECT_EQ(m_services.steps, (Steps{"no media object", "script 100", "script 101", "no type library",
                                       "script 100", "script 101", "no type library"}));
    EXPECT_EQ(m_services.keys(), onlyTheRoot);
}

TEST_F(Registration, triesTheRemovalNoThirdTime) {
    prepare();
    m_services.answers["no type library"] = {TYPE_E_REGISTRYACCESS, TYPE_E_REGISTRYACCESS, S_OK};
    EXPECT_EQ(unregisterAll(), TYPE_E_REGISTRYACCESS);
    EXPECT_EQ(m_services.steps.size(), 7U);
    prepare();
    m_services.answers["no type library"] = {TYPE_E_REGISTRYACCESS, E_FAIL, S_OK};
    EXPECT_EQ(unregisterAll(), E_FAIL);
    EXPECT_EQ(m_services.steps.size(), 7U);
}

TEST_F(Registration, triesOtherFailuresOfTheRemovalOnce) {
    prepare();
    m_services.answers["no type library"] = {E_INVALIDARG};
    EXPECT_EQ(unregisterAll(), E_INVALIDARG);
    EXPECT_EQ(m_services.steps.size(), 4U);
}

TEST_F(Registration, endsTheRemovalAtAClassThatFails) {
    prepare();
    m_services.memory.failOnceAfter(0, platform::registryError::diskFull);
    EXPECT_EQ(unregisterAll(), HRESULT(0x80070070U));
    EXPECT_EQ(m_services.steps, (Steps{"no media object", "script 100"}));
    prepare();
    m_services.scripts.erase(101);
    EXPECT_EQ(unregisterAll(), HRESULT(0x80070716U));
    EXPECT_EQ(m_services.steps, (Steps{"no media object", "script 100", "script 101"}));
}

} // namespace
} // namespace tarvo::module
