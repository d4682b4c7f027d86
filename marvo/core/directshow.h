/// @file
/// DirectShow's header as the library includes it: without the string functions that come with it, which make
/// macros of standard names (`sprintf`, `strcpy`...). A host that wants these includes `strsafe.h` itself.
#pragma once

#include "marvo/core/windows.h"

#pragma push_macro("NO_DSHOW_STRSAFE")
#undef NO_DSHOW_STRSAFE
#define NO_DSHOW_STRSAFE
#include <dshow.h>
#pragma pop_macro("NO_DSHOW_STRSAFE")
