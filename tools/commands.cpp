#include "tools/commands.h"

#include "tools/text.h"

namespace dvrec {

namespace {

const char* optionHelp(const std::string& option) {
    if (option == "from") {
        return "--from N     first frame of the range (default: 0)";
    }
    if (option == "to") {
        return "--to N       last frame of the range, which belongs to it (default: the last)";
    }
    if (option == "frame") {
        return "--frame N    the frame's number; the first is 0";
    }
    if (option == "sector") {
        return "--sector N   bytes per sector of the disk on which a raw recording was made (default: seen\n"
               "               from the recording)";
    }
    if (option == "json") {
        return "--json       the result as JSON on the standard output";
    }
    if (option == "progress") {
        return "--progress   lines of progress also where the error output is no terminal";
    }
    if (option == "no-sound") {
        return "--no-sound   an AVI file without a sound stream";
    }
    return "--force      replace OUT if it exists";
}

} // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {"info",
         "FILE",
         1,
         "what a recording is: system, length, time codes, structure",
         "Shows the kind of the recording (raw, AVI, plain DV stream), its video system, frames and "
         "duration, the\n"
         "camera's time code with its gaps, the date and time of recording, the file's structure, and "
         "whether the\n"
         "file was finished. Only the start of each frame is read.\n",
         {"sector", "json", "progress"},
         showInfo},
        {"verify",
         "FILE",
         1,
         "checks every frame and structure",
         "Reads the whole recording and lists what is wrong with it, with offsets in bytes. Exit status 1 "
         "when\n"
         "there is a fault.\n",
         {"sector", "json", "progress"},
         verify},
        {"export",
         "FILE OUT",
         2,
         "writes a range of frames as a standard file",
         "OUT ends with .dv for a plain DV stream, or with .avi for an AVI file; other programs open both. "
         "(A raw\n"
         "recording, which only this engine reads, may be called .dv too: 'dvrec info' tells which is "
         "which.)\n"
         "An AVI file gets the sound as a stream of its own.\n",
         {"from", "to", "no-sound", "sector", "force", "json", "progress"},
         exportRange},
        {"convert",
         "FILE OUT",
         2,
         "raw recording to AVI, and back",
         "Writes all frames as an AVI file when OUT holds .avi, else as a raw recording for the disk on "
         "which\n"
         "OUT lies. FILE is of any kind. An AVI file gets the sound as a stream of its own.\n",
         {"no-sound", "sector", "force", "json", "progress"},
         convert},
        {"repair",
         "FILE OUT",
         2,
         "saves what is in a damaged or cut-off recording",
         "Searches all of FILE for undamaged frames, whatever its headers and indexes say, and writes them "
         "as a\n"
         "sound new recording: an AVI file when OUT holds .avi, else one of the same kind as FILE. FILE "
         "is not\n"
         "touched. Exit status 0 when a recording was written, also if frames were lost; the result says how "
         "many.\n",
         {"force", "json", "progress"},
         repair},
        {"grab",
         "FILE OUT --frame N",
         2,
         "one frame as a picture",
         "OUT ends with .bmp, .png or .jpg. The picture has the frame's own 720 by 576 or 480 pixels and "
         "comes from\n"
         "the system's DV video decoder.\n",
         {"frame", "sector", "force", "json"},
         grab},
    };
    return all;
}

std::string helpFor(const Command& command) {
    std::string help = std::string("dvrec ") + command.name + " " + command.files + " [OPTIONS]\n\n" +
                       command.details + "\nOptions:\n";
    for (const std::string& option : command.options) {
        help += std::string("  ") + optionHelp(option) + "\n";
    }
    return help + "  --help       this help\n";
}

std::string helpForAll() {
    std::string help = "dvrec looks into recordings, checks them, and makes standard files of them.\n\n";
    for (const Command& command : commands()) {
        help += format("  dvrec %-7s %-19s %s\n", command.name, command.files, command.summary);
    }
    return help + "\n'dvrec COMMAND --help' has the details and options, 'dvrec --version' the version.\n"
                  "FILE is a raw recording, an AVI file with DV video,\n"
                  "or a plain DV stream; what it is, is seen from its content. Frames are numbered from 0. "
                  "Output files are\n"
                  "written as OUT.part and renamed when they are whole; an existing OUT is kept unless "
                  "--force is given.\n"
                  "Long work shows its progress on a terminal and can be ended with Ctrl+C.\n\n"
                  "Exit status:\n"
                  "  0  fine\n"
                  "  1  verify: the recording has faults\n"
                  "  2  the command line makes no sense\n"
                  "  3  the recording cannot be read\n"
                  "  4  the output file cannot be written\n"
                  "  5  grab: there is no picture (no DV video decoder, or it does not take the frame)\n"
                  "  6  ended with Ctrl+C\n";
}

} // namespace dvrec
