/// @file
/// What all filters of this server have in common.
#pragma once

#include "devices/com_ref.h"
#include "devices/lock.h"
#include "devices/object_count.h"

#include <dshow.h>

namespace devices {

class base_pin;

/// A filter: its state, clock, name and graph. Pins are members of the derived class and share its reference
/// count.
///
/// Entered by the graph's thread and, for `notify` only, by the filter's own thread. `control()` guards
/// state, clock and connections; it is held while neighbours are called to connect. The graph is known
/// without a reference (it owns its filters) and guarded by a lock of its own, so that a streaming thread can
/// report while `Stop` holds `control()`.
class base_filter : public IBaseFilter, private object_count {
public:
    base_filter(const base_filter&) = delete;
    base_filter& operator=(const base_filter&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // IPersist
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* out) override;
    // IMediaFilter
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD ms, FILTER_STATE* out) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** out) override;
    // IBaseFilter
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** out) override;
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* out) override;
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* out) override;

    /// The pins that exist now; `pin` gives null at and after `pin_count`. Not a reference.
    virtual int pin_count() = 0;
    virtual base_pin* pin(int index) = 0;
    /// Changes whenever the set of pins does; enumerators made before are then out of step.
    long pin_version() const { return pin_version_; }

    lock& control() { return control_; }
    /// Needs `control()`.
    bool stopped() const { return state_ == State_Stopped; }
    IReferenceClock* clock() const { return clock_.get(); }

protected:
    explicit base_filter(const CLSID& clsid) : clsid_(clsid) {}
    virtual ~base_filter() = default;

    /// The steps between states, called with `control()` held. A failed `on_start` or `on_run` leaves the
    /// state as it was. `on_start` goes from stopped to paused, `on_stop` ends all streaming whatever the
    /// neighbours do.
    virtual HRESULT on_start() = 0;
    virtual HRESULT on_run(REFERENCE_TIME start) = 0;
    virtual void on_pause() = 0;
    virtual HRESULT on_stop() = 0;
    /// What `GetState` answers while paused: a live source has nothing to show then.
    virtual HRESULT paused_result() const { return S_OK; }

    /// The set of pins has changed. Needs `control()`.
    void pins_changed() { ++pin_version_; }
    /// Sends an event to the graph, if there is one. Any thread; not with `control()` held.
    void notify(long code, LONG_PTR first, LONG_PTR second);

private:
    const CLSID clsid_;
    volatile LONG references_ = 1;
    lock control_;
    FILTER_STATE state_ = State_Stopped;
    com_ref<IReferenceClock> clock_;
    long pin_version_ = 0;

    lock graph_lock_; // guards the three below; the last lock taken
    IFilterGraph* graph_ = nullptr;
    IMediaEventSink* events_ = nullptr;
    WCHAR name_[128] = {};
};

} // namespace devices
