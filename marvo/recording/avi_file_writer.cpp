#include "marvo/recording/avi_file_writer.h"

#include "marvo/dv/dv_system.h"

namespace recording {

std::unique_ptr<Writer> AviFileWriter::create(const wchar_t* name, unsigned long frameSize, long long,
                                              std::wstring& error) {
    return createWith(name, frameSize, nullptr, error);
}

std::unique_ptr<AviFileWriter> AviFileWriter::createWithSound(const wchar_t* name, unsigned long frameSize,
                                                              const FileIOAVI::Sound& sound,
                                                              std::wstring& error) {
    return createWith(name, frameSize, &sound, error);
}

std::unique_ptr<AviFileWriter> AviFileWriter::createWith(const wchar_t* name, unsigned long frameSize,
                                                         const FileIOAVI::Sound* sound, std::wstring& error) {
    auto writer = std::make_unique<AviFileWriter>();
    const vdv::System* const system = vdv::systemOf(frameSize);
    FileIOAVI::Video video;
    video.is625 = system == &vdv::system625;
    video.height = video.is625 ? vdv::system625.lines : vdv::system525.lines;
    const unsigned long channels = system ? frameSize / system->frameBytes : 1;
    if (channels > 2) {
        error = L"AVI files take DV frames of 25 and 50 Mbit/s, and these are larger";
        return nullptr;
    }
    video.subKind = channels == 2 ? 422 : 420;
    const int code =
        sound ? writer->avi_.create(name, video, *sound, true) : writer->avi_.create(name, video, true);
    if (code != FileIOAVI::Ok) {
        error = writer->error();
        return nullptr;
    }
    writer->bufferBytes_ = writer->avi_.slotSize();
    return writer;
}

bool AviFileWriter::write(RecordBuffer& buffer) {
    return avi_.writeFrame(reinterpret_cast<char*>(buffer.data()), buffer.bytes(), buffer.frameBytes()) ==
           FileIOAVI::Ok;
}

bool AviFileWriter::writeWithSound(RecordBuffer& buffer, std::span<const unsigned char> sound) {
    return avi_.writeFrame(reinterpret_cast<char*>(buffer.data()), buffer.bytes(), buffer.frameBytes(),
                           sound.data(), static_cast<unsigned long>(sound.size())) == FileIOAVI::Ok;
}

std::wstring AviFileWriter::error() const {
    std::wstring text = avi_.lastError();
    while (!text.empty() && (text.back() == L'.' || text.back() <= L' ')) {
        text.pop_back();
    }
    return text;
}

} // namespace recording
