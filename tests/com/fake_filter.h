/// @file
/// A filter that counts its references and notes what a graph does to it.
#pragma once

#include "tests/support/foreign_pin.h"

#include <memory>
#include <string>

namespace fake {

/// What a pin offers when it is asked for its media types.
enum class Offer { nothing, refuses, sound, dv };

/// Types that the caller frees, as foreign filters give them.
class TypeEnumerator final : public vvideo::dvEnumMediaTypes {
public:
    STDMETHODIMP Next(ULONG n, AM_MEDIA_TYPE** out, ULONG* fetched) override {
        const HRESULT result = dvEnumMediaTypes::Next(n, out, fetched);
        for (ULONG i = 0; result == S_OK && i < n; ++i) {
            const AM_MEDIA_TYPE& own = *out[i];
            out[i] = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(own)));
            *out[i] = own;
        }
        return result;
    }
};

/// A pin that shares its filter's reference count.
class Pin final : public ForeignPin {
public:
    Pin(IBaseFilter& owner, std::wstring name, PIN_DIRECTION direction, Offer types, Offer wants)
        : owner_(owner), name_(std::move(name)), direction_(direction), types_(types), wants_(wants) {}

    STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE*) override {
        AM_MEDIA_TYPE type = {};
        type.majortype = types_ == Offer::sound ? MEDIATYPE_Audio : MEDIATYPE_Interleaved;
        const HRESULT result = receiver->ReceiveConnection(this, &type);
        return SUCCEEDED(result) ? ForeignPin::ReceiveConnection(receiver, &type) : result;
    }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override {
        const bool refused = wants_ == Offer::dv && type->majortype != MEDIATYPE_Interleaved;
        return peer()    ? VFW_E_ALREADY_CONNECTED
               : refused ? VFW_E_TYPE_NOT_ACCEPTED
                         : ForeignPin::ReceiveConnection(connector, type);
    }
    STDMETHODIMP Disconnect() override {
        FILTER_STATE state;
        owner_.GetState(0, &state);
        return state == State_Stopped ? ForeignPin::Disconnect() : VFW_E_NOT_STOPPED;
    }
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override {
        wcscpy_s(info->achName, std::size(info->achName), name_.c_str());
        info->dir = direction_;
        info->pFilter = vwin::com_<IBaseFilter>(&owner_).detach();
        return S_OK;
    }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override { return *direction = direction_, S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** out) override {
        TypeEnumerator* const types = types_ == Offer::refuses ? nullptr : new TypeEnumerator;
        *out = types;
        const bool dv = types_ == Offer::dv;
        AM_MEDIA_TYPE type = {};
        type.majortype = dv ? MEDIATYPE_Interleaved : MEDIATYPE_Audio;
        type.subtype = dv ? MEDIASUBTYPE_dvsd : MEDIASUBTYPE_PCM;
        if (types && types_ != Offer::nothing) {
            types->setType(type);
        }
        return types ? S_OK : E_NOTIMPL;
    }

private:
    IBaseFilter& owner_;
    std::wstring name_;
    PIN_DIRECTION direction_;
    Offer types_, wants_;
};

using PinList = std::vector<std::unique_ptr<Pin>>;

/// As the engine's own, it refuses to work without a `fetched` count.
class PinEnumerator final : public vvideo::dvObj<IEnumPins> {
public:
    PinEnumerator(IBaseFilter& owner, const PinList& pins) : owner_(&owner), pins_(pins) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        return answer(iid == IID_IUnknown || iid == IID_IEnumPins ? this : nullptr, out);
    }
    STDMETHODIMP Next(ULONG n, IPin** out, ULONG* fetched) override {
        if (out == nullptr || fetched == nullptr) {
            return E_POINTER;
        }
        for (*fetched = 0; *fetched < n && position_ < pins_.size(); ++*fetched) {
            out[*fetched] = vwin::com_<IPin>(pins_[position_++].get()).detach();
        }
        return *fetched == n ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override { return position_ = 0, S_OK; }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IEnumPins**) override { return E_NOTIMPL; }

private:
    vwin::com_<IBaseFilter> owner_;
    const PinList& pins_;
    size_t position_ = 0;
};

/// The test owns it: refs() is 1 when every other reference has been given back.
class Filter final : public vvideo::dvBaseFilter {
public:
    Pin& input(const wchar_t* name, Offer wants = Offer::nothing) {
        return *pins_.emplace_back(std::make_unique<Pin>(*this, name, PINDIR_INPUT, Offer::nothing, wants));
    }
    Pin& output(const wchar_t* name, Offer types) {
        return *pins_.emplace_back(std::make_unique<Pin>(*this, name, PINDIR_OUTPUT, types, Offer::nothing));
    }
    IPin* peer(size_t index) const { return pins_.at(index)->peer(); }
    const PinList& pins() const { return pins_; }
    ULONG refs() { return AddRef(), Release(); }
    FILTER_STATE state() {
        FILTER_STATE now;
        return GetState(0, &now), now;
    }
    REFERENCE_TIME started = -1;

    STDMETHODIMP Run(REFERENCE_TIME start) override { return started = start, dvBaseFilter::Run(start); }
    STDMETHODIMP EnumPins(IEnumPins** out) override { return *out = new PinEnumerator(*this, pins_), S_OK; }

private:
    PinList pins_;
};

} // namespace fake
