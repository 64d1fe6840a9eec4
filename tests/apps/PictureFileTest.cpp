#include "apps/tarvo-dewarp/PictureFile.h"

#include "apps/tarvo-dewarp/PictureCoding.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>

// For the files that the program reads and never writes: JPEG, and PNG with an alpha channel.
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace tarvo::apps {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class PictureFile : public CAppTest {
protected:
    Picture readBack(const std::vector<std::uint8_t>& bytes) const {
        writeBytes(file("bytes"), bytes);
        return readPicture(file("bytes"));
    }
};

/// Why the bytes are no picture.
std::string failure(std::span<const std::uint8_t> bytes) {
    try {
        decodePicture(bytes);
    } catch (const CodingError& error) {
        return error.what();
    }
    return "read without complaint";
}

void append(void* bytes, void* data, int size) {
    const auto* const first = static_cast<const std::uint8_t*>(data);
    auto& all = *static_cast<std::vector<std::uint8_t>*>(bytes);
    all.insert(all.end(), first, first + size);
}

std::vector<std::uint8_t> flatJpeg(int width, int height) {
    std::vector<std::uint8_t> colours;
    for (int i = 0; i < width * height; ++i) {
        colours.insert(colours.end(), {200, 100, 50});
    }
    std::vector<std::uint8_t> bytes;
    stbi_write_jpg_to_func(append, &bytes, width, height, 3, colours.data(), 100);
    return bytes;
}

/// The first bytes of a PNG file that claims the given size.
std::vector<std::uint8_t> pngHead(std::uint32_t width, std::uint32_t height) {
    std::vector<std::uint8_t> bytes = bytesOf("\x89PNG\r\n\x1A\n");
    const auto add = [&](std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    };
    add(13);
    for (const char c : std::string_view("IHDR")) {
        bytes.push_back(static_cast<std::uint8_t>(c));
    }
    add(width);
    add(height);
    bytes.insert(bytes.end(), {8, 2, 0, 0, 0});
    add(0); // in place of a checksum
    return bytes;
}

TEST_F(PictureFile, comesBackAsItWasWritten) {
    const std::vector<std::pair<int, int>> sizes{{1, 1}, {1, 10000}, {10000, 1}, {3, 5}, {64, 48}};
    for (const auto& [width, height] : sizes) {
        const Picture picture = colourfulPicture(width, height);
        writePng(file("a.png"), picture);
        const Picture back = readPicture(file("a.png"));
        EXPECT_EQ(back.width, width);
        EXPECT_EQ(back.height, height);
        EXPECT_EQ(back.pixels, picture.pixels);
    }
    EXPECT_THAT(names(), ElementsAre("a.png"));
}

TEST_F(PictureFile, replacesAnExistingFile) {
    writeBytes(file("a.png"), "old");
    writePng(file("a.png"), colourfulPicture(2, 2));
    EXPECT_EQ(readPicture(file("a.png")).pixels, colourfulPicture(2, 2).pixels);
    EXPECT_THAT(names(), ElementsAre("a.png"));
}

TEST_F(PictureFile, isWrittenThroughALink) {
    writeBytes(file("target.png"), "old");
    std::error_code error;
    std::filesystem::create_symlink(file("target.png"), file("link.png"), error);
    if (error) {
        GTEST_SKIP() << "there are no links here: " << error.message();
    }
    writePng(file("link.png"), colourfulPicture(2, 2));
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.png")));
    EXPECT_EQ(readPicture(file("target.png")).pixels, colourfulPicture(2, 2).pixels);
}

TEST_F(PictureFile, mayHaveAnyName) {
    const std::filesystem::path path = file("") / pathFromText("B\xC3\xBC"
                                                               "cher \xE9\xAD\x9A.png");
    writePng(path, colourfulPicture(3, 2));
    EXPECT_EQ(readPicture(path).pixels, colourfulPicture(3, 2).pixels);
    EXPECT_THAT(names(), ElementsAre("B\xC3\xBC"
                                     "cher \xE9\xAD\x9A.png"));
}

TEST_F(PictureFile, isWrittenWithoutItsAlpha) {
    Picture picture(2, 1);
    picture.pixels = {{10, 20, 30, 0}, {40, 50, 60, 128}};
    writePng(file("a.png"), picture);
    EXPECT_THAT(readPicture(file("a.png")).pixels, ElementsAre(Bgra{10, 20, 30, 255}, Bgra{40, 50, 60, 255}));
}

TEST_F(PictureFile, isReadWithoutItsAlpha) {
    const std::vector<std::uint8_t> colours{30, 20, 10, 0, 60, 50, 40, 128};
    std::vector<std::uint8_t> bytes;
    stbi_write_png_to_func(append, &bytes, 2, 1, 4, colours.data(), 8);
    EXPECT_THAT(readBack(bytes).pixels, ElementsAre(Bgra{10, 20, 30, 255}, Bgra{40, 50, 60, 255}));
}

TEST_F(PictureFile, mayBeGrey) {
    const std::vector<std::uint8_t> greys{7, 200};
    std::vector<std::uint8_t> bytes;
    stbi_write_png_to_func(append, &bytes, 2, 1, 1, greys.data(), 2);
    EXPECT_THAT(readBack(bytes).pixels, ElementsAre(Bgra{7, 7, 7, 255}, Bgra{200, 200, 200, 255}));
}

TEST_F(PictureFile, mayBeAJpeg) {
    const Picture picture = readBack(flatJpeg(17, 9));
    ASSERT_EQ(picture.width, 17);
    ASSERT_EQ(picture.height, 9);
    for (const Bgra& pixel : picture.pixels) {
        // The way to luminance and chrominance and back rounds each channel.
        EXPECT_NEAR(pixel.red, 200, 3);
        EXPECT_NEAR(pixel.green, 100, 3);
        EXPECT_NEAR(pixel.blue, 50, 3);
        EXPECT_EQ(pixel.alpha, 255);
    }
}

TEST_F(PictureFile, thatIsAJpegIsRefusedWhereverItBreaksOff) {
    const std::vector<std::uint8_t> whole = flatJpeg(17, 9);
    for (std::size_t length = 1; length < whole.size(); ++length) {
        EXPECT_NE(failure(std::span(whole).first(length)), "read without complaint")
            << length << " of " << whole.size() << " bytes";
    }
}

TEST_F(PictureFile, thatIsAJpegMayHoldASmallerOne) {
    // A segment for applications with a whole small picture in it, put in behind the first two bytes.
    const std::vector<std::uint8_t> small = flatJpeg(4, 4);
    std::vector<std::uint8_t> bytes = flatJpeg(17, 9);
    std::vector<std::uint8_t> segment{0xFF, 0xE1, static_cast<std::uint8_t>((small.size() + 2) / 256),
                                      static_cast<std::uint8_t>((small.size() + 2) % 256)};
    segment.insert(segment.end(), small.begin(), small.end());
    bytes.insert(bytes.begin() + 2, segment.begin(), segment.end());
    EXPECT_EQ(readBack(bytes).width, 17);
    // The small picture's end does not count as the large one's.
    bytes.pop_back();
    bytes.pop_back();
    EXPECT_THAT(failure(bytes), HasSubstr("its end is missing"));
}

TEST_F(PictureFile, thatIsAJpegIsRefusedWithOverfullCodeTables) {
    const std::vector<std::uint8_t> whole = flatJpeg(17, 9);
    constexpr std::array<std::uint8_t, 2> marker{0xFF, 0xC4};
    const auto table = std::search(whole.begin(), whole.end(), marker.begin(), marker.end()) - whole.begin();
    ASSERT_LT(table + 40, std::ssize(whole));
    // Behind marker, length and the table's name come the 16 numbers of codes; 17 x 16 are more than 256.
    std::vector<std::uint8_t> tooMany = whole;
    std::fill_n(tooMany.begin() + table + 5, 16, std::uint8_t{17});
    EXPECT_THAT(failure(tooMany), HasSubstr("it has a bad code table"));
    // Within what a table can hold, but more than the segment does.
    std::vector<std::uint8_t> tooLong = whole;
    std::fill_n(tooLong.begin() + table + 5, 16, std::uint8_t{1});
    tooLong[static_cast<std::size_t>(table) + 2] = 0;
    tooLong[static_cast<std::size_t>(table) + 3] = 2 + 17 + 15;
    EXPECT_THAT(failure(tooLong), HasSubstr("it has a bad code table"));
}

TEST_F(PictureFile, thatIsAPngIsRefusedWhereverItBreaksOff) {
    writePng(file("whole.png"), colourfulPicture(5, 3));
    const std::vector<std::uint8_t> whole = readBytes(file("whole.png"));
    // Nothing is lost with the checksum of the end mark, its last four bytes.
    for (std::size_t length = 1; length + 4 < whole.size(); ++length) {
        EXPECT_NE(failure(std::span(whole).first(length)), "read without complaint")
            << length << " of " << whole.size() << " bytes";
    }
}

TEST_F(PictureFile, isRefusedWhenTooLargeOrWithoutPixels) {
    EXPECT_THAT(failure(pngHead(16385, 1)), HasSubstr("large"));
    EXPECT_THAT(failure(pngHead(1, 16385)), HasSubstr("large"));
    EXPECT_THAT(failure(pngHead(0x7FFFFFFF, 0x7FFFFFFF)), HasSubstr("large"));
    EXPECT_THAT(failure(pngHead(0, 5)), HasSubstr("cannot be read as a picture"));
    // Large enough to be allowed, but no pixel follows.
    EXPECT_THAT(failure(pngHead(64, 64)), HasSubstr("cannot be read as a picture"));
}

TEST_F(PictureFile, errorsNameFileAndReason) {
    writeBytes(file("notes.txt"), "Dear diary,");
    try {
        readPicture(file("notes.txt"));
        FAIL() << "it was read";
    } catch (const FileError& error) {
        EXPECT_EQ(error.what(),
                  fileText("notes.txt") + ": it is not a PNG, JPEG, binary PGM or binary PPM picture");
    }
}

} // namespace
} // namespace tarvo::apps
