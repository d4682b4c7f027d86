// Says what a recording is, and whether it is whole; makes an AVI file of it, too, when that is named.
//
// mcs -platform:x86 Report.cs ../../bindings/csharp/Marvo.cs, and marvo.dll beside the program
// Report.exe RECORDING [NEW.avi]
using System;
using System.Globalization;
using Marvo;

static class Report
{
    static string TimeCode(marvo_frame_info info)
    {
        return info.time_code_known == 0 ? "no time code" : string.Format("{0:00}:{1:00}:{2:00}:{3:00}",
            info.time_code_hours, info.time_code_minutes, info.time_code_seconds, info.time_code_frames);
    }

    static void Frames(string recording)
    {
        IntPtr reader;
        Native.Check(Native.marvo_reader_open(recording, out reader));
        try
        {
            marvo_recording_info info = marvo_recording_info.New();
            Native.Check(Native.marvo_reader_info(reader, ref info));
            Console.WriteLine(string.Format(CultureInfo.InvariantCulture, "{0}: {1} frames, {2:0.00} s",
                recording, info.frames, info.duration_100ns / 1e7));
            for (ulong number = 0; number < info.frames; number += Math.Max(1, info.frames - 1))
            {
                byte[] frame = new byte[info.frame_bytes];
                marvo_frame_info found = marvo_frame_info.New();
                uint room = (uint)frame.Length;
                Native.Check(Native.marvo_reader_read(reader, number, frame, room, ref found));
                int sum = 0;
                for (int i = 0; i < 80; ++i)
                {
                    sum += frame[i];
                }
                Console.WriteLine("frame {0}: {1}, {2} bytes, {3}", number, TimeCode(found), found.bytes,
                    sum);
            }
        }
        finally
        {
            Native.marvo_reader_close(reader);
        }
    }

    static int Tell(IntPtr user, ulong offset, string text)
    {
        Console.WriteLine("at byte {0}: {1}", offset, text);
        return 0;
    }

    static int Main(string[] words)
    {
        try
        {
            Console.WriteLine("marvo " + Native.Text(Native.marvo_version_text()));
            Frames(words[0]);
            marvo_verify_result verified = marvo_verify_result.New();
            Native.Check(Native.marvo_verify(words[0], Tell, null, IntPtr.Zero, ref verified));
            Console.WriteLine("{0} faults", verified.faults);
            if (words.Length > 1)
            {
                marvo_copy_options options = marvo_copy_options.New();
                options.last = Native.MARVO_TO_THE_END;
                options.flags = (uint)marvo_flags.MARVO_REPLACE;
                marvo_copy_result made = marvo_copy_result.New();
                Native.Check(Native.marvo_export(words[0], words[1], ref options, null, IntPtr.Zero,
                    ref made));
                Console.WriteLine("{0}: {1} frames", words[1], made.frames);
            }
            return 0;
        }
        catch (MarvoException failure)
        {
            Console.Error.WriteLine("result {0}: {1}", (int)failure.Code, failure.Message);
            return 1;
        }
    }
}
