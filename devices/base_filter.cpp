#include "devices/base_filter.h"

#include "devices/base_pin.h"
#include "devices/enum_pins.h"

#include <cwchar>
#include <new>

namespace devices {

HRESULT base_filter::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter || iid == IID_IBaseFilter) {
        *out = static_cast<IBaseFilter*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

ULONG base_filter::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG base_filter::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        // While the object goes, its peers may still take and give back references.
        InterlockedIncrement(&references_);
        delete this;
        return 0;
    }
    return static_cast<ULONG>(left);
}

HRESULT base_filter::GetClassID(CLSID* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = clsid_;
    return S_OK;
}

HRESULT base_filter::Stop() {
    guard held(control_);
    if (state_ == State_Stopped) {
        return S_OK;
    }
    state_ = State_Stopped;
    return on_stop();
}

HRESULT base_filter::Pause() {
    guard held(control_);
    if (state_ == State_Stopped) {
        const HRESULT result = on_start();
        if (FAILED(result)) {
            return result;
        }
    } else if (state_ == State_Running) {
        on_pause();
    }
    state_ = State_Paused;
    return S_OK;
}

HRESULT base_filter::Run(REFERENCE_TIME start) {
    guard held(control_);
    if (state_ == State_Stopped) {
        const HRESULT result = Pause();
        if (FAILED(result)) {
            return result;
        }
    }
    if (state_ == State_Paused) {
        const HRESULT result = on_run(start);
        if (FAILED(result)) {
            return result;
        }
        state_ = State_Running;
    }
    return S_OK;
}

HRESULT base_filter::GetState(DWORD, FILTER_STATE* out) {
    if (!out) {
        return E_POINTER;
    }
    guard held(control_);
    *out = state_;
    return state_ == State_Paused ? paused_result() : S_OK;
}

HRESULT base_filter::SetSyncSource(IReferenceClock* clock) {
    guard held(control_);
    clock_ = com_ref<IReferenceClock>(clock);
    return S_OK;
}

HRESULT base_filter::GetSyncSource(IReferenceClock** out) {
    if (!out) {
        return E_POINTER;
    }
    guard held(control_);
    *out = com_ref<IReferenceClock>(clock_).detach();
    return S_OK;
}

HRESULT base_filter::EnumPins(IEnumPins** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = new (std::nothrow) enum_pins(*this);
    return *out ? S_OK : E_OUTOFMEMORY;
}

HRESULT base_filter::FindPin(LPCWSTR id, IPin** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (!id) {
        return E_POINTER;
    }
    guard held(control_);
    for (int index = 0; index < pin_count(); ++index) {
        if (std::wcscmp(pin(index)->name(), id) == 0) {
            *out = com_ref<IPin>(pin(index)->as_pin()).detach();
            return S_OK;
        }
    }
    return VFW_E_NOT_FOUND;
}

HRESULT base_filter::QueryFilterInfo(FILTER_INFO* out) {
    if (!out) {
        return E_POINTER;
    }
    guard held(graph_lock_);
    std::wmemcpy(out->achName, name_, 128);
    out->pGraph = com_ref<IFilterGraph>(graph_).detach();
    return S_OK;
}

HRESULT base_filter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    guard held(graph_lock_);
    graph_ = graph;
    events_ = nullptr;
    if (graph) {
        // Known without a reference, as the graph itself: the graph says when it leaves.
        com_ref<IMediaEventSink> events;
        graph->QueryInterface(IID_IMediaEventSink, reinterpret_cast<void**>(events.put()));
        events_ = events.get();
    }
    name_[0] = 0;
    if (name) {
        std::wcsncat(name_, name, 127);
    }
    return S_OK;
}

HRESULT base_filter::QueryVendorInfo(LPWSTR* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    return E_NOTIMPL;
}

void base_filter::notify(long code, LONG_PTR first, LONG_PTR second) {
    guard held(graph_lock_);
    if (events_) {
        events_->Notify(code, first, second);
    }
}

} // namespace devices
