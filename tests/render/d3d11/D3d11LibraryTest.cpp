#include "render/d3d11/D3d11Library.h"

#include "tests/render/d3d11/ProbeD3d11.h"
#include "tests/support/FakeD3d11.h"

#include <gtest/gtest.h>

#include <array>

namespace tarvo::render::d3d11 {
namespace {

using com::ComPtr;

constexpr std::array levels{D3D_FEATURE_LEVEL_10_1, D3D_FEATURE_LEVEL_11_0};
constexpr DeviceRequest request{D3D_DRIVER_TYPE_WARP, 0x20, levels, 7};

/// The probe's notes, in a library that this test keeps loaded.
class D3d11Library : public testing::Test {
protected:
    D3d11Library()
        : m_library(TARVO_PROBE_D3D11), probe(static_cast<D3d11Probe*>(m_library.symbol("tarvoD3d11Probe"))) {
        tests::makeFakeDevice(fake, fakeDevice, fakeContext);
        *probe = {};
    }

private:
    platform::CSystemLibrary m_library;

protected:
    D3d11Probe* probe;
    tests::CFakeD3d11 fake;
    ComPtr<ID3D11Device> fakeDevice;
    ComPtr<ID3D11DeviceContext> fakeContext;
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
};

TEST_F(D3d11Library, thatIsMissingMakesNothing) {
    CD3d11Library library("tarvo-no-such-library.dll");
    EXPECT_FALSE(library.isInstalled());
    EXPECT_EQ(library.createDevice(request, device, context), E_FAIL);
    EXPECT_FALSE(device || context);
}

TEST_F(D3d11Library, passesTheRequestOn) {
    CD3d11Library library(TARVO_PROBE_D3D11);
    EXPECT_TRUE(library.isInstalled());
    EXPECT_EQ(probe->callCount, 0);
    probe->device = ComPtr(fakeDevice).detach();
    probe->context = ComPtr(fakeContext).detach();
    ASSERT_EQ(library.createDevice(request, device, context), S_OK);
    EXPECT_EQ(device.get(), fakeDevice.get());
    EXPECT_EQ(context.get(), fakeContext.get());
    EXPECT_EQ(probe->callCount, 1);
    EXPECT_EQ(probe->adapter, nullptr);
    EXPECT_EQ(probe->software, nullptr);
    EXPECT_EQ(probe->driverType, D3D_DRIVER_TYPE_WARP);
    EXPECT_EQ(probe->flags, 0x20U);
    ASSERT_EQ(probe->levelCount, 2U);
    EXPECT_EQ(probe->levels[0], D3D_FEATURE_LEVEL_10_1);
    EXPECT_EQ(probe->levels[1], D3D_FEATURE_LEVEL_11_0);
    EXPECT_EQ(probe->sdkVersion, 7U);
    device.reset();
    context.reset();
    EXPECT_EQ(fake.liveObjects, 2);
}

TEST_F(D3d11Library, aFailureComesWithNothing) {
    CD3d11Library library(TARVO_PROBE_D3D11);
    probe->device = ComPtr(fakeDevice).detach();
    probe->context = nullptr;
    probe->result = static_cast<HRESULT>(0x887A0004);
    EXPECT_EQ(library.createDevice(request, device, context), probe->result);
    EXPECT_FALSE(device || context);
}

} // namespace
} // namespace tarvo::render::d3d11
