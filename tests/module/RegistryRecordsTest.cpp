#include "module/RegistryRecords.h"

#include "platform/registry/MemoryRegistry.h"
#include "tests/module/ExpectedKeys.h"
#include "tests/module/ProbeClasses.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

HRESULT removal(platform::IRegistry& registry, const CLSID& id, const GUID& category) {
    return com::guarded([&] { removeMediaObject(registry, id, category); });
}

TEST(RegistryRecords, writeIdentifiersAsTheSystemDoes) {
    EXPECT_EQ(guidText(CLSID_DewarpingTransform), dewarpingId);
    EXPECT_EQ(guidText(CLSID_AcceleratorFilter), acceleratorId);
    EXPECT_EQ(guidText(LIBID_TarvoVideoTransformLib), libraryId);
    EXPECT_EQ(guidText(GUID{}), "{00000000-0000-0000-0000-000000000000}");
}

TEST(RegistryRecords, describeTheDewarpingTransform) {
    const MediaObject object = dewarpingMediaObject(CLSID_DewarpingTransform);
    EXPECT_EQ(std::basic_string<OLECHAR>(object.name), OLESTR("TARVO Dewarping Transform DMO"));
    EXPECT_EQ(object.id, CLSID_DewarpingTransform);
    EXPECT_EQ(object.category, DMOCATEGORY_VIDEO_EFFECT);
    EXPECT_EQ(object.flags, 0U);
    ASSERT_EQ(object.inputs.size(), 1U);
    EXPECT_EQ(object.inputs[0].type, MEDIATYPE_Video);
    EXPECT_EQ(object.inputs[0].subtype, MEDIASUBTYPE_YUY2);
    ASSERT_EQ(object.outputs.size(), 1U);
    EXPECT_EQ(object.outputs[0].type, MEDIATYPE_Video);
    EXPECT_EQ(object.outputs[0].subtype, MEDIASUBTYPE_YV12);
}

TEST(RegistryRecords, recordAMediaObjectOnce) {
    platform::CMemoryRegistry registry;
    const MediaObject object = dewarpingMediaObject(CLSID_DewarpingTransform);
    writeMediaObject(registry, object);
    EXPECT_EQ(snapshotOf(registry.regFile()), mediaObjectKeys());
    writeMediaObject(registry, object);
    EXPECT_EQ(snapshotOf(registry.regFile()), mediaObjectKeys());
}

TEST(RegistryRecords, replaceAnEarlierRecord) {
    platform::CMemoryRegistry registry;
    MediaObject object = dewarpingMediaObject(CLSID_DewarpingTransform);
    object.name = OLESTR("another name");
    object.flags = DMO_REGISTERF_IS_KEYED;
    object.outputs = {};
    writeMediaObject(registry, object);
    const std::string key = "DirectShow\\MediaObjects\\" + dewarpingId.substr(1, 36);
    const Snapshot keyed = snapshotOf(registry.regFile());
    EXPECT_TRUE(keyed.contains(key + "\\Keyed"));
    EXPECT_EQ(keyed.at(key).at(""), "s another name");
    EXPECT_EQ(keyed.at(key).at("OutputTypes"), "b ");
    writeMediaObject(registry, dewarpingMediaObject(CLSID_DewarpingTransform));
    EXPECT_EQ(snapshotOf(registry.regFile()), mediaObjectKeys());
}

TEST(RegistryRecords, areTakenBackWithTheLastCategory) {
    platform::CMemoryRegistry registry;
    MediaObject object = dewarpingMediaObject(CLSID_DewarpingTransform);
    writeMediaObject(registry, object);
    object.category = DMOCATEGORY_VIDEO_DECODER;
    writeMediaObject(registry, object);
    MediaObject other = dewarpingMediaObject(CLSID_AcceleratorFilter);
    writeMediaObject(registry, other);

    EXPECT_EQ(removal(registry, CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_DECODER), S_OK);
    const std::string key = "DirectShow\\MediaObjects\\" + dewarpingId.substr(1, 36);
    EXPECT_TRUE(snapshotOf(registry.regFile()).contains(key));
    EXPECT_EQ(removal(registry, CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_EFFECT), S_OK);
    const Snapshot left = snapshotOf(registry.regFile());
    EXPECT_FALSE(left.contains(key));
    EXPECT_TRUE(left.contains("DirectShow\\MediaObjects\\" + acceleratorId.substr(1, 36)));
}

TEST(RegistryRecords, refuseToTakeBackWhatIsNotThere) {
    platform::CMemoryRegistry registry;
    EXPECT_EQ(removal(registry, CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_EFFECT), HRESULT(0x80070002U));
    writeMediaObject(registry, dewarpingMediaObject(CLSID_DewarpingTransform));
    const std::string before = registry.regFile();
    EXPECT_EQ(removal(registry, CLSID_DewarpingTransform, DMOCATEGORY_VIDEO_DECODER), HRESULT(0x80070002U));
    EXPECT_EQ(removal(registry, CLSID_AcceleratorFilter, DMOCATEGORY_VIDEO_EFFECT), HRESULT(0x80070002U));
    EXPECT_EQ(registry.regFile(), before);
}

TEST(RegistryRecords, addCategoriesToAClass) {
    platform::CMemoryRegistry registry;
    const std::array<ComponentCategory, 2> categories{
        {{ComponentCategory::Relation::implemented, someCategory},
         {ComponentCategory::Relation::required, otherCategory}}};
    writeCategories(registry, CLSID_AcceleratorFilter, categories);
    const std::string key = "CLSID\\" + acceleratorId;
    EXPECT_EQ(snapshotOf(registry.regFile()),
              (Snapshot{{"CLSID", {}},
                        {key, {}},
                        {key + "\\Implemented Categories", {}},
                        {key + "\\Implemented Categories\\{4B1D6F1E-2C0A-4B7B-9D3E-510A7C862F33}", {}},
                        {key + "\\Required Categories", {}},
                        {key + "\\Required Categories\\{4B1D6F1E-2C0A-4B7B-9D3E-510A7C862F34}", {}}}));
}

} // namespace
} // namespace tarvo::module
