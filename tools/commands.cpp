#include "tools/commands.h"

#include "tools/text.h"

#include <algorithm>
#include <iterator>

namespace dvrec {

namespace {

/// An option: its name, what stands behind it, and what it does.
struct OptionHelp {
    const char* name;
    const char* value;
    const char* text;
};

constexpr OptionHelp optionHelps[] = {
    {"from", " PLACE", "first frame of the range (default: 0)"},
    {"to", " PLACE", "last frame of the range, which belongs to it (default: the last)"},
    {"frame", " PLACE", "the frame"},
    {"clip", " C", "the clip's number in the list, or its name (default: all)"},
    {"field", " F", "top or bottom: that field alone, its lines filled in, for a still of fast motion"},
    {"square", "", "square pixels: 768 or 1024 x 576, 640 or 853 x 480"},
    {"sector", " N", "bytes per sector of the disk on which a raw recording was made (default: seen)"},
    {"no-sound", "", "an AVI file without a sound stream"},
    {"force", "", "replace OUT if it exists"},
    {"json", "", "the result as JSON on the standard output"},
    {"progress", "", "lines of progress also where the error output is no terminal"},
    {"help", "", "this help"},
};

std::string optionHelp(const std::string& option) {
    const auto found = std::find_if(std::begin(optionHelps), std::end(optionHelps),
                                    [&](const OptionHelp& help) { return help.name == option; });
    return format("  %-15s %s\n", (std::string("--") + found->name + found->value).c_str(), found->text);
}

constexpr char placeHelp[] =
    "\nPLACE is one of these:\n"
    "  57              the frame's number; the first is 0\n"
    "  0:12.5          time from the start of the recording: m:ss, h:mm:ss, or seconds with a point (12.5)\n"
    "  01:02:03:20     the camera's time code; also with ';' in front of the frames\n"
    "  @21:58:59       time of day by the camera's clock; with a date: '@2024-02-29 21:58:59'\n";

} // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {"info",
         "FILE...",
         1,
         anyNumber,
         "what a recording is: system, length, time codes, structure",
         "Shows the kind of the recording (raw, AVI, plain DV stream), its video system, frames and "
         "duration, the\n"
         "camera's time code with its gaps, the date and time of recording, the file's structure, and "
         "whether the\n"
         "file was finished; and codec, shape, fields and sound as of the first frame. Only the start of "
         "each "
         "frame is\nread. Of several recordings, --json gives an object in a line for each.\n",
         {"sector", "json", "progress"},
         showInfo},
        {"verify",
         "FILE...",
         1,
         anyNumber,
         "checks every frame and structure",
         "Reads the whole recording and lists what is wrong with it, with offsets in bytes. Exit status 1 "
         "when\n"
         "there is a fault. Of several recordings, --json gives an object in a line for each.\n",
         {"sector", "json", "progress"},
         verify},
        {"export",
         "FILE OUT",
         2,
         2,
         "writes a range of frames as a standard file",
         "OUT ends with .dv for a plain DV stream, or with .avi for an AVI file; other programs open both. "
         "(A raw\n"
         "recording, which only this engine reads, may be called .dv too: 'dvrec info' tells which is "
         "which.)\n"
         "An AVI file gets the sound as a stream of its own. OUT is - for a DV stream to the standard\n"
         "output; the result is told on the error output then.\n",
         {"from", "to", "no-sound", "sector", "force", "json", "progress"},
         exportRange},
        {"convert",
         "FILE OUT",
         2,
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
         "FILE OUT --frame PLACE",
         2,
         2,
         "one frame as a picture",
         "OUT ends with .bmp, .png or .jpg. The picture comes from the system's DV video decoder and has the "
         "frame's own\n"
         "720 by 576 or 480 pixels, which are not square; the file says how they are to be shown.\n",
         {"frame", "field", "square", "sector", "force", "json"},
         grab},
        {"clips",
         "FILE [OUT]",
         1,
         2,
         "the clips that were marked in it, and exports of them",
         "Lists the clips that the replay application keeps beside FILE, in FILE.clips. With OUT they are "
         "exported, as\n"
         "'dvrec export' does: --clip names one, and '*' in OUT stands for a clip's number and name "
         "(goals/*.avi).\n",
         {"clip", "no-sound", "sector", "force", "json", "progress"},
         clips},
    };
    return all;
}

std::string helpFor(const Command& command) {
    std::string help = std::string("dvrec ") + command.name + " " + command.files + " [OPTIONS]\n\n" +
                       command.details + "\nOptions:\n";
    for (const std::string& option : command.options) {
        help += optionHelp(option);
    }
    help += optionHelp("help");
    const bool hasPlace = std::any_of(command.options.begin(), command.options.end(), [](const auto& option) {
        return option == "from" || option == "frame";
    });
    return hasPlace ? help + placeHelp : help;
}

std::string helpForAll() {
    std::string help = "dvrec looks into recordings, checks them, and makes standard files of them.\n\n";
    for (const Command& command : commands()) {
        help += format("  dvrec %-7s %-23s %s\n", command.name, command.files, command.summary);
    }
    return help +
           "\n'dvrec COMMAND --help' has the details and options, 'dvrec --version' the version.\n"
           "FILE is a raw recording, an AVI file with DV video, or a plain DV stream; what it is, is seen "
           "from its content.\n"
           "info and verify take several files and patterns (*.avi). - stands for the standard input, "
           "which is kept in a\n"
           "temporary file while the command runs.\n"
           "Output files are written as OUT.part and renamed when they are whole; an existing OUT is kept "
           "unless --force\n"
           "is given. Long work shows its progress on a terminal and can be ended with Ctrl+C.\n\n"
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
