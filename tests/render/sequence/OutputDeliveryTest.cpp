#include "render/OutputDelivery.h"

#include "tests/render/sequence/SequenceTest.h"

namespace tarvo::render {
namespace {

constexpr std::byte guard{0xCD};

/// Keeps what it was shown.
class CObserver final : public IMappedRowsVisitor {
public:
    HRESULT visit(const MappedRows& rows) override {
        ++count;
        seen = rows;
        return result;
    }
    HRESULT result = S_OK;
    int count = 0;
    MappedRows seen;
};

class OutputDeliveryTest : public testing::Test {
protected:
    OutputDeliveryTest() { log.SetModule("T", 2); }

    /// The buffer after a delivery into its first `length` bytes, behind which guards stand.
    std::vector<std::byte> deliver(const OutputFormat& format, std::size_t length,
                                   std::size_t pitchPadding = 0) {
        const std::size_t pitch = static_cast<std::size_t>(format.width) * 4 + pitchPadding;
        const std::size_t size = pitch * static_cast<std::size_t>(format.height);
        if (picture.size() != size) {
            picture = countingBytes(size);
        }
        // Twice: once where writing beyond the end is noticed by the tools, once with guards to look at.
        std::vector<std::byte> exact(length, guard);
        exact.shrink_to_fit();
        std::vector<std::byte> guarded(length + 64, guard);
        for (const std::span<std::byte> buffer : {std::span(exact), std::span(guarded).first(length)}) {
            COutputDelivery delivery(format, buffer, observer, objectLog);
            result = delivery.visit({picture.data(), pitch, format.width, format.height});
        }
        EXPECT_TRUE(std::equal(exact.begin(), exact.end(), guarded.begin()));
        EXPECT_EQ(std::count(guarded.end() - 64, guarded.end(), guard), 64);
        return exact;
    }
    static bool isUntouched(const std::vector<std::byte>& bytes) {
        return std::ranges::count(bytes, guard) == static_cast<std::ptrdiff_t>(bytes.size());
    }
    /// All of one colour: bytes 255, 0, 0.
    void paint(int width, int height) {
        picture.assign(static_cast<std::size_t>(width * height) * 4, std::byte{0});
        for (std::size_t i = 0; i < picture.size(); i += 4) {
            picture[i] = std::byte{255};
        }
    }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    diagnostics::ObjectLog objectLog{log, instanceId};
    std::vector<std::byte> picture;
    CObserver watching;
    IMappedRowsVisitor* observer = nullptr;
    HRESULT result = S_FALSE;
};

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> all;
    for (const int value : values) {
        all.push_back(value < 0 ? guard : static_cast<std::byte>(value));
    }
    return all;
}

TEST_F(OutputDeliveryTest, rgb32OfTheSamePitchIsCopied) {
    EXPECT_EQ(deliver({PixelFormat::rgb32, 3, 2, 12, false}, 24), countingBytes(24));
    EXPECT_EQ(result, S_OK);
    // A buffer that is longer keeps its rest.
    std::vector<std::byte> expected = countingBytes(24);
    expected.resize(30, guard);
    EXPECT_EQ(deliver({PixelFormat::rgb32, 3, 2, 12, false}, 30), expected);
}

TEST_F(OutputDeliveryTest, rgb32BottomUpIsReversedThoughThePitchesAgree) {
    EXPECT_EQ(deliver({PixelFormat::rgb32, 1, 3, 4, true}, 12),
              bytes({9, 10, 11, 12, 5, 6, 7, 8, 1, 2, 3, 4}));
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, rgb32RowsGoToTheirStrides) {
    EXPECT_EQ(deliver({PixelFormat::rgb32, 1, 2, 6, false}, 12),
              bytes({1, 2, 3, 4, -1, -1, 5, 6, 7, 8, -1, -1}));
    EXPECT_EQ(deliver({PixelFormat::rgb32, 1, 2, 6, true}, 12),
              bytes({5, 6, 7, 8, -1, -1, 1, 2, 3, 4, -1, -1}));
    // Rows of 4 bytes with 3 behind them: of those, what fits comes along.
    EXPECT_EQ(deliver({PixelFormat::rgb32, 1, 2, 4, false}, 8, 3), bytes({1, 2, 3, 4, 8, 9, 10, 11}));
    EXPECT_EQ(deliver({PixelFormat::rgb32, 1, 2, 5, true}, 10, 3), bytes({8, 9, 10, 11, 12, 1, 2, 3, 4, 5}));
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, rgb32OfTheSamePaddedPitchIsCopiedPaddingAndAll) {
    // 3 × 3 pixels in rows of 12 bytes at every 17th on either side; 46 bytes hold all pixels, 51 all bytes.
    const OutputFormat format{PixelFormat::rgb32, 3, 3, 17, false};
    for (const std::size_t length : {46U, 48U, 51U}) {
        EXPECT_EQ(deliver(format, length, 5), countingBytes(length));
        EXPECT_EQ(result, S_OK);
    }
    // What the buffer has behind the rows is not the picture's.
    std::vector<std::byte> expected = countingBytes(51);
    expected.resize(60, guard);
    EXPECT_EQ(deliver(format, 60, 5), expected);
    EXPECT_TRUE(isUntouched(deliver(format, 45, 5)));
    EXPECT_EQ(result, E_FAIL);
}

TEST_F(OutputDeliveryTest, bandsOfTheSamePaddedPitchStayWithinThemselves) {
    // Rows of 4 bytes at every 6th; the last one ends with its pixel.
    picture = countingBytes(6 * 6);
    const MappedRows rows{picture.data(), 6, 1, 6};
    const OutputFormat format{PixelFormat::rgb32, 1, 6, 6, false};
    std::vector<std::byte> actual(5 * 6 + 4, guard);
    actual.shrink_to_fit();
    COutputDelivery delivery(format, actual, observer, objectLog);
    delivery.rowsFinished(rows, 2, 4);
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_EQ(actual[i], i >= 12 && i < 24 ? picture[i] : guard) << i;
    delivery.rowsFinished(rows, 4, 6);
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_EQ(actual[i], i >= 12 ? picture[i] : guard) << i;
    // A band of no rows, even behind the last one, is none.
    delivery.rowsFinished(rows, 6, 6);
    delivery.rowsFinished(rows, 0, 2);
    EXPECT_EQ(actual, countingBytes(34));
}

TEST_F(OutputDeliveryTest, rgb32IsCutOffWhereTheStrideIsShorterThanARow) {
    EXPECT_EQ(deliver({PixelFormat::rgb32, 2, 2, 5, false}, 10), bytes({1, 2, 3, 4, 5, 9, 10, 11, 12, 13}));
    EXPECT_EQ(result, S_OK);
    EXPECT_TRUE(isUntouched(deliver({PixelFormat::rgb32, 2, 2, 5, false}, 9)));
    EXPECT_EQ(result, E_FAIL);
}

TEST_F(OutputDeliveryTest, rgb32NeedsNoRoomBehindTheLastPixel) {
    for (const bool isBottomUp : {false, true}) {
        for (const std::size_t pitchPadding : {0U, 3U}) {
            SCOPED_TRACE(pitchPadding);
            const OutputFormat format{PixelFormat::rgb32, 1, 3, 7, isBottomUp};
            EXPECT_FALSE(isUntouched(deliver(format, 18, pitchPadding)));
            EXPECT_EQ(result, S_OK);
            for (std::size_t length = 0; length < 18; ++length) {
                EXPECT_TRUE(isUntouched(deliver(format, length, pitchPadding)));
                EXPECT_EQ(result, E_FAIL);
            }
        }
    }
    // Last rows: bytes 15 to 18 of a picture whose pitch is the stride.
    const auto delivered = deliver({PixelFormat::rgb32, 1, 3, 7, false}, 18, 3);
    EXPECT_EQ(delivered, countingBytes(18));
}

// Of a pixel 255, 0, 0: luma (16843·255 + 0x108000) >> 16 = 82, plane 1 (28770·1020 + 0x2008000) >> 18 = 240,
// plane 2 (−9699·1020 + 0x2008000) >> 18 = 90.

TEST_F(OutputDeliveryTest, yv12PlanesLieBehindOneAnother) {
    paint(4, 2);
    EXPECT_EQ(deliver({PixelFormat::yv12, 4, 2, 4, false}, 12),
              bytes({82, 82, 82, 82, 82, 82, 82, 82, 90, 90, 240, 240}));
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, yv12RowsGoToTheirStrides) {
    paint(4, 4);
    // Luma in rows of 7, chroma in rows of 3 from 28 and from (4·7·5) / 4 = 35 on.
    EXPECT_EQ(
        deliver({PixelFormat::yv12, 4, 4, 7, false}, 42),
        bytes({82, 82, 82, 82, -1, -1, -1, 82, 82, 82, 82, -1, -1, -1, 82,  82,  82, 82,  -1,  -1, -1,
               82, 82, 82, 82, -1, -1, -1, 90, 90, -1, 90, 90, -1, -1, 240, 240, -1, 240, 240, -1, -1}));
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, anOddLastColumnAndRowOfYv12AreLeftAlone) {
    paint(5, 3);
    // Rows of 6; chroma from 18 and from (3·6·5) / 4 = 22 on.
    EXPECT_EQ(deliver({PixelFormat::yv12, 5, 3, 6, false}, 27),
              bytes({82, 82, 82, 82, -1, -1, 82, 82, 82,  82,  -1, -1, -1, -1,
                     -1, -1, -1, -1, 90, 90, -1, -1, 240, 240, -1, -1, -1}));
    EXPECT_EQ(result, S_OK);
    paint(4, 3);
    deliver({PixelFormat::yv12, 4, 3, 4, false}, 18);
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, yv12NeedsItsLastChromaSampleAndNoMore) {
    paint(4, 4);
    // The last row of the last plane: 35 + 3, then two samples.
    for (std::size_t length = 0; length < 40; ++length) {
        EXPECT_TRUE(isUntouched(deliver({PixelFormat::yv12, 4, 4, 7, false}, length)));
        EXPECT_EQ(result, E_FAIL);
    }
    EXPECT_EQ(deliver({PixelFormat::yv12, 4, 4, 7, false}, 40).back(), std::byte{240});
    EXPECT_EQ(result, S_OK);
}

TEST_F(OutputDeliveryTest, yv12IsCutOffWhereTheStrideIsShorterThanARow) {
    paint(6, 2);
    // Rows of 3 have room for 2 columns; chroma at 6 and at (2·3·5) / 4 = 7.
    EXPECT_EQ(deliver({PixelFormat::yv12, 6, 2, 3, false}, 8), bytes({82, 82, -1, 82, 82, -1, 90, 240}));
    EXPECT_EQ(result, S_OK);
    for (const std::uint32_t stride : {0U, 1U}) {
        EXPECT_TRUE(isUntouched(deliver({PixelFormat::yv12, 6, 2, stride, false}, 100)));
        EXPECT_EQ(result, E_FAIL);
    }
}

TEST_F(OutputDeliveryTest, yv12ReadsRowsWithPaddingBehindThem) {
    // Two rows 255, 0, 0 with 8 bytes behind each that would show.
    paint(2, 2);
    std::vector<std::byte> padded;
    for (std::size_t row = 0; row < 2; ++row) {
        padded.insert(padded.end(), picture.begin(), picture.begin() + 8);
        padded.insert(padded.end(), 8, std::byte{77});
    }
    picture = padded;
    EXPECT_EQ(deliver({PixelFormat::yv12, 2, 2, 2, false}, 6, 8), bytes({82, 82, 82, 82, 90, 240}));
}

TEST_F(OutputDeliveryTest, aPictureTooSmallForYv12IsRefused) {
    EXPECT_TRUE(isUntouched(deliver({PixelFormat::yv12, 1, 2, 8, false}, 100)));
    EXPECT_EQ(result, E_FAIL);
    EXPECT_TRUE(isUntouched(deliver({PixelFormat::yv12, 2, 1, 8, false}, 100)));
    EXPECT_EQ(result, E_FAIL);
    EXPECT_TRUE(services.debuggerLines.empty());
}

TEST_F(OutputDeliveryTest, aStrideOfFourThousandMillionBytesIsRefused) {
    for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12}) {
        EXPECT_TRUE(isUntouched(deliver({format, 4, 4, 0xFFFFFFFF, false}, 100)));
        EXPECT_EQ(result, E_FAIL);
    }
}

TEST_F(OutputDeliveryTest, otherFormatsAreRefusedAndLogged) {
    for (const auto format : {PixelFormat::yuy2, static_cast<PixelFormat>(0x3231564E)}) {
        services.debuggerLines.clear();
        EXPECT_TRUE(isUntouched(deliver({format, 4, 4, 16, false}, 100)));
        EXPECT_EQ(result, E_FAIL);
        ASSERT_EQ(services.debuggerLines.size(), 2U); // delivered twice
        EXPECT_EQ(services.debuggerLines[0], "T:E:Could not convert image data to output image format.\n");
    }
}

TEST_F(OutputDeliveryTest, theObserverSeesThePictureWhateverBecomesOfTheOutput) {
    observer = &watching;
    const struct {
        OutputFormat format;
        HRESULT expected;
        std::size_t length;
    } cases[]{{{PixelFormat::rgb32, 4, 2, 16, false}, S_OK, 32},
              {{PixelFormat::yv12, 4, 2, 4, false}, S_OK, 12},
              {{PixelFormat::rgb32, 4, 2, 16, false}, E_FAIL, 31},
              {{PixelFormat::yuy2, 4, 2, 8, false}, E_FAIL, 16}};
    for (const HRESULT answer : {S_OK, E_ABORT}) {
        watching.result = answer;
        for (const auto& [format, expected, length] : cases) {
            watching.count = 0;
            deliver(format, length, 12);
            EXPECT_EQ(result, expected);
            EXPECT_EQ(watching.count, 2); // delivered twice
            EXPECT_EQ(watching.seen.data, picture.data());
            EXPECT_EQ(watching.seen.pitchBytes, 28U);
            EXPECT_EQ(watching.seen.width, 4);
            EXPECT_EQ(watching.seen.height, 2);
        }
    }
}

/// The same picture, handed over in bands of `rows` rows before it is shown, the last band first.
void inBands(COutputDelivery& delivery, const MappedRows& picture, int rows) {
    const int bands = (picture.height + rows - 1) / rows;
    for (int band = bands - 1; band >= 0; --band) {
        delivery.rowsFinished(picture, band * rows, std::min((band + 1) * rows, picture.height));
    }
}

TEST_F(OutputDeliveryTest, rowsHandedOverAsTheyAreFinishedMakeTheSameFrame) {
    for (const auto& [pixels, isBottomUp] :
         {std::pair{PixelFormat::rgb32, false}, {PixelFormat::rgb32, true}, {PixelFormat::yv12, false}}) {
        for (const auto& [width, height] : {std::pair{34, 50}, {35, 33}, {2, 2}}) {
            const bool isYv12 = pixels == PixelFormat::yv12;
            const auto stride = static_cast<std::uint32_t>(isYv12 ? width / 2 * 2 + 6 : width * 4 + 12);
            const OutputFormat format{pixels, width, height, stride, isBottomUp};
            const std::size_t length =
                static_cast<std::size_t>(stride) * static_cast<std::size_t>(height) * 2;
            const std::vector<std::byte> expected = deliver(format, length, 64);
            ASSERT_EQ(result, S_OK);
            std::vector<std::byte> actual(length, guard);
            COutputDelivery delivery(format, actual, observer, objectLog);
            const MappedRows rows{picture.data(), static_cast<std::size_t>(width) * 4 + 64, width, height};
            inBands(delivery, rows, 16);
            EXPECT_EQ(actual, expected);
            // Nothing is left to do then: what happens to the frame in between stays.
            std::fill(actual.begin(), actual.end(), guard);
            EXPECT_EQ(delivery.visit(rows), S_OK);
            EXPECT_EQ(delivery.visit({nullptr, rows.pitchBytes, width, height}), S_OK);
            EXPECT_TRUE(isUntouched(actual));
        }
    }
}

TEST_F(OutputDeliveryTest, rowsOfAFrameThatCannotBeDeliveredStayWhereTheyAre) {
    picture = countingBytes(16 * 4 * 32);
    for (const PixelFormat pixels : {PixelFormat::rgb32, PixelFormat::yv12}) {
        const OutputFormat format{pixels, 16, 32, pixels == PixelFormat::yv12 ? 16U : 64U, false};
        std::vector<std::byte> tooShort(500, guard);
        COutputDelivery delivery(format, tooShort, observer, objectLog);
        const MappedRows rows{picture.data(), 64, 16, 32};
        inBands(delivery, rows, 16);
        EXPECT_EQ(delivery.visit(rows), E_FAIL);
        EXPECT_TRUE(isUntouched(tooShort));
    }
}

TEST_F(OutputDeliveryTest, aPictureWithoutPixelsThatWasNotHandedOverIsRefused) {
    for (const PixelFormat pixels : {PixelFormat::rgb32, PixelFormat::yv12}) {
        const OutputFormat format{pixels, 16, 32, pixels == PixelFormat::yv12 ? 16U : 64U, false};
        std::vector<std::byte> output(16 * 32 * 4, guard);
        EXPECT_EQ(COutputDelivery(format, output, observer, objectLog).visit({nullptr, 64, 16, 32}), E_FAIL);
        EXPECT_TRUE(isUntouched(output));
    }
}

TEST_F(OutputDeliveryTest, anObserverNeedsMoreThanTheRows) {
    const OutputFormat format{PixelFormat::rgb32, 4, 2, 16, false};
    EXPECT_TRUE(COutputDelivery(format, {}, nullptr, objectLog).takesRowsAlone());
    EXPECT_FALSE(COutputDelivery(format, {}, &watching, objectLog).takesRowsAlone());
}

TEST_F(OutputDeliveryTest, rowsOfRgb32AreWantedInTheBuffer) {
    std::vector<std::byte> output(3 * 20, guard);
    // Three rows of 16 bytes at every 20th; the last one needs no room behind its pixels.
    for (const std::size_t length : {60U, 56U}) {
        const std::span<std::byte> buffer = std::span(output).first(length);
        const OutputFormat topDown{PixelFormat::rgb32, 4, 3, 20, false};
        const WritableRows rows = COutputDelivery(topDown, buffer, nullptr, objectLog).rowsToFill(4, 3);
        EXPECT_EQ(rows.data, output.data());
        EXPECT_EQ(rows.pitchBytes, 20);
        const OutputFormat bottomUp{PixelFormat::rgb32, 4, 3, 20, true};
        const WritableRows turned = COutputDelivery(bottomUp, buffer, nullptr, objectLog).rowsToFill(4, 3);
        EXPECT_EQ(turned.data, output.data() + 40);
        EXPECT_EQ(turned.pitchBytes, -20);
    }
    EXPECT_TRUE(isUntouched(output));
}

TEST_F(OutputDeliveryTest, rowsThatHaveToBeChangedOnTheWayAreNotWantedInTheBuffer) {
    std::vector<std::byte> output(1000, guard);
    const auto isWanted = [&](const OutputFormat& format, std::size_t length, int height = 3) {
        const std::span<std::byte> buffer = std::span(output).first(length);
        return COutputDelivery(format, buffer, observer, objectLog).rowsToFill(4, height).data != nullptr;
    };
    for (const bool isBottomUp : {false, true}) {
        EXPECT_TRUE(isWanted({PixelFormat::rgb32, 4, 3, 16, isBottomUp}, 48));
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 16, isBottomUp}, 47)) << "too short";
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 16, isBottomUp}, 0)) << "no memory at all";
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 15, isBottomUp}, 1000)) << "rows are cut off";
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 0, isBottomUp}, 1000));
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 0xFFFFFFFF, isBottomUp}, 1000));
        EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 16, isBottomUp}, 48, 4))
            << "the picture has more rows";
    }
    EXPECT_FALSE(isWanted({PixelFormat::yv12, 4, 3, 16, false}, 1000));
    EXPECT_FALSE(isWanted({PixelFormat::yuy2, 4, 3, 16, false}, 1000));
    observer = &watching;
    EXPECT_FALSE(isWanted({PixelFormat::rgb32, 4, 3, 16, false}, 48)) << "the observer wants to see the rows";
    EXPECT_TRUE(isUntouched(output));
}

TEST_F(OutputDeliveryTest, rowsThatWereWrittenToTheBufferCountAsDelivered) {
    const OutputFormat format{PixelFormat::rgb32, 16, 40, 64, false};
    std::vector<std::byte> output(64 * 40, guard);
    const MappedRows written{nullptr, 0, 16, 40};
    COutputDelivery all(format, output, nullptr, objectLog);
    inBands(all, written, 16);
    EXPECT_EQ(all.visit(written), S_OK);
    COutputDelivery some(format, output, nullptr, objectLog);
    some.rowsFinished(written, 0, 16);
    some.rowsFinished(written, 32, 40);
    EXPECT_EQ(some.visit(written), E_FAIL) << "rows 16 to 31 are missing";
    EXPECT_TRUE(isUntouched(output)) << "nothing is written a second time";
}

} // namespace
} // namespace tarvo::render
