/// @file
/// One DirectShow filter.
#pragma once

#include "marvo/com/com_interface.h"
#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

namespace vcore {
class str;
}

namespace vwin {

/// Holds one DirectShow filter, its own or a foreign one, with one reference.
///
/// Threads: used from one thread (the one that builds the graph). COM must be initialised there for create().
/// Every operation on an empty holder is harmless and answers false or nothing.
class MARVO_API com_filter : public com_interface {
public:
    /// Holds no filter.
    com_filter() = default;
    /// Releases the filter. While the process is ending the filter is abandoned instead: its threads are
    /// dead, and a foreign filter may wait for them.
    ~com_filter() override;

    bool create(const GUID& clsid) override;
    bool createS(const wchar_t* clsidText) override;
    /// Lets the filter go. Deliberate: it stays in its graph and stays connected, because the graph may still
    /// be running; the graph takes it apart when it is released.
    void close() override;
    /// Disconnects the filter's pins, removes it from its graph and lets it go. The graph must be stopped.
    void destroy() override;
    bool ref(IUnknown* object) override;
    void clear() override;
    /// The first pin called `name` (case-sensitive; null: any name) with the direction `direction`
    /// (PINDIR_INPUT or PINDIR_OUTPUT; negative: either). The pin's own reference is owned by the result,
    /// which holds nothing when there is no such pin.
    virtual com_<IPin> findPin(const wchar_t* name, int direction);
    /// Whether the filter is called `name` in its graph (case-sensitive).
    virtual bool compareName(const wchar_t* name);
    /// Puts the filter's name in its graph into `name`. False, with `name` emptied, without a filter.
    virtual bool getName(vcore::str& name);
    /// Disconnects every connected pin at both ends. False when the filter cannot be asked for its pins or a
    /// pin refused (a running filter's pins may). The graph must be stopped.
    virtual bool disconnectPins();

    /// The filter without a reference added; null when empty.
    IBaseFilter* filter() const { return filter_.ptr(); }
    /// Whether a filter is held.
    explicit operator bool() const { return static_cast<bool>(filter_); }

private:
    com_<IBaseFilter> filter_;
};

} // namespace vwin
