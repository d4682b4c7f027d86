/// @file
/// A media type that owns its format block.
#pragma once

#include "devices/dv_painter.h"

#include <dshow.h>

namespace devices {

/// Owns an AM_MEDIA_TYPE whose format block comes from the COM task allocator. Copying copies the block; when
/// memory is short the copy is empty (major type null).
class media_type {
public:
    media_type() = default;
    explicit media_type(const AM_MEDIA_TYPE& other);
    media_type(const media_type& other) : media_type(other.type_) {}
    media_type(media_type&& other) noexcept;
    ~media_type() { clear(); }
    media_type& operator=(media_type other) noexcept;

    /// Interleaved sound and picture as a camera sends it: dvsd with a DVINFO block.
    static media_type interleaved(const dv_system& system);
    /// DV picture frames: dvsd with a VIDEOINFOHEADER block.
    static media_type dv_video(const dv_system& system);
    /// Plain pictures.
    static media_type picture(const dv_system& system, dv_pixels pixels);

    /// Empties the type.
    void clear();
    const AM_MEDIA_TYPE& get() const { return type_; }
    /// Fills `out` with a copy whose block the caller frees with CoTaskMemFree. E_OUTOFMEMORY leaves it zero.
    HRESULT copy_to(AM_MEDIA_TYPE& out) const;

    /// Whether this type fits a wanted one, in which null GUIDs mean "any".
    bool fits(const AM_MEDIA_TYPE& wanted) const;

    /// The format block of a type as a VIDEOINFOHEADER or DVINFO, null when it is of another form or too
    /// short.
    static const VIDEOINFOHEADER* video_info(const AM_MEDIA_TYPE& type);
    static const DVINFO* dv_info(const AM_MEDIA_TYPE& type);

    /// How the pixels of a type that `picture` has made lie.
    static dv_pixels pixels(const AM_MEDIA_TYPE& type);

    /// The system a dvsd type stands for: interleaved by its DVINFO, picture by its sizes. Null for other
    /// types.
    static const dv_system* interleaved_system(const AM_MEDIA_TYPE& type);
    static const dv_system* dv_video_system(const AM_MEDIA_TYPE& type);

private:
    bool set_format(const GUID& form, const void* block, ULONG size);

    AM_MEDIA_TYPE type_{};
};

} // namespace devices
