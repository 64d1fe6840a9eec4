// A frame that is like the one before allocates nothing, of which a camera's every frame would pay the price.

#include "tests/render/d3d11/RendererFixture.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/FakeD3d11Objects.h"

namespace tarvo::render::d3d11 {
namespace {

using geometry::ViewType;

/// Does what a frame needs and keeps no record of it: the fake's own would allocate.
class CQuietContext final : public tests::CFakeUnknown<tests::CUnusedContext> {
public:
    CQuietContext(tests::CFakeD3d11& fake, int& drawCount)
        : CFakeUnknown(fake, "context"), m_drawCount(drawCount) {}

    STDMETHODIMP_(void) VSSetShader(ID3D11VertexShader*, ID3D11ClassInstance* const*, UINT) override {}
    STDMETHODIMP_(void) PSSetShader(ID3D11PixelShader*, ID3D11ClassInstance* const*, UINT) override {}
    STDMETHODIMP_(void) IASetInputLayout(ID3D11InputLayout*) override {}
    STDMETHODIMP_(void) VSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {}
    STDMETHODIMP_(void) PSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {}
    STDMETHODIMP_(void) PSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {}
    STDMETHODIMP_(void) PSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {}
    STDMETHODIMP_(void)
    IASetVertexBuffers(UINT, UINT, ID3D11Buffer* const*, const UINT*, const UINT*) override {}
    STDMETHODIMP_(void) IASetIndexBuffer(ID3D11Buffer*, DXGI_FORMAT, UINT) override {}
    STDMETHODIMP_(void) IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY) override {}
    STDMETHODIMP_(void)
    OMSetRenderTargets(UINT, ID3D11RenderTargetView* const*, ID3D11DepthStencilView*) override {}
    STDMETHODIMP_(void) OMSetBlendState(ID3D11BlendState*, const FLOAT[4], UINT) override {}
    STDMETHODIMP_(void) RSSetViewports(UINT, const D3D11_VIEWPORT*) override {}
    STDMETHODIMP_(void) Draw(UINT, UINT) override { ++m_drawCount; }
    STDMETHODIMP_(void) DrawIndexed(UINT, UINT, INT) override { ++m_drawCount; }
    STDMETHODIMP_(void) ClearRenderTargetView(ID3D11RenderTargetView*, const FLOAT[4]) override {}
    STDMETHODIMP Map(ID3D11Resource* resource, UINT, D3D11_MAP type, UINT,
                     D3D11_MAPPED_SUBRESOURCE* mapped) override {
        return dynamic_cast<tests::CFakeMemory&>(*resource).map(type, *mapped);
    }
    STDMETHODIMP_(void) Unmap(ID3D11Resource* resource, UINT) override {
        dynamic_cast<tests::CFakeMemory&>(*resource).unmap();
    }
    STDMETHODIMP_(void) CopyResource(ID3D11Resource*, ID3D11Resource*) override {}
    STDMETHODIMP_(void)
    CopySubresourceRegion(ID3D11Resource*, UINT, UINT, UINT, UINT, ID3D11Resource*, UINT,
                          const D3D11_BOX*) override {}
    STDMETHODIMP_(void) ClearState() override {}
    STDMETHODIMP_(void) Flush() override {}

private:
    int& m_drawCount;
};

class CQuietLibrary final : public ID3d11Library {
public:
    CQuietLibrary(tests::CFakeD3d11& fake, int& drawCount) : m_fake(fake), m_drawCount(drawCount) {}

    bool isInstalled() override { return true; }
    HRESULT createDevice(const DeviceRequest&, com::ComPtr<ID3D11Device>& device,
                         com::ComPtr<ID3D11DeviceContext>& context) override {
        tests::makeFakeDevice(m_fake, device, context);
        context.attach(new CQuietContext(m_fake, m_drawCount));
        return S_OK;
    }

private:
    tests::CFakeD3d11& m_fake;
    int& m_drawCount;
};

class SteadyState : public CRendererTest {
protected:
    void startQuietly(const InputFormat& input, const OutputFormat& frameFormat) {
        start(std::make_unique<CQuietLibrary>(fake, drawCount), input, frameFormat);
    }

    int drawCount = 0;
};

TEST_F(SteadyState, allocationsAreCounted) {
    const int before = tests::allocationCount();
    const auto volatileNumber = std::make_unique<volatile int>(1);
    EXPECT_EQ(tests::allocationCount() - before, *volatileNumber);
}

TEST_F(SteadyState, framesAllocateNothing) {
    view.setExcludeArea({0.25, 0.25, 0.5, 0.75});
    for (const ViewType viewType : {ViewType::single, ViewType::quad, ViewType::panoramaSingle,
                                    ViewType::panoramaDouble, ViewType::singleOverview, ViewType::custom}) {
        for (const PixelFormat format : {PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2}) {
            for (const OutputFormat& wanted :
                 {output, OutputFormat{PixelFormat::yv12, outputWidth, outputHeight, 200, false}}) {
                SCOPED_TRACE(testing::Message()
                             << static_cast<int>(viewType) << " " << static_cast<std::uint32_t>(format));
                view.setViewType(viewType);
                startQuietly(inputOf(format), wanted);
                ASSERT_EQ(frame(), S_OK);
                drawCount = 0;
                const int before = tests::allocationCount();
                HRESULT worst = S_OK;
                for (int i = 0; i < 3; ++i) {
                    // It also moves: constants and the marker are written anew.
                    view.setPan(5.0 * i);
                    worst |= frame();
                }
                const int allocations = tests::allocationCount() - before;
                EXPECT_EQ(worst, S_OK);
                EXPECT_EQ(allocations, 0);
                // Exclude area, view and area again, three times.
                EXPECT_GE(drawCount, 9);
            }
        }
    }
}

} // namespace
} // namespace tarvo::render::d3d11
