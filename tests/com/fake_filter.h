/// @file
/// A filter that counts its references and notes what a graph does to it.
#pragma once

#include "tests/support/foreign_pin.h"

#include <memory>
#include <string>

namespace fake {

/// The media type that an output offers, and an input takes. An input with `refuses` takes any; an output
/// with it does not tell what it offers.
enum class Offer { refuses, sound, dv };

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
    Pin(IBaseFilter& owner, std::wstring name, PIN_DIRECTION direction, Offer types)
        : ForeignPin(direction), owner_(owner), name_(std::move(name)), types_(types) {}

    STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE*) override {
        AM_MEDIA_TYPE type = {};
        type.majortype = types_ == Offer::sound ? MEDIATYPE_Audio : MEDIATYPE_Interleaved;
        const HRESULT result = receiver->ReceiveConnection(this, &type);
        return SUCCEEDED(result) ? ForeignPin::ReceiveConnection(receiver, &type) : result;
    }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override {
        const bool refused = types_ == Offer::dv && type->majortype != MEDIATYPE_Interleaved;
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
        ForeignPin::QueryPinInfo(info);
        wcscpy_s(info->achName, std::size(info->achName), name_.c_str());
        info->pFilter = vwin::com_<IBaseFilter>(&owner_).detach();
        return S_OK;
    }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** out) override {
        *out = nullptr;
        if (types_ == Offer::refuses) {
            return E_NOTIMPL;
        }
        const bool dv = types_ == Offer::dv;
        AM_MEDIA_TYPE type = {};
        type.majortype = dv ? MEDIATYPE_Interleaved : MEDIATYPE_Audio;
        type.subtype = dv ? MEDIASUBTYPE_dvsd : MEDIASUBTYPE_PCM;
        auto* const types = new TypeEnumerator;
        types->setType(type);
        return *out = types, S_OK;
    }

private:
    IBaseFilter& owner_;
    std::wstring name_;
    Offer types_;
};

using PinList = std::vector<std::unique_ptr<Pin>>;

/// The test owns it: refs() is 1 when every other reference has been given back.
class Filter final : public vvideo::dvBaseFilter {
public:
    Pin& input(const wchar_t* name, Offer takes = Offer::refuses) {
        return *pins_.emplace_back(std::make_unique<Pin>(*this, name, PINDIR_INPUT, takes));
    }
    Pin& output(const wchar_t* name, Offer types) {
        return *pins_.emplace_back(std::make_unique<Pin>(*this, name, PINDIR_OUTPUT, types));
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
    /// By the engine's own enumerator, less the reference to each pin that this never gives back.
    STDMETHODIMP EnumPins(IEnumPins** out) override {
        auto* const all = new vvideo::dvEnumPins;
        for (const auto& pin : pins_) {
            all->setPin(static_cast<IPin*>(pin.get()));
            pin->Release();
        }
        return *out = all, S_OK;
    }

private:
    PinList pins_;
};

} // namespace fake
