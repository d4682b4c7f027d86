#include "video/input_pin.h"

#include "core/timed_guard.h"

#include <utility>

namespace vvideo {

dvInputPin::dvInputPin(IBaseFilter* filter, const wchar_t* name, int) : _lock(1, 1), _filter(filter) {
    copyPinName(_name, name);
}

dvInputPin::~dvInputPin() {
    if (_allocator)
        _allocator->Release();
    if (_foreign())
        _peer->Release();
}

void dvInputPin::registerSink(dvSink* sink) {
    vcore::timed_guard guard(_lock, INFINITE);
    _sink = sink;
}

void dvInputPin::unregisterSink() {
    registerSink(nullptr);
}

void dvInputPin::addType(dvMediaType& type) {
    _types.setType(type);
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryInterface(REFIID id, void** out) {
    if (id == IID_IMemInputPin)
        return answer(static_cast<IMemInputPin*>(this), out);
    const bool pin = id == IID_IPin || id == IID_IUnknown || id == IID_dvOwnPin;
    return answer(pin ? static_cast<IPin*>(this) : nullptr, out);
}

ULONG STDMETHODCALLTYPE dvInputPin::AddRef() {
    if (_filter)
        _filter->AddRef();
    return dvObj<IPin>::AddRef();
}

// The filter last: it may go with its last reference, and this pin with it.
ULONG STDMETHODCALLTYPE dvInputPin::Release() {
    IBaseFilter* const filter = _filter;
    const ULONG left = dvObj<IPin>::Release();
    if (filter)
        filter->Release();
    return left;
}

HRESULT dvInputPin::_checkUnconnected(IPin* pin) const {
    if (_peer)
        return VFW_E_ALREADY_CONNECTED;
    return pin ? S_OK : E_POINTER;
}

bool dvInputPin::_accepts(const AM_MEDIA_TYPE* mt) {
    dvMediaType type(mt);
    dvSink* const sink = _sink;
    return sink && sink->acceptFormat(this, type);
}

void dvInputPin::_connect(IPin* pin, const AM_MEDIA_TYPE* mt) {
    _type = mt;
    _peer = pin;
    _house = isOwnPin(pin);
    if (_foreign())
        pin->AddRef();
    if (dvSink* const sink = _sink)
        sink->notifyConnect(this);
}

HRESULT STDMETHODCALLTYPE dvInputPin::Connect(IPin* pin, const AM_MEDIA_TYPE* mt) {
    const HRESULT free = _checkUnconnected(pin);
    if (free == S_OK)
        _connect(pin, mt);
    return free;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = _checkUnconnected(pin); free != S_OK)
        return free;
    if (!_accepts(mt))
        return VFW_E_TYPE_NOT_ACCEPTED;
    _connect(pin, mt);
    // An own output pin keeps this one without a reference and releases it when it is disconnected. This is
    // the reference that it releases; a cycle of connecting and disconnecting both leaves the count as it
    // was.
    if (_house)
        AddRef();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::Disconnect() {
    if (!_peer)
        return S_FALSE;
    _dropAllocator();
    _house = true;
    IPin* const peer = std::exchange(_peer, nullptr);
    if (dvSink* const sink = _sink)
        sink->notifyDisconnect(this);
    peer->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ConnectedTo(IPin** pin) {
    if (!_peer)
        return VFW_E_NOT_CONNECTED;
    if (!pin)
        return E_POINTER;
    _peer->AddRef();
    *pin = _peer;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ConnectionMediaType(AM_MEDIA_TYPE* mt) {
    if (!mt)
        return E_POINTER;
    copyMediaType(*mt, _type);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryPinInfo(PIN_INFO* info) {
    return fillPinInfo(info, _filter, PINDIR_INPUT, _name);
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction)
        return E_POINTER;
    *direction = PINDIR_INPUT;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryId(LPWSTR* id) {
    if (!id)
        return E_POINTER;
    *id = static_cast<LPWSTR>(CoTaskMemAlloc(sizeof(_name)));
    if (!*id)
        return E_OUTOFMEMORY;
    lstrcpynW(*id, _name, MAX_PIN_NAME);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryAccept(const AM_MEDIA_TYPE* mt) {
    return _accepts(mt) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EnumMediaTypes(IEnumMediaTypes** out) {
    if (!out)
        return E_POINTER;
    _types.AddRef();
    *out = &_types;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryInternalConnections(IPin**, ULONG* n) {
    if (!n)
        return E_POINTER;
    *n = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EndOfStream() {
    if (dvSink* const sink = _sink)
        sink->notifyComplete(this);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::BeginFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EndFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::GetAllocator(IMemAllocator** allocator) {
    if (!allocator)
        return E_POINTER;
    if (!_allocator)
        return VFW_E_NO_ALLOCATOR;
    if (_foreign())
        _allocator->AddRef();
    *allocator = _allocator;
    return S_OK;
}

void dvInputPin::_dropAllocator() {
    IMemAllocator* const allocator = std::exchange(_allocator, nullptr);
    if (allocator && _allocatorReferenced)
        allocator->Release();
}

HRESULT STDMETHODCALLTYPE dvInputPin::NotifyAllocator(IMemAllocator* allocator, BOOL) {
    const bool connected = _peer != nullptr;
    if (allocator && connected)
        allocator->AddRef();
    _dropAllocator();
    _allocator = allocator;
    _allocatorReferenced = connected;
    if (dvSink* const sink = _sink)
        sink->notifyAllocator(this);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    if (!properties)
        return E_POINTER;
    if (_allocator)
        _allocator->GetProperties(properties);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::Receive(IMediaSample* sample) {
    const bool house = _house;
    if (dvSink* const sink = _sink)
        sink->receive(this, sample);
    if (house && sample)
        sample->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveMultiple(IMediaSample** samples, long n, long* done) {
    if (done)
        *done = 0;
    if (!samples)
        return E_POINTER;
    const bool house = _house;
    vcore::timed_guard guard(_lock, INFINITE);
    dvSink* const sink = _sink;
    for (long i = 0; i < n; ++i) {
        if (sink && sink->receive(this, samples[i])) {
            if (done)
                ++*done;
        } else if (house && samples[i]) {
            samples[i]->Release();
        }
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveCanBlock() {
    return S_FALSE;
}

} // namespace vvideo
