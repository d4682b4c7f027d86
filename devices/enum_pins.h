/// @file
/// The enumerator of a filter's pins.
#pragma once

#include "devices/base_filter.h"

namespace devices {

/// Walks a filter's pins as they are now; out of step (VFW_E_ENUM_OUT_OF_SYNC, until `Reset`) when the set
/// changes. Keeps the filter alive. For one thread at a time.
class enum_pins final : public IEnumPins, private object_count {
public:
    explicit enum_pins(base_filter& filter);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    /// `fetched` may be null when `count` is 1.
    HRESULT STDMETHODCALLTYPE Next(ULONG count, IPin** out, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumPins** out) override;

private:
    enum_pins(const enum_pins& other);
    ~enum_pins() = default;

    base_filter& filter_;
    const com_ref<IBaseFilter> keeper_;
    volatile LONG references_ = 1;
    long version_;
    int position_ = 0;
};

} // namespace devices
