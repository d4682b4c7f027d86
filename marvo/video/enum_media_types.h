/// @file
/// The enumerator of a pin's media types.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/video/media_type.h"
#include "marvo/video/obj.h"

namespace vvideo {

/// Up to 16 media types with a position.
class MARVO_API dvEnumMediaTypes : public dvObj<IEnumMediaTypes> {
public:
    dvEnumMediaTypes() = default;

    /// Appends a copy; false when it would be the 17th.
    bool setType(const AM_MEDIA_TYPE& type);

    /// `IUnknown` and `IEnumMediaTypes`.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override;
    /// Deliberate: hands out pointers to the own entries and not copies, for callers of this library. They
    /// neither free them nor keep them beyond the enumerator's life. `fetched` may be null.
    HRESULT STDMETHODCALLTYPE Next(ULONG n, AM_MEDIA_TYPE** out, ULONG* fetched) override;
    /// Moves on without a bound; `S_FALSE` when that is at the end or beyond it.
    HRESULT STDMETHODCALLTYPE Skip(ULONG n) override;
    /// Back to the first entry.
    HRESULT STDMETHODCALLTYPE Reset() override;
    /// Copies of all entries, from the first on.
    HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** out) override;

private:
    static constexpr ULONG capacity = 16;

    dvMediaType types_[capacity];
    ULONG count_ = 0;
    ULONG position_ = 0;
};

} // namespace vvideo
