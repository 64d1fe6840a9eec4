#pragma once

#include "com/SafeArray.h"
#include "platform/InterfaceTypes.h"
#include "render/RenderDevice.h"

namespace tarvo::transform {

/// Makes a device-independent bitmap, header and all, of a picture that is read back: 24 bits a pixel, the
/// bottom row first, rows padded to 4 bytes.
class CBitmapImage final : public render::IMappedRowsVisitor {
public:
    /// E_OUTOFMEMORY for what no array holds, E_FAIL where there are no pixels.
    HRESULT visit(const render::MappedRows& rows) override;

    /// Whether a picture came at all.
    bool hasSeenPicture() const { return m_hasSeenPicture; }
    /// The bytes, for the caller to own; null unless visit() succeeded.
    [[nodiscard]] SAFEARRAY* detach() { return m_bytes.detach(); }

private:
    bool m_hasSeenPicture = false;
    com::CSafeArray m_bytes;
};

} // namespace tarvo::transform
