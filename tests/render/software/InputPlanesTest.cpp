#include "render/software/InputPlanes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace tarvo::render::software {
namespace {

constexpr int rowCount = 4;
constexpr std::size_t rowBytes = 100;
using Frame = std::array<std::byte, rowCount * rowBytes>;

Frame frameOf(int value) {
    Frame frame;
    frame.fill(static_cast<std::byte>(value));
    return frame;
}

/// Lends the frame to the plane, whose rows it then is.
void lend(CInputPlane& plane, const Frame& frame) {
    RawRows* const rows = plane.writable();
    ASSERT_NE(rows, nullptr);
    rows->lend({frame.data(), rowBytes, rowBytes, rowCount, true});
    plane.replaceWith(*rows);
}

const std::uint8_t* keep(CInputPlane& plane) {
    plane.chooseMemory();
    RawRows& rows = *plane.current();
    rows.keep(0, rowCount, copyThroughCaches);
    rows.lender = {};
    return rows.data();
}

TEST(InputPlanes, FramesThatNobodyLooksAtAnyMoreMakeRoomForTheNext) {
    CInputPlane plane(rowBytes, rowCount, systemMemory);
    const std::uint8_t* memory = nullptr;
    for (int value = 1; value < 5; ++value) {
        const Frame frame = frameOf(value);
        // A picture shows the frame before until this one is there.
        CShare<RawRows> shown = plane.current();
        lend(plane, frame);
        ASSERT_NE(plane.current().get(), shown.get());
        shown = {};
        const std::uint8_t* const kept = keep(plane);
        EXPECT_EQ(kept[0], value);
        EXPECT_EQ(kept[(rowCount - 1) * plane.current()->step() + 99], value);
        if (memory != nullptr) {
            EXPECT_EQ(kept, memory) << "the second set's memory is never touched";
        }
        memory = kept;
    }
}

TEST(InputPlanes, AFrameThatIsStillLookedAtKeepsItsMemory) {
    CInputPlane plane(rowBytes, rowCount, systemMemory);
    const Frame first = frameOf(1);
    lend(plane, first);
    const std::uint8_t* const memory = keep(plane);
    const CShare<RawRows> looking = plane.current();
    const Frame second = frameOf(2);
    lend(plane, second);
    EXPECT_NE(keep(plane), memory);
    EXPECT_EQ(looking->data(), memory);
    EXPECT_EQ(memory[0], 1);
    EXPECT_EQ(plane.current()->data()[0], 2);
}

} // namespace
} // namespace tarvo::render::software
