#include "tests/support/FakeD3d11Objects.h"

#include <cstring>
#include <sstream>

namespace tarvo::tests {
namespace {

CFakeMemory& memoryOf(ID3D11Resource* resource) {
    return dynamic_cast<CFakeMemory&>(*resource);
}

template<class... Parts>
std::string text(const Parts&... parts) {
    std::ostringstream stream;
    (stream << ... << parts);
    return stream.str();
}

class CFakeContext final : public CFakeUnknown<CUnusedContext> {
public:
    explicit CFakeContext(CFakeD3d11& fake) : CFakeUnknown(fake, "context") {}

    STDMETHODIMP_(void)
    VSSetShader(ID3D11VertexShader* shader, ID3D11ClassInstance* const*, UINT instanceCount) override {
        EXPECT_EQ(instanceCount, 0U);
        bindAlone("VSSetShader", shader);
    }
    STDMETHODIMP_(void)
    PSSetShader(ID3D11PixelShader* shader, ID3D11ClassInstance* const*, UINT instanceCount) override {
        EXPECT_EQ(instanceCount, 0U);
        bindAlone("PSSetShader", shader);
    }
    STDMETHODIMP_(void) IASetInputLayout(ID3D11InputLayout* layout) override {
        bindAlone("IASetInputLayout", layout);
    }
    STDMETHODIMP_(void) VSSetConstantBuffers(UINT start, UINT count, ID3D11Buffer* const* buffers) override {
        bind("VSSetConstantBuffers", start, count, buffers);
    }
    STDMETHODIMP_(void) PSSetConstantBuffers(UINT start, UINT count, ID3D11Buffer* const* buffers) override {
        bind("PSSetConstantBuffers", start, count, buffers);
    }
    STDMETHODIMP_(void)
    PSSetShaderResources(UINT start, UINT count, ID3D11ShaderResourceView* const* views) override {
        bind("PSSetShaderResources", start, count, views);
    }
    STDMETHODIMP_(void) PSSetSamplers(UINT start, UINT count, ID3D11SamplerState* const* states) override {
        bind("PSSetSamplers", start, count, states);
    }
    STDMETHODIMP_(void)
    IASetVertexBuffers(UINT start, UINT count, ID3D11Buffer* const* buffers, const UINT* strides,
                       const UINT* offsets) override {
        ASSERT_EQ(count, 1U);
        bindAlone("IASetVertexBuffers", *buffers,
                  text(" slot ", start, " stride ", *strides, " offset ", *offsets));
    }
    STDMETHODIMP_(void) IASetIndexBuffer(ID3D11Buffer* buffer, DXGI_FORMAT format, UINT offset) override {
        EXPECT_EQ(format, DXGI_FORMAT_R32_UINT);
        bindAlone("IASetIndexBuffer", buffer, text(" offset ", offset));
    }
    STDMETHODIMP_(void) IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY topology) override {
        add("IASetPrimitiveTopology ", topology == D3D11_PRIMITIVE_TOPOLOGY_TRIANGLESTRIP  ? "strip"
                                       : topology == D3D11_PRIMITIVE_TOPOLOGY_TRIANGLELIST ? "list"
                                                                                           : "?");
    }
    STDMETHODIMP_(void)
    OMSetRenderTargets(UINT count, ID3D11RenderTargetView* const* views,
                       ID3D11DepthStencilView* depth) override {
        ASSERT_EQ(count, 1U);
        EXPECT_EQ(depth, nullptr);
        bindAlone("OMSetRenderTargets", *views);
    }
    STDMETHODIMP_(void)
    OMSetBlendState(ID3D11BlendState* state, const FLOAT factor[4], UINT sampleMask) override {
        std::string factors;
        for (int i = 0; factor != nullptr && i < 4; ++i)
            factors += text(" ", factor[i]);
        bindAlone("OMSetBlendState", state, text(factors, " mask ", std::hex, sampleMask));
    }
    STDMETHODIMP_(void) RSSetViewports(UINT count, const D3D11_VIEWPORT* viewport) override {
        ASSERT_EQ(count, 1U);
        add("RSSetViewports ", viewport->TopLeftX, " ", viewport->TopLeftY, " ", viewport->Width, " ",
            viewport->Height, " depth ", viewport->MinDepth, " ", viewport->MaxDepth);
    }
    STDMETHODIMP_(void) Draw(UINT count, UINT first) override { add("Draw ", count, " from ", first); }
    STDMETHODIMP_(void) DrawIndexed(UINT count, UINT first, INT base) override {
        add("DrawIndexed ", count, " from ", first, " base ", base);
    }
    STDMETHODIMP_(void) ClearRenderTargetView(ID3D11RenderTargetView* view, const FLOAT colour[4]) override {
        add("ClearRenderTargetView ", nameOf(view), " ", colour[0], " ", colour[1], " ", colour[2], " ",
            colour[3]);
    }
    STDMETHODIMP Map(ID3D11Resource* resource, UINT subresource, D3D11_MAP type, UINT flags,
                     D3D11_MAPPED_SUBRESOURCE* mapped) override {
        EXPECT_EQ(subresource, 0U);
        EXPECT_EQ(flags, 0U);
        if (fake().failsNow(fake().mapsUntilFailure)) {
            add("Map ", nameOf(resource), " fails");
            return fake().failure;
        }
        add("Map ", nameOf(resource));
        return memoryOf(resource).map(type, *mapped);
    }
    STDMETHODIMP_(void) Unmap(ID3D11Resource* resource, UINT subresource) override {
        EXPECT_EQ(subresource, 0U);
        add("Unmap ", nameOf(resource));
        memoryOf(resource).unmap();
    }
    STDMETHODIMP_(void)
    UpdateSubresource(ID3D11Resource* resource, UINT subresource, const D3D11_BOX* box, const void* data,
                      UINT, UINT) override {
        EXPECT_EQ(subresource, 0U);
        EXPECT_EQ(box, nullptr);
        add("UpdateSubresource ", nameOf(resource));
        std::memcpy(memoryOf(resource).row(0), data, memoryOf(resource).rowBytes());
    }
    STDMETHODIMP_(void) CopyResource(ID3D11Resource* target, ID3D11Resource* source) override {
        add("CopyResource ", nameOf(source), " to ", nameOf(target));
        CFakeMemory& from = memoryOf(source);
        CFakeMemory& to = memoryOf(target);
        ASSERT_EQ(from.rowBytes(), to.rowBytes());
        ASSERT_EQ(from.rowCount(), to.rowCount());
        for (std::size_t row = 0; row < to.rowCount(); ++row)
            std::memcpy(to.row(row), from.row(row), to.rowBytes());
    }
    STDMETHODIMP_(void)
    CopySubresourceRegion(ID3D11Resource* target, UINT targetSubresource, UINT x, UINT y, UINT z,
                          ID3D11Resource* source, UINT sourceSubresource, const D3D11_BOX* box) override {
        EXPECT_EQ(targetSubresource + sourceSubresource, 0U);
        add("CopySubresourceRegion ", nameOf(source), " ", box->left, " ", box->top, " ", box->front, " ",
            box->right, " ", box->bottom, " ", box->back, " to ", nameOf(target), " ", x, " ", y, " ", z);
    }
    STDMETHODIMP_(void) ClearState() override {
        add("ClearState");
        m_bound.clear();
    }
    STDMETHODIMP_(void) Flush() override { add("Flush"); }

private:
    template<class... Parts>
    void add(const Parts&... parts) {
        fake().calls.push_back(text(parts...));
    }
    /// What is bound lives on until it is replaced.
    void bindAlone(const std::string& call, IUnknown* object, const std::string& rest = {}) {
        add(call, " ", nameOf(object), rest);
        m_bound[call] = com::ComPtr<IUnknown>(object);
    }
    template<class Interface>
    void bind(const std::string& call, UINT start, UINT count, Interface* const* objects) {
        std::string names;
        for (UINT i = 0; i < count; ++i) {
            names += " " + nameOf(objects[i]);
            m_bound[text(call, start + i)] = com::ComPtr<IUnknown>(objects[i]);
        }
        add(call, " ", start, names);
    }

    std::map<std::string, com::ComPtr<IUnknown>> m_bound;
};

} // namespace

ID3D11DeviceContext* makeFakeContext(CFakeD3d11& fake) {
    return new CFakeContext(fake);
}

} // namespace tarvo::tests
