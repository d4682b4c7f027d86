/// @file
/// A pin of somebody else's filter for tests and measurements, and how such a filter's surroundings are
/// found.
#pragma once

#include "marvo.h"

#include <mutex>
#include <vector>

/// What arrived in one sample, as a test looks at it.
struct Arrival {
    std::vector<unsigned char> bytes;
    ULONGLONG time_ms = 0;
    bool hasTime = false;
    bool discontinuity = false;
    bool syncPoint = false;
    long long mediaStart = -1;
    long long mediaStop = -1;
};

/// A foreign pin, an input unless told otherwise: keeps to plain COM rules, can be connected to, and notes
/// every sample. Lives on its owner's stack, who checks at the end that all references have come back.
/// Samples may come from any thread.
class ForeignPin : public IPin, public IMemInputPin {
public:
    explicit ForeignPin(PIN_DIRECTION direction = PINDIR_INPUT) : direction_(direction) {}
    virtual ~ForeignPin() = default;
    ForeignPin(const ForeignPin&) = delete;
    ForeignPin& operator=(const ForeignPin&) = delete;

    std::vector<Arrival> arrivals();
    size_t count();
    /// Whether the newest sample holds these bytes.
    bool shows(const std::vector<unsigned char>& bytes);
    long references() const { return references_; }
    IPin* peer() const { return peer_.ptr(); }
    bool keepBytes = true;

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&references_); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&references_); }

    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE*) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** out) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryPinInfo(PIN_INFO* out) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* out) override { return *out = direction_, S_OK; }
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return S_OK; }
    STDMETHODIMP BeginFlush() override { return S_OK; }
    STDMETHODIMP EndFlush() override { return S_OK; }
    STDMETHODIMP NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    STDMETHODIMP GetAllocator(IMemAllocator**) override { return VFW_E_NO_ALLOCATOR; }
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** samples, long count, long* taken) override;
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

private:
    const PIN_DIRECTION direction_;
    volatile long references_ = 1;
    vwin::com_<IPin> peer_;
    vwin::com_<IMemAllocator> allocator_;
    std::mutex mutex_;
    std::vector<Arrival> arrivals_;
};

/// The pin of a filter by its place in the enumeration; none when there are not as many.
vwin::com_<IPin> pinOf(IBaseFilter& filter, int index);

/// The system's reference clock. It is one for all tests and is never given up: Wine's clock, when it goes,
/// waits for a thread of its own, and that thread misses the request to end, and sleeps for ever, when it
/// comes before its first sleep, as it does on a busy machine.
vwin::com_<IReferenceClock> systemClock();
