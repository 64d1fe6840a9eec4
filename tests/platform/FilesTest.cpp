#include "platform/Files.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

using tests::CTemporaryFolder;
using tests::readFile;
using tests::writeFile;

TEST(Files, areOpenedAsTheModeSays) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a.log";
    EXPECT_EQ(openFile(path.c_str(), "r"), nullptr);
    std::FILE* file = openFile(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs("one", file);
    std::fclose(file);
    file = openFile(path.c_str(), "a");
    ASSERT_NE(file, nullptr);
    std::fputs(" two", file);
    std::fclose(file);
    EXPECT_EQ(readFile(path), "one two");
    file = openFile(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char text[16] = {};
    EXPECT_EQ(std::fread(text, 1, sizeof text, file), 7U);
    std::fclose(file);
    EXPECT_STREQ(text, "one two");
    file = openFile(path.c_str(), "wb+");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_EQ(readFile(path), "");
}

TEST(Files, appendBehindWhatOthersWrote) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a.log";
    std::FILE* const one = openFile(path.c_str(), "a");
    std::FILE* const other = openFile(path.c_str(), "a");
    ASSERT_NE(one, nullptr);
    ASSERT_NE(other, nullptr);
    for (std::FILE* const file : {one, other, one}) {
        std::fputs(file == one ? "1" : "2", file);
        std::fflush(file);
    }
    EXPECT_EQ(readFile(path), "121");
    std::fclose(one);
    std::fclose(other);
}

TEST(Files, mayBeTruncatedWhileOthersAppend) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a.log";
    std::FILE* const log = openFile(path.c_str(), "a");
    ASSERT_NE(log, nullptr);
    std::fputs("long before", log);
    std::fflush(log);
    std::FILE* const anew = openFile(path.c_str(), "w");
    ASSERT_NE(anew, nullptr);
    std::fputs("head ", anew);
    std::fclose(anew);
    std::fputs("tail", log);
    std::fclose(log);
    EXPECT_EQ(readFile(path), "head tail");
}

TEST(Files, areNotOpenedForNonsense) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a";
    EXPECT_EQ(openFile(nullptr, "r"), nullptr);
    EXPECT_EQ(openFile("", "w"), nullptr);
    EXPECT_EQ(openFile(path.c_str(), nullptr), nullptr);
    EXPECT_EQ(openFile(path.c_str(), ""), nullptr);
    EXPECT_EQ(openFile(path.c_str(), "x"), nullptr);
    EXPECT_EQ(openFile((folder / "absent/a").c_str(), "w"), nullptr);
    EXPECT_EQ(folder.count(), 0);
}

TEST(Files, areNoFolders) {
    const CTemporaryFolder folder;
    for (const char* mode : {"r", "w", "a"})
        EXPECT_EQ(openFile(folder.path().c_str(), mode), nullptr) << mode;
}

TEST(Files, areCopiedOverOthers) {
    const CTemporaryFolder folder;
    const std::string from = folder / "from";
    const std::string to = folder / "to 1.log";
    std::string bytes(3'000'000, 'x');
    bytes[2'999'999] = '\0';
    writeFile(from, bytes);
    EXPECT_TRUE(copyFile(from.c_str(), to.c_str()));
    EXPECT_EQ(readFile(to), bytes);
    writeFile(from, "short");
    EXPECT_TRUE(copyFile(from.c_str(), to.c_str()));
    EXPECT_EQ(readFile(to), "short");
    EXPECT_EQ(readFile(from), "short");
    EXPECT_EQ(folder.count(), 2);
}

TEST(Files, areNotCopiedFromNowhereOrToNowhere) {
    const CTemporaryFolder folder;
    const std::string file = folder / "file";
    writeFile(file, "content");
    const std::string target = folder / "target";
    writeFile(target, "kept");
    EXPECT_FALSE(copyFile((folder / "absent").c_str(), target.c_str()));
    EXPECT_FALSE(copyFile(folder.path().c_str(), target.c_str()));
    EXPECT_FALSE(copyFile(nullptr, target.c_str()));
    EXPECT_FALSE(copyFile("", target.c_str()));
    EXPECT_FALSE(copyFile(file.c_str(), (folder / "absent/file").c_str()));
    EXPECT_FALSE(copyFile(file.c_str(), folder.path().c_str()));
    EXPECT_FALSE(copyFile(file.c_str(), nullptr));
    EXPECT_FALSE(copyFile(file.c_str(), ""));
    EXPECT_FALSE(copyFile(file.c_str(), file.c_str()));
    EXPECT_EQ(readFile(target), "kept");
    EXPECT_EQ(readFile(file), "content");
    EXPECT_EQ(folder.count(), 2);
}

TEST(Files, stayReadableAndWritableWhenEveryoneMay) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a.log";
    writeFile(path, "before");
    grantAccessToEveryone(path.c_str());
    EXPECT_EQ(readFile(path), "before");
    writeFile(path, "after");
    EXPECT_EQ(readFile(path), "after");
    grantAccessToEveryone((folder / "absent").c_str());
    grantAccessToEveryone("");
    grantAccessToEveryone(nullptr);
    EXPECT_EQ(folder.count(), 1);
}

} // namespace
} // namespace tarvo::platform
