#pragma once

#include "com/ComPtr.h"
#include "platform/InterfaceTypes.h"

#include <atomic>
#include <cstddef>
#include <span>
#include <vector>

namespace tarvo::host {

/// A frame's memory as media objects take it. One thread at a time, but for the references.
class CMediaBuffer final : public IMediaBuffer {
public:
    /// Room for an output frame, with nothing in it yet. Throws std::bad_alloc, std::length_error.
    static com::ComPtr<CMediaBuffer> withRoom(std::size_t bytes);
    /// An input frame. Throws std::bad_alloc, std::length_error.
    static com::ComPtr<CMediaBuffer> holding(std::vector<std::byte> frame);

    /// What was written, as far as SetLength says.
    std::span<const std::byte> contents() const { return {m_bytes.data(), m_length}; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP SetLength(DWORD length) override;
    STDMETHODIMP GetMaxLength(DWORD* capacity) override;
    STDMETHODIMP GetBufferAndLength(BYTE** data, DWORD* length) override;

private:
    CMediaBuffer(std::vector<std::byte> bytes, std::size_t length);
    ~CMediaBuffer() = default;

    std::vector<std::byte> m_bytes;
    DWORD m_length;
    std::atomic<ULONG> m_references{1};
};

} // namespace tarvo::host
