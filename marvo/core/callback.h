/// @file
/// A plain callback interface and its caller.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

class str;

/// Receiver of callbacks. They come on the caller's thread; the receiver guards its own state.
class MARVO_API eCallback {
public:
    /// Called with a name, a value and whoever caused it. The default does nothing.
    virtual void onCallback(const str& name, const str& value, void* sender);

protected:
    ~eCallback() = default;
};

/// Holds at most one receiver of callbacks, which must outlive it or be taken away with
/// `setCallback(nullptr)`.
class MARVO_API eCaller {
public:
    /// Sets the receiver, null for none.
    void setCallback(eCallback* callback) { callback_ = callback; }
    /// Calls the receiver, if there is one, on this thread. A null `sender` is replaced by this object.
    void callback(const str& name, const str& value, void* sender);

private:
    eCallback* callback_ = nullptr;
};

} // namespace vcore
