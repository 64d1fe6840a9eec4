#pragma once

// The platform's interface types: COM, automation, media objects, media graphs. Everything that needs one of
// them includes this header and no header of the platform's own.

// On Windows these come with the compiler; elsewhere from Wine's headers, of which nothing is linked. There
// WCHAR is a 16-bit type and wchar_t is not: texts are OLESTR("…"), never L"…".
#include <mediaobj.h>
#include <oaidl.h>
#include <ocidl.h>
#include <olectl.h>
#include <strmif.h>
#include <windows.h>
// This one lacks the linkage of its functions on one of the compilers.
extern "C" {
#include <dmort.h>
}
#include <dmo.h>
// Formats of video and the identifiers of media types. They need what stands above; the last of them has no
// guard and must not be included anywhere else.
#include <amvideo.h>
#include <dvdmedia.h>
#include <mediaerr.h>
#include <vfwmsgs.h>
#include <uuids.h>
