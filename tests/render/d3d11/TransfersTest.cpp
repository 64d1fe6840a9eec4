// Uploads, copies and the way back.

#include "tests/render/d3d11/D3d11Fixture.h"

#include <gmock/gmock.h>

#include <functional>

namespace tarvo::render::d3d11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::byte> counted(std::size_t size, int first = 1) {
    std::vector<std::byte> result(size);
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<std::byte>((i + first) * 7 % 251 + 1);
    return result;
}

class Transfers : public CD3d11Test {
protected:
    /// Small enough to reckon with: 8 × 6 in, 4 × 2 out.
    void openSmall(PixelFormat format, std::uint32_t frameBytes) {
        ASSERT_EQ(device->open({format, 8, 6, 0, frameBytes, false}, {PixelFormat::rgb32, 4, 2, 16, false}),
                  S_OK);
        fake.takeCalls();
        lines.take();
    }
};

TEST_F(Transfers, aPictureIsReplacedAtOnce) {
    for (const std::size_t extraPitch : {0, 20}) {
        SCOPED_TRACE(extraPitch);
        fake.extraPitchBytes = extraPitch;
        openSmall(PixelFormat::rgb32, 192);
        const std::string texture = extraPitch == 0 ? "texture2" : "texture8";
        const std::vector<std::byte> frame = counted(192);
        ASSERT_EQ(device->upload(Surface::inputPicture, {frame.data(), 32, 32, 6}), S_OK);
        EXPECT_THAT(fake.takeCalls(), ElementsAre("Map " + texture, "Unmap " + texture));
        EXPECT_EQ(fake.contents(texture), frame);
    }
}

TEST_F(Transfers, rowsThatLieUpsideDownAreTurned) {
    openSmall(PixelFormat::rgb32, 192);
    const std::vector<std::byte> frame = counted(192);
    ASSERT_EQ(device->upload(Surface::inputPicture, {frame.data() + 160, -32, 32, 6}), S_OK);
    std::vector<std::byte> turned;
    for (int row = 5; row >= 0; --row)
        turned.insert(turned.end(), frame.begin() + row * 32, frame.begin() + (row + 1) * 32);
    EXPECT_EQ(fake.contents("texture2"), turned);
}

TEST_F(Transfers, whatIsNotCoveredBecomesZero) {
    openSmall(PixelFormat::rgb32, 192);
    // Four rows of 20 bytes; a row more, a byte more would be outside.
    const std::vector<std::byte> frame = counted(3 * 24 + 20);
    ASSERT_EQ(device->upload(Surface::inputPicture, {frame.data(), 24, 20, 4}), S_OK);
    std::vector<std::byte> expected(192);
    for (std::size_t row = 0; row < 4; ++row)
        std::copy_n(frame.begin() + row * 24, 20, expected.begin() + row * 32);
    EXPECT_EQ(fake.contents("texture2"), expected);

    ASSERT_EQ(device->upload(Surface::inputPicture, {}), S_OK);
    EXPECT_EQ(fake.contents("texture2"), std::vector<std::byte>(192));
}

TEST_F(Transfers, everyPlaneHasItsOwnTexture) {
    openSmall(PixelFormat::yv12, 72);
    const std::vector<std::byte> frame = counted(72);
    ASSERT_EQ(device->upload(Surface::yPlane, {frame.data(), 8, 8, 6}), S_OK);
    ASSERT_EQ(device->upload(Surface::crPlane, {frame.data() + 48, 4, 4, 3}), S_OK);
    ASSERT_EQ(device->upload(Surface::cbPlane, {frame.data() + 60, 4, 4, 3}), S_OK);
    EXPECT_EQ(fake.contents("texture6"), std::vector(frame.begin(), frame.begin() + 48));
    EXPECT_EQ(fake.contents("texture7"), std::vector(frame.begin() + 48, frame.begin() + 60));
    EXPECT_EQ(fake.contents("texture8"), std::vector(frame.begin() + 60, frame.end()));
    EXPECT_THAT(lines.take(), IsEmpty());
}

TEST_F(Transfers, aPlaneThatCannotBeMappedIsLoggedAndStays) {
    openSmall(PixelFormat::yv12, 72);
    const std::vector<std::byte> frame = counted(12);
    ASSERT_EQ(device->upload(Surface::crPlane, {frame.data(), 4, 4, 3}), S_OK);
    fake.mapsUntilFailure = 0;
    fake.failure = static_cast<HRESULT>(0x887A0005);
    const std::vector<std::byte> other = counted(12, 5);
    EXPECT_EQ(device->upload(Surface::crPlane, {other.data(), 4, 4, 3}), fake.failure);
    EXPECT_EQ(fake.contents("texture7"), frame);
    EXPECT_THAT(lines.take(),
                ElementsAre(CLogLines::trace("CTexture2DAdapter::UpdateResources()", fake.failure)));
}

TEST_F(Transfers, packedInputIsOneRow) {
    openSmall(PixelFormat::yuy2, 96);
    const std::vector<std::byte> frame = counted(96);
    ASSERT_EQ(device->upload(Surface::packedInput, {frame.data(), 96, 96, 1}), S_OK);
    EXPECT_EQ(fake.contents("buffer0"), frame);
    ASSERT_EQ(device->upload(Surface::packedInput, {frame.data(), 200, 50, 1}), S_OK);
    std::vector<std::byte> cut(frame.begin(), frame.begin() + 50);
    cut.resize(96);
    EXPECT_EQ(fake.contents("buffer0"), cut);
}

TEST_F(Transfers, lookupTablesAreReplaced) {
    openSmall(PixelFormat::rgb32, 192);
    EXPECT_EQ(device->upload(Surface::lookup, {}), E_FAIL);
    ASSERT_EQ(device->lookup(2, 3), S_OK);
    const std::vector<std::byte> table = counted(48);
    ASSERT_EQ(device->upload(Surface::lookup, {table.data(), 16, 16, 3}), S_OK);
    EXPECT_EQ(fake.contents("texture6"), table);
}

TEST_F(Transfers, aFailedMapSkipsTheUpload) {
    openSmall(PixelFormat::rgb32, 192);
    const std::vector<std::byte> frame = counted(192);
    ASSERT_EQ(device->upload(Surface::inputPicture, {frame.data(), 32, 32, 6}), S_OK);
    fake.mapsUntilFailure = 0;
    EXPECT_EQ(device->upload(Surface::inputPicture, {}), E_OUTOFMEMORY);
    EXPECT_EQ(fake.contents("texture2"), frame);
    EXPECT_EQ(fake.takeCalls().back(), "Map texture2 fails");
}

TEST_F(Transfers, onlyInputIsUploaded) {
    openSmall(PixelFormat::rgb32, 192);
    EXPECT_EQ(device->upload(Surface::outputTarget, {}), E_INVALIDARG);
    EXPECT_EQ(device->upload(Surface::maskedInput, {}), E_INVALIDARG);
    EXPECT_EQ(device->upload(Surface::yPlane, {}), E_FAIL);
    EXPECT_EQ(device->upload(Surface::packedInput, {}), E_FAIL);
    EXPECT_EQ(device->upload(Surface::none, {}), E_FAIL);
    EXPECT_EQ(device->upload(static_cast<Surface>(99), {}), E_FAIL);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(Transfers, targetsAreCleared) {
    openSmall(PixelFormat::rgb32, 192);
    device->clear(Surface::outputTarget, {0, 0, 0, 1});
    device->clear(Surface::conversionTarget, {1, 0, 0.5F, 1});
    device->clear(Surface::inputPicture, {0, 0, 0, 1});
    EXPECT_THAT(fake.takeCalls(), ElementsAre("ClearRenderTargetView target0 0 0 0 1",
                                              "ClearRenderTargetView target1 1 0 0.5 1"));
}

TEST_F(Transfers, wholeSurfacesAreCopiedOntoTheirLike) {
    openSmall(PixelFormat::yuy2, 192);
    device->copy(Surface::conversionTarget, Surface::inputPicture);
    device->copy(Surface::conversionTarget, Surface::maskedInput);
    // Of another size, another kind, absent, or itself: nothing the device could do.
    device->copy(Surface::outputTarget, Surface::inputPicture);
    device->copy(Surface::packedInput, Surface::inputPicture);
    device->copy(Surface::excludeArea, Surface::inputPicture);
    device->copy(Surface::inputPicture, Surface::inputPicture);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("CopyResource texture1 to texture2", "CopyResource texture1 to texture3"));
}

TEST_F(Transfers, aBoxIsCopiedToTheCorner) {
    openSmall(PixelFormat::rgb32, 192);
    ASSERT_EQ(device->geometry(vertices, {{}, {2, 0, 6, 4}}), S_OK);
    device->copyBox(Surface::inputPicture, {2, 0, 6, 4}, Surface::excludeArea);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("CopySubresourceRegion texture2 2 0 0 6 4 1 to texture6 0 0 0"));
    // Empty, outside of the one or larger than the other.
    device->copyBox(Surface::inputPicture, {}, Surface::excludeArea);
    device->copyBox(Surface::inputPicture, {6, 0, 10, 4}, Surface::excludeArea);
    device->copyBox(Surface::inputPicture, {-2, 0, 2, 4}, Surface::excludeArea);
    device->copyBox(Surface::inputPicture, {0, 0, 6, 4}, Surface::excludeArea);
    device->copyBox(Surface::inputPicture, {0, 0, 2, 2}, Surface::lookup);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(Transfers, flushes) {
    openSmall(PixelFormat::rgb32, 192);
    device->flush();
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Flush"));
}

class CVisitor final : public IMappedRowsVisitor {
public:
    explicit CVisitor(std::function<HRESULT(const MappedRows&)> see) : m_see(std::move(see)) {}
    HRESULT visit(const MappedRows& rows) override { return m_see(rows); }

private:
    std::function<HRESULT(const MappedRows&)> m_see;
};

TEST_F(Transfers, thePictureIsReadBack) {
    fake.extraPitchBytes = 12;
    openSmall(PixelFormat::rgb32, 192);
    const std::vector<std::byte> picture = counted(32);
    fake.setContents("texture0", picture);
    std::vector<std::byte> seen;
    CVisitor visitor([&](const MappedRows& rows) {
        EXPECT_EQ(rows.width, 4);
        EXPECT_EQ(rows.height, 2);
        EXPECT_EQ(rows.pitchBytes, 28U);
        for (std::size_t row = 0; row < 2; ++row)
            seen.insert(seen.end(), rows.data + row * rows.pitchBytes,
                        rows.data + row * rows.pitchBytes + 16);
        EXPECT_EQ(fake.mappedCount, 1);
        return S_FALSE;
    });
    EXPECT_EQ(device->readBack(visitor), S_FALSE);
    EXPECT_EQ(seen, picture);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("CopyResource texture0 to texture4", "Map texture4", "Unmap texture4"));
}

TEST_F(Transfers, memoryIsGivenBackWhateverTheVisitorDoes) {
    openSmall(PixelFormat::rgb32, 192);
    CVisitor failing([](const MappedRows&) { return E_ABORT; });
    EXPECT_EQ(device->readBack(failing), E_ABORT);
    EXPECT_EQ(fake.mappedCount, 0);
    CVisitor throwing([](const MappedRows&) -> HRESULT { throw std::bad_alloc(); });
    EXPECT_THROW(device->readBack(throwing), std::bad_alloc);
    EXPECT_EQ(fake.mappedCount, 0);
}

TEST_F(Transfers, aFailedReadBackShowsNothing) {
    openSmall(PixelFormat::rgb32, 192);
    fake.mapsUntilFailure = 0;
    fake.failure = static_cast<HRESULT>(0x887A0005);
    CVisitor visitor([](const MappedRows&) {
        ADD_FAILURE() << "nothing is mapped";
        return S_OK;
    });
    EXPECT_EQ(device->readBack(visitor), fake.failure);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("CopyResource texture0 to texture4", "Map texture4 fails"));
    device->close();
    EXPECT_EQ(device->readBack(visitor), E_FAIL);
}

TEST_F(Transfers, aReadBackThatFailsSinceTheDeviceIsGoneSaysSo) {
    openSmall(PixelFormat::rgb32, 192);
    const auto answer = [&](HRESULT failure, HRESULT reason) {
        fake.failure = failure;
        fake.removedReason = reason;
        fake.mapsUntilFailure = 0;
        CVisitor visitor([](const MappedRows&) { return S_OK; });
        return device->readBack(visitor);
    };
    EXPECT_EQ(answer(E_FAIL, S_OK), E_FAIL) << "the device lives";
    for (const std::uint32_t reason : {0x887A0006U, 0x887A0020U, 0x887A0005U})
        EXPECT_EQ(answer(E_FAIL, static_cast<HRESULT>(reason)), DXGI_ERROR_DEVICE_REMOVED);
    // A reset is told as such.
    EXPECT_EQ(answer(DXGI_ERROR_DEVICE_RESET, DXGI_ERROR_DEVICE_RESET), DXGI_ERROR_DEVICE_RESET);
}

} // namespace
} // namespace tarvo::render::d3d11
