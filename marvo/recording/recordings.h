/// @file
/// Which kind of recording a name or a file means, and the reader or writer for it.
#pragma once

#include "marvo/recording/reader.h"
#include "marvo/recording/writer.h"

namespace recording {

/// The kind that a recording of this name is written as, and looked for when it is replayed: AVI when the
/// name holds
/// ".avi" in any letter case anywhere behind its first character, else raw. A name that begins with ".avi"
/// means a raw recording.
Kind kindOfName(const wchar_t* name);

/// Opens the recording `name` for reading, as the kind that its name means; what is no raw recording although
/// its name means one, and begins as a DV stream, is read as such. Null when it cannot be opened or read;
/// `error`, when given, then says why.
std::unique_ptr<Reader> openReader(const wchar_t* name, std::wstring* error = nullptr);

/// Creates the recording `name` in place of a file of that name, as the kind that the name means, for frames
/// of `frameSize` bytes. Others may read it meanwhile. Null when it cannot be created; `error`, when given,
/// then says why.
std::unique_ptr<Writer> createWriter(const wchar_t* name, unsigned long frameSize,
                                     long long timePerFrame_100ns, std::wstring* error = nullptr);

} // namespace recording
