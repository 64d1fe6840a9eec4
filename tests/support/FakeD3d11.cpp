#include "tests/support/FakeD3d11.h"

#include "tests/support/FakeD3d11Objects.h"
#include "tests/support/UnusedD3d11.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace tarvo::tests {
namespace {

constexpr std::size_t guardSize = 64;
constexpr std::byte guard{0xA5};
constexpr std::byte garbage{0xCD};

std::vector<std::byte> bytesOf(const void* data, std::size_t size) {
    const auto* const first = static_cast<const std::byte*>(data);
    return first == nullptr ? std::vector<std::byte>() : std::vector<std::byte>(first, first + size);
}

std::size_t texelBytes(DXGI_FORMAT format) {
    switch (format) {
    case DXGI_FORMAT_R8_UNORM:
        return 1;
    case DXGI_FORMAT_B8G8R8A8_UNORM:
        return 4;
    case DXGI_FORMAT_R16G16B16A16_UNORM:
        return 8;
    default:
        ADD_FAILURE() << "a texture of format " << format;
        return 1;
    }
}

/// Gives out what was made.
template<class Interface, class Object>
HRESULT give(Interface** target, Object* object) {
    *target = object;
    return S_OK;
}

class CFakeDevice final : public CFakeUnknown<CUnusedDevice> {
public:
    explicit CFakeDevice(CFakeD3d11& fake) : CFakeUnknown(fake, "device") {}

    STDMETHODIMP_(HRESULT) GetDeviceRemovedReason() override { return fake().removedReason; }

    STDMETHODIMP CreateTexture2D(const D3D11_TEXTURE2D_DESC* description,
                                 const D3D11_SUBRESOURCE_DATA* initial, ID3D11Texture2D** texture) override {
        EXPECT_EQ(initial, nullptr);
        *texture = nullptr;
        if (fails())
            return fake().failure;
        auto* const object = new CFakeTexture(fake(), *description, texelBytes(description->Format));
        fake().creations.push_back({object->name(), *description});
        return give(texture, object);
    }
    STDMETHODIMP CreateBuffer(const D3D11_BUFFER_DESC* description, const D3D11_SUBRESOURCE_DATA* initial,
                              ID3D11Buffer** buffer) override {
        *buffer = nullptr;
        if (fails())
            return fake().failure;
        auto* const object = new CFakeBuffer(fake(), *description);
        FakeCreation creation{object->name(), *description};
        if (initial != nullptr) {
            creation.bytes = bytesOf(initial->pSysMem, description->ByteWidth);
            std::ranges::copy(creation.bytes, object->row(0));
        }
        fake().creations.push_back(creation);
        return give(buffer, object);
    }
    STDMETHODIMP CreateShaderResourceView(ID3D11Resource* resource,
                                          const D3D11_SHADER_RESOURCE_VIEW_DESC* description,
                                          ID3D11ShaderResourceView** view) override {
        *view = nullptr;
        if (fails())
            return fake().failure;
        auto* const object = new CFakeShaderResourceView(fake(), "view", resource);
        FakeCreation creation{object->name(), {}, nameOf(resource)};
        if (description != nullptr)
            creation.description = *description;
        fake().creations.push_back(creation);
        return give(view, object);
    }
    STDMETHODIMP CreateRenderTargetView(ID3D11Resource* resource,
                                        const D3D11_RENDER_TARGET_VIEW_DESC* description,
                                        ID3D11RenderTargetView** view) override {
        EXPECT_EQ(description, nullptr);
        *view = nullptr;
        if (fails())
            return fake().failure;
        auto* const object = new CFakeRenderTargetView(fake(), "target", resource);
        fake().creations.push_back({object->name(), {}, nameOf(resource)});
        return give(view, object);
    }
    STDMETHODIMP CreateInputLayout(const D3D11_INPUT_ELEMENT_DESC* elements, UINT count, const void* code,
                                   SIZE_T codeSize, ID3D11InputLayout** layout) override {
        return make<CFakeInputLayout>("layout", layout,
                                      std::vector<D3D11_INPUT_ELEMENT_DESC>(elements, elements + count),
                                      bytesOf(code, codeSize));
    }
    STDMETHODIMP CreateVertexShader(const void* code, SIZE_T codeSize, ID3D11ClassLinkage* linkage,
                                    ID3D11VertexShader** shader) override {
        EXPECT_EQ(linkage, nullptr);
        return make<CFakeVertexShader>("vertexShader", shader, std::monostate(), bytesOf(code, codeSize));
    }
    STDMETHODIMP CreatePixelShader(const void* code, SIZE_T codeSize, ID3D11ClassLinkage* linkage,
                                   ID3D11PixelShader** shader) override {
        EXPECT_EQ(linkage, nullptr);
        return make<CFakePixelShader>("pixelShader", shader, std::monostate(), bytesOf(code, codeSize));
    }
    STDMETHODIMP CreateBlendState(const D3D11_BLEND_DESC* description, ID3D11BlendState** state) override {
        return make<CFakeBlendState>("blendState", state, *description, {});
    }
    STDMETHODIMP CreateSamplerState(const D3D11_SAMPLER_DESC* description,
                                    ID3D11SamplerState** state) override {
        return make<CFakeSampler>("sampler", state, *description, {});
    }
    STDMETHODIMP CheckFeatureSupport(D3D11_FEATURE feature, void* data, UINT size) override {
        if (fails())
            return fake().failure;
        D3D11_FEATURE_DATA_D3D10_X_HARDWARE_OPTIONS options{};
        if (feature != D3D11_FEATURE_D3D10_X_HARDWARE_OPTIONS || size != sizeof(options))
            return E_INVALIDARG;
        options.ComputeShaders_Plus_RawAndStructuredBuffers_Via_Shader_4_x =
            fake().areStructuredBuffersSupported ? TRUE : FALSE;
        std::memcpy(data, &options, sizeof(options));
        fake().creations.push_back({"hardwareOptions", {}});
        return S_OK;
    }

private:
    bool fails() { return fake().failsNow(fake().creationsUntilFailure); }

    template<class Object, class Interface, class Description>
    HRESULT make(const char* kind, Interface** target, const Description& description,
                 std::vector<std::byte> bytes) {
        *target = nullptr;
        if (fails())
            return fake().failure;
        auto* const object = new Object(fake(), kind);
        fake().creations.push_back({object->name(), description, {}, std::move(bytes)});
        return give(target, object);
    }
};

} // namespace

const FakeCreation& CFakeD3d11::creation(const std::string& name) const {
    static const FakeCreation none{};
    const auto found = std::ranges::find(creations, name, &FakeCreation::name);
    if (found == creations.end()) {
        ADD_FAILURE() << "no " << name << " was made";
        return none;
    }
    return *found;
}

std::vector<std::byte> CFakeD3d11::contents(const std::string& name) const {
    std::vector<std::byte> result;
    const auto found = memories.find(name);
    if (found == memories.end()) {
        ADD_FAILURE() << "no " << name << " lives";
        return result;
    }
    CFakeMemory& memory = *found->second;
    for (std::size_t row = 0; row < memory.rowCount(); ++row)
        result.insert(result.end(), memory.row(row), memory.row(row) + memory.rowBytes());
    return result;
}

void CFakeD3d11::setContents(const std::string& name, const std::vector<std::byte>& bytes) {
    CFakeMemory& memory = *memories.at(name);
    ASSERT_EQ(bytes.size(), memory.rowBytes() * memory.rowCount());
    for (std::size_t row = 0; row < memory.rowCount(); ++row)
        std::memcpy(memory.row(row), &bytes[row * memory.rowBytes()], memory.rowBytes());
}

CFakeMemory::CFakeMemory(CFakeD3d11& fake, const std::string& name, std::size_t rowBytes,
                         std::size_t rowCount, std::size_t pitchBytes, D3D11_USAGE usage)
    : m_fake(fake), m_name(name), m_rowBytes(rowBytes), m_rowCount(rowCount), m_pitchBytes(pitchBytes),
      m_usage(usage), m_bytes(pitchBytes * (std::max<std::size_t>(rowCount, 1) - 1) + rowBytes, garbage) {
    m_bytes.insert(m_bytes.end(), guardSize, guard);
    m_fake.memories[m_name] = this;
}

CFakeMemory::~CFakeMemory() {
    EXPECT_FALSE(m_isMapped) << m_name << " is released while it is mapped";
    expectGuardWhole();
    m_fake.memories.erase(m_name);
}

void CFakeMemory::expectGuardWhole() const {
    EXPECT_TRUE(std::all_of(m_bytes.end() - guardSize, m_bytes.end(), [](std::byte b) { return b == guard; }))
        << "something was written behind " << m_name;
}

HRESULT CFakeMemory::map(D3D11_MAP type, D3D11_MAPPED_SUBRESOURCE& mapped) {
    EXPECT_FALSE(m_isMapped) << m_name;
    EXPECT_EQ(type, m_usage == D3D11_USAGE_STAGING ? D3D11_MAP_READ : D3D11_MAP_WRITE_DISCARD) << m_name;
    EXPECT_TRUE(m_usage == D3D11_USAGE_STAGING || m_usage == D3D11_USAGE_DYNAMIC) << m_name;
    m_isMapped = true;
    ++m_fake.mappedCount;
    if (type == D3D11_MAP_WRITE_DISCARD)
        std::fill(m_bytes.begin(), m_bytes.end() - guardSize, garbage);
    mapped.pData = m_bytes.data();
    mapped.RowPitch = static_cast<UINT>(m_pitchBytes);
    mapped.DepthPitch = static_cast<UINT>(m_pitchBytes * m_rowCount);
    return S_OK;
}

void CFakeMemory::unmap() {
    EXPECT_TRUE(m_isMapped) << m_name;
    m_isMapped = false;
    --m_fake.mappedCount;
    expectGuardWhole();
}

bool CFakeD3d11Library::isInstalled() {
    ++askedCount;
    return isThere;
}

HRESULT CFakeD3d11Library::createDevice(const render::d3d11::DeviceRequest& request,
                                        com::ComPtr<ID3D11Device>& device,
                                        com::ComPtr<ID3D11DeviceContext>& context) {
    requests.push_back({request.driverType,
                        request.flags,
                        {request.featureLevels.begin(), request.featureLevels.end()},
                        request.sdkVersion});
    const auto result = results.find(request.driverType);
    if (result != results.end() && FAILED(result->second))
        return result->second;
    makeFakeDevice(m_fake, device, context);
    return S_OK;
}

void makeFakeDevice(CFakeD3d11& fake, com::ComPtr<ID3D11Device>& device,
                    com::ComPtr<ID3D11DeviceContext>& context) {
    device.attach(new CFakeDevice(fake));
    context.attach(makeFakeContext(fake));
}

} // namespace tarvo::tests
