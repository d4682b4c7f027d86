#include "tools/commands.h"
#include "tools/image_file.h"
#include "tools/json_writer.h"
#include "tools/output_file.h"
#include "tools/recording.h"
#include "tools/text.h"

#include "marvo/picture/frame_decoder.h"

#include <cstdio>

namespace dvrec {

namespace {

void report(const dvPicture& picture, const Arguments& arguments) {
    if (!arguments.json) {
        std::printf("'%s': frame %lu, %u x %u pixels\n", utf8(arguments.files[1]).c_str(), *arguments.frame,
                    picture.width, picture.height);
        return;
    }
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("out", utf8(arguments.files[1]));
    json.add("frame", *arguments.frame);
    json.add("width", static_cast<unsigned long>(picture.width));
    json.add("height", static_cast<unsigned long>(picture.height));
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

} // namespace

ExitStatus grab(const Arguments& arguments) {
    if (!arguments.frame) {
        throw Failure{ExitStatus::usage, "Say which frame with --frame N."};
    }
    if (!isImageName(arguments.files[1])) {
        throw Failure{ExitStatus::usage,
                      quoted(arguments.files[1]) + " ends with none of .bmp, .png and .jpg."};
    }
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const std::string frameName =
        "Frame " + std::to_string(*arguments.frame) + " of " + quoted(arguments.files[0]) + " ";
    if (*arguments.frame >= from->frames()) {
        throw Failure{ExitStatus::usage,
                      frameName + "is not there; it has " + counted(from->frames(), "frame") + " from 0."};
    }
    OutputFile output(arguments.files[1], arguments.force, from->name());
    recording::RecordBuffer buffer;
    allocate(buffer, from->bufferBytes());
    std::string fault;
    if (!readFrame(*from, *arguments.frame, buffer, fault)) {
        throw Failure{ExitStatus::cannotRead, frameName + fault + "."};
    }
    dvPicture picture;
    dvFrameDecoder decoder;
    if (!decoder.decode(buffer.frame(), buffer.frameBytes(), picture)) {
        throw Failure{ExitStatus::noPicture, frameName + "gives no picture. " + utf8(decoder.explanation())};
    }
    if (!saveImage(picture, output.name(), output.temporaryName(), fault)) {
        throw cannotWrite(output.name(), fault);
    }
    output.publish();
    report(picture, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
