#include "devices/input_pin.h"

#include "devices/base_filter.h"

namespace devices {

HRESULT input_pin::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IMemInputPin) {
        *out = static_cast<IMemInputPin*>(this);
        AddRef();
        return S_OK;
    }
    return base_pin::QueryInterface(iid, out);
}

HRESULT input_pin::Connect(IPin*, const AM_MEDIA_TYPE*) {
    return E_UNEXPECTED;
}

HRESULT input_pin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (!type) {
        return E_POINTER;
    }
    guard held(owner().control());
    const HRESULT result = check_peer(connector);
    if (FAILED(result)) {
        return result;
    }
    if (!accepts(*type)) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }
    media_type copy(*type);
    if (copy.get().majortype != type->majortype) {
        return E_OUTOFMEMORY;
    }
    keep_connection(connector, std::move(copy));
    on_connect();
    return S_OK;
}

HRESULT input_pin::GetAllocator(IMemAllocator** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    guard held(owner().control());
    if (!allocator_) {
        const HRESULT result =
            CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                             reinterpret_cast<void**>(allocator_.put()));
        if (FAILED(result)) {
            return result;
        }
    }
    *out = com_ref<IMemAllocator>(allocator_).detach();
    return S_OK;
}

HRESULT input_pin::NotifyAllocator(IMemAllocator* allocator, BOOL) {
    if (!allocator) {
        return E_POINTER;
    }
    guard held(owner().control());
    allocator_ = com_ref<IMemAllocator>(allocator);
    return S_OK;
}

HRESULT input_pin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) {
    return E_NOTIMPL;
}

HRESULT input_pin::ReceiveMultiple(IMediaSample** samples, long count, long* done) {
    if (!samples || !done) {
        return E_POINTER;
    }
    HRESULT result = S_OK;
    for (*done = 0; *done < count && result == S_OK;) {
        result = Receive(samples[*done]);
        if (result == S_OK) {
            ++*done;
        }
    }
    return result;
}

void input_pin::decommit() {
    if (allocator_) {
        allocator_->Decommit();
    }
}

} // namespace devices
