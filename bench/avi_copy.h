/// @file
/// Copying a stream into an AVI file, timed.
#pragma once

/// Copies a raw DV stream of PAL frames frame by frame into a new AVI file, as a converter does: reads a
/// frame, writes it through `dvAVIFile`. Returns the seconds from when both files are open until the AVI file
/// is closed. Throws std::runtime_error when it cannot.
double copyStream_s(const wchar_t* stream, const wchar_t* avi);
