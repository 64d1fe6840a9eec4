#pragma once

#include "tests/support/FakeD3d11.h"
#include "tests/support/UnusedD3d11.h"

#include <string>

namespace tarvo::tests {

/// What calls and creations name an object by.
class CFakeNamed {
public:
    explicit CFakeNamed(std::string name) : m_name(std::move(name)) {}
    const std::string& name() const { return m_name; }

protected:
    ~CFakeNamed() = default;

private:
    std::string m_name;
};

/// "-" for null.
inline std::string nameOf(IUnknown* object) {
    if (object == nullptr)
        return "-";
    const auto* const named = dynamic_cast<const CFakeNamed*>(object);
    EXPECT_NE(named, nullptr) << "an object of somebody else";
    return named == nullptr ? "?" : named->name();
}

/// A counted object that is known to the fake while it lives.
template<class Interface>
class CFakeUnknown : public Interface, public CFakeNamed {
public:
    CFakeUnknown(CFakeD3d11& fake, const std::string& kind) : CFakeNamed(fake.nameFor(kind)), m_fake(fake) {
        ++fake.liveObjects;
    }
    CFakeUnknown(const CFakeUnknown&) = delete;
    CFakeUnknown& operator=(const CFakeUnknown&) = delete;

    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        unexpectedCall("QueryInterface");
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_count; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG count = --m_count;
        if (count == 0)
            delete this;
        return count;
    }

protected:
    virtual ~CFakeUnknown() { --m_fake.liveObjects; }
    CFakeD3d11& fake() const { return m_fake; }

private:
    CFakeD3d11& m_fake;
    ULONG m_count = 1;
};

template<class Interface>
using CFakeChild = CFakeUnknown<CUnusedChild<Interface>>;

template<class Interface, class Description>
class CFakeResource : public CFakeChild<Interface>, public CFakeMemory {
public:
    CFakeResource(CFakeD3d11& fake, const char* kind, std::size_t rowBytes, std::size_t rowCount,
                  std::size_t pitchBytes, const Description& description)
        : CFakeChild<Interface>(fake, kind),
          CFakeMemory(fake, this->name(), rowBytes, rowCount, pitchBytes, description.Usage),
          m_description(description) {}

    STDMETHODIMP_(void) GetType(D3D11_RESOURCE_DIMENSION*) override { unexpectedCall("GetType"); }
    STDMETHODIMP_(void) SetEvictionPriority(UINT) override { unexpectedCall("SetEvictionPriority"); }
    STDMETHODIMP_(UINT) GetEvictionPriority() override {
        unexpectedCall("GetEvictionPriority");
        return 0;
    }
    STDMETHODIMP_(void) GetDesc(Description* description) override { *description = m_description; }

private:
    Description m_description;
};

class CFakeTexture final : public CFakeResource<ID3D11Texture2D, D3D11_TEXTURE2D_DESC> {
public:
    CFakeTexture(CFakeD3d11& fake, const D3D11_TEXTURE2D_DESC& description, std::size_t texelBytes)
        : CFakeResource(fake, "texture", description.Width * texelBytes, description.Height,
                        description.Width * texelBytes + fake.extraPitchBytes, description),
          m_texelBytes(texelBytes) {}
    std::size_t texelBytes() const { return m_texelBytes; }

private:
    std::size_t m_texelBytes;
};

class CFakeBuffer final : public CFakeResource<ID3D11Buffer, D3D11_BUFFER_DESC> {
public:
    CFakeBuffer(CFakeD3d11& fake, const D3D11_BUFFER_DESC& description)
        : CFakeResource(fake, "buffer", description.ByteWidth, 1, description.ByteWidth, description) {}
};

template<class Interface, class Description>
class CFakeView final : public CFakeChild<Interface> {
public:
    CFakeView(CFakeD3d11& fake, const char* kind, ID3D11Resource* resource)
        : CFakeChild<Interface>(fake, kind), m_resource(resource) {}
    STDMETHODIMP_(void) GetResource(ID3D11Resource** resource) override { m_resource.copyTo(resource); }
    STDMETHODIMP_(void) GetDesc(Description*) override { unexpectedCall("GetDesc"); }

private:
    com::ComPtr<ID3D11Resource> m_resource;
};
using CFakeShaderResourceView = CFakeView<ID3D11ShaderResourceView, D3D11_SHADER_RESOURCE_VIEW_DESC>;
using CFakeRenderTargetView = CFakeView<ID3D11RenderTargetView, D3D11_RENDER_TARGET_VIEW_DESC>;

template<class Interface>
class CFakePlain final : public CFakeChild<Interface> {
public:
    using CFakeChild<Interface>::CFakeChild;
};
using CFakeInputLayout = CFakePlain<ID3D11InputLayout>;
using CFakeVertexShader = CFakePlain<ID3D11VertexShader>;
using CFakePixelShader = CFakePlain<ID3D11PixelShader>;

template<class Interface, class Description>
class CFakeState final : public CFakeChild<Interface> {
public:
    using CFakeChild<Interface>::CFakeChild;
    STDMETHODIMP_(void) GetDesc(Description*) override { unexpectedCall("GetDesc"); }
};
using CFakeBlendState = CFakeState<ID3D11BlendState, D3D11_BLEND_DESC>;
using CFakeSampler = CFakeState<ID3D11SamplerState, D3D11_SAMPLER_DESC>;

/// With a reference for the caller.
ID3D11DeviceContext* makeFakeContext(CFakeD3d11& fake);

} // namespace tarvo::tests
