/// @file
/// The recordings that commands read.
#pragma once

#include "marvo/recording/searched_reader.h"

#include <memory>
#include <string>

namespace dvrec {

/// The kind in words.
const char* describe(recording::Kind kind);

/// Opens a recording as what its first bytes say. `sector` is that of the volume on which a raw recording was
/// made, 0 to find out. Throws the `Failure` when the file cannot be opened, is empty or is none of the
/// kinds.
std::unique_ptr<recording::Reader> openRecording(const std::wstring& name, unsigned long sector);

/// Searches a damaged recording for its frames. Throws the `Failure` when the file cannot be opened, is
/// empty, or there is no frame in it; and what `progress` throws.
std::unique_ptr<recording::SearchedReader> openDamaged(const std::wstring& name,
                                                       const recording::Reader::ProgressCall& progress);

/// The kind that the name of a file means which is made for other programs, or "-". Throws the `Failure` when
/// it means none.
const recording::KindRow& kindOfExport(const std::wstring& out);

/// Makes room for frames. Throws the `Failure` when there is no memory.
void allocate(recording::RecordBuffer& buffer, unsigned long bytes);

/// Reads a frame that is there. False, with the reason in `fault` as a predicate, when that fails.
bool readFrame(recording::Reader& from, unsigned long long frame, recording::RecordBuffer& buffer,
               std::string& fault);

} // namespace dvrec
