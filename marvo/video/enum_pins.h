/// @file
/// The enumerator of a filter's pins.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/video/obj.h"

#include <initializer_list>

namespace vvideo {

/// Up to 16 pins with a position.
class MARVO_API dvEnumPins : public dvObj<IEnumPins> {
public:
    dvEnumPins() = default;
    /// Releases every pin once.
    ~dvEnumPins() override;

    /// Appends a pin; false when it is null, no pin, or the 17th. Deliberate: a pin is kept with two
    /// references, of which the destructor releases one. A filter deletes its pins itself, and this way no
    /// enumerator that outlives its caller's care can bring a pin's count down to that.
    bool setPin(IUnknown* pin);

    /// `IUnknown` and `IEnumPins`.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override;
    /// `fetched` is required, also for one pin; so the graph manager, which does not always give it, does not
    /// see the pins, and the filter graph helper connects and disconnects them itself.
    HRESULT STDMETHODCALLTYPE Next(ULONG n, IPin** out, ULONG* fetched) override;
    /// Moves on without a bound; always `S_OK`.
    HRESULT STDMETHODCALLTYPE Skip(ULONG n) override;
    /// Back to the first pin.
    HRESULT STDMETHODCALLTYPE Reset() override;
    /// The same pins, from the first on.
    HRESULT STDMETHODCALLTYPE Clone(IEnumPins** out) override;

private:
    static constexpr ULONG capacity = 16;

    IPin* pins_[capacity] = {};
    ULONG count_ = 0;
    ULONG position_ = 0;
};

/// A filter's answer to `EnumPins`: a new enumerator of these pins. `E_POINTER` when `out` is null or it
/// cannot be made.
MARVO_API HRESULT enumeratePins(std::initializer_list<IPin*> pins, IEnumPins** out);

} // namespace vvideo
