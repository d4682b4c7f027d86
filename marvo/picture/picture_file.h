/// @file
/// Pictures as files.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/picture/picture.h"

/// Writes pictures as .bmp, .png, .jpg or .jpeg, by the system's imaging component. The file says by its
/// resolutions across and down how wide the pixels are to be shown, where its form can say that.
///
/// Threads: one at a time for each object. COM is initialised by the caller.
class MARVO_API dvPictureFile {
public:
    /// Whether a name's extension is one of those above.
    static bool hasFormat(const wchar_t* name);

    /// Writes the file `path`, over one that is there, in the form that the extension of `name` stands for,
    /// or that of `path` where there is no `name`. False, with the reason in `error`, when that is not
    /// possible; what was written is then no picture.
    bool write(const dvPicture& picture, const wchar_t* path, const wchar_t* name = nullptr);

    /// Why the last `write` failed, as a code of the system's (HRESULT); 0 when it did not.
    long error() const { return error_; }

private:
    long error_ = 0;
};
