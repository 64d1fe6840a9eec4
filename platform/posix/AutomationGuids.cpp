// The one place where the identifiers that the interface headers only declare are defined.

#define INITGUID
#include "platform/InterfaceTypes.h"

#include <control.h>

// Its header declares it without the macro that the others are defined by.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" const GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
