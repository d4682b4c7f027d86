// marvo from C#. Made by scripts/make_bindings.py from marvo_c.h; not to be changed here.
//
// The names are those of marvo_c.h. Text is UTF-8; text that comes out as an IntPtr or in a byte[] is read
// with Native.Text(). A structure is made with its New(), which sets its size. A delegate that was given to
// one of the marvo_set_... functions must be kept referenced as long as it is set.
//
// The DLL is for processes of its own width: PlatformTarget x86 for the 32-bit one. Needs .NET Framework 4.7,
// .NET or Mono.
using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Marvo
{
    /// <summary>A result that is not MARVO_OK, with the library's sentence.</summary>
    public sealed class MarvoException : Exception
    {
        public MarvoException(int code, string text) : base(text) { Code = (marvo_result)code; }

        /// <summary>The result.</summary>
        public marvo_result Code { get; private set; }
    }

    /// <summary>What a function says.</summary>
    public enum marvo_result
    {
        /// <summary>done</summary>
        MARVO_OK = 0,
        /// <summary>a null, a text that is no UTF-8, a value that has no meaning</summary>
        MARVO_E_ARGUMENT = 1,
        /// <summary>no handle of this kind, or not any more</summary>
        MARVO_E_HANDLE = 2,
        /// <summary>out of order: something has to be done before</summary>
        MARVO_E_STATE = 3,
        /// <summary>
        /// a window command on another thread than the engine's, or the window's
        /// </summary>
        MARVO_E_THREAD = 4,
        /// <summary>inside another command on the same thread</summary>
        MARVO_E_BUSY = 5,
        /// <summary>a number, a size or a frame out of range</summary>
        MARVO_E_RANGE = 6,
        /// <summary>no setting, command or device of that name or number</summary>
        MARVO_E_UNKNOWN = 7,
        /// <summary>the buffer is too small; what is needed was told</summary>
        MARVO_E_BUFFER = 8,
        /// <summary>a file cannot be opened, read or written</summary>
        MARVO_E_FILE = 9,
        /// <summary>there is a file of that name, and it is not to be replaced</summary>
        MARVO_E_EXISTS = 10,
        /// <summary>no recording, or no DV frame</summary>
        MARVO_E_FORMAT = 11,
        /// <summary>no such capture device, or it does not work</summary>
        MARVO_E_DEVICE = 12,
        /// <summary>
        /// a part of the system is missing or refuses: decoder, renderer, window
        /// </summary>
        MARVO_E_SYSTEM = 13,
        /// <summary>a callback asked for it</summary>
        MARVO_E_CANCELLED = 14,
        /// <summary>there is not enough memory</summary>
        MARVO_E_MEMORY = 15,
        /// <summary>nothing is waiting</summary>
        MARVO_E_EMPTY = 16,
        /// <summary>the engine refused the command; its log says more</summary>
        MARVO_E_REFUSED = 17,
    }

    /// <summary>What a recording file is.</summary>
    public enum marvo_kind
    {
        /// <summary>as a choice: what the file's name means</summary>
        MARVO_KIND_BY_NAME = 0,
        /// <summary>the engine's own records, one per frame; no player opens them</summary>
        MARVO_KIND_RAW = 1,
        /// <summary>AVI with a DV video stream</summary>
        MARVO_KIND_AVI = 2,
        /// <summary>DV frames one behind the other and nothing else</summary>
        MARVO_KIND_STREAM = 3,
    }

    /// <summary>The two systems of DV.</summary>
    public enum marvo_system
    {
        /// <summary>not known (yet)</summary>
        MARVO_SYSTEM_UNKNOWN = 0,
        /// <summary>625/50 ("PAL"): 144000 bytes, 25 frames a second</summary>
        MARVO_SYSTEM_625 = 1,
        /// <summary>525/60 ("NTSC"): 120000 bytes, 29.97 frames a second</summary>
        MARVO_SYSTEM_525 = 2,
    }

    /// <summary>The type of a setting.</summary>
    public enum marvo_setting_type
    {
        /// <summary>yes or no</summary>
        MARVO_SETTING_FLAG = 1,
        /// <summary>a whole number</summary>
        MARVO_SETTING_NUMBER = 2,
        /// <summary>a text</summary>
        MARVO_SETTING_TEXT = 3,
    }

    /// <summary>What there is to know of a setting.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_setting_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_setting_type</summary>
        public int type;
        /// <summary>of a number</summary>
        public long least;
        /// <summary>see there</summary>
        public long most;
        /// <summary>its name</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 64)]
        public byte[] name;
        /// <summary>what it means, in words</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 192)]
        public byte[] meaning;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_setting_info New()
        {
            return new marvo_setting_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_setting_info)) };
        }
    }

    /// <summary>How the camera is.</summary>
    public enum marvo_camera
    {
        /// <summary>no capture is built</summary>
        MARVO_CAMERA_NONE = 0,
        /// <summary>frames come</summary>
        MARVO_CAMERA_LIVE = 1,
        /// <summary>it is there, but no frame has come for a second</summary>
        MARVO_CAMERA_SILENT = 2,
        /// <summary>it is gone, or has failed</summary>
        MARVO_CAMERA_GONE = 3,
        /// <summary>
        /// it came back with other frames; capture stands still until marvo_init()
        /// </summary>
        MARVO_CAMERA_CHANGED = 4,
    }

    /// <summary>What is built.</summary>
    public enum marvo_built
    {
        /// <summary>nothing</summary>
        MARVO_BUILT_NOTHING = 0,
        /// <summary>capture and play</summary>
        MARVO_BUILT_ALL = 1,
        /// <summary>play alone, by marvo_play_init()</summary>
        MARVO_BUILT_PLAY = 2,
    }

    /// <summary>What disturbs the picture: bits of `picture_faults`.</summary>
    public enum marvo_fault
    {
        /// <summary>
        /// for a second the clock has given no tick; the picture goes on, eight a second
        /// </summary>
        MARVO_FAULT_NO_TICKS = 1,
        /// <summary>for a second decoder or renderer have refused every frame</summary>
        MARVO_FAULT_REFUSED = 2,
        /// <summary>decoder or renderer have not returned from a frame for a second</summary>
        MARVO_FAULT_HELD_UP = 4,
        /// <summary>the play graph cannot go on; marvo_show() makes it anew</summary>
        MARVO_FAULT_NO_GRAPH = 8,
    }

    /// <summary>
    /// The whole state of the engine. Filled consistently: all of it belongs to one moment between two
    /// commands, unless `busy`.
    /// </summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_status_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_built</summary>
        public int built;
        /// <summary>a command is being carried out at this moment</summary>
        public int busy;
        /// <summary>marvo_camera</summary>
        public int camera;
        /// <summary>for how long it has been so</summary>
        public uint camera_since_ms;
        /// <summary>how often the device was lost since marvo_init()</summary>
        public uint camera_lost;
        /// <summary>marvo_system of the captured frames</summary>
        public int system;
        /// <summary>bytes of one captured frame; 0 before marvo_init()</summary>
        public uint frame_bytes;
        /// <summary>25 or 30</summary>
        public uint frames_per_second;
        /// <summary>frames that the ring has room for; 0 without a ring</summary>
        public uint ring_frames;
        /// <summary>the number that the next captured frame gets: one past the newest</summary>
        public ulong next_frame;
        /// <summary>the oldest frame in the ring; as next_frame when it is empty</summary>
        public ulong oldest_frame;
        /// <summary>frames that came from camera or feed since the loading, modulo 2^32</summary>
        public ulong arrived;
        /// <summary>a recording is on</summary>
        public int recording;
        /// <summary>its newest write failed</summary>
        public int failing;
        /// <summary>its writer is so far behind that frames are lost</summary>
        public int behind;
        /// <summary>it has ended, and its file is whole</summary>
        public int complete;
        /// <summary>frames captured while it was on</summary>
        public ulong taken;
        /// <summary>of them, those in the file: safe</summary>
        public ulong written;
        /// <summary>those that the writer has still to come to</summary>
        public ulong waiting;
        /// <summary>those that the ring went over, or that were given up</summary>
        public ulong lost;
        /// <summary>those that could not be written</summary>
        public ulong failed;
        /// <summary>those that the setting "dv.maxfilesize" keeps out</summary>
        public ulong beyond_limit;
        /// <summary>
        /// frames that the drive has room for; MARVO_UNKNOWN when it does not tell
        /// </summary>
        public ulong drive_frames;
        /// <summary>the system's number of what failed first; 0: nothing</summary>
        public uint first_error;
        /// <summary>marvo_fault bits</summary>
        public uint picture_faults;
        /// <summary>a replay is on; otherwise play is live</summary>
        public int replaying;
        /// <summary>the shown frame is held</summary>
        public int paused;
        /// <summary>frames per tick</summary>
        public double speed;
        /// <summary>the frame being shown; MARVO_NO_FRAME before the first</summary>
        public ulong shown_frame;
        /// <summary>first frame of the replay; MARVO_NO_FRAME without one</summary>
        public ulong replay_from;
        /// <summary>last frame of the replay, included</summary>
        public ulong replay_to;
        /// <summary>
        /// the first frame of the replay that cannot be read; MARVO_NO_FRAME: none
        /// </summary>
        public ulong unreadable_from;
        /// <summary>how many</summary>
        public ulong unreadable_frames;
        /// <summary>the system's number for why</summary>
        public uint unreadable_error;
        /// <summary>
        /// the shown frame's time, at 40 or 33 ms a frame, less the markers' clock
        /// </summary>
        public int time_ms;
        /// <summary>the shown frame's time, exactly</summary>
        public int raw_time_ms;
        /// <summary>events in the queue of marvo_event_next()</summary>
        public uint events_waiting;
        /// <summary>events that nobody took from it in time, in all</summary>
        public ulong events_lost;
        /// <summary>`first_error` in words; empty for nothing</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 192)]
        public byte[] first_error_text;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_status_info New()
        {
            return new marvo_status_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_status_info)) };
        }
    }

    /// <summary>Where play is.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_play_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>a replay is on</summary>
        public int replaying;
        /// <summary>a recording is on</summary>
        public int recording;
        /// <summary>the shown frame is held</summary>
        public int paused;
        /// <summary>the frame being shown; MARVO_NO_FRAME before the first</summary>
        public ulong frame;
        /// <summary>first frame of the replay; MARVO_NO_FRAME without one</summary>
        public ulong @from;
        /// <summary>last frame of the replay, included</summary>
        public ulong to;
        /// <summary>one past the newest captured frame; 0 without capture</summary>
        public ulong next_frame;
        /// <summary>frames per tick</summary>
        public double speed;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_play_info New()
        {
            return new marvo_play_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_play_info)) };
        }
    }

    /// <summary>
    /// What has happened. What `frame`, `count` and `code` mean is said at each; otherwise they are 0.
    /// </summary>
    public enum marvo_event_kind
    {
        /// <summary>the device is gone or has failed; frame: the newest</summary>
        MARVO_EVENT_CAMERA_LOST = 1,
        /// <summary>no frame for a second; frame: the newest</summary>
        MARVO_EVENT_CAMERA_SILENT = 2,
        /// <summary>frames come again; frame: the first, count: the gap in ms</summary>
        MARVO_EVENT_CAMERA_BACK = 3,
        /// <summary>
        /// back with another format; count: bytes of its frames. The recording is completed; call
        /// marvo_init()
        /// </summary>
        MARVO_EVENT_CAMERA_CHANGED = 4,
        /// <summary>a recording has begun</summary>
        MARVO_EVENT_RECORD_STARTED = 10,
        /// <summary>it has ended; count: frames in the file</summary>
        MARVO_EVENT_RECORD_ENDED = 11,
        /// <summary>
        /// frames cannot be written; frame: the first, count: so far, code: the system's
        /// </summary>
        MARVO_EVENT_WRITE_FAILED = 12,
        /// <summary>frames are in the file again; count: what it has cost</summary>
        MARVO_EVENT_WRITE_RECOVERED = 13,
        /// <summary>the writer is a whole ring behind, frames are lost; as WRITE_FAILED</summary>
        MARVO_EVENT_RING_OVERRUN = 14,
        /// <summary>it is not any more; count: what it has cost</summary>
        MARVO_EVENT_CAUGHT_UP = 15,
        /// <summary>the file could not be completed at its end; code: the system's</summary>
        MARVO_EVENT_INCOMPLETE = 16,
        /// <summary>a replay has begun; frame: first, count: frames of the range</summary>
        MARVO_EVENT_REPLAY_STARTED = 20,
        /// <summary>play is live again, or nothing is built</summary>
        MARVO_EVENT_REPLAY_ENDED = 21,
        /// <summary>
        /// frames of the replay cannot be read; frame: the first, count, code: the system's
        /// </summary>
        MARVO_EVENT_UNREADABLE = 22,
        /// <summary>all can be read again</summary>
        MARVO_EVENT_READABLE = 23,
        /// <summary>the picture is disturbed; code: the marvo_fault</summary>
        MARVO_EVENT_PICTURE_FAULT = 30,
        /// <summary>that one is over</summary>
        MARVO_EVENT_PICTURE_WELL = 31,
        /// <summary>an event of the play graph; code: its EC_ number</summary>
        MARVO_EVENT_GRAPH = 32,
    }

    /// <summary>One event.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_event
    {
        /// <summary>
        /// bytes of this structure, set by the caller; in a callback by the library
        /// </summary>
        public uint size;
        /// <summary>marvo_event_kind</summary>
        public int kind;
        /// <summary>counts all events from 1: a number left out was lost</summary>
        public ulong serial;
        /// <summary>when, as a FILETIME: UTC, in 100 ns since 1601</summary>
        public ulong time_100ns;
        /// <summary>see marvo_event_kind</summary>
        public ulong frame;
        /// <summary>see there</summary>
        public ulong count;
        /// <summary>see there</summary>
        public uint code;
        /// <summary>events lost in front of this one</summary>
        public uint lost;
        /// <summary>the same in words</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 192)]
        public byte[] text;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_event New()
        {
            return new marvo_event
            { size = (uint)Marshal.SizeOf(typeof(marvo_event)) };
        }
    }

    /// <summary>
    /// Called with each event, on the library's callback thread; see above. `event` is valid during the
    /// call.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    public delegate void marvo_event_fn(IntPtr user, ref marvo_event @event);

    /// <summary>
    /// Called with each line of the log as the file has it, without its line end, on the library's callback
    /// thread. `line` is valid during the call.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    public delegate void marvo_log_fn(IntPtr user, [MarshalAs(UnmanagedType.LPUTF8Str)] string line);

    /// <summary>
    /// Called once per tick of play with where it is, on the library's callback thread; a call that is late
    /// tells the newest and stands for those that were left out. `play` is valid during the call.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    public delegate void marvo_play_fn(IntPtr user, ref marvo_play_info play);

    /// <summary>Where a frame came from.</summary>
    public enum marvo_source
    {
        /// <summary>from the caller</summary>
        MARVO_SOURCE_MEMORY = 0,
        /// <summary>from the ring of the newest frames</summary>
        MARVO_SOURCE_RING = 1,
        /// <summary>from a file</summary>
        MARVO_SOURCE_FILE = 2,
    }

    /// <summary>What a frame is, and what the camera noted in it.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_frame_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>bytes of the frame</summary>
        public uint bytes;
        /// <summary>its number; MARVO_NO_FRAME for a frame of the caller's</summary>
        public ulong number;
        /// <summary>marvo_source</summary>
        public int source;
        /// <summary>marvo_system</summary>
        public int system;
        /// <summary>whether it has a time code; the next five are 0 otherwise</summary>
        public int time_code_known;
        /// <summary>0 to 23</summary>
        public uint time_code_hours;
        /// <summary>0 to 59</summary>
        public uint time_code_minutes;
        /// <summary>0 to 59</summary>
        public uint time_code_seconds;
        /// <summary>0 to 24 or 29</summary>
        public uint time_code_frames;
        /// <summary>numbers 0 and 1 are left out in every minute but each tenth</summary>
        public int drop_frame;
        /// <summary>
        /// whether the date of recording is known; the next three are 0 otherwise
        /// </summary>
        public int date_known;
        /// <summary>four digits</summary>
        public uint year;
        /// <summary>1 to 12</summary>
        public uint month;
        /// <summary>1 to 31</summary>
        public uint day;
        /// <summary>
        /// whether the time of recording is known; the next three are 0 otherwise
        /// </summary>
        public int time_known;
        /// <summary>0 to 23</summary>
        public uint hour;
        /// <summary>0 to 59</summary>
        public uint minute;
        /// <summary>0 to 59</summary>
        public uint second;
        /// <summary>
        /// whether the frame says how it is to be shown; otherwise 4:3 is a guess
        /// </summary>
        public int aspect_known;
        /// <summary>4 or 16</summary>
        public uint aspect_width;
        /// <summary>3 or 9</summary>
        public uint aspect_height;
        /// <summary>whether it says the order of its fields</summary>
        public int fields_known;
        /// <summary>its fields were taken at different times</summary>
        public int interlaced;
        /// <summary>the field with the topmost line is the earlier one</summary>
        public int upper_field_first;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_frame_info New()
        {
            return new marvo_frame_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_frame_info)) };
        }
    }

    /// <summary>The sound of a frame.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_sound_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>samples per second of each channel; 0: no sound</summary>
        public uint rate;
        /// <summary>1, 2, 4 or 8</summary>
        public uint channels;
        /// <summary>bits of a sample in the frame, 16 or 12</summary>
        public uint bits;
        /// <summary>samples of each channel in this frame</summary>
        public uint samples;
        /// <summary>samples that were lost and have been replaced</summary>
        public uint concealed;
        /// <summary>the camera locked the sound to the picture</summary>
        public int locked;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_sound_info New()
        {
            return new marvo_sound_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_sound_info)) };
        }
    }

    /// <summary>A picture.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_picture_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>pixels of a line</summary>
        public uint width;
        /// <summary>lines</summary>
        public uint height;
        /// <summary>bytes from line to line: width * 4</summary>
        public uint stride;
        /// <summary>bytes of all pixels: what the buffer needs</summary>
        public uint bytes;
        /// <summary>the sides of the picture as it is to be shown: 4 or 16</summary>
        public uint aspect_width;
        /// <summary>3 or 9</summary>
        public uint aspect_height;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_picture_info New()
        {
            return new marvo_picture_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_picture_info)) };
        }
    }

    /// <summary>In which way a recording ended.</summary>
    public enum marvo_end
    {
        /// <summary>whole</summary>
        MARVO_END_FINISHED = 0,
        /// <summary>its writer has it open at this moment</summary>
        MARVO_END_BEING_WRITTEN = 1,
        /// <summary>something is missing at its end; see marvo_repair()</summary>
        MARVO_END_CUT_OFF = 2,
    }

    /// <summary>What a recording is.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_recording_info
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_kind</summary>
        public int kind;
        /// <summary>whole frames, as of the opening or the last refresh</summary>
        public ulong frames;
        /// <summary>bytes of the file</summary>
        public ulong file_bytes;
        /// <summary>time per frame in 100 ns</summary>
        public long frame_duration_100ns;
        /// <summary>of all frames</summary>
        public long duration_100ns;
        /// <summary>25 or 29.97</summary>
        public double frames_per_second;
        /// <summary>bytes of one frame, as of the first; 0 while there is none</summary>
        public uint frame_bytes;
        /// <summary>marvo_system</summary>
        public int system;
        /// <summary>marvo_end</summary>
        public int end;
        /// <summary>0</summary>
        public uint reserved;
        /// <summary>`end` in words; empty when finished</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 192)]
        public byte[] end_text;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_recording_info New()
        {
            return new marvo_recording_info
            { size = (uint)Marshal.SizeOf(typeof(marvo_recording_info)) };
        }
    }

    /// <summary>Flags of functions that make files.</summary>
    public enum marvo_flags
    {
        /// <summary>
        /// a file of that name is replaced; otherwise it is left alone, and MARVO_E_EXISTS
        /// </summary>
        MARVO_REPLACE = 1,
        /// <summary>
        /// an AVI file gets no sound stream; the sound inside of the frames stays
        /// </summary>
        MARVO_NO_SOUND = 2,
    }

    /// <summary>
    /// Told how much of how much is done. Not 0 ends the work with MARVO_E_CANCELLED.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    public delegate int marvo_work_fn(IntPtr user, ulong done, ulong all);

    /// <summary>
    /// Told of one thing that is wrong: where, in bytes from the start of the file, and what. Not 0 ends
    /// the work with MARVO_E_CANCELLED.
    /// </summary>
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    public delegate int marvo_finding_fn(IntPtr user, ulong offset, [MarshalAs(UnmanagedType.LPUTF8Str)]
        string text);

    /// <summary>What a verification found.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_verify_result
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_kind</summary>
        public int kind;
        /// <summary>whole frames</summary>
        public ulong frames;
        /// <summary>
        /// faults in all, of which the first 1000 are told; 0: a sound recording
        /// </summary>
        public ulong faults;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_verify_result New()
        {
            return new marvo_verify_result
            { size = (uint)Marshal.SizeOf(typeof(marvo_verify_result)) };
        }
    }

    /// <summary>How to copy.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_copy_options
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_flags</summary>
        public uint flags;
        /// <summary>
        /// marvo_kind of the new file; by name ".dv" is a DV stream, ".avi" an AVI file
        /// </summary>
        public int kind;
        /// <summary>0</summary>
        public uint reserved;
        /// <summary>first frame</summary>
        public ulong first;
        /// <summary>last frame, included; MARVO_TO_THE_END for all from `first` on</summary>
        public ulong last;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_copy_options New()
        {
            return new marvo_copy_options
            { size = (uint)Marshal.SizeOf(typeof(marvo_copy_options)) };
        }
    }

    /// <summary>What came of it.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct marvo_copy_result
    {
        /// <summary>bytes of this structure, set by the caller</summary>
        public uint size;
        /// <summary>marvo_kind of the new file</summary>
        public int kind;
        /// <summary>frames in it</summary>
        public ulong frames;
        /// <summary>bytes of it</summary>
        public ulong bytes;
        /// <summary>samples per second of its sound stream; 0 without one</summary>
        public uint sound_rate;
        /// <summary>channels of it</summary>
        public uint sound_channels;
        /// <summary>repair: frames that were in the old file and could not be saved</summary>
        public ulong lost;
        /// <summary>repair: those of them that begin as frames do and are not whole</summary>
        public ulong damaged;
        /// <summary>repair: `lost` is exact; otherwise at least so many</summary>
        public int exact;
        /// <summary>repair: places where frames are missing</summary>
        public uint holes;
        /// <summary>what somebody might miss in the new file, in words; mostly empty</summary>
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 192)]
        public byte[] note;

        /// <summary>One with its size set, the rest 0.</summary>
        public static marvo_copy_result New()
        {
            return new marvo_copy_result
            { size = (uint)Marshal.SizeOf(typeof(marvo_copy_result)) };
        }
    }

    /// <summary>The functions of marvo.dll.</summary>
    public static class Native
    {
        private const string Dll = "marvo.dll";

        /// <summary>Throws a MarvoException for a result that is not MARVO_OK.</summary>
        public static void Check(int result)
        {
            if (result != 0)
            {
                throw new MarvoException(result, Text(marvo_last_error()));
            }
        }

        /// <summary>The text at an address.</summary>
        public static string Text(IntPtr address)
        {
            if (address == IntPtr.Zero)
            {
                return null;
            }
            int length = 0;
            while (Marshal.ReadByte(address, length) != 0)
            {
                ++length;
            }
            byte[] bytes = new byte[length];
            Marshal.Copy(address, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        /// <summary>The text in a buffer or a structure, up to its zero.</summary>
        public static string Text(byte[] buffer)
        {
            int length = Array.IndexOf(buffer, (byte)0);
            return Encoding.UTF8.GetString(buffer, 0, length < 0 ? buffer.Length : length);
        }

        /// <summary>No frame.</summary>
        public const ulong MARVO_NO_FRAME = 18446744073709551615;

        /// <summary>As the last frame of a range: up to the end.</summary>
        public const ulong MARVO_TO_THE_END = 18446744073709551615;

        /// <summary>A number that is not known.</summary>
        public const ulong MARVO_UNKNOWN = 18446744073709551615;

        /// <summary>No frame of any recording has more bytes.</summary>
        public const int MARVO_MOST_FRAME_BYTES = 576000;

        /// <summary>The library's version: major * 65536 + minor * 256 + patch.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern uint marvo_version();

        /// <summary>
        /// The same as text, "1.2.3". Owned by the library, valid as long as it is loaded.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern IntPtr marvo_version_text();

        /// <summary>
        /// Why the last function that failed on this thread failed, as one sentence that names what it is
        /// about (the file, the setting) and the system's reason; empty before the first. Owned by the
        /// library, valid until the next call on this thread. A call that succeeds leaves it as it is.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern IntPtr marvo_last_error();

        /// <summary>
        /// A result's name ("MARVO_E_FILE"), or "unknown". Owned by the library.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern IntPtr marvo_result_name(int result);

        /// <summary>
        /// Builds the engine on the capture device of the setting "dv.input" (or on the open feed, see
        /// marvo_feed_open()), runs it and shows the live picture in `window` (a HWND; null: hidden until
        /// marvo_show()). Waits up to 5 s for the first frames of a device; none is no failure. When it is
        /// built already, as marvo_show(). A window command. Result: MARVO_E_DEVICE without such a device,
        /// MARVO_E_SYSTEM when decoder, renderer or graph cannot be had.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_init(IntPtr window);

        /// <summary>
        /// Builds the engine without a capture device, to replay the frames `from` to `to` of the recording
        /// `file` in `window`; what was built before is taken apart. A window command.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_play_init(IntPtr window, ulong @from, ulong to,
            [MarshalAs(UnmanagedType.LPUTF8Str)] string file);

        /// <summary>
        /// Ends recording and replay and takes the engine apart. Nothing built is no failure. A window
        /// command.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_done();

        /// <summary>
        /// Fits the picture into `window` and shows it there; null hides it. Builds the engine when it is
        /// not built, and makes a picture that has failed anew. A window command.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_show(IntPtr window);

        /// <summary>Takes the picture out of its window and hides it. A window command.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_hide();

        /// <summary>Sets the picture's size in pixels. A window command.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_video_size(int width, int height);

        /// <summary>
        /// Sets the picture's position in its window in pixels. A window command.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_video_pos(int x, int y);

        /// <summary>
        /// The host is destroying the window that the picture is in (to be called at WM_DESTROY). A window
        /// command.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_window_destroyed();

        /// <summary>The number of capture devices.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_device_count(out uint count);

        /// <summary>The name of capture device `number`, counted from 0, into `buffer`.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_device_name(uint number, [In, Out] byte[] buffer, uint capacity, out
            uint needed);

        /// <summary>
        /// Records what is captured from now on into `file` (null or empty: the setting "engine.recfile"),
        /// in place of a file of that name. A name with ".avi" makes an AVI file, any other a raw
        /// recording. Frames are numbered from 0 again, play goes live, and all elements are unset.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_record_start([MarshalAs(UnmanagedType.LPUTF8Str)] string file);

        /// <summary>
        /// Ends the recording and completes its file; waits up to 5 s. None running is no failure.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_record_stop();

        /// <summary>Has the system write what it holds of the recording.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_record_flush();

        /// <summary>Back to the newest frame, at speed 1, not held.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_live();

        /// <summary>
        /// Plays frames `from` to `to` (both included, in either order) at speed 1, again and again, from
        /// `file`, or (null or empty) from the setting "engine.playfile". A range that reaches beyond the
        /// recording is cut to it. The replay goes on until marvo_live() or another one.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_replay(ulong @from, ulong to, [MarshalAs(UnmanagedType.LPUTF8Str)]
            string file);

        /// <summary>Holds the shown frame.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_pause();

        /// <summary>Lets it go on.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_resume();

        /// <summary>
        /// Frames per tick: fractions slow down, negative values play backward, 0 holds. MARVO_E_RANGE for
        /// what is no number.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_speed(double factor);

        /// <summary>
        /// Shows `frame` next; in a replay it is wrapped into the range, and played from there.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_seek(ulong frame);

        /// <summary>
        /// Holds the picture and moves it by `frames` (negative: back), in a replay around its ends, else
        /// not before frame 0. MARVO_E_STATE before the first picture.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_step(long frames);

        /// <summary>
        /// Sets both points of element `number` (0 to 127) of the recording; MARVO_NO_FRAME leaves or makes
        /// a point unset. Element 0 can be set, but not played.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_element_set(uint number, ulong @in, ulong @out);

        /// <summary>
        /// The points of element `number`; MARVO_NO_FRAME for one that is unset.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_element_get(uint number, out ulong @in, out ulong @out);

        /// <summary>
        /// Replays element `number` (1 to 127) from the setting "engine.playfile". MARVO_E_STATE unless
        /// both points are set.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_element_play(uint number);

        /// <summary>
        /// Takes a marker of a timing or control source: "XInnFRAME" and "XOnnFRAME" set the in and out
        /// point of element nn, "XR" starts the clock and the first "Z+" after it stops it; anything else
        /// is only logged, and everything while the setting "dv.control" is off.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_marker([MarshalAs(UnmanagedType.LPUTF8Str)] string text);

        /// <summary>
        /// Carries out a command given as a line of text: one word, then its arguments, separated by
        /// blanks, those with blanks in double quotes: `live`, `pause`, `resume`, `replay FROM TO [FILE]`,
        /// `record [FILE]`, `stop`, `flush`, `speed FACTOR`, `seek FRAME`, `step FRAMES`, `element NUMBER`,
        /// `mark NUMBER IN OUT`, `marker TEXT`, `set NAME VALUE`, `log TEXT`. Each is what the function of
        /// that name does. MARVO_E_UNKNOWN for another word, MARVO_E_ARGUMENT for wrong arguments.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_command([MarshalAs(UnmanagedType.LPUTF8Str)] string line);

        /// <summary>Writes `text` as a line into the engine's log.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_log([MarshalAs(UnmanagedType.LPUTF8Str)] string text);

        /// <summary>The number of settings.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_count(out uint count);

        /// <summary>Describes the setting `number`, counted from 0.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_describe(uint number, ref marvo_setting_info info);

        /// <summary>The value of a flag or number.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_get_number([MarshalAs(UnmanagedType.LPUTF8Str)] string name,
            out long value);

        /// <summary>
        /// Sets a flag (0 or 1) or a number. MARVO_E_RANGE outside of its range.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_set_number([MarshalAs(UnmanagedType.LPUTF8Str)] string name,
            long value);

        /// <summary>The value of any setting as text; a flag is "yes" or "no".</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_get_text([MarshalAs(UnmanagedType.LPUTF8Str)] string name,
            [In, Out] byte[] buffer, uint capacity, out uint needed);

        /// <summary>
        /// Sets any setting from text, a flag or a number from what marvo_setting_get_text() gives.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_setting_set_text([MarshalAs(UnmanagedType.LPUTF8Str)] string name,
            [MarshalAs(UnmanagedType.LPUTF8Str)] string value);

        /// <summary>The state of the engine. Waits for no command and no disk.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_status(ref marvo_status_info status);

        /// <summary>Where play is, in one consistent look; cheaper than marvo_status().</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_play(ref marvo_play_info play);

        /// <summary>
        /// The full path of the recording whose numbers the frames have: the one started last since
        /// marvo_init(). Empty when there was none.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_record_file([In, Out] byte[] buffer, uint capacity, out uint needed);

        /// <summary>Sets what is called with each event from now on; null: nothing.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_event_callback(marvo_event_fn callback, IntPtr user);

        /// <summary>
        /// Takes the next event from the queue, which holds the last 512, whether a callback is set or not.
        /// Waits up to `timeout_ms` for one (0: not at all). MARVO_E_EMPTY when there is none.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_event_next(ref marvo_event @event, uint timeout_ms);

        /// <summary>
        /// Sets what is called with each line of the log from now on; null: nothing. Lines that a slow
        /// callback does not take are left out, which a line says.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_log_callback(marvo_log_fn callback, IntPtr user);

        /// <summary>Sets what is called once per tick of play; null: nothing.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_play_callback(marvo_play_fn callback, IntPtr user);

        /// <summary>
        /// Posts the window message `message` to `window` (a HWND of any thread's) once per tick of play,
        /// with the low 32 bits of the frame's number as its first parameter; the second has no meaning.
        /// Ask marvo_play() for the rest. A null window ends it.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_set_play_message(IntPtr window, uint message);

        /// <summary>
        /// Copies frame `number` of the running recording into `buffer`, which has room for `capacity`
        /// bytes: from the ring when that still holds it, else from the recording's file. Without a
        /// recording since marvo_init(), the numbers are those of the ring alone. `info` may be null. With
        /// a null `buffer` and a `capacity` of 0 nothing is copied, and `info` is filled. MARVO_E_RANGE
        /// when there is no such frame (yet, or any more), MARVO_E_BUFFER when it does not fit; `info` then
        /// tells its bytes.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_frame_read(ulong number, [In, Out] byte[] buffer, uint capacity, ref
            marvo_frame_info info);

        /// <summary>
        /// Says what the `bytes` bytes at `frame` are; the first 480 suffice for most. MARVO_E_FORMAT when
        /// no DV frame begins there.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_frame_describe([In] byte[] frame, uint bytes, ref marvo_frame_info
            info);

        /// <summary>
        /// Gives the sound of a whole frame: 16-bit samples, one of each channel, then the next of each.
        /// `samples` has room for `capacity` samples of all channels together (1944 a channel are enough).
        /// With null and 0 only `info` is filled. A frame without sound is no failure.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_frame_sound([In] byte[] frame, uint bytes, [In, Out] short[] samples,
            uint capacity, ref marvo_sound_info info);

        /// <summary>Makes a decoder. The system's is looked for with the first frame.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_decoder_open(out IntPtr decoder);

        /// <summary>
        /// Makes a picture of a whole frame: 4 bytes for each pixel (blue, green, red, 255), the top line
        /// first. `pixels` has room for `capacity` bytes (720 * 576 * 4 are enough); with null and 0 only
        /// `info` is filled, and MARVO_E_BUFFER when it does not fit. MARVO_E_SYSTEM when there is no
        /// decoder or it gives no picture.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_decoder_decode(IntPtr decoder, [In] byte[] frame, uint bytes, [In,
            Out] byte[] pixels, uint capacity, ref marvo_picture_info info);

        /// <summary>Gives the decoder back.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_decoder_close(IntPtr decoder);

        /// <summary>
        /// Opens the feed: the next marvo_init() captures its frames instead of a device's. There is one at
        /// most (MARVO_E_STATE); `system` is one of marvo_system.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_feed_open(int system, out IntPtr feed);

        /// <summary>
        /// Hands a whole frame over as if a camera had sent it at this moment: it gets the next number, is
        /// shown, recorded and can be replayed. From any thread, at the pace of the frames (live play
        /// follows what comes; a second without a frame counts as a silent camera). MARVO_E_STATE while the
        /// engine does not run on this feed, MARVO_E_FORMAT for what is no frame of the feed's system.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_feed_add(IntPtr feed, [In] byte[] frame, uint bytes);

        /// <summary>
        /// Closes the feed: nothing can be added any more, and the next marvo_init() takes a device.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_feed_close(IntPtr feed);

        /// <summary>
        /// Opens the recording `file`, whatever its kind: raw, AVI (also of other programs), or DV stream;
        /// it may still be growing.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_reader_open([MarshalAs(UnmanagedType.LPUTF8Str)] string file, out
            IntPtr reader);

        /// <summary>Says what it is.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_reader_info(IntPtr reader, ref marvo_recording_info info);

        /// <summary>Looks for frames that were written since.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_reader_refresh(IntPtr reader);

        /// <summary>
        /// Copies frame `number` into `buffer`; the rest as for marvo_frame_read().
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_reader_read(IntPtr reader, ulong number, [In, Out] byte[] buffer,
            uint capacity, ref marvo_frame_info info);

        /// <summary>Closes it.</summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_reader_close(IntPtr reader);

        /// <summary>
        /// Creates the recording `file` for frames of `system`. `kind` is one of marvo_kind; by its name it
        /// is an AVI file when that has ".avi", else a raw recording, as the engine makes them. `flags`: 0
        /// or MARVO_REPLACE. Others may read it while it grows.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_writer_create([MarshalAs(UnmanagedType.LPUTF8Str)] string file, int
            kind, int system, uint flags, out IntPtr writer);

        /// <summary>
        /// Appends a whole frame. When it could not be written, the next one takes its place, and all
        /// before it stay.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_writer_add(IntPtr writer, [In] byte[] frame, uint bytes);

        /// <summary>
        /// Completes the file and closes the handle, whatever comes of it; `frames` (may be null) is what
        /// the file has.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_writer_finish(IntPtr writer, out ulong frames);

        /// <summary>
        /// Looks at the whole of the recording `file`, its structure and every frame, and changes nothing.
        /// `finding` and `work` may be null; `user` is for both. Faults are no failure: the result has
        /// their number. `result` may be null.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_verify([MarshalAs(UnmanagedType.LPUTF8Str)] string file,
            marvo_finding_fn finding, marvo_work_fn work, IntPtr user, ref marvo_verify_result result);

        /// <summary>
        /// Copies frames of the recording `from` (which may be growing) into the new file `to`, also as
        /// another kind. The file appears under its name when it is whole; when anything fails, nothing is
        /// left behind. `options` null: all frames, the kind by the name, no replacing. `work` and `result`
        /// may be null.
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_export([MarshalAs(UnmanagedType.LPUTF8Str)] string @from,
            [MarshalAs(UnmanagedType.LPUTF8Str)] string to, ref marvo_copy_options options, marvo_work_fn
            work, IntPtr user, ref marvo_copy_result result);

        /// <summary>
        /// Searches the damaged recording `from` for its frames and writes all that are whole into the new
        /// file `to`, of the same kind when `to` may be one, else of the kind that its name means. `flags`:
        /// 0 or MARVO_REPLACE. The rest as for marvo_export().
        /// </summary>
        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]
        public static extern int marvo_repair([MarshalAs(UnmanagedType.LPUTF8Str)] string @from,
            [MarshalAs(UnmanagedType.LPUTF8Str)] string to, uint flags, marvo_work_fn work, IntPtr user, ref
            marvo_copy_result result);
    }
}
