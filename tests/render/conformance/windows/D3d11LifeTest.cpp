// Whoever holds something of a Direct3D device holds the device: its reference count tells of everything that
// was not released.

#include "diagnostics/Log.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"
#include "tests/render/conformance/Rig.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarvo::render::conformance {
namespace {

/// Keeps a reference of its own to each device that it gives away.
class CCountingLibrary final : public d3d11::ID3d11Library {
public:
    explicit CCountingLibrary(std::vector<com::ComPtr<ID3D11Device>>& devices) : m_devices(devices) {}

    bool isInstalled() override { return m_library.isInstalled(); }
    HRESULT createDevice(const d3d11::DeviceRequest& request, com::ComPtr<ID3D11Device>& device,
                         com::ComPtr<ID3D11DeviceContext>& context) override {
        const HRESULT result = m_library.createDevice(request, device, context);
        if (SUCCEEDED(result)) {
            m_devices.push_back(device);
        }
        return result;
    }

private:
    d3d11::CD3d11Library m_library;
    std::vector<com::ComPtr<ID3D11Device>>& m_devices;
};

ULONG referenceCount(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

TEST(D3d11Life, everyReferenceIsReleased) {
    std::vector<com::ComPtr<ID3D11Device>> devices;
    CRig rig(std::make_unique<d3d11::CD3d11Device>(std::make_unique<CCountingLibrary>(devices),
                                                   diagnostics::ObjectLog{diagnostics::moduleLog, 1}));
    int cycle = 0;
    for (const Shown shown : {Shown::singleOverview, Shown::digitalZoom, Shown::virtualPtz, Shown::quad}) {
        for (const FrameKind input : {FrameKind::rgb32, FrameKind::yv12, FrameKind::yuy2}) {
            SCOPED_TRACE(++cycle);
            FrameCase frameCase;
            frameCase.shown = shown;
            frameCase.input = input;
            frameCase.area = {0.2, 0.2, 0.6, 0.6};
            const Rendered rendered =
                rig.render(frameCase, inputFrame(input, randomPicture(120, 90, 1), false));
            ASSERT_EQ(rendered.result, S_OK);
            EXPECT_EQ(rendered.drawn.failedCount, 0);
            ASSERT_EQ(devices.size(), 1U);
            EXPECT_GT(referenceCount(*devices[0]), 1U);
            rig.close();
            EXPECT_EQ(referenceCount(*devices[0]), 1U);
            devices.clear();

            // A size that no texture can have, found out when the device is there already.
            FrameCase impossible = frameCase;
            impossible.sizes.outputWidth = 1 << 20;
            EXPECT_TRUE(
                FAILED(rig.render(impossible, inputFrame(input, randomPicture(120, 90, 1), false)).result));
            for (const auto& device : devices) {
                EXPECT_EQ(referenceCount(*device), 1U);
            }
            devices.clear();
        }
    }
}

} // namespace
} // namespace tarvo::render::conformance
