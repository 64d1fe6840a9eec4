#include "apps/host/MediaBuffer.h"

#include <limits>
#include <stdexcept>
#include <utility>

namespace tarvo::host {

CMediaBuffer::CMediaBuffer(std::vector<std::byte> bytes, std::size_t length)
    : m_bytes(std::move(bytes)), m_length(static_cast<DWORD>(length)) {
    // Lengths are numbers of 32 bits in the interface.
    if (m_bytes.size() > std::numeric_limits<DWORD>::max()) {
        throw std::length_error("the frame is too large");
    }
}

com::ComPtr<CMediaBuffer> CMediaBuffer::withRoom(std::size_t bytes) {
    com::ComPtr<CMediaBuffer> buffer;
    buffer.attach(new CMediaBuffer(std::vector<std::byte>(bytes), 0));
    return buffer;
}

com::ComPtr<CMediaBuffer> CMediaBuffer::holding(std::vector<std::byte> frame) {
    const std::size_t length = frame.size();
    com::ComPtr<CMediaBuffer> buffer;
    buffer.attach(new CMediaBuffer(std::move(frame), length));
    return buffer;
}

HRESULT CMediaBuffer::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (iid != __uuidof(IMediaBuffer) && iid != __uuidof(IUnknown)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IMediaBuffer*>(this);
    AddRef();
    return S_OK;
}

ULONG CMediaBuffer::AddRef() {
    return ++m_references;
}

ULONG CMediaBuffer::Release() {
    const ULONG left = --m_references;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT CMediaBuffer::SetLength(DWORD length) {
    if (length > m_bytes.size()) {
        return E_INVALIDARG;
    }
    m_length = length;
    return S_OK;
}

HRESULT CMediaBuffer::GetMaxLength(DWORD* capacity) {
    if (capacity == nullptr) {
        return E_POINTER;
    }
    *capacity = static_cast<DWORD>(m_bytes.size());
    return S_OK;
}

HRESULT CMediaBuffer::GetBufferAndLength(BYTE** data, DWORD* length) {
    // Either may be left out, but not both.
    if (data == nullptr && length == nullptr) {
        return E_POINTER;
    }
    if (data != nullptr) {
        *data = reinterpret_cast<BYTE*>(m_bytes.data());
    }
    if (length != nullptr) {
        *length = m_length;
    }
    return S_OK;
}

} // namespace tarvo::host
