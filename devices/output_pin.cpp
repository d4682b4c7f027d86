#include "devices/output_pin.h"

#include "devices/base_filter.h"

#include <algorithm>
#include <new>

namespace devices {

namespace {

const long buffers_at_least = 4;

} // namespace

HRESULT output_pin::Connect(IPin* receiver, const AM_MEDIA_TYPE* wanted) {
    guard held(owner().control());
    HRESULT result = check_peer(receiver);
    if (FAILED(result)) {
        return result;
    }
    result = VFW_E_NO_ACCEPTABLE_TYPES;
    try {
        for (const media_type& type : offered()) {
            if (wanted && !type.fits(*wanted)) {
                continue;
            }
            result = try_type(receiver, type);
            if (SUCCEEDED(result)) {
                return S_OK;
            }
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return wanted && result == VFW_E_NO_ACCEPTABLE_TYPES ? VFW_E_TYPE_NOT_ACCEPTED : result;
}

HRESULT output_pin::ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) {
    return E_UNEXPECTED;
}

HRESULT output_pin::try_type(IPin* receiver, const media_type& type) {
    com_ref<IMemInputPin> transport;
    if (FAILED(receiver->QueryInterface(IID_IMemInputPin, reinterpret_cast<void**>(transport.put())))) {
        return VFW_E_NO_TRANSPORT;
    }
    // Both sides must know each other before the receiver is asked: it may look back at this pin.
    keep_connection(receiver, type);
    HRESULT result = receiver->ReceiveConnection(this, &type.get());
    if (SUCCEEDED(result)) {
        transport_ = transport;
        result = agree_on_allocator(type.get());
        if (FAILED(result)) {
            receiver->Disconnect();
        }
    }
    if (FAILED(result)) {
        on_disconnect();
        drop_connection();
    }
    return result;
}

HRESULT output_pin::agree_on_allocator(const AM_MEDIA_TYPE& type) {
    ALLOCATOR_PROPERTIES wanted{};
    if (FAILED(transport_->GetAllocatorRequirements(&wanted))) {
        wanted = ALLOCATOR_PROPERTIES{};
    }
    wanted.cBuffers = std::clamp(wanted.cBuffers, buffers_at_least, 64L);
    wanted.cbBuffer = std::max(wanted.cbBuffer, static_cast<long>(sample_bytes(type)));
    wanted.cbAlign = std::max(wanted.cbAlign, 1L);
    wanted.cbPrefix = std::max(wanted.cbPrefix, 0L);

    com_ref<IMemAllocator> allocator;
    if (SUCCEEDED(transport_->GetAllocator(allocator.put())) && allocator &&
        SUCCEEDED(use_allocator(allocator, wanted))) {
        return S_OK;
    }
    const HRESULT result = CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IMemAllocator, reinterpret_cast<void**>(allocator.put()));
    return FAILED(result) ? result : use_allocator(allocator, wanted);
}

HRESULT output_pin::use_allocator(const com_ref<IMemAllocator>& allocator,
                                  const ALLOCATOR_PROPERTIES& wanted) {
    ALLOCATOR_PROPERTIES request = wanted;
    ALLOCATOR_PROPERTIES actual{};
    HRESULT result = allocator->SetProperties(&request, &actual);
    if (FAILED(result)) {
        return result;
    }
    if (actual.cbBuffer < wanted.cbBuffer || actual.cBuffers < 1) {
        return E_FAIL;
    }
    result = transport_->NotifyAllocator(allocator.get(), FALSE);
    if (SUCCEEDED(result)) {
        allocator_ = allocator;
    }
    return result;
}

HRESULT output_pin::commit() {
    return allocator_ ? allocator_->Commit() : S_OK;
}

void output_pin::decommit() {
    if (allocator_) {
        allocator_->Decommit();
    }
}

void output_pin::on_disconnect() {
    decommit();
    allocator_.reset();
    transport_.reset();
}

} // namespace devices
