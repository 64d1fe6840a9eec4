#pragma once

#include "com/ComPtr.h"
#include "render/RenderDevice.h"
#include "transform/ImageBuffer.h"

#include <cstdint>

namespace tarvo::transform {

/// Keeps the image buffer that is handed to sinks, and fills it from the pictures that are read back.
///
/// One that a client keeps locked is passed over: the stream never waits for clients. Under the lock of
/// rendering.
class CCurrentImage final : public render::IMappedRowsVisitor {
public:
    /// Of the pictures that come next.
    void setTimes(std::int64_t timestamp, std::int64_t duration);

    /// Takes a picture over if that can be; always S_OK, for the picture goes on its way all the same.
    HRESULT visit(const render::MappedRows& rows) override;

    /// The buffer, if it has a new picture since the last call; else null.
    com::ComPtr<CImageBuffer> takeNew();

    /// Gives the buffer up, for the caller to release where that may take its time; the next picture gets
    /// another.
    [[nodiscard]] com::ComPtr<CImageBuffer> giveUp();

private:
    com::ComPtr<CImageBuffer> m_buffer;
    std::int64_t m_timestamp = 0;
    std::int64_t m_duration = 0;
    bool m_isNew = false;
};

} // namespace tarvo::transform
