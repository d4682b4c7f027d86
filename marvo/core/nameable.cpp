#include "marvo/core/nameable.h"

namespace vcore {

unsigned long nameable::memSize() const {
    return sizeof(*this) - sizeof(name_) + name_.memSize();
}

} // namespace vcore
