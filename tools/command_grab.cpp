#include "tools/commands.h"
#include "tools/json_writer.h"
#include "tools/output_file.h"
#include "tools/recording.h"
#include "tools/standard_streams.h"
#include "tools/still.h"
#include "tools/text.h"

#include "marvo/picture/frame_decoder.h"
#include "marvo/picture/picture_file.h"

#include <cstdio>

namespace dvrec {

namespace {

void report(const dvPicture& picture, unsigned long long frame, const Arguments& arguments) {
    if (!arguments.json) {
        const bool square = picture.aspectNumerator == picture.width;
        const std::string shape =
            square ? "square" : format("shown as %u:%u", picture.aspectNumerator, picture.aspectDenominator);
        std::printf("%s: frame %llu, %u x %u pixels, %s\n", quoted(arguments.files[1]).c_str(), frame,
                    picture.width, picture.height, shape.c_str());
        return;
    }
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8Name(arguments.files[0]));
    json.add("out", utf8Name(arguments.files[1]));
    json.add("frame", frame);
    json.add("width", static_cast<unsigned long>(picture.width));
    json.add("height", static_cast<unsigned long>(picture.height));
    json.add("pixelAspect", picture.pixelAspect());
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

dvPicture decode(const recording::RecordBuffer& buffer, const std::string& frameName) {
    dvPicture picture;
    dvFrameDecoder decoder;
    if (!decoder.decode(buffer.frame(), buffer.frameBytes(), picture)) {
        throw Failure{ExitStatus::noPicture, frameName + "gives no picture. " + utf8(decoder.explanation())};
    }
    return picture;
}

} // namespace

ExitStatus grab(const Arguments& arguments) {
    if (!arguments.frame) {
        throw Failure{ExitStatus::usage, "Say which frame with --frame."};
    }
    refusePipe(arguments.files[1], "A picture");
    if (!dvPictureFile::hasFormat(arguments.files[1].c_str())) {
        throw Failure{ExitStatus::usage,
                      quoted(arguments.files[1]) + " ends with none of .bmp, .png and .jpg."};
    }
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const unsigned long long frame = frameOf(*from, arguments);
    const std::string frameName =
        "Frame " + std::to_string(frame) + " of " + quoted(arguments.files[0]) + " ";
    if (frame >= from->frames()) {
        throw Failure{ExitStatus::usage,
                      frameName + "is not there; it has " + counted(from->frames(), "frame") + " from 0."};
    }
    OutputFile output(arguments.files[1], arguments.force, from->name());
    recording::RecordBuffer buffer;
    allocate(buffer, from->bufferBytes());
    std::string fault;
    if (!readFrame(*from, frame, buffer, fault)) {
        throw Failure{ExitStatus::cannotRead, frameName + fault + "."};
    }
    dvPicture picture = decode(buffer, frameName);
    if (arguments.upperField) {
        keepField(picture, *arguments.upperField);
    }
    if (arguments.square) {
        makeSquare(picture);
    }
    dvPictureFile file;
    if (!file.write(picture, output.temporaryName().c_str(), output.name().c_str())) {
        throw cannotWrite(output.name(), "the system's imaging component refuses: " +
                                             systemMessage(static_cast<DWORD>(file.error())));
    }
    output.publish();
    report(picture, frame, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
