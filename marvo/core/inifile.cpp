#include "marvo/core/inifile.h"

#include "marvo/core/file.h"

#include <cwchar>
#include <memory>
#include <new>

namespace vcore {

namespace {

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

bool isComment(const str& line) {
    return line.startsWith(L"//") || line.compareI(L"rem", 3) == 0 || line.startsWith(L";");
}

void writeEntry(file& out, const str& name, const var& value) {
    str text, line;
    value.toStr(text, false);
    line.append(L"  ").Append(name).append(L" = ").Append(text).append(L"\r\n");
    out.writeLine(line);
}

void makeWritable(const wchar_t* fileName) {
    const DWORD attributes = GetFileAttributesW(fileName);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        SetFileAttributesW(fileName, FILE_ATTRIBUTE_NORMAL);
    }
}

} // namespace

iniFile::iniFile(const wchar_t* fileName) {
    if (fileName) {
        load(fileName);
    }
}

iniFile::iniFile(const iniFile& source) : fileName_(source.fileName_) {
    for (const iniEntry* entry : source.entries_) {
        entries_.add(new iniEntry(*entry));
    }
    for (const str* name : source.sections_) {
        sections_.add(new str(*name));
    }
}

void iniFile::create() {
    clear();
    fileName_.Clear();
}

void iniFile::clear() {
    entries_.clearAll();
}

bool iniFile::load(const wchar_t* fileName) {
    if (fileName) {
        fileName_ = fileName;
    } else {
        fileName_ = programSettings();
    }
    file in;
    if (!in.open(fileName_.oleStr())) {
        return false;
    }
    sections_.clearAll();
    str line, prefix;
    while (in.readLine(line)) {
        loadLine(line.trimStr(), prefix);
    }
    return true;
}

void iniFile::loadLine(str& line, str& prefix) {
    if (line.len() == 0 || isComment(line)) {
        return;
    }
    if (line.startsWith(L"[")) {
        line.remove(0, 1).remove(static_cast<int>(line.len()) - 1, 1);
        sections_.add(new str(line));
        prefix = line;
        if (prefix.len() > 0) {
            prefix += L'.';
        }
        return;
    }
    if (line.findChar(L'=', 1) < 0) {
        return;
    }
    const int equals = line.findChar(L'=');
    str name, value;
    (name = line.left(static_cast<unsigned long>(equals))).trimStr();
    (value = line.mid(equals + 1)).trimStr();
    if (value.startsWith(L"\"")) {
        value.remove(0, 1).remove(static_cast<int>(value.len()) - 1, 1);
    }
    if (name.len() > 0) {
        set(name.insert(0, prefix.oleStr()).oleStr(), value.oleStr());
    }
}

bool iniFile::save(const wchar_t* fileName) {
    if (fileName) {
        fileName_ = fileName;
    }
    makeWritable(fileName_.oleStr());
    file out(fileName_.oleStr(), CREATE_ALWAYS, true);
    if (!out.open(nullptr)) {
        return false;
    }
    for (iniEntry* entry : entries_) {
        if (entry->name().findChar(L'.') < 0) {
            writeEntry(out, entry->name(), entry->val());
        }
    }
    str section;
    bool any = false;
    for (iniEntry* entry : entries_) {
        str key(entry->name());
        if (key.findChar(L'.') < 0) {
            continue;
        }
        const str entrySection = key.tok(L'.');
        if (!any || entrySection != section) {
            str header;
            header.append(L"[").Append(entrySection).append(L"]\r\n");
            out.writeLine(L"\r\n");
            out.writeLine(header);
            section = entrySection;
            any = true;
        }
        writeEntry(out, key, entry->val());
    }
    return true;
}

const str& iniFile::section(unsigned int index) const {
    static const str nothing;
    const str* const name = sections_[index];
    return name ? *name : nothing;
}

iniEntry* iniFile::findEntry(const wchar_t* name) const {
    if (!name) {
        name = L"";
    }
    const std::size_t length = std::wcslen(name);
    for (iniEntry* entry : entries_) {
        if (entry->name().len() == length && entry->name().compareI(name) == 0) {
            return entry;
        }
    }
    return nullptr;
}

iniEntry& iniFile::findOrAdd(const wchar_t* name) {
    if (iniEntry* const entry = findEntry(name)) {
        return *entry;
    }
    auto added = std::make_unique<iniEntry>(name);
    if (!entries_.add(added.get())) {
        throw std::bad_alloc();
    }
    return *added.release();
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
    str beginning; // a copy, because the prefix may be the name of an entry that goes
    beginning = prefix;
    for (unsigned long i = 0; i < entries_.count();) {
        if (entries_[i]->name().compareI(beginning.oleStr(), beginning.len()) == 0) {
            entries_.del(i);
        } else {
            ++i;
        }
    }
}

void iniFile::sort() {
    for (unsigned long i = 0; i + 1 < entries_.count(); ++i) {
        for (unsigned long j = i + 1; j < entries_.count(); ++j) {
            if (entries_[j]->name().compareI(entries_[i]->name().oleStr()) < 0) {
                entries_.swap(i, j);
            }
        }
    }
}

} // namespace vcore
