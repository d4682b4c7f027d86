#include "replay/avi_inspector.h"

bool AviInspector::run(const wchar_t*, const Options&) {
    return false;
}
