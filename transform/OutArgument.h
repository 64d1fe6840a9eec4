#pragma once

#include "platform/InterfaceTypes.h"

namespace tarvo::transform {

/// Answers a getter: stores the value where the caller wants it, E_POINTER if that is nowhere.
template<class Value>
HRESULT give(Value* target, Value value) {
    if (target == nullptr)
        return E_POINTER;
    *target = value;
    return S_OK;
}

} // namespace tarvo::transform
