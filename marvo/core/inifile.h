/// @file
/// Settings files.
#pragma once

#include "marvo/core/ini_entry.h"

#include <memory>
#include <string>
#include <type_traits>

namespace vcore {

/// A settings file in memory: an ordered list of entries. Names are matched whole and without regard to
/// letter case, a null name is an empty one. Used by one thread at a time.
///
/// Text form: a section "[video]" puts "video." in front of the names that follow; "name = value" is an
/// entry, with double quotes around the value when its outer blanks count. Lines that begin with "//", ";" or
/// "rem" in any letter case are ignored (a name like "remote" thus cannot be used), and so is anything else
/// that is not understood. A text that begins with a byte-order mark is UTF-16 of either byte order or UTF-8,
/// any other is in the ANSI code page. Lines end with a line feed, or, in a text without any, with a carriage
/// return.
class MARVO_API iniFile {
public:
    /// No entries; `fileName` is loaded at once unless it is null.
    explicit iniFile(const wchar_t* fileName);
    /// A copy with entries of its own.
    iniFile(const iniFile& source);
    iniFile& operator=(const iniFile&) = delete;
    /// Nothing is saved by itself.
    ~iniFile();

    /// Removes the entries and forgets the file's name.
    void create();
    /// Removes the entries.
    void clear();
    /// Adds the entries of a file to those there are; a name that exists already takes the new value. A null
    /// `fileName` means the program's own path with the extension ".ini". The name is kept in any case.
    /// False, and the entries unchanged, when the file cannot be read; `error` then tells why. Without memory
    /// for all of them false as well, and those read by then stay.
    bool load(const wchar_t* fileName);
    /// Writes the entries anew as wide text with a byte-order mark, those outside of sections first. A null
    /// `fileName` means the kept name, another is kept. A value is written as `var::toStr` does, and a number
    /// of which that would lose something with all its digits. A value with a line feed in it is cut there,
    /// and outer blanks of a value are lost when it is loaded again.
    ///
    /// The text goes to a file beside the old one (its name with ".new" behind it), which it replaces when it
    /// is complete, a read-only one, too. False when that fails, because the disk is full or somebody holds
    /// the old file open, for instance: the old file is then as it was, and `error` tells why.
    bool save(const wchar_t* fileName);
    /// Why the last `load` or `save` failed, as the system's error code, for the caller's log; 0 when it did
    /// not.
    unsigned long error() const { return error_; }

    /// The name of the file loaded or saved last.
    const str& filename() const { return fileName_; }
    /// The name of a section met by the last `load`, counted from 0; empty beyond the last. A section met
    /// twice counts twice.
    const str& section(unsigned int index) const;

    /// The value of that name; a shared empty value, not to be written to, when there is none.
    var& get(const wchar_t* name) const;
    /// The value of that name, which is added with the value `def` when there is none.
    var& get(const wchar_t* name, const var& def);
    /// The value of that name, which is added as an empty one when there is none.
    var& operator[](const wchar_t* name) { return get(name, var()); }
    /// The value of that name if it is text, else empty text.
    const wchar_t* getS(const wchar_t* name) const { return get(name).getS(); }
    /// As above; when there is no such name it is added with the text `def`.
    const wchar_t* getS(const wchar_t* name, const wchar_t* def) { return get(name, var(def)).getS(); }
    /// Whether there is a value of that name that is not empty.
    bool defined(const wchar_t* name) const { return !get(name).isEmpty(); }
    /// Replaces the value of that name, or adds it at the end. Text is copied, anything else taken as it
    /// stands.
    void set(const wchar_t* name, const var& v);
    /// As above, with a copy of the text; null is empty text.
    void set(const wchar_t* name, const wchar_t* text);
    /// As above, with a boolean or an integer. So a literal 0 is a number and no null text.
    template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    void set(const wchar_t* name, Integer value) {
        set(name, var(value));
    }
    /// Removes every entry whose name begins with `prefix`.
    void remove(const wchar_t* prefix);
    /// Orders the entries by name, without regard to letter case. Entries of one section then stand together.
    void sort();

private:
    class Index;

    void take(const std::wstring& text);
    iniEntry* findEntry(const wchar_t* name) const;
    iniEntry& findOrAdd(const wchar_t* name);

    iniEntries entries_;
    secEntries sections_;
    str fileName_;
    unsigned long error_ = 0;
    std::unique_ptr<Index> index_;
};

} // namespace vcore
