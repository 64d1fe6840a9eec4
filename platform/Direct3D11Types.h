#pragma once

// The interface types of Direct3D 11, as platform/InterfaceTypes.h brings those of COM: on Windows they come
// with the compiler, elsewhere from Wine's headers. Nothing of the library is linked on either; see
// render/d3d11/D3d11Library.h.
#include "platform/InterfaceTypes.h"

#include <d3d11.h>
