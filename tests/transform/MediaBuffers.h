#pragma once

#include "platform/InterfaceTypes.h"
#include "tests/transform/streaming/GraphFakes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::transform {

/// A host's buffer, which can be made to lie and to fail, and whose references can be read.
class CFakeBuffer final : public CCounted<IMediaBuffer> {
public:
    /// What stands in it before anybody writes.
    static constexpr std::uint8_t untouched = 0xA5;

    explicit CFakeBuffer(std::size_t capacity) : bytes(capacity, untouched) {}
    explicit CFakeBuffer(std::vector<std::uint8_t> contents) : bytes(std::move(contents)) {
        length = static_cast<DWORD>(bytes.size());
    }

    std::vector<std::uint8_t> bytes;
    DWORD length = 0;
    bool hasData = true;
    HRESULT bufferResult = S_OK;
    HRESULT capacityResult = S_OK;
    HRESULT lengthResult = S_OK;

    bool isUntouched() const {
        return bytes == std::vector<std::uint8_t>(bytes.size(), untouched) && length == 0;
    }

    STDMETHODIMP SetLength(DWORD newLength) override {
        if (SUCCEEDED(lengthResult))
            length = newLength;
        return lengthResult;
    }
    STDMETHODIMP GetMaxLength(DWORD* capacity) override {
        *capacity = static_cast<DWORD>(bytes.size());
        return capacityResult;
    }
    STDMETHODIMP GetBufferAndLength(BYTE** data, DWORD* usedLength) override {
        if (data != nullptr)
            *data = hasData ? bytes.data() : nullptr;
        if (usedLength != nullptr)
            *usedLength = length;
        return bufferResult;
    }
};

} // namespace tarvo::transform
