#include "apps/tarvo-dewarp/PictureCoding.h"
#include "apps/tarvo-dewarp/tables/RemapMap.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace tarvo::apps {
namespace {

using namespace std::string_view_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

template<typename Decode>
std::string failure(const std::vector<std::uint8_t>& bytes, Decode decode) {
    try {
        decode(bytes);
    } catch (const CodingError& error) {
        return error.what();
    }
    return "read without complaint";
}

std::string mapFailure(std::string_view text) {
    // A copy of exactly this length, so that reading past it is noticed.
    return failure(bytesOf(text), [](const auto& bytes) { decodeMap(bytes); });
}

/// The bytes of tables with this head, as many as it asks for and `extra` more.
std::vector<std::uint8_t> tables(std::vector<std::uint16_t> words) {
    std::vector<std::uint8_t> bytes;
    for (const std::uint16_t word : words) {
        bytes.push_back(static_cast<std::uint8_t>(word));
        bytes.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    return bytes;
}

std::string tableFailure(const std::vector<std::uint16_t>& words) {
    return failure(tables(words), [](const auto& bytes) { decodeTable(bytes); });
}

TEST(RemapMap, isReadFromAndWrittenToPgm) {
    const RemapMap map = decodeMap(bytesOf("P5 # by hand\n2\t# wide\r1 65535\n\x01\x02\xFF\xFE"sv));
    EXPECT_EQ(map.width, 2);
    EXPECT_EQ(map.height, 1);
    EXPECT_THAT(map.pixels, ElementsAre(0x0102, 0xFFFE));
    EXPECT_EQ(encodeMap(map), bytesOf("P5\n2 1\n65535\n\x01\x02\xFF\xFE"sv));
}

TEST(RemapMap, isRefusedWhereverItBreaksOff) {
    const std::string_view whole = "P5 3 2 65535\nabcdefghijkl";
    EXPECT_EQ(decodeMap(bytesOf(whole)).pixels.size(), 6U);
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_NE(mapFailure(whole.substr(0, length)), "read without complaint") << length;
    EXPECT_THAT(mapFailure("P5 3 2 65535\nabcdefghijklm"), HasSubstr("goes on behind its last sample"));
}

TEST(RemapMap, isRefusedWhenItIsAnythingElse) {
    EXPECT_THAT(mapFailure("P6 1 1 65535\nabcdef"), HasSubstr("not a binary PGM"));
    EXPECT_THAT(mapFailure("P2 1 1 65535\n12"), HasSubstr("not a binary PGM"));
    EXPECT_THAT(mapFailure("P51 1 65535\nab"), HasSubstr("not a binary PGM"));
    EXPECT_THAT(mapFailure("P5 1 1 255\na"), HasSubstr("not of 16 bits: their largest is 255"));
    EXPECT_THAT(mapFailure("P5 1 1 65534\nab"), HasSubstr("their largest is 65534 instead of 65535"));
    EXPECT_THAT(mapFailure("P5 1 1 99999999999999999999\nab"), HasSubstr("not of 16 bits"));
    EXPECT_THAT(mapFailure("P5 0 1 65535\nab"), HasSubstr("sides are not 1 to 16384"));
    EXPECT_THAT(mapFailure("P5 1 4294967297 65535\nab"), HasSubstr("sides are not 1 to 16384"));
    EXPECT_THAT(mapFailure("P5 16384 16384 65535\nab"), HasSubstr("more than 33554432 pixels"));
    EXPECT_THAT(mapFailure("P5 -1 1 65535\nab"), HasSubstr("holds no width"));
    EXPECT_THAT(mapFailure("P5 1 1 65535ab"), HasSubstr("head does not end"));
}

TEST(RemapMap, namesPixelsByTheirCentres) {
    // Of four columns and two rows the centres are at eighths and quarters of 65535.
    const LookupTable table = tableOfMaps({5, 1, {0, 3, 4, 1, 65535}}, {5, 1, {0, 1, 0, 2, 65535}}, {4, 2});
    EXPECT_EQ(table.width, 5);
    EXPECT_THAT(table.entries, ElementsAre(TableEntry{8192, 16384, 65535}, TableEntry{57343, 49151, 65535},
                                           TableEntry{57343, 16384, 0}, TableEntry{24576, 49151, 0},
                                           TableEntry{57343, 49151, 0}));
    const RemapMaps maps = mapsOfTable(table, {4, 2});
    EXPECT_THAT(maps.x.pixels, ElementsAre(0, 3, 65535, 65535, 65535));
    EXPECT_THAT(maps.y.pixels, ElementsAre(0, 1, 65535, 65535, 65535));
    // The edges belong to the outer pixels.
    EXPECT_THAT(mapsOfTable({2, 1, {{0, 65535, 65535}, {65535, 0, 65535}}}, {4, 2}).x.pixels,
                ElementsAre(0, 3));
}

TEST(RemapMap, comesBackFromATable) {
    std::mt19937 random(3);
    for (const PictureSize input : {PictureSize{1, 1}, {2592, 1944}, {16384, 16383}}) {
        RemapMap x{40, 30, {}};
        RemapMap y{40, 30, {}};
        for (int i = 0; i < 40 * 30; ++i) {
            const bool isOutside = random() % 5 == 0;
            x.pixels.push_back(isOutside ? noPixel : static_cast<std::uint16_t>(random() % input.width));
            y.pixels.push_back(isOutside ? noPixel : static_cast<std::uint16_t>(random() % input.height));
        }
        const LookupTable table = decodeTable(encodeTable(tableOfMaps(x, y, input)));
        const RemapMaps maps = mapsOfTable(table, input);
        EXPECT_EQ(maps.x.width, 40);
        EXPECT_EQ(maps.y.height, 30);
        EXPECT_EQ(maps.x.pixels, x.pixels);
        EXPECT_EQ(maps.y.pixels, y.pixels);
    }
}

TEST(RemapMap, cannotSayPartialWeights) {
    EXPECT_EQ(failure({},
                      [](const auto&) {
                          mapsOfTable({1, 1, {{1, 2, 3}}}, {4, 4});
                      }),
              "one of its cells has a weight of 3; maps know only all (65535) or none (0)");
}

TEST(LookupTable, isRefusedUnlessItIsOneWholeTable) {
    EXPECT_THAT(tableFailure({1, 0, 1}), HasSubstr("shorter than their 8 bytes of head"));
    EXPECT_THAT(tableFailure({1, 0, 1, 1}), HasSubstr("1 of 1x1 cells take 14 bytes, but it has 8"));
    EXPECT_THAT(tableFailure({1, 0, 1, 1, 1, 2}), HasSubstr("14 bytes, but it has 12"));
    EXPECT_THAT(tableFailure({1, 0, 1, 1, 1, 2, 3, 4}), HasSubstr("14 bytes, but it has 16"));
    EXPECT_THAT(tableFailure({65535, 65535, 65535, 65535}), HasSubstr("take 1688772552032258 bytes"));
    // What 32 bits would keep of the size is 8 bytes.
    EXPECT_THAT(tableFailure({4, 0, 32768, 32768}), HasSubstr("take 25769803784 bytes"));
    EXPECT_THAT(tableFailure({2, 0, 1, 1, 1, 2, 3, 4, 5, 6}), HasSubstr("it holds 2 tables"));
    EXPECT_THAT(tableFailure({0, 0, 1, 1}), HasSubstr("it holds 0 tables"));
    EXPECT_THAT(tableFailure({1, 0, 0, 5}), HasSubstr("0x5 cells"));
    std::vector<std::uint16_t> wide(4 + 3 * 16385);
    wide[0] = 1;
    wide[2] = 16385;
    wide[3] = 1;
    EXPECT_THAT(tableFailure(wide), HasSubstr("16385x1 cells; each side must be 1 to 16384"));
}

class RemapCommands : public CAppTest {
protected:
    Outcome fromRemap() const {
        return run({"tables-from-remap", fileText("x.pgm"), fileText("y.pgm"), fileText("t.tables"),
                    "--input-size", "300x200"});
    }
    Outcome toRemap(const std::string& x = "x.pgm", const std::string& y = "y.pgm") const {
        return run(
            {"tables-to-remap", fileText("t.tables"), fileText(x), fileText(y), "--input-size", "300x200"});
    }

    void expectFailure(const Outcome& outcome, const std::string& file, const std::string& reason) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err,
                    AllOf(StartsWith("tarvo-dewarp: " + fileText(file) + ": "), HasSubstr(reason)));
    }
};

TEST_F(RemapCommands, convertThereAndBack) {
    const std::vector<std::uint8_t> x = bytesOf("P5\n2 1\n65535\n\x00\x00\x01\x2B"sv); // 0 and 299
    const std::vector<std::uint8_t> y = bytesOf("P5\n2 1\n65535\n\x00\xC7\x00\x64"sv); // 199 and 100
    writeBytes(file("x.pgm"), x);
    writeBytes(file("y.pgm"), y);
    const Outcome there = fromRemap();
    EXPECT_EQ(there.status, 0) << there.err;
    std::filesystem::remove(file("x.pgm"));
    std::filesystem::remove(file("y.pgm"));
    const Outcome back = toRemap();
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_EQ(readBytes(file("x.pgm")), x);
    EXPECT_EQ(readBytes(file("y.pgm")), y);
    EXPECT_THAT(names(), ElementsAre("t.tables", "x.pgm", "y.pgm"));
}

TEST_F(RemapCommands, takeAViewToTheMapsOfItsPixels) {
    // The middle cell of a view straight ahead is the input's middle pixel.
    ASSERT_EQ(run({"tables", fileText("t.tables"), "--grid", "3x3", "--input-size", "301x201"}).status, 0);
    ASSERT_EQ(run({"tables-to-remap", fileText("t.tables"), fileText("x.pgm"), fileText("y.pgm"),
                   "--input-size", "301x201"})
                  .status,
              0);
    EXPECT_EQ(decodeMap(readBytes(file("x.pgm"))).pixels.at(4), 150);
    EXPECT_EQ(decodeMap(readBytes(file("y.pgm"))).pixels.at(4), 100);
}

TEST_F(RemapCommands, refuseFilesThatCannotBe) {
    expectFailure(fromRemap(), "x.pgm", "No such file");
    writeBytes(file("x.pgm"), "");
    expectFailure(fromRemap(), "x.pgm", "it is empty");
    writeBytes(file("x.pgm"), "P5 1 1 65535\na");
    expectFailure(fromRemap(), "x.pgm", "its end is missing");
    writeBytes(file("x.pgm"), "P5 1 1 65535\nab");
    std::filesystem::create_directory(file("y.pgm"));
    expectFailure(fromRemap(), "y.pgm", "it is a directory");
    std::filesystem::remove(file("y.pgm"));
    writeBytes(file("y.pgm"), "P5 1 2 65535\nabcd");
    expectFailure(fromRemap(), "y.pgm", "it has not the size of the other map");
    std::filesystem::resize_file(file("y.pgm"), 2 * maxTableCells + 4097);
    expectFailure(fromRemap(), "y.pgm", "larger than any such file");
    expectFailure(toRemap(), "t.tables", "No such file");
    writeBytes(file("t.tables"), "tables");
    expectFailure(toRemap(), "t.tables", "shorter than their 8 bytes");
    writeBytes(file("t.tables"), tables({1, 0, 1, 1, 5, 5, 100}));
    expectFailure(toRemap(), "t.tables", "a weight of 100");
    std::filesystem::resize_file(file("t.tables"), 6 * maxTableCells + 9);
    expectFailure(toRemap(), "t.tables", "larger than any such file");
    EXPECT_THAT(names(), ElementsAre("t.tables", "x.pgm", "y.pgm"));
}

TEST_F(RemapCommands, leaveEveryTargetAsItWasWhenOneIsWrong) {
    writeBytes(file("t.tables"), tables({1, 0, 1, 1, 5, 5, 65535}));
    writeBytes(file("x.pgm"), "old");
    std::filesystem::create_directory(file("y.pgm"));
    expectFailure(toRemap(), "y.pgm", "it is a directory");
    EXPECT_EQ(readBytes(file("x.pgm")), bytesOf("old"));
    const Outcome twice = toRemap("m.pgm", "./m.pgm");
    EXPECT_EQ(twice.status, 2);
    EXPECT_THAT(twice.err, HasSubstr("the two maps need two files"));
    EXPECT_FALSE(std::filesystem::exists(file("m.pgm")));
}

TEST_F(RemapCommands, refuseWrongArguments) {
    const auto expectUsage = [](const std::vector<std::string>& arguments, const std::string& message) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr(message));
    };
    expectUsage({"tables-from-remap", "x.pgm", "y.pgm", "t.tables"}, "--input-size is required");
    expectUsage({"tables-from-remap", "x.pgm", "y.pgm", "t.png", "--input-size", "4x3"}, "ends in .tables");
    expectUsage({"tables-from-remap", "x.png", "y.pgm", "t.tables", "--input-size", "4x3"}, "ends in .pgm");
    expectUsage({"tables-from-remap", "x.pgm", "y.pgm", "--input-size", "4x3"}, "OUTPUT is required");
    expectUsage({"tables-to-remap", "t.tables", "x.pgm", "y.pgm", "--input-size", "4"}, "WIDTHxHEIGHT");
    expectUsage({"tables-to-remap", "t.tables", "x.pgm", "y", "--input-size", "4x3"}, "ends in .pgm");
}

} // namespace
} // namespace tarvo::apps
