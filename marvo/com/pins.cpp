#include "marvo/com/pins.h"

#include <cwchar>

namespace vwin {

namespace {

/// One entry of a media type enumerator, owned by whoever asked for it.
class OfferedType {
public:
    OfferedType() = default;
    OfferedType(const OfferedType&) = delete;
    OfferedType& operator=(const OfferedType&) = delete;
    ~OfferedType() {
        if (type_ == nullptr) {
            return;
        }
        // Without a size the address may be anything.
        if (type_->cbFormat != 0) {
            CoTaskMemFree(type_->pbFormat);
        }
        if (type_->pUnk != nullptr) {
            type_->pUnk->Release();
        }
        CoTaskMemFree(type_);
    }

    bool next(IEnumMediaTypes* types) {
        ULONG fetched = 0;
        return types->Next(1, &type_, &fetched) == S_OK && fetched == 1 && type_ != nullptr;
    }

    bool isDv() const {
        return IsEqualGUID(type_->subtype, MEDIASUBTYPE_dvsd) &&
               (IsEqualGUID(type_->majortype, MEDIATYPE_Video) ||
                IsEqualGUID(type_->majortype, MEDIATYPE_Interleaved));
    }

private:
    AM_MEDIA_TYPE* type_ = nullptr;
};

bool hasName(IPin* pin, const wchar_t* name) {
    if (name == nullptr) {
        return true;
    }
    PIN_INFO info = {};
    if (FAILED(pin->QueryPinInfo(&info))) {
        return false;
    }
    com_<IBaseFilter> owner;
    owner.attach(info.pFilter);
    return std::wcsncmp(info.achName, name, std::size(info.achName)) == 0;
}

bool hasDirection(IPin* pin, int direction) {
    PIN_DIRECTION actual = PINDIR_INPUT;
    return direction < 0 || (SUCCEEDED(pin->QueryDirection(&actual)) && actual == direction);
}

void disconnectOneEnd(IFilterGraph* graph, IPin* pin) {
    if (graph == nullptr || FAILED(graph->Disconnect(pin))) {
        pin->Disconnect();
    }
}

} // namespace

bool sameObject(IUnknown* one, IUnknown* other) {
    com_<IUnknown> first;
    com_<IUnknown> second;
    return first.ref(one) && second.ref(other) && first.ptr() == second.ptr();
}

com_<IBaseFilter> ownerOf(IPin* pin) {
    com_<IBaseFilter> owner;
    PIN_INFO info = {};
    if (pin != nullptr && SUCCEEDED(pin->QueryPinInfo(&info))) {
        owner.attach(info.pFilter);
    }
    return owner;
}

com_<IPin> peerOf(IPin* pin) {
    com_<IPin> peer;
    if (pin != nullptr && FAILED(pin->ConnectedTo(peer.put()))) {
        static_cast<void>(peer.detach());
    }
    return peer;
}

std::vector<com_<IPin>> findPins(IBaseFilter* filter, const wchar_t* name, int direction) {
    std::vector<com_<IPin>> found;
    com_<IEnumPins> pins;
    if (filter == nullptr || FAILED(filter->EnumPins(pins.put())) || !pins) {
        return found;
    }
    // Always with a count: an enumerator may refuse to work without one.
    com_<IPin> pin;
    for (ULONG fetched = 0; pins->Next(1, pin.put(), &fetched) == S_OK && fetched == 1; fetched = 0) {
        if (hasDirection(pin.ptr(), direction) && hasName(pin.ptr(), name)) {
            found.push_back(pin);
        }
    }
    return found;
}

com_<IPin> findPin(IBaseFilter* filter, const wchar_t* name, int direction) {
    std::vector<com_<IPin>> found = findPins(filter, name, direction);
    return found.empty() ? com_<IPin>() : found.front();
}

std::vector<com_<IPin>> freePins(IBaseFilter* filter, PIN_DIRECTION direction) {
    std::vector<com_<IPin>> pins = findPins(filter, nullptr, direction);
    std::erase_if(pins, [](const com_<IPin>& pin) { return static_cast<bool>(peerOf(pin.ptr())); });
    return pins;
}

bool offersTypes(IPin* pin) {
    com_<IEnumMediaTypes> types;
    return pin != nullptr && SUCCEEDED(pin->EnumMediaTypes(types.put())) && types;
}

bool offersDv(IPin* pin) {
    com_<IEnumMediaTypes> types;
    if (pin == nullptr || FAILED(pin->EnumMediaTypes(types.put())) || !types) {
        return false;
    }
    for (;;) {
        OfferedType type;
        if (!type.next(types.ptr())) {
            return false;
        }
        if (type.isDv()) {
            return true;
        }
    }
}

bool disconnectBothEnds(IFilterGraph* graph, IPin* pin) {
    com_<IPin> peer = peerOf(pin);
    if (!peer) {
        return true;
    }
    disconnectOneEnd(graph, peer.ptr());
    disconnectOneEnd(graph, pin);
    return !peerOf(pin);
}

bool disconnectAllPins(IFilterGraph* graph, IBaseFilter* filter) {
    bool all = true;
    for (const com_<IPin>& pin : findPins(filter, nullptr, -1)) {
        all = disconnectBothEnds(graph, pin.ptr()) && all;
    }
    return all;
}

} // namespace vwin
