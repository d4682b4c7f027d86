/// @file
/// The one header a host includes: every public class of marvo, and the Windows and DirectShow headers they need.
/// Link with libmarvo.dll.a (marvo.lib); define NO_DSHOW_STRSAFE and NOMINMAX if your own code needs what the
/// DirectShow and Windows headers would otherwise redefine.
#pragma once

#include "core/platform.h"

#include <dshow.h>

// The toolkit: strings, values, settings, time, files, threads, signals.
#include "core/alist.h"
#include "core/buf.h"
#include "core/callback.h"
#include "core/cstr.h"
#include "core/daytime.h"
#include "core/event.h"
#include "core/file.h"
#include "core/handle.h"
#include "core/ini_entry.h"
#include "core/inifile.h"
#include "core/iostore.h"
#include "core/lib.h"
#include "core/mutex.h"
#include "core/mutex2.h"
#include "core/nameable.h"
#include "core/semaphore.h"
#include "core/state.h"
#include "core/str.h"
#include "core/strtoken.h"
#include "core/strtokens.h"
#include "core/strtokens_cpp.h"
#include "core/strtokens_line.h"
#include "core/strtokens_lines.h"
#include "core/strtokens_path.h"
#include "core/strtokens_var.h"
#include "core/timed_guard.h"
#include "core/var.h"
#include "core/var_array.h"
#include "core/varlist.h"
#include "core/vars.h"
#include "core/vobject.h"
#include "core/winprocess.h"
#include "core/winthread.h"

// COM objects, filters and filter graphs.
#include "com/com_clsid.h"
#include "com/com_fg.h"
#include "com/com_filter.h"
#include "com/com_interface.h"
#include "com/com_ptr.h"
#include "com/video_window.h"

// The window.
#include "gui/widget.h"

// The filter framework: media types, frames, pins.
#include "video/alloc.h"
#include "video/base_filter.h"
#include "video/enum_media_types.h"
#include "video/enum_pins.h"
#include "video/frame.h"
#include "video/frame_pool.h"
#include "video/input_pin.h"
#include "video/media_type.h"
#include "video/obj.h"
#include "video/output_pin.h"
#include "video/sink.h"

// The replay engine and its front end `dvFE`.
#include "replay/avi_file.h"
#include "replay/avi_inspector.h"
#include "replay/avi_odml_file_info.h"
#include "replay/drive_search.h"
#include "replay/dv_file.h"
#include "replay/file_io_avi.h"
#include "replay/frame_loader.h"
#include "replay/frame_store.h"
#include "replay/front_end.h"
#include "replay/live_filter.h"
#include "replay/play_file.h"
#include "replay/play_filter.h"
#include "replay/play_info.h"
#include "replay/rec_file.h"
#include "replay/record_filter.h"
