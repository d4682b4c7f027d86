#include "marvo/core/callback.h"

namespace vcore {

void eCallback::onCallback(const str&, const str&, void*) {}

void eCaller::callback(const str& name, const str& value, void* sender) {
    if (callback_) {
        callback_->onCallback(name, value, sender ? sender : this);
    }
}

} // namespace vcore
