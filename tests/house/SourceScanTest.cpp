#include "tests/house/SourceScan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::house {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SourceScan, dropsCommentsAndTheInsidesOfLiterals) {
    EXPECT_EQ(scanSource("int a; // _WIN32\nint/* x\ny */b;\n").code, "int a; \nint\n b;\n");
    EXPECT_EQ(scanSource(R"(f("a // b", '"', "\"x"); g)").code, R"(f("", '', ""); g)");
}

TEST(SourceScan, dropsTheInsideOfRawLiterals) {
    EXPECT_EQ(scanSource("a(R\"x(one \" )\" two\n)x\"); b").code, "a(R\"\n\"); b");
}

TEST(SourceScan, takesADigitSeparatorForNoLiteral) {
    EXPECT_EQ(scanSource("int a = 1'000'000; int b; // c").code, "int a = 1'000'000; int b; ");
}

TEST(SourceScan, endsAnUnfinishedLiteralWithItsLine) {
    EXPECT_EQ(scanSource("\"abc\nint d;").code, "\"\"\nint d;");
    EXPECT_EQ(scanSource("a /* b").code, "a  ");
}

TEST(SourceScan, listsIncludesWithFormAndLine) {
    const SourceScan scan = scanSource("#include \"a/B.h\"\n  #  include <c>\n#include MACRO\n");
    ASSERT_EQ(scan.includes.size(), 3U);
    EXPECT_EQ(scan.includes[0].line, 1);
    EXPECT_EQ(scan.includes[0].form, IncludeForm::quoted);
    EXPECT_EQ(scan.includes[0].target, "a/B.h");
    EXPECT_EQ(scan.includes[1].line, 2);
    EXPECT_EQ(scan.includes[1].form, IncludeForm::angled);
    EXPECT_EQ(scan.includes[1].target, "c");
    EXPECT_EQ(scan.includes[2].line, 3);
    EXPECT_EQ(scan.includes[2].form, IncludeForm::computed);
    EXPECT_EQ(scan.includes[2].target, "MACRO");
}

TEST(SourceScan, seesNoIncludeInCommentsAndLiterals) {
    EXPECT_THAT(scanSource("// #include <a>\n/*\n#include <b>\n*/ x = \"#include <c>\";").includes,
                IsEmpty());
    EXPECT_THAT(scanSource("x = R\"(\n#include <d>\n)\";").includes, IsEmpty());
}

TEST(SourceScan, findsWideLiterals) {
    EXPECT_THAT(scanSource("a = L\"x\";\nb = L'y';\n\nc = LR\"(z)\";").wideLiteralLines,
                ElementsAre(1, 2, 4));
}

TEST(SourceScan, takesOtherLiteralsForNoWideOnes) {
    EXPECT_THAT(scanSource("a = \"URL\"; b = u\"x\" u8\"y\" U'z'; // L\"c\"\nd = \"L\\\"e\"; MODEL(\"f\");")
                    .wideLiteralLines,
                IsEmpty());
}

} // namespace
} // namespace tarvo::house
