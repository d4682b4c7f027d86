#include "core/callback.h"

namespace vcore {

void eCallback::onCallback(const str&, const str&, void*) {}

void eCaller::callback(const str& name, const str& value, void* sender) {
    if (_callback)
        _callback->onCallback(name, value, sender ? sender : this);
}

} // namespace vcore
