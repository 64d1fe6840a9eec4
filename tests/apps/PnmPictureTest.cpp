#include "apps/tarvo-dewarp/PnmPicture.h"

#include "apps/tarvo-dewarp/PictureCoding.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::apps {
namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::HasSubstr;

std::string failure(std::string_view text) {
    try {
        decodePnm(bytesOf(text));
    } catch (const CodingError& error) {
        return error.what();
    }
    return "read without complaint";
}

TEST(PnmPicture, isReadInColour) {
    const Picture picture = decodePnm(bytesOf("P6\n2 1\n255\n\x01\x02\x03\xFD\xFE\xFF"sv));
    EXPECT_EQ(picture.width, 2);
    EXPECT_EQ(picture.height, 1);
    EXPECT_THAT(picture.pixels, ElementsAre(Bgra{3, 2, 1, 255}, Bgra{255, 254, 253, 255}));
}

TEST(PnmPicture, isReadInGreyWithCommentsAndAnySpace) {
    const Picture picture =
        decodePnm(bytesOf("P5 # grey\n# made by hand\r\n\t1#\n 3\v255 \x00\x80\xFF and more"sv));
    EXPECT_EQ(picture.width, 1);
    EXPECT_EQ(picture.height, 3);
    EXPECT_THAT(picture.pixels,
                ElementsAre(Bgra{0, 0, 0, 255}, Bgra{128, 128, 128, 255}, Bgra{255, 255, 255, 255}));
}

TEST(PnmPicture, samplesFillTheRange) {
    // 1 of 3 is 85; samples beyond the largest one count as the largest.
    EXPECT_THAT(decodePnm(bytesOf("P5 4 1 3\n\x00\x01\x03\x09"sv)).pixels,
                ElementsAre(Bgra{0, 0, 0, 255}, Bgra{85, 85, 85, 255}, Bgra{255, 255, 255, 255},
                            Bgra{255, 255, 255, 255}));
    // Above 255 a sample has two bytes, the upper one first: 0x8000 of 65535 is 127.5.
    EXPECT_THAT(decodePnm(bytesOf("P5 3 1 65535\n\x00\x00\x80\x00\xFF\xFF"sv)).pixels,
                ElementsAre(Bgra{0, 0, 0, 255}, Bgra{128, 128, 128, 255}, Bgra{255, 255, 255, 255}));
    EXPECT_THAT(decodePnm(bytesOf("P6 1 1 1000\n\x03\xE8\x00\x00\x01\xF4"sv)).pixels,
                ElementsAre(Bgra{128, 0, 255, 255}));
}

TEST(PnmPicture, isRefusedWhereverItBreaksOff) {
    const std::string_view whole = "P6 3 2 255\nabcdefghijklmnopqr";
    EXPECT_EQ(decodePnm(bytesOf(whole)).pixels.size(), 6U);
    for (std::size_t length = 3; length < whole.size(); ++length) {
        EXPECT_NE(failure(whole.substr(0, length)), "read without complaint") << length;
    }
}

TEST(PnmPicture, isRefusedWithAHeadThatMakesNoSense) {
    EXPECT_THAT(failure("P5 0 1 255\nx"), HasSubstr("its width is not 1 to 16384"));
    EXPECT_THAT(failure("P5 16385 1 255\nx"), HasSubstr("its width is not 1 to 16384"));
    EXPECT_THAT(failure("P5 1 99999999999999999999 255\nx"), HasSubstr("its height is not 1 to 16384"));
    EXPECT_THAT(failure("P5 1 1 0\nx"), HasSubstr("its largest sample is not 1 to 65535"));
    EXPECT_THAT(failure("P5 1 1 65536\nxx"), HasSubstr("its largest sample is not 1 to 65535"));
    EXPECT_THAT(failure("P5 -1 1 255\nx"), HasSubstr("holds no width"));
    EXPECT_THAT(failure("P5 1 one 255\nx"), HasSubstr("holds no height"));
    EXPECT_THAT(failure("P5 1 1 255x"), HasSubstr("does not end"));
    EXPECT_THAT(failure("P6 16384 16384 255\nx"), HasSubstr("its end is missing"));
}

TEST(PnmPicture, isRecognised) {
    EXPECT_TRUE(isPnm(bytesOf("P5 1 1")));
    EXPECT_TRUE(isPnm(bytesOf("P6#")));
    EXPECT_FALSE(isPnm(bytesOf("P2 1 1"))); // the variant in plain text
    EXPECT_FALSE(isPnm(bytesOf("P5")));
    EXPECT_FALSE(isPnm(bytesOf("P55 1")));
}

} // namespace
} // namespace tarvo::apps
