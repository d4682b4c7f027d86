/// @file
/// An output pin with its allocator.
#pragma once

#include "devices/base_pin.h"

namespace devices {

/// Connects downstream, agrees on an allocator (the peer's own when it offers one that suits, else the
/// system's memory allocator), and lends both to the streaming thread.
class output_pin : public base_pin {
public:
    /// What a streaming thread needs, with references of its own, so that it survives a neighbour that hangs.
    struct link {
        com_ref<IMemInputPin> transport;
        com_ref<IMemAllocator> allocator;
    };

    output_pin(base_filter& owner, const wchar_t* name) : base_pin(owner, PINDIR_OUTPUT, name) {}

    // IPin
    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* wanted) override;
    /// An output pin refuses: E_UNEXPECTED.
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override {
        return E_UNEXPECTED;
    }

    /// Empty when not connected. Needs the filter's `control()` or a time in which connections cannot change.
    link connection() const { return {transport_, allocator_}; }
    /// Buffers become available / unavailable; a thread blocked for one comes back. True things to do when
    /// unconnected.
    HRESULT commit();
    void decommit();

protected:
    /// Bytes of one sample of the given type.
    virtual size_t sample_bytes(const AM_MEDIA_TYPE& type) const = 0;

    void on_disconnect() override;

private:
    HRESULT try_type(IPin* receiver, const media_type& type);
    HRESULT agree_on_allocator(const AM_MEDIA_TYPE& type);
    HRESULT use_allocator(const com_ref<IMemAllocator>& allocator, const ALLOCATOR_PROPERTIES& wanted);

    com_ref<IMemInputPin> transport_;
    com_ref<IMemAllocator> allocator_;
};

} // namespace devices
