/// @file
/// A filter that counts its references and notes what a graph does to it.
#pragma once

#include "tests/support/sink_filter.h"

#include <memory>
#include <string>

namespace fake {

/// What a pin offers when it is asked for its media types.
enum class offer { nothing, refuses, sound, dv };

/// A reference-counted object that deletes itself; the enumerators' common part.
template <class T>
class counted : public T {
public:
    virtual ~counted() = default;
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        *out = iid == IID_IUnknown || iid == __uuidof(T) ? this : nullptr;
        return *out ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs_); }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = InterlockedDecrement(&refs_);
        if (left == 0)
            delete this;
        return left;
    }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(T**) override { return E_NOTIMPL; }

private:
    long refs_ = 1;
};

class type_enumerator final : public counted<IEnumMediaTypes> {
public:
    explicit type_enumerator(offer types) : types_(types) {}

    STDMETHODIMP Next(ULONG, AM_MEDIA_TYPE** out, ULONG* fetched) override {
        *fetched = types_ == offer::nothing ? 0 : 1;
        if (*fetched == 0)
            return S_FALSE;
        *out = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
        **out = {};
        (*out)->majortype = types_ == offer::dv ? MEDIATYPE_Interleaved : MEDIATYPE_Audio;
        (*out)->subtype = types_ == offer::dv ? MEDIASUBTYPE_dvsd : MEDIASUBTYPE_PCM;
        types_ = offer::nothing;
        return S_OK;
    }
    STDMETHODIMP Reset() override { return E_NOTIMPL; }

private:
    offer types_;
};

/// A pin that shares its filter's reference count.
class pin final : public ForeignPin {
public:
    pin(IBaseFilter& owner, std::wstring name, PIN_DIRECTION direction, offer types, offer wants)
        : owner_(owner), name_(std::move(name)), direction_(direction), types_(types), wants_(wants) {}

    STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE*) override {
        AM_MEDIA_TYPE type = {};
        type.majortype = types_ == offer::sound ? MEDIATYPE_Audio : MEDIATYPE_Interleaved;
        const HRESULT result = receiver->ReceiveConnection(this, &type);
        return SUCCEEDED(result) ? ForeignPin::ReceiveConnection(receiver, &type) : result;
    }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override {
        if (peer())
            return VFW_E_ALREADY_CONNECTED;
        if (wants_ == offer::refuses || (wants_ == offer::dv && type->majortype != MEDIATYPE_Interleaved))
            return VFW_E_TYPE_NOT_ACCEPTED;
        return ForeignPin::ReceiveConnection(connector, type);
    }
    STDMETHODIMP Disconnect() override {
        FILTER_STATE state;
        owner_.GetState(0, &state);
        return state == State_Stopped ? ForeignPin::Disconnect() : VFW_E_NOT_STOPPED;
    }
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override {
        wcscpy_s(info->achName, std::size(info->achName), name_.c_str());
        info->dir = direction_;
        info->pFilter = &owner_;
        owner_.AddRef();
        return S_OK;
    }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override { return *direction = direction_, S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** out) override {
        *out = types_ == offer::refuses ? nullptr : new type_enumerator(types_);
        return *out ? S_OK : E_NOTIMPL;
    }

private:
    IBaseFilter& owner_;
    std::wstring name_;
    PIN_DIRECTION direction_;
    offer types_, wants_;
};

using pin_list = std::vector<std::unique_ptr<pin>>;

/// As the engine's own, it refuses to work without a `fetched` count.
class pin_enumerator final : public counted<IEnumPins> {
public:
    pin_enumerator(IBaseFilter& owner, const pin_list& pins) : owner_(&owner), pins_(pins) {}

    STDMETHODIMP Next(ULONG n, IPin** out, ULONG* fetched) override {
        if (out == nullptr || fetched == nullptr)
            return E_POINTER;
        for (*fetched = 0; *fetched < n && position_ < pins_.size(); ++*fetched)
            out[*fetched] = vwin::com_<IPin>(pins_[position_++].get()).detach();
        return *fetched == n ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override { return position_ = 0, S_OK; }

private:
    vwin::com_<IBaseFilter> owner_;
    const pin_list& pins_;
    size_t position_ = 0;
};

/// The test owns it: refs() is 1 when every other reference has been given back.
class filter final : public IBaseFilter {
public:
    pin& input(const wchar_t* name, offer wants = offer::nothing) {
        return addPin(name, PINDIR_INPUT, offer::nothing, wants);
    }
    pin& output(const wchar_t* name, offer types) {
        return addPin(name, PINDIR_OUTPUT, types, offer::nothing);
    }
    pin& at(size_t index) { return *pins_.at(index); }
    size_t pinCount() const { return pins_.size(); }
    long refs() const { return refs_; }
    FILTER_STATE state() const { return state_; }
    REFERENCE_TIME started() const { return started_; }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        const bool known =
            iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter || iid == IID_IBaseFilter;
        *out = known ? static_cast<IBaseFilter*>(this) : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs_); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&refs_); }
    STDMETHODIMP GetClassID(CLSID* clsid) override { return *clsid = {}, S_OK; }
    STDMETHODIMP Stop() override { return state_ = State_Stopped, S_OK; }
    STDMETHODIMP Pause() override { return state_ = State_Paused, S_OK; }
    STDMETHODIMP Run(REFERENCE_TIME start) override {
        started_ = start;
        return state_ = State_Running, S_OK;
    }
    STDMETHODIMP GetState(DWORD, FILTER_STATE* state) override { return *state = state_, S_OK; }
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override {
        clock_ = vwin::com_<IReferenceClock>(clock);
        return S_OK;
    }
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override {
        *clock = vwin::com_<IReferenceClock>(clock_).detach();
        return S_OK;
    }
    STDMETHODIMP EnumPins(IEnumPins** out) override { return *out = new pin_enumerator(*this, pins_), S_OK; }
    STDMETHODIMP FindPin(LPCWSTR, IPin**) override { return VFW_E_NOT_FOUND; }
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override {
        wcscpy_s(info->achName, std::size(info->achName), name_.c_str());
        info->pGraph = vwin::com_<IFilterGraph>(graph_).detach();
        return S_OK;
    }
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override {
        graph_ = graph;
        name_ = name != nullptr ? name : L"";
        return S_OK;
    }
    STDMETHODIMP QueryVendorInfo(LPWSTR*) override { return E_NOTIMPL; }

private:
    pin& addPin(const wchar_t* name, PIN_DIRECTION direction, offer types, offer wants) {
        return *pins_.emplace_back(std::make_unique<pin>(*this, name, direction, types, wants));
    }

    long refs_ = 1;
    FILTER_STATE state_ = State_Stopped;
    REFERENCE_TIME started_ = -1;
    vwin::com_<IReferenceClock> clock_;
    IFilterGraph* graph_ = nullptr;
    std::wstring name_;
    pin_list pins_;
};

} // namespace fake
