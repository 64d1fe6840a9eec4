#include "render/d3d11/Buffers.h"

#include "com/Trace.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::d3d11 {

HRESULT createBuffer(ID3D11Device& device, std::span<const std::byte> contents, D3D11_USAGE usage,
                     D3D11_BIND_FLAG bind, com::ComPtr<ID3D11Buffer>& buffer) {
    D3D11_BUFFER_DESC description{};
    description.ByteWidth = static_cast<UINT>(contents.size());
    description.Usage = usage;
    description.BindFlags = static_cast<UINT>(bind);
    description.CPUAccessFlags = usage == D3D11_USAGE_DYNAMIC ? D3D11_CPU_ACCESS_WRITE : 0;
    D3D11_SUBRESOURCE_DATA initial{};
    initial.pSysMem = contents.data();
    return device.CreateBuffer(&description, &initial, buffer.put());
}

bool CConstantRecord::fill(Contents& target, std::span<const std::byte> contents, std::size_t size) const {
    if (contents.size() > size || size > largestSize)
        return false;
    target = {};
    std::ranges::copy(contents, target.begin());
    return true;
}

HRESULT CConstantRecord::create(ID3D11Device& device, std::size_t size, D3D11_USAGE usage,
                                std::span<const std::byte> contents) {
    Contents filled;
    if (!fill(filled, contents, size))
        return E_INVALIDARG;
    com::ComPtr<ID3D11Buffer> buffer;
    RETURN_IF_FAILED(
        createBuffer(device, std::span(filled).first(size), usage, D3D11_BIND_CONSTANT_BUFFER, buffer));
    m_buffer = std::move(buffer);
    m_usage = usage;
    m_size = size;
    m_contents = filled;
    return S_OK;
}

HRESULT CConstantRecord::write(ID3D11DeviceContext& context, std::span<const std::byte> contents) {
    if (contents.empty())
        return S_OK;
    Contents filled;
    if (!fill(filled, contents, m_size))
        return E_INVALIDARG;
    if (filled == m_contents)
        return S_OK;
    if (m_usage == D3D11_USAGE_DYNAMIC) {
        D3D11_MAPPED_SUBRESOURCE mapped{};
        RETURN_IF_FAILED(context.Map(m_buffer.get(), 0, D3D11_MAP_WRITE_DISCARD, 0, &mapped));
        std::memcpy(mapped.pData, filled.data(), m_size);
        context.Unmap(m_buffer.get(), 0);
    } else {
        context.UpdateSubresource(m_buffer.get(), 0, nullptr, filled.data(), 0, 0);
    }
    m_contents = filled;
    return S_OK;
}

} // namespace tarvo::render::d3d11
