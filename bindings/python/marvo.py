"""marvo from Python, by ctypes. Made by scripts/make_bindings.py from marvo_c.h; not to be changed here.

The names are those of marvo_c.h. What a function gives through pointers there, it returns here; a result
that is not MARVO_OK is raised as an Error. Text is str; memory is anything with a buffer (bytes, bytearray,
array); a callback is any callable, without the header's `user`. A structure has its `size` from the start.

    import marvo
    reader = marvo.marvo_reader_open("match.dv")
    print(marvo.marvo_reader_info(reader).frames)
    marvo.marvo_reader_close(reader)

marvo.dll is looked for where MARVO_DLL says, else beside this file, else where Windows looks; load() takes
another. The DLL is for programs of its own width: a 32-bit Python for the 32-bit one.
"""
import ctypes
import os

library = None


class Error(Exception):
    """A function's result that is not MARVO_OK, with the library's sentence; `code` is the result."""

    def __init__(self, code, text):
        super().__init__(text)
        self.code = code


class _Structure(ctypes.Structure):
    def __init__(self, *arguments, **members):
        super().__init__(*arguments, **members)
        self.size = self.size or ctypes.sizeof(self)


class _Text(ctypes.c_char_p):
    @classmethod
    def from_param(cls, value):
        return ctypes.c_char_p(value.encode("utf-8") if isinstance(value, str) else value)


# Functions of the library are stdcall on Windows. Elsewhere there is none, but these can be looked at.
_callback = getattr(ctypes, "WINFUNCTYPE", ctypes.CFUNCTYPE)
# Callbacks that were set: what the library may call must not be collected.
_kept = {}


def _check(result, failures=()):
    if failures:
        raise failures[0]
    if result != 0:
        raise Error(result, library.marvo_last_error().decode("utf-8"))


def _text(ask):
    capacity = 256
    while True:
        buffer, needed = ctypes.create_string_buffer(capacity), ctypes.c_uint32()
        result = ask(buffer, capacity, ctypes.byref(needed))
        if result != MARVO_E_BUFFER:
            _check(result)
            return buffer.value.decode("utf-8")
        capacity = max(needed.value, 2 * capacity)


def _memory(data, unit):
    """Where memory is, and how many units it has."""
    if data is None or isinstance(data, bytes):
        return data, len(data or b"") // unit
    view = memoryview(data).cast("B")
    return (ctypes.c_char * len(view)).from_buffer(view), len(view) // unit


def _plain(value):
    """What a callback gets, as something that may be kept."""
    if isinstance(value, bytes):
        return value.decode("utf-8")
    if hasattr(value, "contents"):
        return type(value.contents).from_buffer_copy(value.contents)
    return value


def _called(kind, function, failures):
    """A function as the library calls it. What one raises that may end the work goes into `failures`."""
    if function is None:
        return kind()

    def call(_, *arguments):
        try:
            return function(*map(_plain, arguments)) or 0
        except BaseException as failure:
            if failures is None:
                raise
            failures.append(failure)
            return 1
    return kind(call)

MARVO_NO_FRAME = 18446744073709551615  # No frame.
MARVO_TO_THE_END = 18446744073709551615  # As the last frame of a range: up to the end.
MARVO_UNKNOWN = 18446744073709551615  # A number that is not known.
MARVO_MOST_FRAME_BYTES = 576000  # No frame of any recording has more bytes.

# marvo_result: What a function says.
MARVO_OK = 0  # done
MARVO_E_ARGUMENT = 1  # a null, a text that is no UTF-8, a value that has no meaning
MARVO_E_HANDLE = 2  # no handle of this kind, or not any more
MARVO_E_STATE = 3  # out of order: something has to be done before
MARVO_E_THREAD = 4  # a window command on another thread than the engine's, or the window's
MARVO_E_BUSY = 5  # inside another command on the same thread
MARVO_E_RANGE = 6  # a number, a size or a frame out of range
MARVO_E_UNKNOWN = 7  # no setting, command or device of that name or number
MARVO_E_BUFFER = 8  # the buffer is too small; what is needed was told
MARVO_E_FILE = 9  # a file cannot be opened, read or written
MARVO_E_EXISTS = 10  # there is a file of that name, and it is not to be replaced
MARVO_E_FORMAT = 11  # no recording, or no DV frame
MARVO_E_DEVICE = 12  # no such capture device, or it does not work
MARVO_E_SYSTEM = 13  # a part of the system is missing or refuses: decoder, renderer, window
MARVO_E_CANCELLED = 14  # a callback asked for it
MARVO_E_MEMORY = 15  # there is not enough memory
MARVO_E_EMPTY = 16  # nothing is waiting
MARVO_E_REFUSED = 17  # the engine refused the command; its log says more

# marvo_kind: What a recording file is.
MARVO_KIND_BY_NAME = 0  # as a choice: what the file's name means
MARVO_KIND_RAW = 1  # the engine's own records, one per frame; no player opens them
MARVO_KIND_AVI = 2  # AVI with a DV video stream
MARVO_KIND_STREAM = 3  # DV frames one behind the other and nothing else

# marvo_system: The two systems of DV.
MARVO_SYSTEM_UNKNOWN = 0  # not known (yet)
MARVO_SYSTEM_625 = 1  # 625/50 ("PAL"): 144000 bytes, 25 frames a second
MARVO_SYSTEM_525 = 2  # 525/60 ("NTSC"): 120000 bytes, 29.97 frames a second

# marvo_setting_type: The type of a setting.
MARVO_SETTING_FLAG = 1  # yes or no
MARVO_SETTING_NUMBER = 2  # a whole number
MARVO_SETTING_TEXT = 3  # a text


class marvo_setting_info(_Structure):
    """What there is to know of a setting."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("type", ctypes.c_int32),  # marvo_setting_type
        ("least", ctypes.c_int64),  # of a number
        ("most", ctypes.c_int64),  # see there
        ("name", ctypes.c_char * 64),  # its name
        ("meaning", ctypes.c_char * 192),  # what it means, in words
    ]

# marvo_camera: How the camera is.
MARVO_CAMERA_NONE = 0  # no capture is built
MARVO_CAMERA_LIVE = 1  # frames come
MARVO_CAMERA_SILENT = 2  # it is there, but no frame has come for a second
MARVO_CAMERA_GONE = 3  # it is gone, or has failed
MARVO_CAMERA_CHANGED = 4  # it came back with other frames; capture stands still until marvo_init()

# marvo_built: What is built.
MARVO_BUILT_NOTHING = 0  # nothing
MARVO_BUILT_ALL = 1  # capture and play
MARVO_BUILT_PLAY = 2  # play alone, by marvo_play_init()

# marvo_fault: What disturbs the picture: bits of `picture_faults`.
MARVO_FAULT_NO_TICKS = 1  # for a second the clock has given no tick; the picture goes on, eight a second
MARVO_FAULT_REFUSED = 2  # for a second decoder or renderer have refused every frame
MARVO_FAULT_HELD_UP = 4  # decoder or renderer have not returned from a frame for a second
MARVO_FAULT_NO_GRAPH = 8  # the play graph cannot go on; marvo_show() makes it anew


class marvo_status_info(_Structure):
    """The whole state of the engine. Filled consistently: all of it belongs to one moment between two
    commands, unless `busy`.
    """
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("built", ctypes.c_int32),  # marvo_built
        ("busy", ctypes.c_int32),  # a command is being carried out at this moment
        ("camera", ctypes.c_int32),  # marvo_camera
        ("camera_since_ms", ctypes.c_uint32),  # for how long it has been so
        ("camera_lost", ctypes.c_uint32),  # how often the device was lost since marvo_init()
        ("system", ctypes.c_int32),  # marvo_system of the captured frames
        ("frame_bytes", ctypes.c_uint32),  # bytes of one captured frame; 0 before marvo_init()
        ("frames_per_second", ctypes.c_uint32),  # 25 or 30
        ("ring_frames", ctypes.c_uint32),  # frames that the ring has room for; 0 without a ring
        # the number that the next captured frame gets: one past the newest
        ("next_frame", ctypes.c_uint64),
        ("oldest_frame", ctypes.c_uint64),  # the oldest frame in the ring; as next_frame when it is empty
        ("arrived", ctypes.c_uint64),  # frames that came from camera or feed since the loading, modulo 2^32
        ("recording", ctypes.c_int32),  # a recording is on
        ("failing", ctypes.c_int32),  # its newest write failed
        ("behind", ctypes.c_int32),  # its writer is so far behind that frames are lost
        ("complete", ctypes.c_int32),  # it has ended, and its file is whole
        ("taken", ctypes.c_uint64),  # frames captured while it was on
        ("written", ctypes.c_uint64),  # of them, those in the file: safe
        ("waiting", ctypes.c_uint64),  # those that the writer has still to come to
        ("lost", ctypes.c_uint64),  # those that the ring went over, or that were given up
        ("failed", ctypes.c_uint64),  # those that could not be written
        ("beyond_limit", ctypes.c_uint64),  # those that the setting "dv.maxfilesize" keeps out
        # frames that the drive has room for; MARVO_UNKNOWN when it does not tell
        ("drive_frames", ctypes.c_uint64),
        ("first_error", ctypes.c_uint32),  # the system's number of what failed first; 0: nothing
        ("picture_faults", ctypes.c_uint32),  # marvo_fault bits
        ("replaying", ctypes.c_int32),  # a replay is on; otherwise play is live
        ("paused", ctypes.c_int32),  # the shown frame is held
        ("speed", ctypes.c_double),  # frames per tick
        ("shown_frame", ctypes.c_uint64),  # the frame being shown; MARVO_NO_FRAME before the first
        ("replay_from", ctypes.c_uint64),  # first frame of the replay; MARVO_NO_FRAME without one
        ("replay_to", ctypes.c_uint64),  # last frame of the replay, included
        # the first frame of the replay that cannot be read; MARVO_NO_FRAME: none
        ("unreadable_from", ctypes.c_uint64),
        ("unreadable_frames", ctypes.c_uint64),  # how many
        ("unreadable_error", ctypes.c_uint32),  # the system's number for why
        # the shown frame's time, at 40 or 33 ms a frame, less the markers' clock
        ("time_ms", ctypes.c_int32),
        ("raw_time_ms", ctypes.c_int32),  # the shown frame's time, exactly
        ("events_waiting", ctypes.c_uint32),  # events in the queue of marvo_event_next()
        ("events_lost", ctypes.c_uint64),  # events that nobody took from it in time, in all
        ("first_error_text", ctypes.c_char * 192),  # `first_error` in words; empty for nothing
    ]


class marvo_play_info(_Structure):
    """Where play is."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("replaying", ctypes.c_int32),  # a replay is on
        ("recording", ctypes.c_int32),  # a recording is on
        ("paused", ctypes.c_int32),  # the shown frame is held
        ("frame", ctypes.c_uint64),  # the frame being shown; MARVO_NO_FRAME before the first
        ("from_", ctypes.c_uint64),  # first frame of the replay; MARVO_NO_FRAME without one
        ("to", ctypes.c_uint64),  # last frame of the replay, included
        ("next_frame", ctypes.c_uint64),  # one past the newest captured frame; 0 without capture
        ("speed", ctypes.c_double),  # frames per tick
    ]

# marvo_event_kind: What has happened. What `frame`, `count` and `code` mean is said at each; otherwise they
# are 0.
MARVO_EVENT_CAMERA_LOST = 1  # the device is gone or has failed; frame: the newest
MARVO_EVENT_CAMERA_SILENT = 2  # no frame for a second; frame: the newest
MARVO_EVENT_CAMERA_BACK = 3  # frames come again; frame: the first, count: the gap in ms
# back with another format; count: bytes of its frames. The recording is completed; call marvo_init()
MARVO_EVENT_CAMERA_CHANGED = 4
MARVO_EVENT_RECORD_STARTED = 10  # a recording has begun
MARVO_EVENT_RECORD_ENDED = 11  # it has ended; count: frames in the file
# frames cannot be written; frame: the first, count: so far, code: the system's
MARVO_EVENT_WRITE_FAILED = 12
MARVO_EVENT_WRITE_RECOVERED = 13  # frames are in the file again; count: what it has cost
MARVO_EVENT_RING_OVERRUN = 14  # the writer is a whole ring behind, frames are lost; as WRITE_FAILED
MARVO_EVENT_CAUGHT_UP = 15  # it is not any more; count: what it has cost
MARVO_EVENT_INCOMPLETE = 16  # the file could not be completed at its end; code: the system's
MARVO_EVENT_REPLAY_STARTED = 20  # a replay has begun; frame: first, count: frames of the range
MARVO_EVENT_REPLAY_ENDED = 21  # play is live again, or nothing is built
# frames of the replay cannot be read; frame: the first, count, code: the system's
MARVO_EVENT_UNREADABLE = 22
MARVO_EVENT_READABLE = 23  # all can be read again
MARVO_EVENT_PICTURE_FAULT = 30  # the picture is disturbed; code: the marvo_fault
MARVO_EVENT_PICTURE_WELL = 31  # that one is over
MARVO_EVENT_GRAPH = 32  # an event of the play graph; code: its EC_ number


class marvo_event(_Structure):
    """One event."""
    _fields_ = [
        # bytes of this structure, set by the caller; in a callback by the library
        ("size", ctypes.c_uint32),
        ("kind", ctypes.c_int32),  # marvo_event_kind
        ("serial", ctypes.c_uint64),  # counts all events from 1: a number left out was lost
        ("time_100ns", ctypes.c_uint64),  # when, as a FILETIME: UTC, in 100 ns since 1601
        ("frame", ctypes.c_uint64),  # see marvo_event_kind
        ("count", ctypes.c_uint64),  # see there
        ("code", ctypes.c_uint32),  # see there
        ("lost", ctypes.c_uint32),  # events lost in front of this one
        ("text", ctypes.c_char * 192),  # the same in words
    ]


# marvo_event_fn(event). Called with each event, on the library's callback thread; see above. `event` is
# valid during the call.
marvo_event_fn = _callback(None, ctypes.c_void_p, ctypes.POINTER(marvo_event))


# marvo_log_fn(line). Called with each line of the log as the file has it, without its line end, on the
# library's callback thread. `line` is valid during the call.
marvo_log_fn = _callback(None, ctypes.c_void_p, ctypes.c_char_p)


# marvo_play_fn(play). Called once per tick of play with where it is, on the library's callback thread; a
# call that is late tells the newest and stands for those that were left out. `play` is valid during the
# call.
marvo_play_fn = _callback(None, ctypes.c_void_p, ctypes.POINTER(marvo_play_info))

# marvo_source: Where a frame came from.
MARVO_SOURCE_MEMORY = 0  # from the caller
MARVO_SOURCE_RING = 1  # from the ring of the newest frames
MARVO_SOURCE_FILE = 2  # from a file


class marvo_frame_info(_Structure):
    """What a frame is, and what the camera noted in it."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("bytes", ctypes.c_uint32),  # bytes of the frame
        ("number", ctypes.c_uint64),  # its number; MARVO_NO_FRAME for a frame of the caller's
        ("source", ctypes.c_int32),  # marvo_source
        ("system", ctypes.c_int32),  # marvo_system
        ("time_code_known", ctypes.c_int32),  # whether it has a time code; the next five are 0 otherwise
        ("time_code_hours", ctypes.c_uint32),  # 0 to 23
        ("time_code_minutes", ctypes.c_uint32),  # 0 to 59
        ("time_code_seconds", ctypes.c_uint32),  # 0 to 59
        ("time_code_frames", ctypes.c_uint32),  # 0 to 24 or 29
        ("drop_frame", ctypes.c_int32),  # numbers 0 and 1 are left out in every minute but each tenth
        # whether the date of recording is known; the next three are 0 otherwise
        ("date_known", ctypes.c_int32),
        ("year", ctypes.c_uint32),  # four digits
        ("month", ctypes.c_uint32),  # 1 to 12
        ("day", ctypes.c_uint32),  # 1 to 31
        # whether the time of recording is known; the next three are 0 otherwise
        ("time_known", ctypes.c_int32),
        ("hour", ctypes.c_uint32),  # 0 to 23
        ("minute", ctypes.c_uint32),  # 0 to 59
        ("second", ctypes.c_uint32),  # 0 to 59
        # whether the frame says how it is to be shown; otherwise 4:3 is a guess
        ("aspect_known", ctypes.c_int32),
        ("aspect_width", ctypes.c_uint32),  # 4 or 16
        ("aspect_height", ctypes.c_uint32),  # 3 or 9
        ("fields_known", ctypes.c_int32),  # whether it says the order of its fields
        ("interlaced", ctypes.c_int32),  # its fields were taken at different times
        ("upper_field_first", ctypes.c_int32),  # the field with the topmost line is the earlier one
    ]


class marvo_sound_info(_Structure):
    """The sound of a frame."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("rate", ctypes.c_uint32),  # samples per second of each channel; 0: no sound
        ("channels", ctypes.c_uint32),  # 1, 2, 4 or 8
        ("bits", ctypes.c_uint32),  # bits of a sample in the frame, 16 or 12
        ("samples", ctypes.c_uint32),  # samples of each channel in this frame
        ("concealed", ctypes.c_uint32),  # samples that were lost and have been replaced
        ("locked", ctypes.c_int32),  # the camera locked the sound to the picture
    ]


class marvo_decoder(ctypes.c_void_p):
    """Makes pictures of DV frames by the system's DV decoder."""


class marvo_picture_info(_Structure):
    """A picture."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("width", ctypes.c_uint32),  # pixels of a line
        ("height", ctypes.c_uint32),  # lines
        ("stride", ctypes.c_uint32),  # bytes from line to line: width * 4
        ("bytes", ctypes.c_uint32),  # bytes of all pixels: what the buffer needs
        ("aspect_width", ctypes.c_uint32),  # the sides of the picture as it is to be shown: 4 or 16
        ("aspect_height", ctypes.c_uint32),  # 3 or 9
    ]


class marvo_feed(ctypes.c_void_p):
    """A source of frames that the host hands over, in place of a camera."""


class marvo_reader(ctypes.c_void_p):
    """A recording that is read."""

# marvo_end: In which way a recording ended.
MARVO_END_FINISHED = 0  # whole
MARVO_END_BEING_WRITTEN = 1  # its writer has it open at this moment
MARVO_END_CUT_OFF = 2  # something is missing at its end; see marvo_repair()


class marvo_recording_info(_Structure):
    """What a recording is."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("kind", ctypes.c_int32),  # marvo_kind
        ("frames", ctypes.c_uint64),  # whole frames, as of the opening or the last refresh
        ("file_bytes", ctypes.c_uint64),  # bytes of the file
        ("frame_duration_100ns", ctypes.c_int64),  # time per frame in 100 ns
        ("duration_100ns", ctypes.c_int64),  # of all frames
        ("frames_per_second", ctypes.c_double),  # 25 or 29.97
        ("frame_bytes", ctypes.c_uint32),  # bytes of one frame, as of the first; 0 while there is none
        ("system", ctypes.c_int32),  # marvo_system
        ("end", ctypes.c_int32),  # marvo_end
        ("reserved", ctypes.c_uint32),  # 0
        ("end_text", ctypes.c_char * 192),  # `end` in words; empty when finished
    ]


class marvo_writer(ctypes.c_void_p):
    """A recording that is written."""

# marvo_flags: Flags of functions that make files.
MARVO_REPLACE = 1  # a file of that name is replaced; otherwise it is left alone, and MARVO_E_EXISTS
MARVO_NO_SOUND = 2  # an AVI file gets no sound stream; the sound inside of the frames stays


# marvo_work_fn(done, all). Told how much of how much is done. Not 0 ends the work with MARVO_E_CANCELLED.
marvo_work_fn = _callback(ctypes.c_int32, ctypes.c_void_p, ctypes.c_uint64, ctypes.c_uint64)


# marvo_finding_fn(offset, text). Told of one thing that is wrong: where, in bytes from the start of the
# file, and what. Not 0 ends the work with MARVO_E_CANCELLED.
marvo_finding_fn = _callback(ctypes.c_int32, ctypes.c_void_p, ctypes.c_uint64, ctypes.c_char_p)


class marvo_verify_result(_Structure):
    """What a verification found."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("kind", ctypes.c_int32),  # marvo_kind
        ("frames", ctypes.c_uint64),  # whole frames
        # faults in all, of which the first 1000 are told; 0: a sound recording
        ("faults", ctypes.c_uint64),
    ]


class marvo_copy_options(_Structure):
    """How to copy."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("flags", ctypes.c_uint32),  # marvo_flags
        # marvo_kind of the new file; by name ".dv" is a DV stream, ".avi" an AVI file
        ("kind", ctypes.c_int32),
        ("reserved", ctypes.c_uint32),  # 0
        ("first", ctypes.c_uint64),  # first frame
        ("last", ctypes.c_uint64),  # last frame, included; MARVO_TO_THE_END for all from `first` on
    ]


class marvo_copy_result(_Structure):
    """What came of it."""
    _fields_ = [
        ("size", ctypes.c_uint32),  # bytes of this structure, set by the caller
        ("kind", ctypes.c_int32),  # marvo_kind of the new file
        ("frames", ctypes.c_uint64),  # frames in it
        ("bytes", ctypes.c_uint64),  # bytes of it
        ("sound_rate", ctypes.c_uint32),  # samples per second of its sound stream; 0 without one
        ("sound_channels", ctypes.c_uint32),  # channels of it
        ("lost", ctypes.c_uint64),  # repair: frames that were in the old file and could not be saved
        ("damaged", ctypes.c_uint64),  # repair: those of them that begin as frames do and are not whole
        ("exact", ctypes.c_int32),  # repair: `lost` is exact; otherwise at least so many
        ("holes", ctypes.c_uint32),  # repair: places where frames are missing
        ("note", ctypes.c_char * 192),  # what somebody might miss in the new file, in words; mostly empty
    ]


_FUNCTIONS = {
    "marvo_version": (ctypes.c_uint32, []),
    "marvo_version_text": (ctypes.c_char_p, []),
    "marvo_last_error": (ctypes.c_char_p, []),
    "marvo_result_name": (ctypes.c_char_p, [ctypes.c_int32]),
    "marvo_init": (ctypes.c_int32, [ctypes.c_void_p]),
    "marvo_play_init": (ctypes.c_int32, [ctypes.c_void_p, ctypes.c_uint64, ctypes.c_uint64, _Text]),
    "marvo_done": (ctypes.c_int32, []),
    "marvo_show": (ctypes.c_int32, [ctypes.c_void_p]),
    "marvo_hide": (ctypes.c_int32, []),
    "marvo_set_video_size": (ctypes.c_int32, [ctypes.c_int32, ctypes.c_int32]),
    "marvo_set_video_pos": (ctypes.c_int32, [ctypes.c_int32, ctypes.c_int32]),
    "marvo_window_destroyed": (ctypes.c_int32, []),
    "marvo_device_count": (ctypes.c_int32, [ctypes.POINTER(ctypes.c_uint32)]),
    "marvo_device_name": (ctypes.c_int32, [ctypes.c_uint32, ctypes.POINTER(ctypes.c_char), ctypes.c_uint32,
    ctypes.POINTER(ctypes.c_uint32)]),
    "marvo_record_start": (ctypes.c_int32, [_Text]),
    "marvo_record_stop": (ctypes.c_int32, []),
    "marvo_record_flush": (ctypes.c_int32, []),
    "marvo_live": (ctypes.c_int32, []),
    "marvo_replay": (ctypes.c_int32, [ctypes.c_uint64, ctypes.c_uint64, _Text]),
    "marvo_pause": (ctypes.c_int32, []),
    "marvo_resume": (ctypes.c_int32, []),
    "marvo_set_speed": (ctypes.c_int32, [ctypes.c_double]),
    "marvo_seek": (ctypes.c_int32, [ctypes.c_uint64]),
    "marvo_step": (ctypes.c_int32, [ctypes.c_int64]),
    "marvo_element_set": (ctypes.c_int32, [ctypes.c_uint32, ctypes.c_uint64, ctypes.c_uint64]),
    "marvo_element_get": (ctypes.c_int32, [ctypes.c_uint32, ctypes.POINTER(ctypes.c_uint64),
    ctypes.POINTER(ctypes.c_uint64)]),
    "marvo_element_play": (ctypes.c_int32, [ctypes.c_uint32]),
    "marvo_marker": (ctypes.c_int32, [_Text]),
    "marvo_command": (ctypes.c_int32, [_Text]),
    "marvo_log": (ctypes.c_int32, [_Text]),
    "marvo_setting_count": (ctypes.c_int32, [ctypes.POINTER(ctypes.c_uint32)]),
    "marvo_setting_describe": (ctypes.c_int32, [ctypes.c_uint32, ctypes.POINTER(marvo_setting_info)]),
    "marvo_setting_get_number": (ctypes.c_int32, [_Text, ctypes.POINTER(ctypes.c_int64)]),
    "marvo_setting_set_number": (ctypes.c_int32, [_Text, ctypes.c_int64]),
    "marvo_setting_get_text": (ctypes.c_int32, [_Text, ctypes.POINTER(ctypes.c_char), ctypes.c_uint32,
    ctypes.POINTER(ctypes.c_uint32)]),
    "marvo_setting_set_text": (ctypes.c_int32, [_Text, _Text]),
    "marvo_status": (ctypes.c_int32, [ctypes.POINTER(marvo_status_info)]),
    "marvo_play": (ctypes.c_int32, [ctypes.POINTER(marvo_play_info)]),
    "marvo_record_file": (ctypes.c_int32, [ctypes.POINTER(ctypes.c_char), ctypes.c_uint32,
    ctypes.POINTER(ctypes.c_uint32)]),
    "marvo_set_event_callback": (ctypes.c_int32, [marvo_event_fn, ctypes.c_void_p]),
    "marvo_event_next": (ctypes.c_int32, [ctypes.POINTER(marvo_event), ctypes.c_uint32]),
    "marvo_set_log_callback": (ctypes.c_int32, [marvo_log_fn, ctypes.c_void_p]),
    "marvo_set_play_callback": (ctypes.c_int32, [marvo_play_fn, ctypes.c_void_p]),
    "marvo_set_play_message": (ctypes.c_int32, [ctypes.c_void_p, ctypes.c_uint32]),
    "marvo_frame_read": (ctypes.c_int32, [ctypes.c_uint64, ctypes.c_void_p, ctypes.c_uint32,
    ctypes.POINTER(marvo_frame_info)]),
    "marvo_frame_describe": (ctypes.c_int32, [ctypes.c_void_p, ctypes.c_uint32,
    ctypes.POINTER(marvo_frame_info)]),
    "marvo_frame_sound": (ctypes.c_int32, [ctypes.c_void_p, ctypes.c_uint32, ctypes.c_void_p,
    ctypes.c_uint32, ctypes.POINTER(marvo_sound_info)]),
    "marvo_decoder_open": (ctypes.c_int32, [ctypes.POINTER(marvo_decoder)]),
    "marvo_decoder_decode": (ctypes.c_int32, [marvo_decoder, ctypes.c_void_p, ctypes.c_uint32,
    ctypes.c_void_p, ctypes.c_uint32, ctypes.POINTER(marvo_picture_info)]),
    "marvo_decoder_close": (ctypes.c_int32, [marvo_decoder]),
    "marvo_feed_open": (ctypes.c_int32, [ctypes.c_int32, ctypes.POINTER(marvo_feed)]),
    "marvo_feed_add": (ctypes.c_int32, [marvo_feed, ctypes.c_void_p, ctypes.c_uint32]),
    "marvo_feed_close": (ctypes.c_int32, [marvo_feed]),
    "marvo_reader_open": (ctypes.c_int32, [_Text, ctypes.POINTER(marvo_reader)]),
    "marvo_reader_info": (ctypes.c_int32, [marvo_reader, ctypes.POINTER(marvo_recording_info)]),
    "marvo_reader_refresh": (ctypes.c_int32, [marvo_reader]),
    "marvo_reader_read": (ctypes.c_int32, [marvo_reader, ctypes.c_uint64, ctypes.c_void_p, ctypes.c_uint32,
    ctypes.POINTER(marvo_frame_info)]),
    "marvo_reader_close": (ctypes.c_int32, [marvo_reader]),
    "marvo_writer_create": (ctypes.c_int32, [_Text, ctypes.c_int32, ctypes.c_int32, ctypes.c_uint32,
    ctypes.POINTER(marvo_writer)]),
    "marvo_writer_add": (ctypes.c_int32, [marvo_writer, ctypes.c_void_p, ctypes.c_uint32]),
    "marvo_writer_finish": (ctypes.c_int32, [marvo_writer, ctypes.POINTER(ctypes.c_uint64)]),
    "marvo_verify": (ctypes.c_int32, [_Text, marvo_finding_fn, marvo_work_fn, ctypes.c_void_p,
    ctypes.POINTER(marvo_verify_result)]),
    "marvo_export": (ctypes.c_int32, [_Text, _Text, ctypes.POINTER(marvo_copy_options), marvo_work_fn,
    ctypes.c_void_p, ctypes.POINTER(marvo_copy_result)]),
    "marvo_repair": (ctypes.c_int32, [_Text, _Text, ctypes.c_uint32, marvo_work_fn, ctypes.c_void_p,
    ctypes.POINTER(marvo_copy_result)]),
}


def marvo_version():
    """The library's version: major * 65536 + minor * 256 + patch."""
    return library.marvo_version()


def marvo_version_text():
    """The same as text, "1.2.3". Owned by the library, valid as long as it is loaded."""
    return library.marvo_version_text().decode("utf-8")


def marvo_last_error():
    """Why the last function that failed on this thread failed, as one sentence that names what it is about
        (the file, the setting) and the system's reason; empty before the first. Owned by the library, valid
        until the next call on this thread. A call that succeeds leaves it as it is.     """
    return library.marvo_last_error().decode("utf-8")


def marvo_result_name(result):
    """A result's name ("MARVO_E_FILE"), or "unknown". Owned by the library."""
    return library.marvo_result_name(result).decode("utf-8")


def marvo_init(window):
    """Builds the engine on the capture device of the setting "dv.input" (or on the open feed, see
        marvo_feed_open()), runs it and shows the live picture in `window` (a HWND; null: hidden until
        marvo_show()). Waits up to 5 s for the first frames of a device; none is no failure. When it is
        built already, as marvo_show(). A window command.      Result: MARVO_E_DEVICE without such a device,
        MARVO_E_SYSTEM when decoder, renderer or graph cannot     be had.     """
    _check(library.marvo_init(window))


def marvo_play_init(window, from_, to, file):
    """Builds the engine without a capture device, to replay the frames `from` to `to` of the recording
        `file` in `window`; what was built before is taken apart. A window command.     """
    _check(library.marvo_play_init(window, from_, to, file))


def marvo_done():
    """Ends recording and replay and takes the engine apart. Nothing built is no failure. A window
        command."""
    _check(library.marvo_done())


def marvo_show(window):
    """Fits the picture into `window` and shows it there; null hides it. Builds the engine when it is not
        built, and makes a picture that has failed anew. A window command.     """
    _check(library.marvo_show(window))


def marvo_hide():
    """Takes the picture out of its window and hides it. A window command."""
    _check(library.marvo_hide())


def marvo_set_video_size(width, height):
    """Sets the picture's size in pixels. A window command."""
    _check(library.marvo_set_video_size(width, height))


def marvo_set_video_pos(x, y):
    """Sets the picture's position in its window in pixels. A window command."""
    _check(library.marvo_set_video_pos(x, y))


def marvo_window_destroyed():
    """The host is destroying the window that the picture is in (to be called at WM_DESTROY). A window
        command.     """
    _check(library.marvo_window_destroyed())


def marvo_device_count():
    """The number of capture devices."""
    count = ctypes.c_uint32()
    _check(library.marvo_device_count(ctypes.byref(count)))
    return count.value


def marvo_device_name(number):
    """The name of capture device `number`, counted from 0, into `buffer`."""
    return _text(lambda *buffer: library.marvo_device_name(number, *buffer))


def marvo_record_start(file):
    """Records what is captured from now on into `file` (null or empty: the setting "engine.recfile"), in
        place of a file of that name. A name with ".avi" makes an AVI file, any other a raw recording.
        Frames are numbered from 0 again, play goes live, and all elements are unset.     """
    _check(library.marvo_record_start(file))


def marvo_record_stop():
    """Ends the recording and completes its file; waits up to 5 s. None running is no failure."""
    _check(library.marvo_record_stop())


def marvo_record_flush():
    """Has the system write what it holds of the recording."""
    _check(library.marvo_record_flush())


def marvo_live():
    """Back to the newest frame, at speed 1, not held."""
    _check(library.marvo_live())


def marvo_replay(from_, to, file):
    """Plays frames `from` to `to` (both included, in either order) at speed 1, again and again, from
        `file`, or (null or empty) from the setting "engine.playfile". A range that reaches beyond the
        recording is cut to it. The replay goes on until marvo_live() or another one.     """
    _check(library.marvo_replay(from_, to, file))


def marvo_pause():
    """Holds the shown frame."""
    _check(library.marvo_pause())


def marvo_resume():
    """Lets it go on."""
    _check(library.marvo_resume())


def marvo_set_speed(factor):
    """Frames per tick: fractions slow down, negative values play backward, 0 holds. MARVO_E_RANGE for what
        is no number.     """
    _check(library.marvo_set_speed(factor))


def marvo_seek(frame):
    """Shows `frame` next; in a replay it is wrapped into the range, and played from there."""
    _check(library.marvo_seek(frame))


def marvo_step(frames):
    """Holds the picture and moves it by `frames` (negative: back), in a replay around its ends, else not
        before frame 0. MARVO_E_STATE before the first picture.     """
    _check(library.marvo_step(frames))


def marvo_element_set(number, in_, out):
    """Sets both points of element `number` (0 to 127) of the recording; MARVO_NO_FRAME leaves or makes a
        point unset. Element 0 can be set, but not played.     """
    _check(library.marvo_element_set(number, in_, out))


def marvo_element_get(number):
    """The points of element `number`; MARVO_NO_FRAME for one that is unset."""
    in_ = ctypes.c_uint64()
    out = ctypes.c_uint64()
    _check(library.marvo_element_get(number, ctypes.byref(in_), ctypes.byref(out)))
    return in_.value, out.value


def marvo_element_play(number):
    """Replays element `number` (1 to 127) from the setting "engine.playfile". MARVO_E_STATE unless both
        points are set.     """
    _check(library.marvo_element_play(number))


def marvo_marker(text):
    """Takes a marker of a timing or control source: "XInnFRAME" and "XOnnFRAME" set the in and out point
        of element nn, "XR" starts the clock and the first "Z+" after it stops it; anything else is only
        logged, and everything while the setting "dv.control" is off.     """
    _check(library.marvo_marker(text))


def marvo_command(line):
    """Carries out a command given as a line of text: one word, then its arguments, separated by blanks,
        those with blanks in double quotes: `live`, `pause`, `resume`, `replay FROM TO [FILE]`, `record
        [FILE]`, `stop`, `flush`, `speed FACTOR`, `seek FRAME`, `step FRAMES`, `element NUMBER`, `mark
        NUMBER IN OUT`, `marker TEXT`, `set NAME VALUE`, `log TEXT`. Each is what the function of that name
        does. MARVO_E_UNKNOWN for another word, MARVO_E_ARGUMENT for wrong arguments.     """
    _check(library.marvo_command(line))


def marvo_log(text):
    """Writes `text` as a line into the engine's log."""
    _check(library.marvo_log(text))


def marvo_setting_count():
    """The number of settings."""
    count = ctypes.c_uint32()
    _check(library.marvo_setting_count(ctypes.byref(count)))
    return count.value


def marvo_setting_describe(number):
    """Describes the setting `number`, counted from 0."""
    info = marvo_setting_info()
    _check(library.marvo_setting_describe(number, ctypes.byref(info)))
    return info


def marvo_setting_get_number(name):
    """The value of a flag or number."""
    value = ctypes.c_int64()
    _check(library.marvo_setting_get_number(name, ctypes.byref(value)))
    return value.value


def marvo_setting_set_number(name, value):
    """Sets a flag (0 or 1) or a number. MARVO_E_RANGE outside of its range."""
    _check(library.marvo_setting_set_number(name, value))


def marvo_setting_get_text(name):
    """The value of any setting as text; a flag is "yes" or "no"."""
    return _text(lambda *buffer: library.marvo_setting_get_text(name, *buffer))


def marvo_setting_set_text(name, value):
    """Sets any setting from text, a flag or a number from what marvo_setting_get_text() gives."""
    _check(library.marvo_setting_set_text(name, value))


def marvo_status():
    """The state of the engine. Waits for no command and no disk."""
    status = marvo_status_info()
    _check(library.marvo_status(ctypes.byref(status)))
    return status


def marvo_play():
    """Where play is, in one consistent look; cheaper than marvo_status()."""
    play = marvo_play_info()
    _check(library.marvo_play(ctypes.byref(play)))
    return play


def marvo_record_file():
    """The full path of the recording whose numbers the frames have: the one started last since
        marvo_init(). Empty when there was none.     """
    return _text(lambda *buffer: library.marvo_record_file(*buffer))


def marvo_set_event_callback(callback):
    """Sets what is called with each event from now on; null: nothing."""
    callback = _called(marvo_event_fn, callback, None)
    _check(library.marvo_set_event_callback(callback, None))
    _kept["marvo_set_event_callback"] = callback


def marvo_event_next(timeout_ms):
    """Takes the next event from the queue, which holds the last 512, whether a callback is set or not.
        Waits up to `timeout_ms` for one (0: not at all). MARVO_E_EMPTY when there is none.     """
    event = marvo_event()
    _check(library.marvo_event_next(ctypes.byref(event), timeout_ms))
    return event


def marvo_set_log_callback(callback):
    """Sets what is called with each line of the log from now on; null: nothing. Lines that a slow callback
        does not take are left out, which a line says.     """
    callback = _called(marvo_log_fn, callback, None)
    _check(library.marvo_set_log_callback(callback, None))
    _kept["marvo_set_log_callback"] = callback


def marvo_set_play_callback(callback):
    """Sets what is called once per tick of play; null: nothing."""
    callback = _called(marvo_play_fn, callback, None)
    _check(library.marvo_set_play_callback(callback, None))
    _kept["marvo_set_play_callback"] = callback


def marvo_set_play_message(window, message):
    """Posts the window message `message` to `window` (a HWND of any thread's) once per tick of play, with
        the low 32 bits of the frame's number as its first parameter; the second has no meaning. Ask
        marvo_play() for the rest. A null window ends it.     """
    _check(library.marvo_set_play_message(window, message))


def marvo_frame_read(number, buffer):
    """Copies frame `number` of the running recording into `buffer`, which has room for `capacity` bytes:
        from the ring when that still holds it, else from the recording's file. Without a recording since
        marvo_init(), the numbers are those of the ring alone. `info` may be null. With a null `buffer` and
        a `capacity` of 0 nothing is copied, and `info` is filled. MARVO_E_RANGE when there is no such frame
        (yet, or any more), MARVO_E_BUFFER when it does not fit; `info` then tells its bytes.     """
    buffer_at, buffer_capacity = _memory(buffer, 1)
    info = marvo_frame_info()
    _check(library.marvo_frame_read(number, buffer_at, buffer_capacity, ctypes.byref(info)))
    return info


def marvo_frame_describe(frame):
    """Says what the `bytes` bytes at `frame` are; the first 480 suffice for most. MARVO_E_FORMAT when no
        DV frame begins there.     """
    frame_at, frame_bytes = _memory(frame, 1)
    info = marvo_frame_info()
    _check(library.marvo_frame_describe(frame_at, frame_bytes, ctypes.byref(info)))
    return info


def marvo_frame_sound(frame, samples):
    """Gives the sound of a whole frame: 16-bit samples, one of each channel, then the next of each.
        `samples` has room for `capacity` samples of all channels together (1944 a channel are enough). With
        null and 0 only `info` is filled. A frame without sound is no failure.     """
    frame_at, frame_bytes = _memory(frame, 1)
    samples_at, samples_capacity = _memory(samples, 2)
    info = marvo_sound_info()
    _check(library.marvo_frame_sound(frame_at, frame_bytes, samples_at, samples_capacity,
        ctypes.byref(info)))
    return info


def marvo_decoder_open():
    """Makes a decoder. The system's is looked for with the first frame."""
    decoder = marvo_decoder()
    _check(library.marvo_decoder_open(ctypes.byref(decoder)))
    return decoder


def marvo_decoder_decode(decoder, frame, pixels):
    """Makes a picture of a whole frame: 4 bytes for each pixel (blue, green, red, 255), the top line
        first. `pixels` has room for `capacity` bytes (720 * 576 * 4 are enough); with null and 0 only
        `info` is filled, and MARVO_E_BUFFER when it does not fit. MARVO_E_SYSTEM when there is no decoder
        or it gives no picture.     """
    frame_at, frame_bytes = _memory(frame, 1)
    pixels_at, pixels_capacity = _memory(pixels, 1)
    info = marvo_picture_info()
    _check(library.marvo_decoder_decode(decoder, frame_at, frame_bytes, pixels_at, pixels_capacity,
        ctypes.byref(info)))
    return info


def marvo_decoder_close(decoder):
    """Gives the decoder back."""
    _check(library.marvo_decoder_close(decoder))


def marvo_feed_open(system):
    """Opens the feed: the next marvo_init() captures its frames instead of a device's. There is one at
        most (MARVO_E_STATE); `system` is one of marvo_system.     """
    feed = marvo_feed()
    _check(library.marvo_feed_open(system, ctypes.byref(feed)))
    return feed


def marvo_feed_add(feed, frame):
    """Hands a whole frame over as if a camera had sent it at this moment: it gets the next number, is
        shown, recorded and can be replayed. From any thread, at the pace of the frames (live play follows
        what comes; a second without a frame counts as a silent camera). MARVO_E_STATE while the engine does
        not run on this feed, MARVO_E_FORMAT for what is no frame of the feed's system.     """
    frame_at, frame_bytes = _memory(frame, 1)
    _check(library.marvo_feed_add(feed, frame_at, frame_bytes))


def marvo_feed_close(feed):
    """Closes the feed: nothing can be added any more, and the next marvo_init() takes a device."""
    _check(library.marvo_feed_close(feed))


def marvo_reader_open(file):
    """Opens the recording `file`, whatever its kind: raw, AVI (also of other programs), or DV stream; it
        may still be growing.     """
    reader = marvo_reader()
    _check(library.marvo_reader_open(file, ctypes.byref(reader)))
    return reader


def marvo_reader_info(reader):
    """Says what it is."""
    info = marvo_recording_info()
    _check(library.marvo_reader_info(reader, ctypes.byref(info)))
    return info


def marvo_reader_refresh(reader):
    """Looks for frames that were written since."""
    _check(library.marvo_reader_refresh(reader))


def marvo_reader_read(reader, number, buffer):
    """Copies frame `number` into `buffer`; the rest as for marvo_frame_read()."""
    buffer_at, buffer_capacity = _memory(buffer, 1)
    info = marvo_frame_info()
    _check(library.marvo_reader_read(reader, number, buffer_at, buffer_capacity, ctypes.byref(info)))
    return info


def marvo_reader_close(reader):
    """Closes it."""
    _check(library.marvo_reader_close(reader))


def marvo_writer_create(file, kind, system, flags):
    """Creates the recording `file` for frames of `system`. `kind` is one of marvo_kind; by its name it is
        an AVI file when that has ".avi", else a raw recording, as the engine makes them. `flags`: 0 or
        MARVO_REPLACE. Others may read it while it grows.     """
    writer = marvo_writer()
    _check(library.marvo_writer_create(file, kind, system, flags, ctypes.byref(writer)))
    return writer


def marvo_writer_add(writer, frame):
    """Appends a whole frame. When it could not be written, the next one takes its place, and all before it
        stay.     """
    frame_at, frame_bytes = _memory(frame, 1)
    _check(library.marvo_writer_add(writer, frame_at, frame_bytes))


def marvo_writer_finish(writer):
    """Completes the file and closes the handle, whatever comes of it; `frames` (may be null) is what the
        file has.     """
    frames = ctypes.c_uint64()
    _check(library.marvo_writer_finish(writer, ctypes.byref(frames)))
    return frames.value


def marvo_verify(file, finding=None, work=None):
    """Looks at the whole of the recording `file`, its structure and every frame, and changes nothing.
        `finding` and `work` may be null; `user` is for both. Faults are no failure: the result has their
        number. `result` may be null.     """
    failures = []
    finding = _called(marvo_finding_fn, finding, failures)
    work = _called(marvo_work_fn, work, failures)
    result = marvo_verify_result()
    _check(library.marvo_verify(file, finding, work, None, ctypes.byref(result)), failures)
    return result


def marvo_export(from_, to, options=None, work=None):
    """Copies frames of the recording `from` (which may be growing) into the new file `to`, also as another
        kind. The file appears under its name when it is whole; when anything fails, nothing is left behind.
        `options` null: all frames, the kind by the name, no replacing. `work` and `result` may be null.
        """
    failures = []
    work = _called(marvo_work_fn, work, failures)
    result = marvo_copy_result()
    _check(library.marvo_export(from_, to, options, work, None, ctypes.byref(result)), failures)
    return result


def marvo_repair(from_, to, flags, work=None):
    """Searches the damaged recording `from` for its frames and writes all that are whole into the new file
        `to`, of the same kind when `to` may be one, else of the kind that its name means. `flags`: 0 or
        MARVO_REPLACE. The rest as for marvo_export().     """
    failures = []
    work = _called(marvo_work_fn, work, failures)
    result = marvo_copy_result()
    _check(library.marvo_repair(from_, to, flags, work, None, ctypes.byref(result)), failures)
    return result


def load(path=None):
    """Loads the DLL from a file. Done by the import on Windows."""
    global library
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), "marvo.dll")
    path = path or os.environ.get("MARVO_DLL") or (beside if os.path.exists(beside) else "marvo.dll")
    loaded = getattr(ctypes, "WinDLL", ctypes.CDLL)(path)
    for name, (result, arguments) in _FUNCTIONS.items():
        function = getattr(loaded, name)
        function.restype, function.argtypes = result, arguments
    library = loaded


if os.name == "nt":
    load()
