#include "marvo/avi/avi_findings.h"

#include <cstdarg>
#include <cwchar>

void AviFindings::fault(unsigned long long offset, const wchar_t* format, ...) {
    if (++faultCount > maxFaults) {
        return;
    }
    wchar_t text[200] = L"";
    std::va_list arguments;
    va_start(arguments, format);
    std::vswprintf(text, std::size(text), format, arguments);
    va_end(arguments);
    faults.push_back({offset, vcore::str(text)});
}
