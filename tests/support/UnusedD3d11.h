#pragma once

// Every method of the interfaces of Direct3D 11 that a fake has, each failing the test that calls it: the
// fakes override what may be called. Written out once, since the interfaces are long and do not change.

#include "platform/Direct3D11Types.h"

#include <gtest/gtest.h>

namespace tarvo::tests {

inline void unexpectedCall(const char* method) {
    ADD_FAILURE() << "unexpected call of " << method << "()";
}

/// The methods that all objects of a device share.
template<class Interface>
class CUnusedChild : public Interface {
public:
    STDMETHODIMP_(void) GetDevice(ID3D11Device**) override { unexpectedCall("GetDevice"); }
    STDMETHODIMP_(HRESULT) GetPrivateData(REFGUID, UINT*, void*) override {
        unexpectedCall("GetPrivateData");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) SetPrivateData(REFGUID, UINT, const void*) override {
        unexpectedCall("SetPrivateData");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) SetPrivateDataInterface(REFGUID, const IUnknown*) override {
        unexpectedCall("SetPrivateDataInterface");
        return E_NOTIMPL;
    }
};

/// A device without a method that may be called.
class CUnusedDevice : public ID3D11Device {
public:
    STDMETHODIMP_(HRESULT)
    CreateBuffer(const D3D11_BUFFER_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Buffer**) override {
        unexpectedCall("CreateBuffer");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateTexture1D(const D3D11_TEXTURE1D_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Texture1D**) override {
        unexpectedCall("CreateTexture1D");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateTexture2D(const D3D11_TEXTURE2D_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Texture2D**) override {
        unexpectedCall("CreateTexture2D");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateTexture3D(const D3D11_TEXTURE3D_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Texture3D**) override {
        unexpectedCall("CreateTexture3D");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateShaderResourceView(ID3D11Resource*, const D3D11_SHADER_RESOURCE_VIEW_DESC*,
                             ID3D11ShaderResourceView**) override {
        unexpectedCall("CreateShaderResourceView");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateUnorderedAccessView(ID3D11Resource*, const D3D11_UNORDERED_ACCESS_VIEW_DESC*,
                              ID3D11UnorderedAccessView**) override {
        unexpectedCall("CreateUnorderedAccessView");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateRenderTargetView(ID3D11Resource*, const D3D11_RENDER_TARGET_VIEW_DESC*,
                           ID3D11RenderTargetView**) override {
        unexpectedCall("CreateRenderTargetView");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateDepthStencilView(ID3D11Resource*, const D3D11_DEPTH_STENCIL_VIEW_DESC*,
                           ID3D11DepthStencilView**) override {
        unexpectedCall("CreateDepthStencilView");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateInputLayout(const D3D11_INPUT_ELEMENT_DESC*, UINT, const void*, SIZE_T,
                      ID3D11InputLayout**) override {
        unexpectedCall("CreateInputLayout");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateVertexShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11VertexShader**) override {
        unexpectedCall("CreateVertexShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateGeometryShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11GeometryShader**) override {
        unexpectedCall("CreateGeometryShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateGeometryShaderWithStreamOutput(const void*, SIZE_T, const D3D11_SO_DECLARATION_ENTRY*, UINT,
                                         const UINT*, UINT, UINT, ID3D11ClassLinkage*,
                                         ID3D11GeometryShader**) override {
        unexpectedCall("CreateGeometryShaderWithStreamOutput");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreatePixelShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11PixelShader**) override {
        unexpectedCall("CreatePixelShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateHullShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11HullShader**) override {
        unexpectedCall("CreateHullShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateDomainShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11DomainShader**) override {
        unexpectedCall("CreateDomainShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateComputeShader(const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11ComputeShader**) override {
        unexpectedCall("CreateComputeShader");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateClassLinkage(ID3D11ClassLinkage**) override {
        unexpectedCall("CreateClassLinkage");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateBlendState(const D3D11_BLEND_DESC*, ID3D11BlendState**) override {
        unexpectedCall("CreateBlendState");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateDepthStencilState(const D3D11_DEPTH_STENCIL_DESC*, ID3D11DepthStencilState**) override {
        unexpectedCall("CreateDepthStencilState");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT)
    CreateRasterizerState(const D3D11_RASTERIZER_DESC*, ID3D11RasterizerState**) override {
        unexpectedCall("CreateRasterizerState");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateSamplerState(const D3D11_SAMPLER_DESC*, ID3D11SamplerState**) override {
        unexpectedCall("CreateSamplerState");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateQuery(const D3D11_QUERY_DESC*, ID3D11Query**) override {
        unexpectedCall("CreateQuery");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreatePredicate(const D3D11_QUERY_DESC*, ID3D11Predicate**) override {
        unexpectedCall("CreatePredicate");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateCounter(const D3D11_COUNTER_DESC*, ID3D11Counter**) override {
        unexpectedCall("CreateCounter");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CreateDeferredContext(UINT, ID3D11DeviceContext**) override {
        unexpectedCall("CreateDeferredContext");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) OpenSharedResource(HANDLE, REFIID, void**) override {
        unexpectedCall("OpenSharedResource");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CheckFormatSupport(DXGI_FORMAT, UINT*) override {
        unexpectedCall("CheckFormatSupport");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CheckMultisampleQualityLevels(DXGI_FORMAT, UINT, UINT*) override {
        unexpectedCall("CheckMultisampleQualityLevels");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(void) CheckCounterInfo(D3D11_COUNTER_INFO*) override { unexpectedCall("CheckCounterInfo"); }
    STDMETHODIMP_(HRESULT)
    CheckCounter(const D3D11_COUNTER_DESC*, D3D11_COUNTER_TYPE*, UINT*, LPSTR, UINT*, LPSTR, UINT*, LPSTR,
                 UINT*) override {
        unexpectedCall("CheckCounter");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) CheckFeatureSupport(D3D11_FEATURE, void*, UINT) override {
        unexpectedCall("CheckFeatureSupport");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) GetPrivateData(REFGUID, UINT*, void*) override {
        unexpectedCall("GetPrivateData");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) SetPrivateData(REFGUID, UINT, const void*) override {
        unexpectedCall("SetPrivateData");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(HRESULT) SetPrivateDataInterface(REFGUID, const IUnknown*) override {
        unexpectedCall("SetPrivateDataInterface");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(D3D_FEATURE_LEVEL) GetFeatureLevel() override {
        unexpectedCall("GetFeatureLevel");
        return {};
    }
    STDMETHODIMP_(UINT) GetCreationFlags() override {
        unexpectedCall("GetCreationFlags");
        return {};
    }
    STDMETHODIMP_(HRESULT) GetDeviceRemovedReason() override {
        unexpectedCall("GetDeviceRemovedReason");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(void) GetImmediateContext(ID3D11DeviceContext**) override {
        unexpectedCall("GetImmediateContext");
    }
    STDMETHODIMP_(HRESULT) SetExceptionMode(UINT) override {
        unexpectedCall("SetExceptionMode");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(UINT) GetExceptionMode() override {
        unexpectedCall("GetExceptionMode");
        return {};
    }
};

/// A context without a method that may be called.
class CUnusedContext : public CUnusedChild<ID3D11DeviceContext> {
public:
    STDMETHODIMP_(void) VSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("VSSetConstantBuffers");
    }
    STDMETHODIMP_(void) PSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("PSSetShaderResources");
    }
    STDMETHODIMP_(void) PSSetShader(ID3D11PixelShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("PSSetShader");
    }
    STDMETHODIMP_(void) PSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("PSSetSamplers");
    }
    STDMETHODIMP_(void) VSSetShader(ID3D11VertexShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("VSSetShader");
    }
    STDMETHODIMP_(void) DrawIndexed(UINT, UINT, INT) override { unexpectedCall("DrawIndexed"); }
    STDMETHODIMP_(void) Draw(UINT, UINT) override { unexpectedCall("Draw"); }
    STDMETHODIMP_(HRESULT) Map(ID3D11Resource*, UINT, D3D11_MAP, UINT, D3D11_MAPPED_SUBRESOURCE*) override {
        unexpectedCall("Map");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(void) Unmap(ID3D11Resource*, UINT) override { unexpectedCall("Unmap"); }
    STDMETHODIMP_(void) PSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("PSSetConstantBuffers");
    }
    STDMETHODIMP_(void) IASetInputLayout(ID3D11InputLayout*) override { unexpectedCall("IASetInputLayout"); }
    STDMETHODIMP_(void)
    IASetVertexBuffers(UINT, UINT, ID3D11Buffer* const*, const UINT*, const UINT*) override {
        unexpectedCall("IASetVertexBuffers");
    }
    STDMETHODIMP_(void) IASetIndexBuffer(ID3D11Buffer*, DXGI_FORMAT, UINT) override {
        unexpectedCall("IASetIndexBuffer");
    }
    STDMETHODIMP_(void) DrawIndexedInstanced(UINT, UINT, UINT, INT, UINT) override {
        unexpectedCall("DrawIndexedInstanced");
    }
    STDMETHODIMP_(void) DrawInstanced(UINT, UINT, UINT, UINT) override { unexpectedCall("DrawInstanced"); }
    STDMETHODIMP_(void) GSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("GSSetConstantBuffers");
    }
    STDMETHODIMP_(void) GSSetShader(ID3D11GeometryShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("GSSetShader");
    }
    STDMETHODIMP_(void) IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY) override {
        unexpectedCall("IASetPrimitiveTopology");
    }
    STDMETHODIMP_(void) VSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("VSSetShaderResources");
    }
    STDMETHODIMP_(void) VSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("VSSetSamplers");
    }
    STDMETHODIMP_(void) Begin(ID3D11Asynchronous*) override { unexpectedCall("Begin"); }
    STDMETHODIMP_(void) End(ID3D11Asynchronous*) override { unexpectedCall("End"); }
    STDMETHODIMP_(HRESULT) GetData(ID3D11Asynchronous*, void*, UINT, UINT) override {
        unexpectedCall("GetData");
        return E_NOTIMPL;
    }
    STDMETHODIMP_(void) SetPredication(ID3D11Predicate*, BOOL) override { unexpectedCall("SetPredication"); }
    STDMETHODIMP_(void) GSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("GSSetShaderResources");
    }
    STDMETHODIMP_(void) GSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("GSSetSamplers");
    }
    STDMETHODIMP_(void)
    OMSetRenderTargets(UINT, ID3D11RenderTargetView* const*, ID3D11DepthStencilView*) override {
        unexpectedCall("OMSetRenderTargets");
    }
    STDMETHODIMP_(void)
    OMSetRenderTargetsAndUnorderedAccessViews(UINT, ID3D11RenderTargetView* const*, ID3D11DepthStencilView*,
                                              UINT, UINT, ID3D11UnorderedAccessView* const*,
                                              const UINT*) override {
        unexpectedCall("OMSetRenderTargetsAndUnorderedAccessViews");
    }
    STDMETHODIMP_(void) OMSetBlendState(ID3D11BlendState*, const FLOAT[4], UINT) override {
        unexpectedCall("OMSetBlendState");
    }
    STDMETHODIMP_(void) OMSetDepthStencilState(ID3D11DepthStencilState*, UINT) override {
        unexpectedCall("OMSetDepthStencilState");
    }
    STDMETHODIMP_(void) SOSetTargets(UINT, ID3D11Buffer* const*, const UINT*) override {
        unexpectedCall("SOSetTargets");
    }
    STDMETHODIMP_(void) DrawAuto() override { unexpectedCall("DrawAuto"); }
    STDMETHODIMP_(void) DrawIndexedInstancedIndirect(ID3D11Buffer*, UINT) override {
        unexpectedCall("DrawIndexedInstancedIndirect");
    }
    STDMETHODIMP_(void) DrawInstancedIndirect(ID3D11Buffer*, UINT) override {
        unexpectedCall("DrawInstancedIndirect");
    }
    STDMETHODIMP_(void) Dispatch(UINT, UINT, UINT) override { unexpectedCall("Dispatch"); }
    STDMETHODIMP_(void) DispatchIndirect(ID3D11Buffer*, UINT) override { unexpectedCall("DispatchIndirect"); }
    STDMETHODIMP_(void) RSSetState(ID3D11RasterizerState*) override { unexpectedCall("RSSetState"); }
    STDMETHODIMP_(void) RSSetViewports(UINT, const D3D11_VIEWPORT*) override {
        unexpectedCall("RSSetViewports");
    }
    STDMETHODIMP_(void) RSSetScissorRects(UINT, const D3D11_RECT*) override {
        unexpectedCall("RSSetScissorRects");
    }
    STDMETHODIMP_(void)
    CopySubresourceRegion(ID3D11Resource*, UINT, UINT, UINT, UINT, ID3D11Resource*, UINT,
                          const D3D11_BOX*) override {
        unexpectedCall("CopySubresourceRegion");
    }
    STDMETHODIMP_(void) CopyResource(ID3D11Resource*, ID3D11Resource*) override {
        unexpectedCall("CopyResource");
    }
    STDMETHODIMP_(void)
    UpdateSubresource(ID3D11Resource*, UINT, const D3D11_BOX*, const void*, UINT, UINT) override {
        unexpectedCall("UpdateSubresource");
    }
    STDMETHODIMP_(void) CopyStructureCount(ID3D11Buffer*, UINT, ID3D11UnorderedAccessView*) override {
        unexpectedCall("CopyStructureCount");
    }
    STDMETHODIMP_(void) ClearRenderTargetView(ID3D11RenderTargetView*, const FLOAT[4]) override {
        unexpectedCall("ClearRenderTargetView");
    }
    STDMETHODIMP_(void) ClearUnorderedAccessViewUint(ID3D11UnorderedAccessView*, const UINT[4]) override {
        unexpectedCall("ClearUnorderedAccessViewUint");
    }
    STDMETHODIMP_(void) ClearUnorderedAccessViewFloat(ID3D11UnorderedAccessView*, const FLOAT[4]) override {
        unexpectedCall("ClearUnorderedAccessViewFloat");
    }
    STDMETHODIMP_(void) ClearDepthStencilView(ID3D11DepthStencilView*, UINT, FLOAT, UINT8) override {
        unexpectedCall("ClearDepthStencilView");
    }
    STDMETHODIMP_(void) GenerateMips(ID3D11ShaderResourceView*) override { unexpectedCall("GenerateMips"); }
    STDMETHODIMP_(void) SetResourceMinLOD(ID3D11Resource*, FLOAT) override {
        unexpectedCall("SetResourceMinLOD");
    }
    STDMETHODIMP_(FLOAT) GetResourceMinLOD(ID3D11Resource*) override {
        unexpectedCall("GetResourceMinLOD");
        return {};
    }
    STDMETHODIMP_(void)
    ResolveSubresource(ID3D11Resource*, UINT, ID3D11Resource*, UINT, DXGI_FORMAT) override {
        unexpectedCall("ResolveSubresource");
    }
    STDMETHODIMP_(void) ExecuteCommandList(ID3D11CommandList*, BOOL) override {
        unexpectedCall("ExecuteCommandList");
    }
    STDMETHODIMP_(void) HSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("HSSetShaderResources");
    }
    STDMETHODIMP_(void) HSSetShader(ID3D11HullShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("HSSetShader");
    }
    STDMETHODIMP_(void) HSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("HSSetSamplers");
    }
    STDMETHODIMP_(void) HSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("HSSetConstantBuffers");
    }
    STDMETHODIMP_(void) DSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("DSSetShaderResources");
    }
    STDMETHODIMP_(void) DSSetShader(ID3D11DomainShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("DSSetShader");
    }
    STDMETHODIMP_(void) DSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("DSSetSamplers");
    }
    STDMETHODIMP_(void) DSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("DSSetConstantBuffers");
    }
    STDMETHODIMP_(void) CSSetShaderResources(UINT, UINT, ID3D11ShaderResourceView* const*) override {
        unexpectedCall("CSSetShaderResources");
    }
    STDMETHODIMP_(void)
    CSSetUnorderedAccessViews(UINT, UINT, ID3D11UnorderedAccessView* const*, const UINT*) override {
        unexpectedCall("CSSetUnorderedAccessViews");
    }
    STDMETHODIMP_(void) CSSetShader(ID3D11ComputeShader*, ID3D11ClassInstance* const*, UINT) override {
        unexpectedCall("CSSetShader");
    }
    STDMETHODIMP_(void) CSSetSamplers(UINT, UINT, ID3D11SamplerState* const*) override {
        unexpectedCall("CSSetSamplers");
    }
    STDMETHODIMP_(void) CSSetConstantBuffers(UINT, UINT, ID3D11Buffer* const*) override {
        unexpectedCall("CSSetConstantBuffers");
    }
    STDMETHODIMP_(void) VSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("VSGetConstantBuffers");
    }
    STDMETHODIMP_(void) PSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("PSGetShaderResources");
    }
    STDMETHODIMP_(void) PSGetShader(ID3D11PixelShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("PSGetShader");
    }
    STDMETHODIMP_(void) PSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("PSGetSamplers");
    }
    STDMETHODIMP_(void) VSGetShader(ID3D11VertexShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("VSGetShader");
    }
    STDMETHODIMP_(void) PSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("PSGetConstantBuffers");
    }
    STDMETHODIMP_(void) IAGetInputLayout(ID3D11InputLayout**) override { unexpectedCall("IAGetInputLayout"); }
    STDMETHODIMP_(void) IAGetVertexBuffers(UINT, UINT, ID3D11Buffer**, UINT*, UINT*) override {
        unexpectedCall("IAGetVertexBuffers");
    }
    STDMETHODIMP_(void) IAGetIndexBuffer(ID3D11Buffer**, DXGI_FORMAT*, UINT*) override {
        unexpectedCall("IAGetIndexBuffer");
    }
    STDMETHODIMP_(void) GSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("GSGetConstantBuffers");
    }
    STDMETHODIMP_(void) GSGetShader(ID3D11GeometryShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("GSGetShader");
    }
    STDMETHODIMP_(void) IAGetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY*) override {
        unexpectedCall("IAGetPrimitiveTopology");
    }
    STDMETHODIMP_(void) VSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("VSGetShaderResources");
    }
    STDMETHODIMP_(void) VSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("VSGetSamplers");
    }
    STDMETHODIMP_(void) GetPredication(ID3D11Predicate**, BOOL*) override {
        unexpectedCall("GetPredication");
    }
    STDMETHODIMP_(void) GSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("GSGetShaderResources");
    }
    STDMETHODIMP_(void) GSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("GSGetSamplers");
    }
    STDMETHODIMP_(void)
    OMGetRenderTargets(UINT, ID3D11RenderTargetView**, ID3D11DepthStencilView**) override {
        unexpectedCall("OMGetRenderTargets");
    }
    STDMETHODIMP_(void)
    OMGetRenderTargetsAndUnorderedAccessViews(UINT, ID3D11RenderTargetView**, ID3D11DepthStencilView**, UINT,
                                              UINT, ID3D11UnorderedAccessView**) override {
        unexpectedCall("OMGetRenderTargetsAndUnorderedAccessViews");
    }
    STDMETHODIMP_(void) OMGetBlendState(ID3D11BlendState**, FLOAT[4], UINT*) override {
        unexpectedCall("OMGetBlendState");
    }
    STDMETHODIMP_(void) OMGetDepthStencilState(ID3D11DepthStencilState**, UINT*) override {
        unexpectedCall("OMGetDepthStencilState");
    }
    STDMETHODIMP_(void) SOGetTargets(UINT, ID3D11Buffer**) override { unexpectedCall("SOGetTargets"); }
    STDMETHODIMP_(void) RSGetState(ID3D11RasterizerState**) override { unexpectedCall("RSGetState"); }
    STDMETHODIMP_(void) RSGetViewports(UINT*, D3D11_VIEWPORT*) override { unexpectedCall("RSGetViewports"); }
    STDMETHODIMP_(void) RSGetScissorRects(UINT*, D3D11_RECT*) override {
        unexpectedCall("RSGetScissorRects");
    }
    STDMETHODIMP_(void) HSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("HSGetShaderResources");
    }
    STDMETHODIMP_(void) HSGetShader(ID3D11HullShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("HSGetShader");
    }
    STDMETHODIMP_(void) HSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("HSGetSamplers");
    }
    STDMETHODIMP_(void) HSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("HSGetConstantBuffers");
    }
    STDMETHODIMP_(void) DSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("DSGetShaderResources");
    }
    STDMETHODIMP_(void) DSGetShader(ID3D11DomainShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("DSGetShader");
    }
    STDMETHODIMP_(void) DSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("DSGetSamplers");
    }
    STDMETHODIMP_(void) DSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("DSGetConstantBuffers");
    }
    STDMETHODIMP_(void) CSGetShaderResources(UINT, UINT, ID3D11ShaderResourceView**) override {
        unexpectedCall("CSGetShaderResources");
    }
    STDMETHODIMP_(void) CSGetUnorderedAccessViews(UINT, UINT, ID3D11UnorderedAccessView**) override {
        unexpectedCall("CSGetUnorderedAccessViews");
    }
    STDMETHODIMP_(void) CSGetShader(ID3D11ComputeShader**, ID3D11ClassInstance**, UINT*) override {
        unexpectedCall("CSGetShader");
    }
    STDMETHODIMP_(void) CSGetSamplers(UINT, UINT, ID3D11SamplerState**) override {
        unexpectedCall("CSGetSamplers");
    }
    STDMETHODIMP_(void) CSGetConstantBuffers(UINT, UINT, ID3D11Buffer**) override {
        unexpectedCall("CSGetConstantBuffers");
    }
    STDMETHODIMP_(void) ClearState() override { unexpectedCall("ClearState"); }
    STDMETHODIMP_(void) Flush() override { unexpectedCall("Flush"); }
    STDMETHODIMP_(D3D11_DEVICE_CONTEXT_TYPE) GetType() override {
        unexpectedCall("GetType");
        return {};
    }
    STDMETHODIMP_(UINT) GetContextFlags() override {
        unexpectedCall("GetContextFlags");
        return {};
    }
    STDMETHODIMP_(HRESULT) FinishCommandList(BOOL, ID3D11CommandList**) override {
        unexpectedCall("FinishCommandList");
        return E_NOTIMPL;
    }
};

} // namespace tarvo::tests
