/// @file
/// What every holder of one COM object offers.
#pragma once

#include "marvo/core/platform.h"

namespace vwin {

/// The common operations of an object that holds one COM interface: make it, share it, let it go.
/// The order of the virtual operations is part of the exported interface.
class MARVO_API com_interface {
public:
    com_interface() = default;
    com_interface(const com_interface&) = delete;
    com_interface& operator=(const com_interface&) = delete;
    /// Releases what is held.
    virtual ~com_interface();

    /// Creates an in-process object of the class in place of what was held. False, holding nothing, on
    /// failure.
    virtual bool create(const GUID& clsid) = 0;
    /// As create(), with the class id in text form.
    virtual bool createS(const wchar_t* clsidText) = 0;
    /// Ends the use of the object: the counterpart of create().
    virtual void close() = 0;
    /// Takes the object out of whatever it is part of, then lets it go.
    virtual void destroy() = 0;
    /// Holds the interface that `object` answers with; a reference is added. False, holding nothing, without
    /// one.
    virtual bool ref(IUnknown* object) = 0;
    /// Releases the reference and holds nothing.
    virtual void clear() = 0;
};

} // namespace vwin
