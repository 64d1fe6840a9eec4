#include "render/d3d11/Surfaces.h"

#include "tests/render/d3d11/D3d11Fixture.h"

#include <gmock/gmock.h>

namespace tarvo::render::d3d11 {
namespace {

using com::ComPtr;
using testing::ElementsAre;
using testing::IsEmpty;

class Texture2D : public testing::Test {
protected:
    Texture2D() { tests::makeFakeDevice(fake, device, context); }

    tests::CFakeD3d11 fake;
    CLogLines lines;
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    ComPtr<ID3D11Texture2D> texture;
    ComPtr<ID3D11ShaderResourceView> view;
    ComPtr<ID3D11RenderTargetView> target;
};

TEST_F(Texture2D, needsADevice) {
    EXPECT_EQ(CreateTexture2D(lines.log(), nullptr, 8, 8, pictureFormat, &texture, &view, &target),
              static_cast<HRESULT>(0x80070057));
    EXPECT_FALSE(texture || view || target);
    EXPECT_THAT(lines.take(), ElementsAre(CLogLines::trace("CreateTexture2D()", E_INVALIDARG)));
}

TEST_F(Texture2D, needsSomethingToMake) {
    EXPECT_EQ(CreateTexture2D(lines.log(), device.get(), 8, 8, pictureFormat, nullptr, nullptr, nullptr),
              static_cast<HRESULT>(0x80070057));
    EXPECT_THAT(lines.take(), ElementsAre(CLogLines::trace("CreateTexture2D()", E_INVALIDARG)));
    EXPECT_THAT(fake.creations, IsEmpty());
}

TEST_F(Texture2D, makesWhatIsAskedFor) {
    ASSERT_EQ(CreateTexture2D(lines.log(), device.get(), 8, 6, targetFormat, &texture, &view, &target), S_OK);
    EXPECT_TRUE(texture && view && target);
    ASSERT_EQ(fake.creations.size(), 3U);
    EXPECT_EQ(fake.creations[0].name, "texture0");
    EXPECT_EQ(fake.creations[1].name, "view0");
    EXPECT_EQ(fake.creations[1].resource, "texture0");
    EXPECT_EQ(fake.creations[2].name, "target0");
    EXPECT_EQ(fake.creations[2].resource, "texture0");
}

TEST_F(Texture2D, aViewAloneKeepsItsTexture) {
    ASSERT_EQ(CreateTexture2D(lines.log(), device.get(), 8, 6, pictureFormat, nullptr, &view, nullptr), S_OK);
    EXPECT_EQ(fake.liveObjects, 4); // device, context, view, texture
    view.reset();
    EXPECT_EQ(fake.liveObjects, 2);
}

TEST_F(Texture2D, aFailedStepLeavesWhatWasThere) {
    ASSERT_EQ(CreateTexture2D(lines.log(), device.get(), 8, 6, targetFormat, &texture, &view, &target), S_OK);
    ID3D11Texture2D* const oldTexture = texture.get();
    ID3D11ShaderResourceView* const oldView = view.get();
    ID3D11RenderTargetView* const oldTarget = target.get();
    for (int step = 0; step < 3; ++step) {
        fake.creationsUntilFailure = step;
        EXPECT_EQ(CreateTexture2D(lines.log(), device.get(), 4, 4, targetFormat, &texture, &view, &target),
                  E_OUTOFMEMORY);
        EXPECT_EQ(texture.get(), oldTexture);
        EXPECT_EQ(view.get(), oldView);
        EXPECT_EQ(target.get(), oldTarget);
        EXPECT_EQ(fake.liveObjects, 5);
        EXPECT_THAT(lines.take(), ElementsAre(CLogLines::trace("CreateTexture2D()", E_OUTOFMEMORY)));
    }
}

TEST_F(Texture2D, adapterReleasesItsOldPlanesFirst) {
    CTexture2DAdapter adapter(device, context, lines.log());
    const PlaneRecords records = planeRecordsOf(inputOf(PixelFormat::yv12));
    ASSERT_EQ(adapter.InitializeTextures(records), S_OK);
    EXPECT_EQ(fake.liveObjects, 8);
    ASSERT_EQ(adapter.InitializeTextures(records), S_OK);
    EXPECT_EQ(fake.liveObjects, 8);
    fake.creationsUntilFailure = 3;
    EXPECT_EQ(adapter.InitializeTextures(records), E_OUTOFMEMORY);
    EXPECT_EQ(fake.liveObjects, 2);
    EXPECT_FALSE(adapter.plane(0).resource);
    EXPECT_THAT(lines.take(),
                ElementsAre(CLogLines::trace("CreateTexture2D()", E_OUTOFMEMORY),
                            CLogLines::trace("CTexture2DAdapter::InitializeTextures()", E_OUTOFMEMORY)));
}

} // namespace
} // namespace tarvo::render::d3d11
