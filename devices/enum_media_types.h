/// @file
/// The enumerator of a pin's media types.
#pragma once

#include "devices/media_type.h"
#include "devices/object_count.h"

#include <vector>

namespace devices {

/// Walks the media types a pin offered when the enumerator was made. Every type given out is a copy from the
/// task allocator, for the caller to free with its format block. For one thread at a time.
class enum_media_types final : public IEnumMediaTypes, private object_count {
public:
    explicit enum_media_types(std::vector<media_type> types) : types_(std::move(types)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    /// `fetched` may be null when `count` is 1.
    HRESULT STDMETHODCALLTYPE Next(ULONG count, AM_MEDIA_TYPE** out, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** out) override;

private:
    ~enum_media_types() = default;

    const std::vector<media_type> types_;
    volatile LONG references_ = 1;
    size_t position_ = 0;
};

} // namespace devices
