#include "marvo/flat/last_error.h"

#include "marvo/core/process_state.h"
#include "marvo/core/windows.h"
#include "marvo/flat/text.h"

#include <cstring>
#include <new>

namespace flat {

namespace {

struct Kept {
    char text[1024];
};

/// Each thread's, freed at its end and when the library goes. The compiler's own thread variables end the
/// process where there is no memory for them.
class Slots {
public:
    Slots() : index_(FlsAlloc(release)) {}
    ~Slots() {
        if (index_ != FLS_OUT_OF_INDEXES && !vcore::processEnding()) {
            FlsFree(index_);
        }
    }
    Slots(const Slots&) = delete;
    Slots& operator=(const Slots&) = delete;

    Kept* get() const {
        return index_ != FLS_OUT_OF_INDEXES ? static_cast<Kept*>(FlsGetValue(index_)) : nullptr;
    }

    Kept* make() const {
        if (Kept* kept = get()) {
            return kept;
        }
        Kept* const kept = new (std::nothrow) Kept();
        if (index_ == FLS_OUT_OF_INDEXES || !FlsSetValue(index_, kept)) {
            delete kept;
            return nullptr;
        }
        return kept;
    }

private:
    static void WINAPI release(void* kept) { delete static_cast<Kept*>(kept); }

    const DWORD index_;
};

Slots slots;

} // namespace

void setLastError(const char* text) noexcept {
    if (Kept* kept = slots.make()) {
        const std::size_t length = fittingLength(text, std::strlen(text), sizeof kept->text);
        std::memmove(kept->text, text, length);
        kept->text[length] = '\0';
    }
}

const char* lastError() noexcept {
    const DWORD systemError = GetLastError();
    const Kept* const kept = slots.get();
    SetLastError(systemError);
    return kept ? kept->text : "";
}

} // namespace flat
