/// @file
/// The handles that callers have.
#pragma once

#include "marvo/core/thread_annotations.h"
#include "marvo/flat/failure.h"
#include "marvo/flat/lock.h"
#include "marvo_c.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace flat {

/// The live handles of one kind. A handle is no address: it says a place in this table and how often that has
/// been used, so that whatever a caller gives is looked up and never followed. An object that is closed while
/// another thread uses it lives until that is done. Any thread.
template <class Handle, class Object>
class Handles {
public:
    /// `kind`, 1 to 7, tells the handles of this table from those of others; `what` names them.
    Handles(unsigned kind, const char* what) : kind_(kind), what_(what) {}
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;

    /// A new handle. Throws MARVO_E_MEMORY when there are too many.
    Handle* add(std::shared_ptr<Object> object) {
        const LockGuard guard(lock_);
        std::size_t place = 0;
        while (place < slots_.size() && slots_[place].object) {
            ++place;
        }
        if (place > placeMask) {
            fail(MARVO_E_MEMORY, std::string("There are too many open ") + what_ + "s.");
        }
        if (place == slots_.size()) {
            slots_.emplace_back();
        }
        slots_[place].object = std::move(object);
        return handleOf(place);
    }

    /// The object of a handle. Throws MARVO_E_HANDLE.
    std::shared_ptr<Object> get(const Handle* handle) {
        const LockGuard guard(lock_);
        return slotOf(handle).object;
    }

    /// The same; the handle is none from now on.
    std::shared_ptr<Object> remove(const Handle* handle) {
        const LockGuard guard(lock_);
        Slot& slot = slotOf(handle);
        ++slot.uses;
        return std::move(slot.object);
    }

private:
    struct Slot {
        std::shared_ptr<Object> object;
        std::uint32_t uses = 0;
    };

    // The lowest bits are never 0, as those of addresses are.
    static constexpr unsigned kindBits = 3;
    static constexpr unsigned placeBits = 10;
    static constexpr std::size_t placeMask = (1u << placeBits) - 1;

    Handle* handleOf(std::size_t place) const MARVO_REQUIRES(lock_) {
        const auto value = (slots_[place].uses << (kindBits + placeBits)) |
                           static_cast<std::uint32_t>(place << kindBits) | kind_;
        return reinterpret_cast<Handle*>(static_cast<std::uintptr_t>(value));
    }

    Slot& slotOf(const Handle* handle) MARVO_REQUIRES(lock_) {
        const std::size_t place = reinterpret_cast<std::uintptr_t>(handle) >> kindBits & placeMask;
        if (place >= slots_.size() || !slots_[place].object || handleOf(place) != handle) {
            fail(MARVO_E_HANDLE, std::string("This is no open ") + what_ +
                                     (handle ? ": it was never one, or it was closed." : ": it is null."));
        }
        return slots_[place];
    }

    const unsigned kind_;
    const char* const what_;
    Lock lock_;
    std::vector<Slot> slots_ MARVO_GUARDED_BY(lock_);
};

} // namespace flat
