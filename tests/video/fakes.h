/// @file
/// Foreign objects that count their references.
#pragma once

#include "tests/support/foreign_pin.h"

#include <functional>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace fake {

/// References on a COM object right now.
template <class Object>
ULONG references(Object& object) {
    object.AddRef();
    return object.Release();
}

/// Interface `Base` with a plain count, for objects on a test's stack. A count below 1 is an over-release.
template <class Base>
class Counted : public Base {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** out) override {
        const bool known = id == IID_IUnknown || id == __uuidof(Base);
        *out = known ? this : nullptr;
        return known ? (++count, S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++count; }
    STDMETHODIMP_(ULONG) Release() override { return --count; }
    LONG count = 1;
};

class Sample : public Counted<IMediaSample> {
public:
    using times = std::optional<std::pair<long long, long long>>;

    explicit Sample(size_t size = 0) : buffer(size), length(static_cast<long>(size)) {}
    STDMETHODIMP GetPointer(BYTE** out) override {
        return *out = buffer.size() ? buffer.data() : nullptr, S_OK;
    }
    STDMETHODIMP_(long) GetSize() override { return static_cast<long>(buffer.size()); }
    STDMETHODIMP GetTime(REFERENCE_TIME* a, REFERENCE_TIME* b) override { return read(time, a, b); }
    STDMETHODIMP SetTime(REFERENCE_TIME* a, REFERENCE_TIME* b) override { return write(time, a, b); }
    STDMETHODIMP IsSyncPoint() override { return sync ? S_OK : S_FALSE; }
    STDMETHODIMP SetSyncPoint(BOOL on) override { return sync = on, S_OK; }
    STDMETHODIMP IsPreroll() override { return preroll ? S_OK : S_FALSE; }
    STDMETHODIMP SetPreroll(BOOL on) override { return preroll = on, S_OK; }
    STDMETHODIMP_(long) GetActualDataLength() override { return length; }
    STDMETHODIMP SetActualDataLength(long n) override { return length = n, S_OK; }
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE**) override { return S_FALSE; }
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP IsDiscontinuity() override { return discontinuity ? S_OK : S_FALSE; }
    STDMETHODIMP SetDiscontinuity(BOOL on) override { return discontinuity = on, S_OK; }
    STDMETHODIMP GetMediaTime(long long* a, long long* b) override { return read(mediaTime, a, b); }
    STDMETHODIMP SetMediaTime(long long* a, long long* b) override { return write(mediaTime, a, b); }

    std::vector<BYTE> buffer;
    long length;
    times time, mediaTime;
    BOOL sync = FALSE, preroll = FALSE, discontinuity = FALSE;

private:
    static HRESULT read(const times& from, long long* a, long long* b) {
        if (from) {
            std::tie(*a, *b) = *from;
        }
        return from ? S_OK : VFW_E_SAMPLE_TIME_NOT_SET;
    }
    static HRESULT write(times& to, const long long* a, const long long* b) {
        return to = a && b ? times({*a, *b}) : std::nullopt, S_OK;
    }
};

class Allocator : public Counted<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES*, ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* p) override { return *p = {4, 1000, 1, 0}, S_OK; }
    STDMETHODIMP Commit() override { return S_OK; }
    STDMETHODIMP Decommit() override { return S_OK; }
    STDMETHODIMP GetBuffer(IMediaSample**, long long*, long long*, DWORD) override { return E_FAIL; }
    STDMETHODIMP ReleaseBuffer(IMediaSample*) override { return E_NOTIMPL; }
};

/// A foreign pin that accepts and receives what it is told to.
class Peer : public ForeignPin {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** out) override {
        const bool refuses = id == IID_IMemInputPin && !transports;
        return refuses ? (*out = nullptr, E_NOINTERFACE) : ForeignPin::QueryInterface(id, out);
    }
    STDMETHODIMP ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) override {
        offered.push_back(mt->lSampleSize);
        return acceptsSize == mt->lSampleSize ? ForeignPin::ReceiveConnection(pin, mt)
                                              : VFW_E_TYPE_NOT_ACCEPTED;
    }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return queryAccept; }
    STDMETHODIMP Receive(IMediaSample*) override {
        ++received;
        if (duringReceive) {
            duringReceive();
        }
        return receiveResult;
    }
    STDMETHODIMP ReceiveMultiple(IMediaSample**, long n, long* done) override {
        received += * done = n;
        return receiveResult;
    }

    bool transports = true;
    ULONG acceptsSize = 1;
    HRESULT queryAccept = VFW_E_TYPE_NOT_ACCEPTED;
    HRESULT receiveResult = S_OK;
    std::function<void()> duringReceive;
    std::vector<ULONG> offered;
    int received = 0;
};

} // namespace fake
