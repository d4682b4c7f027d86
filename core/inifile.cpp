#include "core/inifile.h"

#include "core/file.h"

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
    if (dot > 0)
        path.remove(dot, str::toEnd);
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
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesW(fileName, FILE_ATTRIBUTE_NORMAL);
}

} // namespace

iniFile::iniFile(const wchar_t* fileName) {
    if (fileName)
        load(fileName);
}

iniFile::iniFile(const iniFile& source) : _fileName(source._fileName) {
    for (const iniEntry* entry : source._entries)
        _entries.add(new iniEntry(*entry));
    for (const str* name : source._sections)
        _sections.add(new str(*name));
}

void iniFile::create() {
    clear();
    _fileName.Clear();
}

void iniFile::clear() {
    _entries.clearAll();
}

bool iniFile::load(const wchar_t* fileName) {
    if (fileName)
        _fileName = fileName;
    else
        _fileName = programSettings();
    file in;
    if (!in.open(_fileName.oleStr()))
        return false;
    _sections.clearAll();
    str line, prefix;
    while (in.readLine(line))
        _loadLine(line.trimStr(), prefix);
    return true;
}

void iniFile::_loadLine(str& line, str& prefix) {
    if (line.len() == 0 || isComment(line))
        return;
    if (line.startsWith(L"[")) {
        line.remove(0, 1).remove(static_cast<int>(line.len()) - 1, 1);
        _sections.add(new str(line));
        prefix = line;
        if (prefix.len() > 0)
            prefix += L'.';
        return;
    }
    if (line.findChar(L'=', 1) < 0)
        return;
    const int equals = line.findChar(L'=');
    str name, value;
    (name = line.left(static_cast<unsigned long>(equals))).trimStr();
    (value = line.mid(equals + 1)).trimStr();
    if (value.startsWith(L"\""))
        value.remove(0, 1).remove(static_cast<int>(value.len()) - 1, 1);
    if (name.len() > 0)
        set(name.insert(0, prefix.oleStr()).oleStr(), value.oleStr());
}

bool iniFile::save(const wchar_t* fileName) {
    if (fileName)
        _fileName = fileName;
    makeWritable(_fileName.oleStr());
    file out(_fileName.oleStr(), CREATE_ALWAYS, true);
    if (!out.open(nullptr))
        return false;
    for (iniEntry* entry : _entries)
        if (entry->name().findChar(L'.') < 0)
            writeEntry(out, entry->name(), entry->val());
    str section;
    bool any = false;
    for (iniEntry* entry : _entries) {
        str key(entry->name());
        if (key.findChar(L'.') < 0)
            continue;
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
    const str* const name = _sections[index];
    return name ? *name : nothing;
}

iniEntry* iniFile::_find(const wchar_t* name) const {
    if (!name)
        name = L"";
    const std::size_t length = std::wcslen(name);
    for (iniEntry* entry : _entries)
        if (entry->name().len() == length && entry->name().compareI(name) == 0)
            return entry;
    return nullptr;
}

iniEntry& iniFile::_findOrAdd(const wchar_t* name) {
    if (iniEntry* const entry = _find(name))
        return *entry;
    auto added = std::make_unique<iniEntry>(name);
    if (!_entries.add(added.get()))
        throw std::bad_alloc();
    return *added.release();
}

var& iniFile::get(const wchar_t* name) const {
    static var nothing;
    iniEntry* const entry = _find(name);
    return entry ? entry->val() : nothing;
}

var& iniFile::get(const wchar_t* name, const var& def) {
    if (!_find(name))
        set(name, def);
    return _findOrAdd(name).val();
}

void iniFile::set(const wchar_t* name, const var& v) {
    if (v.isS())
        set(name, v.getS());
    else
        _findOrAdd(name).val() = v;
}

void iniFile::set(const wchar_t* name, const wchar_t* text) {
    _findOrAdd(name).val().setS(text);
}

void iniFile::remove(const wchar_t* prefix) {
    if (!prefix)
        return;
    str beginning; // a copy, because the prefix may be the name of an entry that goes
    beginning = prefix;
    for (unsigned long i = 0; i < _entries.count();)
        if (_entries[i]->name().compareI(beginning.oleStr(), beginning.len()) == 0)
            _entries.del(i);
        else
            ++i;
}

void iniFile::sort() {
    for (unsigned long i = 0; i + 1 < _entries.count(); ++i)
        for (unsigned long j = i + 1; j < _entries.count(); ++j)
            if (_entries[j]->name().compareI(_entries[i]->name().oleStr()) < 0)
                _entries.swap(i, j);
}

} // namespace vcore
