#pragma once

#include "com/ComPtr.h"
#include "platform/Direct3D11Types.h"

#include <array>
#include <cstddef>
#include <span>

namespace tarvo::render::d3d11 {

/// A buffer of exactly these bytes, one kind of use and, if dynamic, open to our writing.
HRESULT createBuffer(ID3D11Device& device, std::span<const std::byte> contents, D3D11_USAGE usage,
                     D3D11_BIND_FLAG bind, com::ComPtr<ID3D11Buffer>& buffer);

/// A constant record on the device, which remembers what it holds: many passes draw with the constants of the
/// frame before, and what did not change is not written again.
class CConstantRecord {
public:
    /// Of the largest record there is.
    static constexpr std::size_t largestSize = 96;

    /// Makes a record of `size` bytes that starts with `contents`, its rest zero. E_INVALIDARG when they do
    /// not fit; after a failure the record is as it was.
    HRESULT create(ID3D11Device& device, std::size_t size, D3D11_USAGE usage,
                   std::span<const std::byte> contents);

    /// Makes the record begin with `contents`, its rest zero; no bytes at all leave it as it is. E_INVALIDARG
    /// when they do not fit; a failure leaves it as it was.
    HRESULT write(ID3D11DeviceContext& context, std::span<const std::byte> contents);

    /// Null before create().
    ID3D11Buffer* buffer() const { return m_buffer.get(); }

private:
    using Contents = std::array<std::byte, largestSize>;
    bool fill(Contents& target, std::span<const std::byte> contents, std::size_t size) const;

    com::ComPtr<ID3D11Buffer> m_buffer;
    D3D11_USAGE m_usage = D3D11_USAGE_DEFAULT;
    std::size_t m_size = 0;
    Contents m_contents{};
};

} // namespace tarvo::render::d3d11
