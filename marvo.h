/// @file
/// The one header a host includes: every public class of marvo, and the Windows and DirectShow headers they
/// need. It may stand before or behind any other header, in C++17 and later, and leaves no macro behind but
/// those of the system's headers. Link with libmarvo.a (marvo.lib).
///
/// `dshow.h` is read without the string functions of `strsafe.h`; a host that wants these includes that
/// header itself. They make a macro of `sprintf`, also of the member of `str` (see there).
#pragma once

// A host's macros of these names would break the standard headers. They are put back at the end.
#pragma push_macro("min")
#pragma push_macro("max")
#undef min
#undef max

#include "marvo/version.h"

#include "marvo/core/platform.h"

#include "marvo/core/directshow.h"

// The toolkit: strings, values, settings, time, files, threads, signals.
#include "marvo/core/alist.h"
#include "marvo/core/buf.h"
#include "marvo/core/callback.h"
#include "marvo/core/cstr.h"
#include "marvo/core/daytime.h"
#include "marvo/core/event.h"
#include "marvo/core/file.h"
#include "marvo/core/handle.h"
#include "marvo/core/ini_entry.h"
#include "marvo/core/inifile.h"
#include "marvo/core/iostore.h"
#include "marvo/core/lib.h"
#include "marvo/core/mutex.h"
#include "marvo/core/mutex2.h"
#include "marvo/core/nameable.h"
#include "marvo/core/semaphore.h"
#include "marvo/core/state.h"
#include "marvo/core/str.h"
#include "marvo/core/strtoken.h"
#include "marvo/core/strtokens.h"
#include "marvo/core/strtokens_cpp.h"
#include "marvo/core/strtokens_line.h"
#include "marvo/core/strtokens_lines.h"
#include "marvo/core/strtokens_path.h"
#include "marvo/core/strtokens_var.h"
#include "marvo/core/timed_guard.h"
#include "marvo/core/var.h"
#include "marvo/core/var_array.h"
#include "marvo/core/varlist.h"
#include "marvo/core/vars.h"
#include "marvo/core/vobject.h"
#include "marvo/core/winprocess.h"
#include "marvo/core/winthread.h"

// COM objects, filters and filter graphs.
#include "marvo/com/com_clsid.h"
#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/com/com_interface.h"
#include "marvo/com/com_ptr.h"
#include "marvo/com/video_window.h"

// The window.
#include "marvo/gui/widget.h"

// The filter framework: media types, frames, pins.
#include "marvo/video/alloc.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/enum_media_types.h"
#include "marvo/video/enum_pins.h"
#include "marvo/video/frame.h"
#include "marvo/video/frame_pool.h"
#include "marvo/video/input_pin.h"
#include "marvo/video/media_type.h"
#include "marvo/video/obj.h"
#include "marvo/video/output_pin.h"
#include "marvo/video/sink.h"

// What is in a DV frame; recordings and pictures, for hosts that show them.
#include "marvo/dv/frame_notes.h"
#include "marvo/dv/sound.h"
#include "marvo/picture/frame_decoder.h"
#include "marvo/picture/picture.h"
#include "marvo/picture/picture_file.h"
#include "marvo/recording/recording.h"

// The replay engine and its front end `dvFE`.
#include "marvo/avi/avi_file.h"
#include "marvo/avi/avi_inspector.h"
#include "marvo/avi/avi_odml_file_info.h"
#include "marvo/recording/drive_search.h"
#include "marvo/recording/dv_file.h"
#include "marvo/recording/export.h"
#include "marvo/avi/file_io_avi.h"
#include "marvo/replay/delivery_watch.h"
#include "marvo/replay/feed_filter.h"
#include "marvo/replay/frame_loader.h"
#include "marvo/replay/frame_store.h"
#include "marvo/frontend/front_end.h"
#include "marvo/replay/live_filter.h"
#include "marvo/recording/play_file.h"
#include "marvo/replay/play_filter.h"
#include "marvo/replay/play_error.h"
#include "marvo/replay/play_info.h"
#include "marvo/recording/rec_file.h"
#include "marvo/replay/record_filter.h"
#include "marvo/replay/record_status.h"

// The library's own macros.
#undef MARVO_API
#undef MARVO_THREAD_ATTRIBUTE
#undef MARVO_CAPABILITY
#undef MARVO_SCOPED_CAPABILITY
#undef MARVO_GUARDED_BY
#undef MARVO_PT_GUARDED_BY
#undef MARVO_REQUIRES
#undef MARVO_EXCLUDES
#undef MARVO_ACQUIRE
#undef MARVO_RELEASE
#undef MARVO_RETURN_CAPABILITY
#undef MARVO_ACQUIRED_AFTER
#pragma pop_macro("max")
#pragma pop_macro("min")
