#pragma once

#include "diagnostics/LogLine.h"
#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"

#include <cstdint>

namespace tarvo::transform {

/// The answer of a setter after a step that the new value made necessary: a failure of it, which is logged
/// under the property's name, else S_OK.
inline HRESULT reportFailure(const diagnostics::ObjectLog& log, const char* property, HRESULT result) {
    if (SUCCEEDED(result))
        return S_OK;
    const auto bits = static_cast<std::uint32_t>(result);
    TARVO_LOG(log.log, diagnostics::LogCategory::error, log.instanceId, property, "HR=0x%X D3DERR=%i",
              unsigned{bits}, static_cast<int>(bits & 0xFFFFU));
    return result;
}

} // namespace tarvo::transform
