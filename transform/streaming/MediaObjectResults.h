#pragma once

#include "platform/InterfaceTypes.h"

namespace tarvo::transform {

// The platform's codes for media objects, which its headers have as numbers without a type.
inline constexpr auto invalidStreamIndex = static_cast<HRESULT>(DMO_E_INVALIDSTREAMINDEX);
inline constexpr auto typeNotAccepted = static_cast<HRESULT>(DMO_E_TYPE_NOT_ACCEPTED);
inline constexpr auto typeNotSet = static_cast<HRESULT>(DMO_E_TYPE_NOT_SET);
inline constexpr auto notAccepting = static_cast<HRESULT>(DMO_E_NOTACCEPTING);
inline constexpr auto noMoreItems = static_cast<HRESULT>(DMO_E_NO_MORE_ITEMS);

} // namespace tarvo::transform
