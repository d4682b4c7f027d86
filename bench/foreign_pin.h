#pragma once

#include "marvo.h"

#include <atomic>

/// A pin of somebody else's filter, as far as the engine's pins ask for it: it can be connected to, and it
/// takes samples and drops them. Keeps to plain COM rules; lives on its owner's stack.
class ForeignPin : public IPin, public IMemInputPin {
public:
    explicit ForeignPin(PIN_DIRECTION direction) : direction_(direction) {}
    virtual ~ForeignPin() = default;
    ForeignPin(const ForeignPin&) = delete;
    ForeignPin& operator=(const ForeignPin&) = delete;

    /// Samples received.
    int received() const { return received_; }

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override { return --references_; }
    // IPin
    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP ReceiveConnection(IPin* peer, const AM_MEDIA_TYPE*) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** out) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryPinInfo(PIN_INFO* out) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* out) override;
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return S_OK; }
    STDMETHODIMP BeginFlush() override { return S_OK; }
    STDMETHODIMP EndFlush() override { return S_OK; }
    STDMETHODIMP NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }
    // IMemInputPin
    STDMETHODIMP GetAllocator(IMemAllocator**) override { return E_NOTIMPL; }
    STDMETHODIMP NotifyAllocator(IMemAllocator*, BOOL) override { return S_OK; }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Receive(IMediaSample*) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample**, long count, long* taken) override;
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

private:
    const PIN_DIRECTION direction_;
    std::atomic<ULONG> references_ = 1;
    std::atomic<int> received_ = 0;
    vwin::com_<IPin> peer_;
};

/// Pin number `index` of a filter. Throws std::runtime_error when there is none.
vwin::com_<IPin> pinOf(IBaseFilter& filter, ULONG index);
