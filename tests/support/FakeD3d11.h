#pragma once

#include "platform/Direct3D11Types.h"
#include "render/d3d11/D3d11Library.h"

#include <cstddef>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tarvo::tests {

/// Something a fake device was asked to make.
struct FakeCreation {
    /// Its kind and number among those of the kind, as calls name it too: "texture0", "view2".
    std::string name;
    std::variant<std::monostate, D3D11_TEXTURE2D_DESC, D3D11_BUFFER_DESC, D3D11_SHADER_RESOURCE_VIEW_DESC,
                 D3D11_BLEND_DESC, D3D11_SAMPLER_DESC, std::vector<D3D11_INPUT_ELEMENT_DESC>>
        description;
    /// Name of the resource that a view shows.
    std::string resource{};
    /// Initial contents of a buffer, bytecode of a shader or input layout.
    std::vector<std::byte> bytes{};
};

/// What fake devices do and did. Outlives them.
class CFakeD3d11 {
public:
    std::vector<FakeCreation> creations;
    /// What was called of the contexts, for instance "PSSetShaderResources 0 view0 -".
    std::vector<std::string> calls;
    /// Devices, contexts and everything that came of them.
    int liveObjects = 0;
    int mappedCount = 0;

    /// Counts down with everything that can be made (and with the query of a feature): the call that finds 0
    /// fails. Negative: none.
    int creationsUntilFailure = -1;
    /// The same for Map().
    int mapsUntilFailure = -1;
    /// What the device says of its end; S_OK while it lives.
    HRESULT removedReason = S_OK;
    HRESULT failure = E_OUTOFMEMORY;
    /// What rows of textures made from now on are longer than their pixels.
    std::size_t extraPitchBytes = 0;
    bool areStructuredBuffersSupported = true;

    bool failsNow(int& countdown) const { return countdown >= 0 && countdown-- == 0; }
    /// Numbers the kind's objects.
    std::string nameFor(const std::string& kind) { return kind + std::to_string(m_counts[kind]++); }
    /// The creation with this name; fails the test when there is none.
    const FakeCreation& creation(const std::string& name) const;
    /// The calls since the last time.
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }
    /// Contents of a texture or buffer that lives, its rows without what lies between them.
    std::vector<std::byte> contents(const std::string& name) const;
    /// The same to be changed; the rows must be as long as the surface's.
    void setContents(const std::string& name, const std::vector<std::byte>& bytes);

    std::map<std::string, class CFakeMemory*> memories;

private:
    std::map<std::string, int> m_counts;
};

/// Memory of a fake texture or buffer; whatever is written behind its end is found out.
class CFakeMemory {
public:
    CFakeMemory(CFakeD3d11& fake, const std::string& name, std::size_t rowBytes, std::size_t rowCount,
                std::size_t pitchBytes, D3D11_USAGE usage);
    CFakeMemory(const CFakeMemory&) = delete;
    CFakeMemory& operator=(const CFakeMemory&) = delete;

    HRESULT map(D3D11_MAP type, D3D11_MAPPED_SUBRESOURCE& mapped);
    void unmap();
    std::byte* row(std::size_t index) { return m_bytes.data() + index * m_pitchBytes; }
    std::size_t rowBytes() const { return m_rowBytes; }
    std::size_t rowCount() const { return m_rowCount; }

protected:
    ~CFakeMemory();

private:
    void expectGuardWhole() const;

    CFakeD3d11& m_fake;
    std::string m_name;
    std::size_t m_rowBytes;
    std::size_t m_rowCount;
    std::size_t m_pitchBytes;
    D3D11_USAGE m_usage;
    bool m_isMapped = false;
    std::vector<std::byte> m_bytes;
};

/// A library that makes fake devices.
class CFakeD3d11Library final : public render::d3d11::ID3d11Library {
public:
    struct Request {
        D3D_DRIVER_TYPE driverType;
        UINT flags;
        std::vector<D3D_FEATURE_LEVEL> featureLevels;
        UINT sdkVersion;

        friend bool operator==(const Request&, const Request&) = default;
    };

    explicit CFakeD3d11Library(CFakeD3d11& fake) : m_fake(fake) {}

    bool isThere = true;
    int askedCount = 0;
    std::vector<Request> requests;
    /// By driver type; what is not named succeeds.
    std::map<D3D_DRIVER_TYPE, HRESULT> results;

    bool isInstalled() override;
    HRESULT createDevice(const render::d3d11::DeviceRequest& request, com::ComPtr<ID3D11Device>& device,
                         com::ComPtr<ID3D11DeviceContext>& context) override;

private:
    CFakeD3d11& m_fake;
};

/// A fake device and its context alone.
void makeFakeDevice(CFakeD3d11& fake, com::ComPtr<ID3D11Device>& device,
                    com::ComPtr<ID3D11DeviceContext>& context);

} // namespace tarvo::tests
