/// @file
/// An input pin that takes samples by IMemInputPin.
#pragma once

#include "devices/base_pin.h"

namespace devices {

/// Keeps the allocator that the upstream pin names, offers the system's memory allocator when asked, and
/// leaves the samples and the stream's events to the derived class. Receiving does not take the filter's
/// `control()`.
class input_pin : public base_pin, public IMemInputPin {
public:
    input_pin(base_filter& owner, const wchar_t* name) : base_pin(owner, PINDIR_INPUT, name) {}

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return base_pin::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return base_pin::Release(); }
    // IPin
    /// An input pin refuses: E_UNEXPECTED.
    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* wanted) override;
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    // IMemInputPin
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** out) override;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL read_only) override;
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* out) override;
    /// One after the other through `Receive`, until one is not taken.
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, long count, long* done) override;
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_OK; }

    /// Takes the upstream buffers away, so that a thread that waits for one comes back. The filter stops.
    void decommit();

protected:
    /// Called after a connection with `control()` held.
    virtual void on_connect() = 0;
    void on_disconnect() override { allocator_.reset(); }

private:
    com_ref<IMemAllocator> allocator_;
};

} // namespace devices
