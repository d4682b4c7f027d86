/// @file
/// Files of the system: the log, settings files, recordings.
#pragma once

#include "marvo/core/iostore.h"
#include "marvo/core/str.h"

namespace vcore {

class daytime;

/// A file, opened by its wide name or taken over as an open handle. Transfers are complete when a call
/// returns and go to the system as they were asked for, so they suit handles without system buffering
/// (`readLine` does not). The position is the object's own: each transfer sets the system's file pointer
/// anew. What takes a name or a line throws `std::bad_alloc` when there is no memory for it. Not thread-safe:
/// guarded by its owner.
class MARVO_API file : public iostore {
public:
    /// A closed file that will open `name` with the given Win32 creation disposition (2 creates it anew, 3
    /// opens an existing one). With `wide`, an empty file is given a byte-order mark and holds 16-bit text.
    /// `access` may be cut down to `GENERIC_READ`, which also opens a file that is write-protected.
    explicit file(const wchar_t* name = nullptr, unsigned long creation = OPEN_EXISTING, bool wide = false,
                  unsigned long access = GENERIC_READ | GENERIC_WRITE);

    /// Opens the file, for reading and writing unless the constructor was told otherwise, shared for both; a
    /// null `name` means the stored one, another is stored. A file that begins with a little-endian
    /// byte-order mark holds 16-bit text, and the position is then behind the mark. False when the system
    /// refuses or there is no name.
    bool open(const wchar_t* name) override;
    void close() override;
    bool read(void* data, unsigned long n, unsigned long* done) override;
    bool write(const void* data, unsigned long n, unsigned long* done) override;
    unsigned long long remain() const override;
    bool opened() const override { return handle_ != INVALID_HANDLE_VALUE; }
    bool unicode() const override { return unicode_; }
    bool truncate() override;
    bool copyTo(iostore& destination) override;
    bool seek(unsigned long long offset) override;

protected:
    void _addPos(unsigned long n) override;
    unsigned long long _normAddr(unsigned long long offset) const override;

public:
    ~file() override;

    /// Opens the stored name again, with what the file holds by now: a file that was created anew is not
    /// emptied.
    virtual bool reopen();
    /// Takes over an open system handle, with the position at the system's file pointer, and closes the file
    /// held before. False for a null or invalid handle.
    virtual bool attach(void* handle);
    /// Gives the handle up without closing it; `INVALID_HANDLE_VALUE` when none is open.
    virtual void* detach();
    /// Has the system write out what it buffers.
    virtual bool flush();
    /// Whether there is a file (not a folder) of the stored name.
    virtual bool exist() const;
    /// Whether pending transfers end within `timeoutMs`. There never are any, so: whether the file is open.
    virtual bool wait(unsigned long timeoutMs) const;
    /// Sets `time` to the local time at which the file was created; false when it is not open.
    virtual bool getCreationTime(daytime& time) const;

protected:
    /// Asks the system for the file's size; false when it does not tell, and the size is then 0.
    virtual bool _updateFileSize() const;

public:
    /// Size in bytes at this moment, also while somebody else writes; 0 when the file is not open.
    unsigned long long size() const;
    /// The stored name.
    const str& filename() const { return name_; }
    /// The system handle, or `INVALID_HANDLE_VALUE`.
    HANDLE handle() const { return handle_; }
    /// Offset in bytes of the next transfer.
    unsigned long long position() const { return position_; }

    /// Reads text up to the next delimiter, which is consumed but not returned, or up to the end. 16-bit or
    /// narrow text (current ANSI code page) as `unicode` tells. A line with a zero in it is cut there. False
    /// at the end of the file.
    bool readLine(str& line, wchar_t delimiter = L'\n');
    /// Writes the text up to and including its first delimiter, or all of it when there is none; as 16-bit or
    /// narrow text as `unicode` tells.
    bool writeLine(const str& text, wchar_t delimiter = L'\n');

protected:
    /// Stores the file's name without opening anything.
    void setName(const wchar_t* name) { name_ = name; }

private:
    bool openAs(unsigned long creation);
    bool readAt(unsigned long long offset, void* data, unsigned long n, unsigned long& done) const;
    bool beginText();

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    str name_;
    unsigned long creation_;
    unsigned long access_;
    bool wide_;
    bool unicode_ = false;
    unsigned long long position_ = 0;
    mutable unsigned long long size_ = 0;
};

} // namespace vcore
