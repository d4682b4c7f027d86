/// @file
/// What an input pin tells its filter.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/video/media_type.h"

namespace vvideo {

class dvInputPin;

/// Implemented by the filter that owns an input pin. `receive` and `notifyComplete` come on the upstream
/// filter's streaming thread, the others on the thread that builds the graph.
class dvSink {
public:
    /// One sample; true when it was taken. A sink that keeps it beyond the call adds a reference.
    virtual bool receive(dvInputPin* pin, IMediaSample* sample) = 0;
    /// Whether the pin may be connected with that type.
    virtual bool acceptFormat(dvInputPin*, dvMediaType&) { return true; }
    /// The pin was connected; its type is set.
    virtual void notifyConnect(dvInputPin*) {}
    /// The upstream pin has told which allocator its samples come from.
    virtual void notifyAllocator(dvInputPin*) {}
    /// The stream has ended.
    virtual void notifyComplete(dvInputPin*) {}
    /// The pin was disconnected and has forgotten its allocator; what the sink took over from it ends here.
    virtual void notifyDisconnect(dvInputPin*) {}

protected:
    ~dvSink() = default;
};

} // namespace vvideo
