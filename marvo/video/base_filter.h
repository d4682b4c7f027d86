/// @file
/// The base of the library's own filters.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/video/obj.h"
#include "marvo/video/reference.h"

namespace vvideo {

/// A filter with state, clock and name, and no pins. Derived filters start and stop their work in `Stop`,
/// `Pause` and `Run`, call these, and hold their pins as members that they delete themselves. Entered from
/// the thread that runs the graph; there are no locks.
class MARVO_API dvBaseFilter : public dvObj<IBaseFilter> {
public:
    dvBaseFilter() = default;

    /// `IUnknown`, `IPersist`, `IMediaFilter` and `IBaseFilter`.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override;
    /// Deliberate: the object's own address, sign-extended, in the first 8 bytes, so that each instance has
    /// another id. No class is registered.
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override;
    /// Enters the stopped state; nothing else stops here.
    HRESULT STDMETHODCALLTYPE Stop() override;
    /// Enters the paused state.
    HRESULT STDMETHODCALLTYPE Pause() override;
    /// Enters the running state. The start time is ignored.
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    /// The state at once: there is none in between.
    HRESULT STDMETHODCALLTYPE GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    /// Keeps the clock with a reference; null for none.
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
    /// The clock with a reference added, null when there is none.
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
    /// An empty enumerator; derived filters give one with their pins.
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override;
    /// Finds none: pins are found by enumeration.
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
    /// The name and the graph, the latter with a reference added.
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
    /// Keeps the graph without a reference, since the graph holds the filter, and at most 127 characters of
    /// the name.
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    /// There is none: a null text.
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override;

protected:
    ~dvBaseFilter() override = default;

    /// The reference clock, null when there is none.
    IReferenceClock* clock() const { return clock_.get(); }

private:
    Reference<IReferenceClock> clock_;
    FILTER_STATE state_ = State_Stopped;
    FILTER_INFO info_{};
};

} // namespace vvideo
