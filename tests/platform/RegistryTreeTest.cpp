#include "platform/registry/RegistryTree.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

TEST(RegistryTree, makesTheKeysAboveToo) {
    CRegistryTree tree;
    EXPECT_EQ(tree.find("SOFTWARE"), nullptr);
    const CRegistryTree::Key& made = tree.make("SOFTWARE\\Tarvo\\Thing");
    EXPECT_EQ(tree.find("software\\TARVO\\thing"), &made);
    ASSERT_NE(tree.find("SOFTWARE\\Tarvo"), nullptr);
    EXPECT_EQ(tree.find("SOFTWARE\\Tarvo")->subkeys.size(), 1U);
}

TEST(RegistryTree, findsAKeyMadeInAnotherCase) {
    CRegistryTree tree;
    const CRegistryTree::Key& made = tree.make("Tarvo");
    EXPECT_EQ(&tree.make("TARVO"), &made);
    EXPECT_EQ(tree.find("")->subkeys.size(), 1U);
    EXPECT_EQ(tree.find("")->subkeys.begin()->first, "Tarvo");
}

TEST(RegistryTree, removesAKeyWithAllBelow) {
    CRegistryTree tree;
    tree.make("a\\b\\c");
    tree.make("a\\d");
    tree.remove("A\\B");
    EXPECT_EQ(tree.find("a\\b\\c"), nullptr);
    EXPECT_EQ(tree.find("a\\b"), nullptr);
    EXPECT_NE(tree.find("a\\d"), nullptr);
    tree.remove("a\\x\\y");
    EXPECT_NE(tree.find("a\\d"), nullptr);
}

TEST(RegistryTree, keepsItsRoot) {
    CRegistryTree tree;
    tree.make("a").values["v"] = {1, "x"};
    tree.remove("");
    ASSERT_NE(tree.find(""), nullptr);
    EXPECT_EQ(tree.find("a"), nullptr);
}

} // namespace
} // namespace tarvo::platform
