#include "app/window/exporter.h"

#include "app/window/frame_source.h"
#include "app/window/system_message.h"

#include <cstdio>
#include <cwchar>

namespace app {

namespace {

bool endsWith(const std::wstring& name, const std::wstring& extension) {
    return name.size() > extension.size() &&
           _wcsicmp(name.c_str() + name.size() - extension.size(), extension.c_str()) == 0;
}

/// A sentence as a part of another one.
std::wstring withoutStop(std::wstring sentence) {
    while (!sentence.empty() && sentence.back() == L'.') {
        sentence.pop_back();
    }
    return sentence;
}

/// COM and a low priority for as long as a piece of work lasts.
class WorkPlace {
public:
    WorkPlace() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_LOWEST);
    }
    ~WorkPlace() {
        SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_NORMAL);
        CoUninitialize();
    }
    WorkPlace(const WorkPlace&) = delete;
    WorkPlace& operator=(const WorkPlace&) = delete;
};

/// A new folder for pictures, which takes back what was put into it unless it is kept.
class PictureFolder {
public:
    explicit PictureFolder(std::wstring name) : name_(std::move(name)) {}
    PictureFolder(const PictureFolder&) = delete;
    PictureFolder& operator=(const PictureFolder&) = delete;
    ~PictureFolder() {
        if (made_ && !kept_) {
            for (unsigned number = 1; number <= count_; ++number) {
                DeleteFileW(file(number).c_str());
            }
            RemoveDirectoryW(name_.c_str());
        }
    }

    bool make(std::wstring& why) {
        made_ = CreateDirectoryW(name_.c_str(), nullptr) != FALSE;
        if (!made_) {
            why = name_ + L": " + systemMessage(GetLastError());
        }
        return made_;
    }
    std::wstring next() { return file(++count_); }
    void keep() { kept_ = true; }

private:
    std::wstring file(unsigned number) const {
        wchar_t name[16];
        std::swprintf(name, sizeof name / sizeof *name, L"\\%06u.png", number);
        return name_ + name;
    }

    std::wstring name_;
    unsigned count_ = 0;
    bool made_ = false;
    bool kept_ = false;
};

bool exportPictures(const Clip& clip, const std::wstring& target, const JobQueue::Progress& progress,
                    std::wstring& why) {
    const WorkPlace place;
    PictureFolder folder(target);
    if (!folder.make(why)) {
        return false;
    }
    FrameSource source;
    dvFrameDecoder decoder;
    dvPicture picture;
    dvPictureFile file;
    std::vector<unsigned char> bytes;
    for (std::uint64_t frame = clip.frames.first; frame <= clip.frames.last; ++frame) {
        const double done = static_cast<double>(frame - clip.frames.first);
        if (!progress(done / static_cast<double>(clip.frames.length()))) {
            return false;
        }
        if (!source.read({clip.file, frame}, bytes)) {
            why = clip.file + L": " + std::to_wstring(frame);
            return false;
        }
        if (!decoder.decode(bytes.data(), bytes.size(), picture)) {
            why = withoutStop(decoder.explanation());
            return false;
        }
        const std::wstring name = folder.next();
        if (!file.write(picture, name.c_str())) {
            why = name + L": " + systemMessage(static_cast<DWORD>(file.error()));
            return false;
        }
    }
    folder.keep();
    return true;
}

bool exportFile(const Clip& clip, const std::wstring& target, const JobQueue::Progress& progress,
                std::wstring& why) {
    const WorkPlace place;
    dvExport exporter;
    // Whether a file that is there may go was asked with its name.
    exporter.replaceExisting(true);
    const bool done = exporter.run(clip.file.c_str(), clip.frames.first, clip.frames.last, target.c_str(),
                                   [&](unsigned long long part, unsigned long long all) {
                                       return progress(static_cast<double>(part) / static_cast<double>(all));
                                   });
    if (!done) {
        why = withoutStop(exporter.explanation());
    }
    return done;
}

} // namespace

ExportKind exportKindOf(const std::wstring& target) {
    return endsWith(target, L".dv")    ? ExportKind::dv
           : endsWith(target, L".avi") ? ExportKind::avi
                                       : ExportKind::pictures;
}

JobQueue::Work exportWork(const Clip& clip, const std::wstring& target) {
    const bool pictures = exportKindOf(target) == ExportKind::pictures;
    return [clip, target, pictures](const JobQueue::Progress& progress, std::wstring& why) {
        return pictures ? exportPictures(clip, target, progress, why)
                        : exportFile(clip, target, progress, why);
    };
}

} // namespace app
