/// @file
/// Copying a stream into an AVI file, timed.
#pragma once

/// Exports a DV stream as a new AVI file without a sound stream. Returns the seconds that the whole export
/// took. Throws std::runtime_error when it fails.
double copyStream_s(const wchar_t* stream, const wchar_t* avi);
