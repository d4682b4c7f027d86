// What becomes of an exception that leaves where none may.
#include <cstdlib>

#ifdef __GLIBCXX__
namespace __gnu_cxx {

void __verbose_terminate_handler();

/// Takes the place of the compiler's own handler, which prints the name of the exception: for that it brings
/// a decoder of mangled names along, a twentieth of the whole DLL, and a host with windows has nowhere to
/// print.
void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
#endif
