// What the library is, and what went wrong.
#include "marvo/flat/last_error.h"
#include "marvo/version.h"
#include "marvo_c.h"

#include <iterator>
#include <string>

namespace {

constexpr int bitsOfPart = 8;

/// In the order of their numbers.
constexpr const char* resultNames[] = {
    "MARVO_OK",       "MARVO_E_ARGUMENT", "MARVO_E_HANDLE",  "MARVO_E_STATE",  "MARVO_E_THREAD",
    "MARVO_E_BUSY",   "MARVO_E_RANGE",    "MARVO_E_UNKNOWN", "MARVO_E_BUFFER", "MARVO_E_FILE",
    "MARVO_E_EXISTS", "MARVO_E_FORMAT",   "MARVO_E_DEVICE",  "MARVO_E_SYSTEM", "MARVO_E_CANCELLED",
    "MARVO_E_MEMORY", "MARVO_E_EMPTY",    "MARVO_E_REFUSED",
};
static_assert(std::size(resultNames) == MARVO_E_REFUSED + 1);

} // namespace

marvo_u32 MARVO_CALL marvo_version(void) {
    return static_cast<marvo_u32>((marvo::versionMajor << bitsOfPart | marvo::versionMinor) << bitsOfPart |
                                  marvo::versionPatch);
}

const char* MARVO_CALL marvo_version_text(void) {
    // So short a text takes no memory.
    static const std::string text = std::to_string(marvo::versionMajor) + "." +
                                    std::to_string(marvo::versionMinor) + "." +
                                    std::to_string(marvo::versionPatch);
    return text.c_str();
}

const char* MARVO_CALL marvo_last_error(void) {
    return flat::lastError();
}

const char* MARVO_CALL marvo_result_name(int result) {
    return result >= 0 && result <= MARVO_E_REFUSED ? resultNames[result] : "unknown";
}
