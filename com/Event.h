#pragma once

#include "com/ConnectionPoint.h"
#include "platform/InterfaceTypes.h"

#include <algorithm>
#include <cstddef>

namespace tarvo::com {

/// Fires an event of a dispatch interface: every sink's Invoke as a method call, in the user's default
/// locale.
///
/// The arguments stand in the order of the method's declaration and stay the caller's; each sink gets a copy
/// of the records, for it could write into them. Result as CConnectionPoint::fire.
template<std::size_t count>
HRESULT fireEvent(CConnectionPoint& point, DISPID member, const VARIANT (&arguments)[count]) {
    return point.fire([&](IUnknown& sink) -> HRESULT {
        // Dispatch calls take them backwards.
        VARIANT backwards[count];
        std::ranges::reverse_copy(arguments, backwards);
        DISPPARAMS parameters{};
        parameters.rgvarg = backwards;
        parameters.cArgs = count;
        // What a connection point of a dispatch interface holds is one.
        return static_cast<IDispatch&>(sink).Invoke(member, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                                    &parameters, nullptr, nullptr, nullptr);
    });
}

} // namespace tarvo::com
