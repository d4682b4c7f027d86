#include "marvo/video/base_filter.h"

#include "marvo/video/enum_pins.h"

#include <cstring>

namespace vvideo {

HRESULT STDMETHODCALLTYPE dvBaseFilter::QueryInterface(REFIID id, void** out) {
    const bool known =
        id == IID_IUnknown || id == IID_IPersist || id == IID_IMediaFilter || id == IID_IBaseFilter;
    return answer(known ? this : nullptr, out);
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::GetClassID(CLSID* id) {
    if (!id) {
        return E_POINTER;
    }
    *id = GUID_NULL;
    const long long address = reinterpret_cast<std::intptr_t>(this);
    std::memcpy(id, &address, sizeof(address));
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::Stop() {
    state_ = State_Stopped;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::Pause() {
    state_ = State_Paused;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::Run(REFERENCE_TIME) {
    state_ = State_Running;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::GetState(DWORD, FILTER_STATE* state) {
    if (!state) {
        return E_POINTER;
    }
    *state = state_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::SetSyncSource(IReferenceClock* clock) {
    clock_.share(clock);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::GetSyncSource(IReferenceClock** clock) {
    if (!clock) {
        return E_POINTER;
    }
    *clock = Reference(clock_).release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::EnumPins(IEnumPins** out) {
    return enumeratePins({}, out);
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::FindPin(LPCWSTR id, IPin** pin) {
    return id && pin ? VFW_E_NOT_FOUND : E_POINTER;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (!info) {
        return E_POINTER;
    }
    *info = info_;
    if (info->pGraph) {
        info->pGraph->AddRef();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    info_.pGraph = graph;
    lstrcpynW(info_.achName, name ? name : L"", MAX_FILTER_NAME);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvBaseFilter::QueryVendorInfo(LPWSTR* info) {
    if (!info) {
        return E_POINTER;
    }
    *info = nullptr;
    return S_OK;
}

} // namespace vvideo
