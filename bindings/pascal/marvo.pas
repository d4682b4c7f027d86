// marvo from Delphi and Free Pascal. Made by scripts/make_bindings.py from marvo_c.h; not to be changed here.
//
// The names are those of marvo_c.h; a structure is called as there with a T, a pointer to it with a P in
// front, and a name that Pascal keeps for itself has an underscore behind it. Text is UTF-8 and ends with a
// zero. The DLL is for programs of its own width.
unit marvo;

{$IFDEF FPC}
  {$MODE OBJFPC}{$H+}
{$ENDIF}
// Members are aligned to their own size, as in C.
{$ALIGN 8}

interface

uses
  SysUtils;

const
  MARVO_DLL = 'marvo.dll';

type
  // A result that is not MARVO_OK, with the library's sentence.
  EMarvo = class(Exception)
  public
    Code: Integer;
  end;

// Raises an EMarvo for a result that is not MARVO_OK.
procedure MarvoCheck(code: Integer);

// Makes all of a structure 0 and sets its size: MarvoClear(info, SizeOf(info)).
procedure MarvoClear(out structure; bytes: Cardinal);

const
  MARVO_NO_FRAME = High(UInt64);  // No frame.
  MARVO_TO_THE_END = High(UInt64);  // As the last frame of a range: up to the end.
  MARVO_UNKNOWN = High(UInt64);  // A number that is not known.
  MARVO_MOST_FRAME_BYTES = 576000;  // No frame of any recording has more bytes.

  // marvo_result: What a function says.
  MARVO_OK = 0;  // done
  MARVO_E_ARGUMENT = 1;  // a null, a text that is no UTF-8, a value that has no meaning
  MARVO_E_HANDLE = 2;  // no handle of this kind, or not any more
  MARVO_E_STATE = 3;  // out of order: something has to be done before
  MARVO_E_THREAD = 4;  // a window command on another thread than the engine's, or the window's
  MARVO_E_BUSY = 5;  // inside another command on the same thread
  MARVO_E_RANGE = 6;  // a number, a size or a frame out of range
  MARVO_E_UNKNOWN = 7;  // no setting, command or device of that name or number
  MARVO_E_BUFFER = 8;  // the buffer is too small; what is needed was told
  MARVO_E_FILE = 9;  // a file cannot be opened, read or written
  MARVO_E_EXISTS = 10;  // there is a file of that name, and it is not to be replaced
  MARVO_E_FORMAT = 11;  // no recording, or no DV frame
  MARVO_E_DEVICE = 12;  // no such capture device, or it does not work
  MARVO_E_SYSTEM = 13;  // a part of the system is missing or refuses: decoder, renderer, window
  MARVO_E_CANCELLED = 14;  // a callback asked for it
  MARVO_E_MEMORY = 15;  // there is not enough memory
  MARVO_E_EMPTY = 16;  // nothing is waiting
  MARVO_E_REFUSED = 17;  // the engine refused the command; its log says more

  // marvo_kind: What a recording file is.
  MARVO_KIND_BY_NAME = 0;  // as a choice: what the file's name means
  MARVO_KIND_RAW = 1;  // the engine's own records, one per frame; no player opens them
  MARVO_KIND_AVI = 2;  // AVI with a DV video stream
  MARVO_KIND_STREAM = 3;  // DV frames one behind the other and nothing else

  // marvo_system: The two systems of DV.
  MARVO_SYSTEM_UNKNOWN = 0;  // not known (yet)
  MARVO_SYSTEM_625 = 1;  // 625/50 ("PAL"): 144000 bytes, 25 frames a second
  MARVO_SYSTEM_525 = 2;  // 525/60 ("NTSC"): 120000 bytes, 29.97 frames a second

  // marvo_setting_type: The type of a setting.
  MARVO_SETTING_FLAG = 1;  // yes or no
  MARVO_SETTING_NUMBER = 2;  // a whole number
  MARVO_SETTING_TEXT = 3;  // a text

  // marvo_camera: How the camera is.
  MARVO_CAMERA_NONE = 0;  // no capture is built
  MARVO_CAMERA_LIVE = 1;  // frames come
  MARVO_CAMERA_SILENT = 2;  // it is there, but no frame has come for a second
  MARVO_CAMERA_GONE = 3;  // it is gone, or has failed
  MARVO_CAMERA_CHANGED = 4;  // it came back with other frames; capture stands still until marvo_init()

  // marvo_built: What is built.
  MARVO_BUILT_NOTHING = 0;  // nothing
  MARVO_BUILT_ALL = 1;  // capture and play
  MARVO_BUILT_PLAY = 2;  // play alone, by marvo_play_init()

  // marvo_fault: What disturbs the picture: bits of `picture_faults`.
  // for a second the clock has given no tick; the picture goes on, eight a second
  MARVO_FAULT_NO_TICKS = 1;
  MARVO_FAULT_REFUSED = 2;  // for a second decoder or renderer have refused every frame
  MARVO_FAULT_HELD_UP = 4;  // decoder or renderer have not returned from a frame for a second
  MARVO_FAULT_NO_GRAPH = 8;  // the play graph cannot go on; marvo_show() makes it anew

  // marvo_event_kind: What has happened. What `frame`, `count` and `code` mean is said at each; otherwise
  // they are 0.
  MARVO_EVENT_CAMERA_LOST = 1;  // the device is gone or has failed; frame: the newest
  MARVO_EVENT_CAMERA_SILENT = 2;  // no frame for a second; frame: the newest
  MARVO_EVENT_CAMERA_BACK = 3;  // frames come again; frame: the first, count: the gap in ms
  // back with another format; count: bytes of its frames. The recording is completed; call marvo_init()
  MARVO_EVENT_CAMERA_CHANGED = 4;
  MARVO_EVENT_RECORD_STARTED = 10;  // a recording has begun
  MARVO_EVENT_RECORD_ENDED = 11;  // it has ended; count: frames in the file
  // frames cannot be written; frame: the first, count: so far, code: the system's
  MARVO_EVENT_WRITE_FAILED = 12;
  MARVO_EVENT_WRITE_RECOVERED = 13;  // frames are in the file again; count: what it has cost
  MARVO_EVENT_RING_OVERRUN = 14;  // the writer is a whole ring behind, frames are lost; as WRITE_FAILED
  MARVO_EVENT_CAUGHT_UP = 15;  // it is not any more; count: what it has cost
  MARVO_EVENT_INCOMPLETE = 16;  // the file could not be completed at its end; code: the system's
  MARVO_EVENT_REPLAY_STARTED = 20;  // a replay has begun; frame: first, count: frames of the range
  MARVO_EVENT_REPLAY_ENDED = 21;  // play is live again, or nothing is built
  // frames of the replay cannot be read; frame: the first, count, code: the system's
  MARVO_EVENT_UNREADABLE = 22;
  MARVO_EVENT_READABLE = 23;  // all can be read again
  MARVO_EVENT_PICTURE_FAULT = 30;  // the picture is disturbed; code: the marvo_fault
  MARVO_EVENT_PICTURE_WELL = 31;  // that one is over
  MARVO_EVENT_GRAPH = 32;  // an event of the play graph; code: its EC_ number

  // marvo_source: Where a frame came from.
  MARVO_SOURCE_MEMORY = 0;  // from the caller
  MARVO_SOURCE_RING = 1;  // from the ring of the newest frames
  MARVO_SOURCE_FILE = 2;  // from a file

  // marvo_end: In which way a recording ended.
  MARVO_END_FINISHED = 0;  // whole
  MARVO_END_BEING_WRITTEN = 1;  // its writer has it open at this moment
  MARVO_END_CUT_OFF = 2;  // something is missing at its end; see marvo_repair()

  // marvo_flags: Flags of functions that make files.
  MARVO_REPLACE = 1;  // a file of that name is replaced; otherwise it is left alone, and MARVO_E_EXISTS
  MARVO_NO_SOUND = 2;  // an AVI file gets no sound stream; the sound inside of the frames stays

type
  PInteger = ^Integer;
  PCardinal = ^Cardinal;
  PInt64 = ^Int64;
  PUInt64 = ^UInt64;
  PSmallInt = ^SmallInt;

  // What there is to know of a setting.
  Pmarvo_setting_info = ^Tmarvo_setting_info;
  Tmarvo_setting_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    type_: Integer;  // marvo_setting_type
    least: Int64;  // of a number
    most: Int64;  // see there
    name: array[0..63] of AnsiChar;  // its name
    meaning: array[0..191] of AnsiChar;  // what it means, in words
  end;

  // The whole state of the engine. Filled consistently: all of it belongs to one moment between two
  // commands, unless `busy`.
  Pmarvo_status_info = ^Tmarvo_status_info;
  Tmarvo_status_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    built: Integer;  // marvo_built
    busy: Integer;  // a command is being carried out at this moment
    camera: Integer;  // marvo_camera
    camera_since_ms: Cardinal;  // for how long it has been so
    camera_lost: Cardinal;  // how often the device was lost since marvo_init()
    system: Integer;  // marvo_system of the captured frames
    frame_bytes: Cardinal;  // bytes of one captured frame; 0 before marvo_init()
    frames_per_second: Cardinal;  // 25 or 30
    ring_frames: Cardinal;  // frames that the ring has room for; 0 without a ring
    next_frame: UInt64;  // the number that the next captured frame gets: one past the newest
    oldest_frame: UInt64;  // the oldest frame in the ring; as next_frame when it is empty
    arrived: UInt64;  // frames that came from camera or feed since the loading, modulo 2^32
    recording: Integer;  // a recording is on
    failing: Integer;  // its newest write failed
    behind: Integer;  // its writer is so far behind that frames are lost
    complete: Integer;  // it has ended, and its file is whole
    taken: UInt64;  // frames captured while it was on
    written: UInt64;  // of them, those in the file: safe
    waiting: UInt64;  // those that the writer has still to come to
    lost: UInt64;  // those that the ring went over, or that were given up
    failed: UInt64;  // those that could not be written
    beyond_limit: UInt64;  // those that the setting "dv.maxfilesize" keeps out
    drive_frames: UInt64;  // frames that the drive has room for; MARVO_UNKNOWN when it does not tell
    first_error: Cardinal;  // the system's number of what failed first; 0: nothing
    picture_faults: Cardinal;  // marvo_fault bits
    replaying: Integer;  // a replay is on; otherwise play is live
    paused: Integer;  // the shown frame is held
    speed: Double;  // frames per tick
    shown_frame: UInt64;  // the frame being shown; MARVO_NO_FRAME before the first
    replay_from: UInt64;  // first frame of the replay; MARVO_NO_FRAME without one
    replay_to: UInt64;  // last frame of the replay, included
    unreadable_from: UInt64;  // the first frame of the replay that cannot be read; MARVO_NO_FRAME: none
    unreadable_frames: UInt64;  // how many
    unreadable_error: Cardinal;  // the system's number for why
    time_ms: Integer;  // the shown frame's time, at 40 or 33 ms a frame, less the markers' clock
    raw_time_ms: Integer;  // the shown frame's time, exactly
    events_waiting: Cardinal;  // events in the queue of marvo_event_next()
    events_lost: UInt64;  // events that nobody took from it in time, in all
    first_error_text: array[0..191] of AnsiChar;  // `first_error` in words; empty for nothing
  end;

  // Where play is.
  Pmarvo_play_info = ^Tmarvo_play_info;
  Tmarvo_play_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    replaying: Integer;  // a replay is on
    recording: Integer;  // a recording is on
    paused: Integer;  // the shown frame is held
    frame: UInt64;  // the frame being shown; MARVO_NO_FRAME before the first
    from: UInt64;  // first frame of the replay; MARVO_NO_FRAME without one
    to_: UInt64;  // last frame of the replay, included
    next_frame: UInt64;  // one past the newest captured frame; 0 without capture
    speed: Double;  // frames per tick
  end;

  // One event.
  Pmarvo_event = ^Tmarvo_event;
  Tmarvo_event = record
    size: Cardinal;  // bytes of this structure, set by the caller; in a callback by the library
    kind: Integer;  // marvo_event_kind
    serial: UInt64;  // counts all events from 1: a number left out was lost
    time_100ns: UInt64;  // when, as a FILETIME: UTC, in 100 ns since 1601
    frame: UInt64;  // see marvo_event_kind
    count: UInt64;  // see there
    code: Cardinal;  // see there
    lost: Cardinal;  // events lost in front of this one
    text: array[0..191] of AnsiChar;  // the same in words
  end;

  // Called with each event, on the library's callback thread; see above. `event` is valid during the call.
  Tmarvo_event_fn = procedure(user: Pointer; event: Pmarvo_event); stdcall;

  // Called with each line of the log as the file has it, without its line end, on the library's callback
  // thread. `line` is valid during the call.
  Tmarvo_log_fn = procedure(user: Pointer; line: PAnsiChar); stdcall;

  // Called once per tick of play with where it is, on the library's callback thread; a call that is late
  // tells the newest and stands for those that were left out. `play` is valid during the call.
  Tmarvo_play_fn = procedure(user: Pointer; play: Pmarvo_play_info); stdcall;

  // What a frame is, and what the camera noted in it.
  Pmarvo_frame_info = ^Tmarvo_frame_info;
  Tmarvo_frame_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    bytes: Cardinal;  // bytes of the frame
    number: UInt64;  // its number; MARVO_NO_FRAME for a frame of the caller's
    source: Integer;  // marvo_source
    system: Integer;  // marvo_system
    time_code_known: Integer;  // whether it has a time code; the next five are 0 otherwise
    time_code_hours: Cardinal;  // 0 to 23
    time_code_minutes: Cardinal;  // 0 to 59
    time_code_seconds: Cardinal;  // 0 to 59
    time_code_frames: Cardinal;  // 0 to 24 or 29
    drop_frame: Integer;  // numbers 0 and 1 are left out in every minute but each tenth
    date_known: Integer;  // whether the date of recording is known; the next three are 0 otherwise
    year: Cardinal;  // four digits
    month: Cardinal;  // 1 to 12
    day: Cardinal;  // 1 to 31
    time_known: Integer;  // whether the time of recording is known; the next three are 0 otherwise
    hour: Cardinal;  // 0 to 23
    minute: Cardinal;  // 0 to 59
    second: Cardinal;  // 0 to 59
    aspect_known: Integer;  // whether the frame says how it is to be shown; otherwise 4:3 is a guess
    aspect_width: Cardinal;  // 4 or 16
    aspect_height: Cardinal;  // 3 or 9
    fields_known: Integer;  // whether it says the order of its fields
    interlaced: Integer;  // its fields were taken at different times
    upper_field_first: Integer;  // the field with the topmost line is the earlier one
  end;

  // The sound of a frame.
  Pmarvo_sound_info = ^Tmarvo_sound_info;
  Tmarvo_sound_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    rate: Cardinal;  // samples per second of each channel; 0: no sound
    channels: Cardinal;  // 1, 2, 4 or 8
    bits: Cardinal;  // bits of a sample in the frame, 16 or 12
    samples: Cardinal;  // samples of each channel in this frame
    concealed: Cardinal;  // samples that were lost and have been replaced
    locked: Integer;  // the camera locked the sound to the picture
  end;

  // Makes pictures of DV frames by the system's DV decoder.
  Tmarvo_decoder = type Pointer;
  Pmarvo_decoder = ^Tmarvo_decoder;

  // A picture.
  Pmarvo_picture_info = ^Tmarvo_picture_info;
  Tmarvo_picture_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    width: Cardinal;  // pixels of a line
    height: Cardinal;  // lines
    stride: Cardinal;  // bytes from line to line: width * 4
    bytes: Cardinal;  // bytes of all pixels: what the buffer needs
    aspect_width: Cardinal;  // the sides of the picture as it is to be shown: 4 or 16
    aspect_height: Cardinal;  // 3 or 9
  end;

  // A source of frames that the host hands over, in place of a camera.
  Tmarvo_feed = type Pointer;
  Pmarvo_feed = ^Tmarvo_feed;

  // A recording that is read.
  Tmarvo_reader = type Pointer;
  Pmarvo_reader = ^Tmarvo_reader;

  // What a recording is.
  Pmarvo_recording_info = ^Tmarvo_recording_info;
  Tmarvo_recording_info = record
    size: Cardinal;  // bytes of this structure, set by the caller
    kind: Integer;  // marvo_kind
    frames: UInt64;  // whole frames, as of the opening or the last refresh
    file_bytes: UInt64;  // bytes of the file
    frame_duration_100ns: Int64;  // time per frame in 100 ns
    duration_100ns: Int64;  // of all frames
    frames_per_second: Double;  // 25 or 29.97
    frame_bytes: Cardinal;  // bytes of one frame, as of the first; 0 while there is none
    system: Integer;  // marvo_system
    end_: Integer;  // marvo_end
    reserved: Cardinal;  // 0
    end_text: array[0..191] of AnsiChar;  // `end` in words; empty when finished
  end;

  // A recording that is written.
  Tmarvo_writer = type Pointer;
  Pmarvo_writer = ^Tmarvo_writer;

  // Told how much of how much is done. Not 0 ends the work with MARVO_E_CANCELLED.
  Tmarvo_work_fn = function(user: Pointer; done: UInt64; all: UInt64): Integer; stdcall;

  // Told of one thing that is wrong: where, in bytes from the start of the file, and what. Not 0 ends the
  // work with MARVO_E_CANCELLED.
  Tmarvo_finding_fn = function(user: Pointer; offset: UInt64; text: PAnsiChar): Integer; stdcall;

  // What a verification found.
  Pmarvo_verify_result = ^Tmarvo_verify_result;
  Tmarvo_verify_result = record
    size: Cardinal;  // bytes of this structure, set by the caller
    kind: Integer;  // marvo_kind
    frames: UInt64;  // whole frames
    faults: UInt64;  // faults in all, of which the first 1000 are told; 0: a sound recording
  end;

  // How to copy.
  Pmarvo_copy_options = ^Tmarvo_copy_options;
  Tmarvo_copy_options = record
    size: Cardinal;  // bytes of this structure, set by the caller
    flags: Cardinal;  // marvo_flags
    kind: Integer;  // marvo_kind of the new file; by name ".dv" is a DV stream, ".avi" an AVI file
    reserved: Cardinal;  // 0
    first: UInt64;  // first frame
    last: UInt64;  // last frame, included; MARVO_TO_THE_END for all from `first` on
  end;

  // What came of it.
  Pmarvo_copy_result = ^Tmarvo_copy_result;
  Tmarvo_copy_result = record
    size: Cardinal;  // bytes of this structure, set by the caller
    kind: Integer;  // marvo_kind of the new file
    frames: UInt64;  // frames in it
    bytes: UInt64;  // bytes of it
    sound_rate: Cardinal;  // samples per second of its sound stream; 0 without one
    sound_channels: Cardinal;  // channels of it
    lost: UInt64;  // repair: frames that were in the old file and could not be saved
    damaged: UInt64;  // repair: those of them that begin as frames do and are not whole
    exact: Integer;  // repair: `lost` is exact; otherwise at least so many
    holes: Cardinal;  // repair: places where frames are missing
    note: array[0..191] of AnsiChar;  // what somebody might miss in the new file, in words; mostly empty
  end;

// The library's version: major * 65536 + minor * 256 + patch.
function marvo_version: Cardinal; stdcall; external MARVO_DLL name 'marvo_version';

// The same as text, "1.2.3". Owned by the library, valid as long as it is loaded.
function marvo_version_text: PAnsiChar; stdcall; external MARVO_DLL name 'marvo_version_text';

// Why the last function that failed on this thread failed, as one sentence that names what it is about (the
// file, the setting) and the system's reason; empty before the first. Owned by the library, valid until the
// next call on this thread. A call that succeeds leaves it as it is.
function marvo_last_error: PAnsiChar; stdcall; external MARVO_DLL name 'marvo_last_error';

// A result's name ("MARVO_E_FILE"), or "unknown". Owned by the library.
function marvo_result_name(result_: Integer): PAnsiChar; stdcall; external MARVO_DLL name
    'marvo_result_name';

// Builds the engine on the capture device of the setting "dv.input" (or on the open feed, see
// marvo_feed_open()), runs it and shows the live picture in `window` (a HWND; null: hidden until
// marvo_show()). Waits up to 5 s for the first frames of a device; none is no failure. When it is built
// already, as marvo_show(). A window command.
// Result: MARVO_E_DEVICE without such a device, MARVO_E_SYSTEM when decoder, renderer or graph cannot be
// had.
function marvo_init(window: Pointer): Integer; stdcall; external MARVO_DLL name 'marvo_init';

// Builds the engine without a capture device, to replay the frames `from` to `to` of the recording `file`
// in `window`; what was built before is taken apart. A window command.
function marvo_play_init(window: Pointer; from: UInt64; to_: UInt64; file_: PAnsiChar): Integer; stdcall;
    external MARVO_DLL name 'marvo_play_init';

// Ends recording and replay and takes the engine apart. Nothing built is no failure. A window command.
function marvo_done: Integer; stdcall; external MARVO_DLL name 'marvo_done';

// Fits the picture into `window` and shows it there; null hides it. Builds the engine when it is not built,
// and makes a picture that has failed anew. A window command.
function marvo_show(window: Pointer): Integer; stdcall; external MARVO_DLL name 'marvo_show';

// Takes the picture out of its window and hides it. A window command.
function marvo_hide: Integer; stdcall; external MARVO_DLL name 'marvo_hide';

// Sets the picture's size in pixels. A window command.
function marvo_set_video_size(width: Integer; height: Integer): Integer; stdcall; external MARVO_DLL name
    'marvo_set_video_size';

// Sets the picture's position in its window in pixels. A window command.
function marvo_set_video_pos(x: Integer; y: Integer): Integer; stdcall; external MARVO_DLL name
    'marvo_set_video_pos';

// The host is destroying the window that the picture is in (to be called at WM_DESTROY). A window command.
function marvo_window_destroyed: Integer; stdcall; external MARVO_DLL name 'marvo_window_destroyed';

// The number of capture devices.
function marvo_device_count(count: PCardinal): Integer; stdcall; external MARVO_DLL name
    'marvo_device_count';

// The name of capture device `number`, counted from 0, into `buffer`.
function marvo_device_name(number: Cardinal; buffer: PAnsiChar; capacity: Cardinal; needed: PCardinal):
    Integer; stdcall; external MARVO_DLL name 'marvo_device_name';

// Records what is captured from now on into `file` (null or empty: the setting "engine.recfile"), in place
// of a file of that name. A name with ".avi" makes an AVI file, any other a raw recording. Frames are
// numbered from 0 again, play goes live, and all elements are unset.
function marvo_record_start(file_: PAnsiChar): Integer; stdcall; external MARVO_DLL name
    'marvo_record_start';

// Ends the recording and completes its file; waits up to 5 s. None running is no failure.
function marvo_record_stop: Integer; stdcall; external MARVO_DLL name 'marvo_record_stop';

// Has the system write what it holds of the recording.
function marvo_record_flush: Integer; stdcall; external MARVO_DLL name 'marvo_record_flush';

// Back to the newest frame, at speed 1, not held.
function marvo_live: Integer; stdcall; external MARVO_DLL name 'marvo_live';

// Plays frames `from` to `to` (both included, in either order) at speed 1, again and again, from `file`, or
// (null or empty) from the setting "engine.playfile". A range that reaches beyond the recording is cut to
// it. The replay goes on until marvo_live() or another one.
function marvo_replay(from: UInt64; to_: UInt64; file_: PAnsiChar): Integer; stdcall; external MARVO_DLL
    name 'marvo_replay';

// Holds the shown frame.
function marvo_pause: Integer; stdcall; external MARVO_DLL name 'marvo_pause';

// Lets it go on.
function marvo_resume: Integer; stdcall; external MARVO_DLL name 'marvo_resume';

// Frames per tick: fractions slow down, negative values play backward, 0 holds. MARVO_E_RANGE for what is
// no number.
function marvo_set_speed(factor: Double): Integer; stdcall; external MARVO_DLL name 'marvo_set_speed';

// Shows `frame` next; in a replay it is wrapped into the range, and played from there.
function marvo_seek(frame: UInt64): Integer; stdcall; external MARVO_DLL name 'marvo_seek';

// Holds the picture and moves it by `frames` (negative: back), in a replay around its ends, else not before
// frame 0. MARVO_E_STATE before the first picture.
function marvo_step(frames: Int64): Integer; stdcall; external MARVO_DLL name 'marvo_step';

// Sets both points of element `number` (0 to 127) of the recording; MARVO_NO_FRAME leaves or makes a point
// unset. Element 0 can be set, but not played.
function marvo_element_set(number: Cardinal; in_: UInt64; out_: UInt64): Integer; stdcall; external
    MARVO_DLL name 'marvo_element_set';

// The points of element `number`; MARVO_NO_FRAME for one that is unset.
function marvo_element_get(number: Cardinal; in_: PUInt64; out_: PUInt64): Integer; stdcall; external
    MARVO_DLL name 'marvo_element_get';

// Replays element `number` (1 to 127) from the setting "engine.playfile". MARVO_E_STATE unless both points
// are set.
function marvo_element_play(number: Cardinal): Integer; stdcall; external MARVO_DLL name
    'marvo_element_play';

// Takes a marker of a timing or control source: "XInnFRAME" and "XOnnFRAME" set the in and out point of
// element nn, "XR" starts the clock and the first "Z+" after it stops it; anything else is only logged, and
// everything while the setting "dv.control" is off.
function marvo_marker(text: PAnsiChar): Integer; stdcall; external MARVO_DLL name 'marvo_marker';

// Carries out a command given as a line of text: one word, then its arguments, separated by blanks, those
// with blanks in double quotes: `live`, `pause`, `resume`, `replay FROM TO [FILE]`, `record [FILE]`,
// `stop`, `flush`, `speed FACTOR`, `seek FRAME`, `step FRAMES`, `element NUMBER`, `mark NUMBER IN OUT`,
// `marker TEXT`, `set NAME VALUE`, `log TEXT`. Each is what the function of that name does. MARVO_E_UNKNOWN
// for another word, MARVO_E_ARGUMENT for wrong arguments.
function marvo_command(line: PAnsiChar): Integer; stdcall; external MARVO_DLL name 'marvo_command';

// Writes `text` as a line into the engine's log.
function marvo_log(text: PAnsiChar): Integer; stdcall; external MARVO_DLL name 'marvo_log';

// The number of settings.
function marvo_setting_count(count: PCardinal): Integer; stdcall; external MARVO_DLL name
    'marvo_setting_count';

// Describes the setting `number`, counted from 0.
function marvo_setting_describe(number: Cardinal; info: Pmarvo_setting_info): Integer; stdcall; external
    MARVO_DLL name 'marvo_setting_describe';

// The value of a flag or number.
function marvo_setting_get_number(name: PAnsiChar; value: PInt64): Integer; stdcall; external MARVO_DLL name
    'marvo_setting_get_number';

// Sets a flag (0 or 1) or a number. MARVO_E_RANGE outside of its range.
function marvo_setting_set_number(name: PAnsiChar; value: Int64): Integer; stdcall; external MARVO_DLL name
    'marvo_setting_set_number';

// The value of any setting as text; a flag is "yes" or "no".
function marvo_setting_get_text(name: PAnsiChar; buffer: PAnsiChar; capacity: Cardinal; needed: PCardinal):
    Integer; stdcall; external MARVO_DLL name 'marvo_setting_get_text';

// Sets any setting from text, a flag or a number from what marvo_setting_get_text() gives.
function marvo_setting_set_text(name: PAnsiChar; value: PAnsiChar): Integer; stdcall; external MARVO_DLL
    name 'marvo_setting_set_text';

// The state of the engine. Waits for no command and no disk.
function marvo_status(status: Pmarvo_status_info): Integer; stdcall; external MARVO_DLL name 'marvo_status';

// Where play is, in one consistent look; cheaper than marvo_status().
function marvo_play(play: Pmarvo_play_info): Integer; stdcall; external MARVO_DLL name 'marvo_play';

// The full path of the recording whose numbers the frames have: the one started last since marvo_init().
// Empty when there was none.
function marvo_record_file(buffer: PAnsiChar; capacity: Cardinal; needed: PCardinal): Integer; stdcall;
    external MARVO_DLL name 'marvo_record_file';

// Sets what is called with each event from now on; null: nothing.
function marvo_set_event_callback(callback: Tmarvo_event_fn; user: Pointer): Integer; stdcall; external
    MARVO_DLL name 'marvo_set_event_callback';

// Takes the next event from the queue, which holds the last 512, whether a callback is set or not. Waits up
// to `timeout_ms` for one (0: not at all). MARVO_E_EMPTY when there is none.
function marvo_event_next(event: Pmarvo_event; timeout_ms: Cardinal): Integer; stdcall; external MARVO_DLL
    name 'marvo_event_next';

// Sets what is called with each line of the log from now on; null: nothing. Lines that a slow callback does
// not take are left out, which a line says.
function marvo_set_log_callback(callback: Tmarvo_log_fn; user: Pointer): Integer; stdcall; external
    MARVO_DLL name 'marvo_set_log_callback';

// Sets what is called once per tick of play; null: nothing.
function marvo_set_play_callback(callback: Tmarvo_play_fn; user: Pointer): Integer; stdcall; external
    MARVO_DLL name 'marvo_set_play_callback';

// Posts the window message `message` to `window` (a HWND of any thread's) once per tick of play, with the
// low 32 bits of the frame's number as its first parameter; the second has no meaning. Ask marvo_play() for
// the rest. A null window ends it.
function marvo_set_play_message(window: Pointer; message: Cardinal): Integer; stdcall; external MARVO_DLL
    name 'marvo_set_play_message';

// Copies frame `number` of the running recording into `buffer`, which has room for `capacity` bytes: from
// the ring when that still holds it, else from the recording's file. Without a recording since
// marvo_init(), the numbers are those of the ring alone. `info` may be null. With a null `buffer` and a
// `capacity` of 0 nothing is copied, and `info` is filled. MARVO_E_RANGE when there is no such frame (yet,
// or any more), MARVO_E_BUFFER when it does not fit; `info` then tells its bytes.
function marvo_frame_read(number: UInt64; buffer: Pointer; capacity: Cardinal; info: Pmarvo_frame_info):
    Integer; stdcall; external MARVO_DLL name 'marvo_frame_read';

// Says what the `bytes` bytes at `frame` are; the first 480 suffice for most. MARVO_E_FORMAT when no DV
// frame begins there.
function marvo_frame_describe(frame: Pointer; bytes: Cardinal; info: Pmarvo_frame_info): Integer; stdcall;
    external MARVO_DLL name 'marvo_frame_describe';

// Gives the sound of a whole frame: 16-bit samples, one of each channel, then the next of each. `samples`
// has room for `capacity` samples of all channels together (1944 a channel are enough). With null and 0
// only `info` is filled. A frame without sound is no failure.
function marvo_frame_sound(frame: Pointer; bytes: Cardinal; samples: PSmallInt; capacity: Cardinal; info:
    Pmarvo_sound_info): Integer; stdcall; external MARVO_DLL name 'marvo_frame_sound';

// Makes a decoder. The system's is looked for with the first frame.
function marvo_decoder_open(decoder: Pmarvo_decoder): Integer; stdcall; external MARVO_DLL name
    'marvo_decoder_open';

// Makes a picture of a whole frame: 4 bytes for each pixel (blue, green, red, 255), the top line first.
// `pixels` has room for `capacity` bytes (720 * 576 * 4 are enough); with null and 0 only `info` is filled,
// and MARVO_E_BUFFER when it does not fit. MARVO_E_SYSTEM when there is no decoder or it gives no picture.
function marvo_decoder_decode(decoder: Tmarvo_decoder; frame: Pointer; bytes: Cardinal; pixels: Pointer;
    capacity: Cardinal; info: Pmarvo_picture_info): Integer; stdcall; external MARVO_DLL name
    'marvo_decoder_decode';

// Gives the decoder back.
function marvo_decoder_close(decoder: Tmarvo_decoder): Integer; stdcall; external MARVO_DLL name
    'marvo_decoder_close';

// Opens the feed: the next marvo_init() captures its frames instead of a device's. There is one at most
// (MARVO_E_STATE); `system` is one of marvo_system.
function marvo_feed_open(system: Integer; feed: Pmarvo_feed): Integer; stdcall; external MARVO_DLL name
    'marvo_feed_open';

// Hands a whole frame over as if a camera had sent it at this moment: it gets the next number, is shown,
// recorded and can be replayed. From any thread, at the pace of the frames (live play follows what comes; a
// second without a frame counts as a silent camera). MARVO_E_STATE while the engine does not run on this
// feed, MARVO_E_FORMAT for what is no frame of the feed's system.
function marvo_feed_add(feed: Tmarvo_feed; frame: Pointer; bytes: Cardinal): Integer; stdcall; external
    MARVO_DLL name 'marvo_feed_add';

// Closes the feed: nothing can be added any more, and the next marvo_init() takes a device.
function marvo_feed_close(feed: Tmarvo_feed): Integer; stdcall; external MARVO_DLL name 'marvo_feed_close';

// Opens the recording `file`, whatever its kind: raw, AVI (also of other programs), or DV stream; it may
// still be growing.
function marvo_reader_open(file_: PAnsiChar; reader: Pmarvo_reader): Integer; stdcall; external MARVO_DLL
    name 'marvo_reader_open';

// Says what it is.
function marvo_reader_info(reader: Tmarvo_reader; info: Pmarvo_recording_info): Integer; stdcall; external
    MARVO_DLL name 'marvo_reader_info';

// Looks for frames that were written since.
function marvo_reader_refresh(reader: Tmarvo_reader): Integer; stdcall; external MARVO_DLL name
    'marvo_reader_refresh';

// Copies frame `number` into `buffer`; the rest as for marvo_frame_read().
function marvo_reader_read(reader: Tmarvo_reader; number: UInt64; buffer: Pointer; capacity: Cardinal; info:
    Pmarvo_frame_info): Integer; stdcall; external MARVO_DLL name 'marvo_reader_read';

// Closes it.
function marvo_reader_close(reader: Tmarvo_reader): Integer; stdcall; external MARVO_DLL name
    'marvo_reader_close';

// Creates the recording `file` for frames of `system`. `kind` is one of marvo_kind; by its name it is an
// AVI file when that has ".avi", else a raw recording, as the engine makes them. `flags`: 0 or
// MARVO_REPLACE. Others may read it while it grows.
function marvo_writer_create(file_: PAnsiChar; kind: Integer; system: Integer; flags: Cardinal; writer:
    Pmarvo_writer): Integer; stdcall; external MARVO_DLL name 'marvo_writer_create';

// Appends a whole frame. When it could not be written, the next one takes its place, and all before it
// stay.
function marvo_writer_add(writer: Tmarvo_writer; frame: Pointer; bytes: Cardinal): Integer; stdcall;
    external MARVO_DLL name 'marvo_writer_add';

// Completes the file and closes the handle, whatever comes of it; `frames` (may be null) is what the file
// has.
function marvo_writer_finish(writer: Tmarvo_writer; frames: PUInt64): Integer; stdcall; external MARVO_DLL
    name 'marvo_writer_finish';

// Looks at the whole of the recording `file`, its structure and every frame, and changes nothing. `finding`
// and `work` may be null; `user` is for both. Faults are no failure: the result has their number. `result`
// may be null.
function marvo_verify(file_: PAnsiChar; finding: Tmarvo_finding_fn; work: Tmarvo_work_fn; user: Pointer;
    result_: Pmarvo_verify_result): Integer; stdcall; external MARVO_DLL name 'marvo_verify';

// Copies frames of the recording `from` (which may be growing) into the new file `to`, also as another
// kind. The file appears under its name when it is whole; when anything fails, nothing is left behind.
// `options` null: all frames, the kind by the name, no replacing. `work` and `result` may be null.
function marvo_export(from: PAnsiChar; to_: PAnsiChar; options: Pmarvo_copy_options; work: Tmarvo_work_fn;
    user: Pointer; result_: Pmarvo_copy_result): Integer; stdcall; external MARVO_DLL name 'marvo_export';

// Searches the damaged recording `from` for its frames and writes all that are whole into the new file
// `to`, of the same kind when `to` may be one, else of the kind that its name means. `flags`: 0 or
// MARVO_REPLACE. The rest as for marvo_export().
function marvo_repair(from: PAnsiChar; to_: PAnsiChar; flags: Cardinal; work: Tmarvo_work_fn; user: Pointer;
    result_: Pmarvo_copy_result): Integer; stdcall; external MARVO_DLL name 'marvo_repair';


implementation

procedure MarvoCheck(code: Integer);
var
  failure: EMarvo;
begin
  if code <> MARVO_OK then
  begin
    failure := EMarvo.Create(string(UTF8String(marvo_last_error())));
    failure.Code := code;
    raise failure;
  end;
end;

procedure MarvoClear(out structure; bytes: Cardinal);
begin
  FillChar(structure, bytes, 0);
  Cardinal(structure) := bytes;
end;

end.
