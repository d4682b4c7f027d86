/// @file
/// What every header needs first: the Windows headers, and MARVO_API, which marks a class or function as part
/// of the library's exported interface.
///
/// Not guarded against being included twice: `marvo.h` leaves MARVO_API behind in no host, and a header that
/// is included after it gets it again.

#include "marvo/core/windows.h"

#if !defined(MARVO_API)
#if defined(MARVO_STATIC)
/// The library's objects are linked into the program itself.
#define MARVO_API
#elif defined(MARVO_BUILD)
/// The DLL is being built.
#define MARVO_API __declspec(dllexport)
#else
/// A host that uses the DLL.
#define MARVO_API __declspec(dllimport)
#endif
#endif
