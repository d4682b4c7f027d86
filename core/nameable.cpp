#include "core/nameable.h"

namespace vcore {

unsigned long nameable::memSize() const {
    return sizeof(*this) - sizeof(_name) + _name.memSize();
}

} // namespace vcore
