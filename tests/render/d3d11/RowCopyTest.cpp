#include "render/d3d11/RowCopy.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tarvo::render::d3d11 {
namespace {

/// Source memory that ends where the rows end, so that the address sanitizer sees a byte too many.
std::unique_ptr<std::byte[]> counted(std::size_t size) {
    auto result = std::make_unique<std::byte[]>(size);
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<std::byte>(i % 255 + 1);
    return result;
}

std::vector<int> numbers(const std::vector<std::byte>& bytes) {
    std::vector<int> result;
    for (const std::byte byte : bytes)
        result.push_back(std::to_integer<int>(byte));
    return result;
}

/// What is on the target of 3 rows of 4 bytes with a pitch of 6, filled with 255 before.
std::vector<int> copied(const SourceRows& rows) {
    std::vector<std::byte> target(2 * 6 + 4, std::byte{255});
    copyRows(rows, {target.data(), 6, 4, 3});
    return numbers(target);
}

TEST(RowCopy, goesRowByRow) {
    const auto source = counted(3 * 4);
    EXPECT_EQ(copied({source.get(), 4, 4, 3}),
              (std::vector<int>{1, 2, 3, 4, 255, 255, 5, 6, 7, 8, 255, 255, 9, 10, 11, 12}));
}

TEST(RowCopy, isOnePieceWhereTheRowsLieAlike) {
    // Rows at a distance of six on either side, of which the source has four, five or all: what lies between
    // comes along, and tells that it was one copy. Neither memory has anything behind its last row.
    const std::vector<int> everything{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    for (const std::size_t rowBytes : {4U, 5U, 6U}) {
        SCOPED_TRACE(rowBytes);
        const auto source = counted(2 * 6 + rowBytes);
        EXPECT_EQ(copied({source.get(), 6, rowBytes, 3}), everything);
    }
}

TEST(RowCopy, inOnePieceEndsWithTheRowsThereAre) {
    const auto source = counted(6 + 4);
    EXPECT_EQ(copied({source.get(), 6, 4, 2}),
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255, 255, 0, 0, 0, 0}));
    const auto longer = counted(4 * 6 + 4);
    EXPECT_EQ(copied({longer.get(), 6, 4, 5}),
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
}

TEST(RowCopy, goesRowByRowWhereRowsAreShorterThanTheSurfaces) {
    // The same distance, but of each row a byte is missing, which has to become zero.
    const auto source = counted(2 * 6 + 3);
    EXPECT_EQ(copied({source.get(), 6, 3, 3}),
              (std::vector<int>{1, 2, 3, 0, 255, 255, 7, 8, 9, 0, 255, 255, 13, 14, 15, 0}));
}

TEST(RowCopy, goesRowByRowWhereTheDistancesDiffer) {
    const auto source = counted(2 * 7 + 4);
    EXPECT_EQ(copied({source.get(), 7, 4, 3}),
              (std::vector<int>{1, 2, 3, 4, 255, 255, 8, 9, 10, 11, 255, 255, 15, 16, 17, 18}));
}

TEST(RowCopy, clearsWhatIsNotCovered) {
    const auto source = counted(2 * 3);
    EXPECT_EQ(copied({source.get(), 3, 3, 2}),
              (std::vector<int>{1, 2, 3, 0, 255, 255, 4, 5, 6, 0, 255, 255, 0, 0, 0, 0}));
    EXPECT_EQ(copied({source.get(), 6, 6, 1}),
              (std::vector<int>{1, 2, 3, 4, 255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0}));
}

TEST(RowCopy, ignoresWhatGoesBeyondTheSurface) {
    const auto source = counted(5 * 5);
    EXPECT_EQ(copied({source.get(), 5, 5, 5}),
              (std::vector<int>{1, 2, 3, 4, 255, 255, 6, 7, 8, 9, 255, 255, 11, 12, 13, 14}));
}

TEST(RowCopy, takesRowsFromTheLastToTheFirst) {
    const auto source = counted(3 * 4);
    EXPECT_EQ(copied({source.get() + 8, -4, 4, 3}),
              (std::vector<int>{9, 10, 11, 12, 255, 255, 5, 6, 7, 8, 255, 255, 1, 2, 3, 4}));
    // Not in one piece either where they lie as far apart as the surface's: they lie the other way round.
    const auto apart = counted(2 * 6 + 4);
    EXPECT_EQ(copied({apart.get() + 12, -6, 4, 3}),
              (std::vector<int>{13, 14, 15, 16, 255, 255, 7, 8, 9, 10, 255, 255, 1, 2, 3, 4}));
}

TEST(RowCopy, takesNothingForZeros) {
    const std::vector<int> zeros{0, 0, 0, 0, 255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0};
    const auto source = counted(4);
    EXPECT_EQ(copied({}), zeros);
    EXPECT_EQ(copied({nullptr, 4, 4, 3}), zeros);
    EXPECT_EQ(copied({source.get(), 4, 0, 3}), zeros);
    EXPECT_EQ(copied({source.get(), 4, 4, 0}), zeros);
    EXPECT_EQ(copied({source.get(), 4, 4, -1}), zeros);
}

} // namespace
} // namespace tarvo::render::d3d11
