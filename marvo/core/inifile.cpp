#include "marvo/core/inifile.h"

#include "marvo/core/file.h"
#include "marvo/core/handle.h"
#include "marvo/core/number_text.h"
#include "marvo/core/small_letter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <string_view>

namespace vcore {

namespace {

constexpr wchar_t byteOrderMark = 0xFEFF;
constexpr std::wstring_view blanks = L" \t\r\n";

/// The path of the running program with the extension ".ini".
str programSettings() {
    constexpr unsigned long longest = 2048; // terminator included
    str path;
    path.allocBuffer(longest + 1);
    path.oleStr()[GetModuleFileNameW(nullptr, path.oleStr(), longest)] = 0;
    path.updateWStr();
    const int dot = path.findRChar(L'.');
    if (dot > 0) {
        path.remove(dot, str::toEnd);
    }
    return path.append(L".ini");
}

/// The system's reason for a failure just now; never 0.
unsigned long failure() {
    const unsigned long error = GetLastError();
    return error ? error : ERROR_GEN_FAILURE;
}

// Reading.

/// Reads a whole file. Returns the system's error, 0 for success.
unsigned long readBytes(const wchar_t* name, std::string& bytes) {
    SetLastError(ERROR_INVALID_NAME);
    file in(name, OPEN_EXISTING, false, GENERIC_READ);
    if (!in.open(nullptr) || !in.seek(0)) {
        return failure();
    }
    constexpr unsigned long long longest = 0x7FFFFFFF;
    const unsigned long long size = in.size();
    if (size > longest) {
        return ERROR_FILE_TOO_LARGE;
    }
    bytes.resize(static_cast<std::size_t>(size));
    unsigned long done = 0;
    if (size > 0 && !in.read(bytes.data(), static_cast<unsigned long>(size), &done)) {
        return failure();
    }
    bytes.resize(done);
    return 0;
}

/// Adds one line of narrow text.
void widenLine(std::wstring& text, std::string_view line, unsigned int codePage) {
    if (std::all_of(line.begin(), line.end(), [](unsigned char c) { return c < 0x80; })) {
        text.append(line.begin(), line.end());
        return;
    }
    const std::size_t before = text.size();
    const int n = static_cast<int>(line.size());
    text.resize(before + line.size());
    text.resize(before + static_cast<std::size_t>(
                             MultiByteToWideChar(codePage, 0, line.data(), n, text.data() + before, n)));
}

/// Converts line by line, so that half a character at the end of one does not take the next one with it.
std::wstring widenLines(std::string_view bytes, unsigned int codePage) {
    std::wstring text;
    text.reserve(bytes.size());
    for (;;) {
        const std::size_t end = bytes.find_first_of("\r\n");
        widenLine(text, bytes.substr(0, end), codePage);
        if (end == bytes.npos) {
            return text;
        }
        text += static_cast<wchar_t>(bytes[end]);
        bytes.remove_prefix(end + 1);
    }
}

/// Half a character at the end of a damaged text is dropped.
std::wstring wideText(std::string_view bytes, bool swapped) {
    std::wstring text(bytes.size() / sizeof(wchar_t), 0);
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    if (swapped) {
        for (wchar_t& c : text) {
            c = static_cast<wchar_t>(c << 8 | c >> 8);
        }
    }
    return text;
}

/// The text of a file, without its byte-order mark.
std::wstring decoded(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        return wideText(bytes.substr(2), bytes.starts_with("\xFE"));
    }
    const bool utf8 = bytes.starts_with("\xEF\xBB\xBF");
    return widenLines(bytes.substr(utf8 ? 3 : 0), utf8 ? CP_UTF8 : CP_ACP);
}

std::wstring_view trimmed(std::wstring_view text) {
    const std::size_t start = std::min(text.find_first_not_of(blanks), text.size());
    text.remove_prefix(start);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// The text without its first and its last character, whatever these are.
std::wstring_view unwrapped(std::wstring_view text) {
    text.remove_prefix(1);
    return text.substr(0, text.empty() ? 0 : text.size() - 1);
}

bool isComment(std::wstring_view line) {
    return line.starts_with(L"//") || line.starts_with(L';') ||
           (line.size() >= 3 && smallLetter(line[0]) == L'r' && smallLetter(line[1]) == L'e' &&
            smallLetter(line[2]) == L'm');
}

/// Calls `section` with each section's name and `entry` with each entry's name and value.
template <class Section, class Entry>
void parse(std::wstring_view text, Section section, Entry entry) {
    const wchar_t lineEnd = text.find(L'\n') == text.npos ? L'\r' : L'\n';
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(lineEnd), text.size() - 1);
        std::wstring_view line = text.substr(0, end + 1);
        text.remove_prefix(end + 1);
        // A line with a zero in it is cut there.
        line = trimmed(line.substr(0, line.find(L'\0')));
        const std::size_t equals = line.find(L'=');
        if (line.empty() || isComment(line)) {
            continue;
        }
        if (line[0] == L'[') {
            section(unwrapped(line));
        } else if (equals != line.npos && equals > 0) {
            const std::wstring_view value = trimmed(line.substr(equals + 1));
            entry(trimmed(line.substr(0, equals)), value.starts_with(L'"') ? unwrapped(value) : value);
        }
    }
}

// Writing.

/// The value as text: with all digits where `toStr` would lose some of a number.
str writtenValue(const var& value) {
    str text;
    value.toStr(text, false);
    const int type = value.vt & VT_TYPEMASK;
    const var readBack(text.oleStr());
    if (value.isI() && readBack.getI64() != value.getI64()) {
        return text.sprintf(type == VT_UI8 ? L"%I64u" : L"%I64d", value.getI64());
    }
    const double number = value.getF();
    if (!value.isF() || !std::isfinite(number) || readBack.getF() == number) {
        return text;
    }
    std::string digits;
    if (type != VT_R4) {
        digits = shortestText(number);
    } else if (static_cast<float>(readBack.getF()) != static_cast<float>(number)) {
        digits = shortestText(static_cast<float>(number));
    } else {
        return text;
    }
    return text.setStr(digits.data(), static_cast<unsigned long>(digits.size()));
}

/// Adds a line up to and including its first line feed, which may come from the value.
void addEntry(std::wstring& text, std::wstring_view name, const var& value) {
    const str written = writtenValue(value);
    std::wstring line(L"  ");
    line.append(name).append(L" = ").append(written.oleStr(), written.len()).append(L"\r\n");
    text.append(line, 0, line.find(L'\n') + 1);
}

std::wstring writtenText(const iniEntries& entries) {
    std::wstring text(1, byteOrderMark);
    for (iniEntry* entry : entries) {
        const std::wstring_view name(entry->name().oleStr(), entry->name().len());
        if (name.find(L'.') == name.npos) {
            addEntry(text, name, entry->val());
        }
    }
    std::wstring_view section;
    bool any = false;
    for (iniEntry* entry : entries) {
        const std::wstring_view name(entry->name().oleStr(), entry->name().len());
        const std::size_t dot = name.find(L'.');
        if (dot == name.npos) {
            continue;
        }
        if (!any || section != name.substr(0, dot)) {
            any = true;
            section = name.substr(0, dot);
            text.append(L"\r\n[").append(section).append(L"]\r\n");
        }
        addEntry(text, name.substr(dot + 1), entry->val());
    }
    return text;
}

/// Writes a new file and has the system keep it; one that cannot be completed is removed. Returns the
/// system's error, 0 for success.
unsigned long writeText(const wchar_t* name, const std::wstring& text) {
    handle out(CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!out) {
        return failure();
    }
    const auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    DWORD done = 0;
    SetLastError(ERROR_DISK_FULL); // of which some systems only tell by the number of bytes
    if (WriteFile(out.get(), text.data(), size, &done, nullptr) && done == size &&
        FlushFileBuffers(out.get())) {
        return 0;
    }
    const unsigned long error = failure();
    out.reset();
    DeleteFileW(name);
    return error;
}

/// Lets a new file take the place of another, a read-only one, too; it is removed when it cannot. Returns the
/// system's error, 0 for success.
unsigned long replaceFile(const wchar_t* fresh, const wchar_t* old) {
    const DWORD attributes = GetFileAttributesW(old);
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly) {
        SetFileAttributesW(old, FILE_ATTRIBUTE_NORMAL);
    }
    if (MoveFileExW(fresh, old, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return 0;
    }
    const unsigned long error = failure();
    if (readOnly) {
        SetFileAttributesW(old, attributes);
    }
    DeleteFileW(fresh);
    return error;
}

} // namespace

/// Finds entries by name without regard to letter case. In order, and not by a hash: a file with many names
/// of one hash would take hours.
class iniFile::Index {
public:
    iniEntry* find(const wchar_t* name) const {
        const auto found = entries_.find(name);
        return found == entries_.end() ? nullptr : *found;
    }

    void add(iniEntry* entry) { entries_.insert(entry); }
    void remove(iniEntry* entry) { entries_.erase(entry); }
    void clear() { entries_.clear(); }

private:
    struct Before {
        using is_transparent = void;
        static const wchar_t* text(const wchar_t* name) { return name; }
        static const wchar_t* text(const iniEntry* entry) { return entry->name().oleStr(); }
        template <class One, class Other>
        bool operator()(One one, Other other) const {
            return str::compareI(text(one), text(other)) < 0;
        }
    };

    std::set<iniEntry*, Before> entries_;
};

iniFile::iniFile(const wchar_t* fileName) : index_(std::make_unique<Index>()) {
    if (fileName) {
        load(fileName);
    }
}

iniFile::iniFile(const iniFile& source)
    : fileName_(source.fileName_), error_(source.error_), index_(std::make_unique<Index>()) {
    for (iniEntry* entry : source.entries_) {
        findOrAdd(entry->name().oleStr()).val() = entry->val();
    }
    for (const str* name : source.sections_) {
        sections_.add(new str(*name));
    }
}

iniFile::~iniFile() = default;

void iniFile::create() {
    clear();
    fileName_.Clear();
}

void iniFile::clear() {
    index_->clear();
    entries_.clearAll();
}

bool iniFile::load(const wchar_t* fileName) {
    try {
        if (fileName) {
            fileName_ = fileName;
        } else {
            fileName_ = programSettings();
        }
        std::string bytes;
        error_ = readBytes(fileName_.oleStr(), bytes);
        if (error_ == 0) {
            take(decoded(bytes));
        }
    } catch (const std::exception&) { // a file larger than the memory
        error_ = ERROR_NOT_ENOUGH_MEMORY;
    }
    return error_ == 0;
}

/// Sets what a file's text says.
void iniFile::take(const std::wstring& text) {
    sections_.clearAll();
    std::wstring prefix, name, value;
    parse(
        text,
        [&](std::wstring_view section) {
            prefix = section;
            auto added = std::make_unique<str>();
            *added = prefix.c_str();
            if (sections_.add(added.get())) {
                (void)added.release();
            }
            prefix.append(section.empty() ? L"" : L".");
        },
        [&](std::wstring_view key, std::wstring_view words) {
            if (!key.empty()) {
                name.assign(prefix).append(key);
                value = words;
                set(name.c_str(), value.c_str());
            }
        });
}

bool iniFile::save(const wchar_t* fileName) {
    if (fileName) {
        fileName_ = fileName;
    }
    if (fileName_.len() == 0) {
        error_ = ERROR_INVALID_NAME;
        return false;
    }
    const std::wstring fresh = std::wstring(fileName_.oleStr()) + L".new";
    error_ = writeText(fresh.c_str(), writtenText(entries_));
    if (!error_) {
        error_ = replaceFile(fresh.c_str(), fileName_.oleStr());
    }
    return error_ == 0;
}

const str& iniFile::section(unsigned int index) const {
    static const str nothing;
    const str* const name = sections_[index];
    return name ? *name : nothing;
}

iniEntry& iniFile::findOrAdd(const wchar_t* name) {
    if (!name) {
        name = L"";
    }
    if (iniEntry* const entry = index_->find(name)) {
        return *entry;
    }
    auto added = std::make_unique<iniEntry>(name);
    if (!entries_.allocArray(entries_.count() + 1)) {
        throw std::bad_alloc();
    }
    index_->add(added.get());
    entries_.add(added.get());
    return *added.release();
}

iniEntry* iniFile::findEntry(const wchar_t* name) const {
    if (!name) {
        name = L"";
    }
    return index_->find(name);
}

var& iniFile::get(const wchar_t* name) const {
    static var nothing;
    iniEntry* const entry = findEntry(name);
    return entry ? entry->val() : nothing;
}

var& iniFile::get(const wchar_t* name, const var& def) {
    if (!findEntry(name)) {
        set(name, def);
    }
    return findOrAdd(name).val();
}

void iniFile::set(const wchar_t* name, const var& v) {
    if (v.isS()) {
        set(name, v.getS());
    } else {
        findOrAdd(name).val() = v;
    }
}

void iniFile::set(const wchar_t* name, const wchar_t* text) {
    findOrAdd(name).val().setS(text);
}

void iniFile::remove(const wchar_t* prefix) {
    if (!prefix) {
        return;
    }
    str start; // a copy, because the prefix may be the name of an entry that goes
    start = prefix;
    for (unsigned long i = entries_.count(); i-- > 0;) {
        if (entries_[i]->name().compareI(start.oleStr(), start.len()) == 0) {
            index_->remove(entries_[i]);
            entries_.del(i);
        }
    }
}

void iniFile::sort() {
    std::sort(entries_.begin(), entries_.end(), [](const iniEntry* a, const iniEntry* b) {
        return a->name().compareI(b->name().oleStr()) < 0;
    });
}

} // namespace vcore
