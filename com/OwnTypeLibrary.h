#pragma once

#include "com/Dispatch.h"
#include "com/Object.h"
#include "com/TypeInformation.h"
#include "interfaces/TarvoVideoTransform.h"

// Who includes this links tarvo_interfaces.

namespace tarvo::com {

/// The type library of the component itself.
inline const TypeLibraryId ownTypeLibrary{LIBID_TarvoVideoTransformLib, 1, 0};

/// In the list of an object: one of the component's dual interfaces, with the IDispatch that belongs to it.
template<class Interface>
using Dual = Implementing<CDispatch<Interface, ownTypeLibrary>, Interface, IDispatch>;

} // namespace tarvo::com
