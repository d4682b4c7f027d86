/// @file
/// The MD5 digest.
#pragma once

#include <array>
#include <cstddef>

namespace vcore {

/// The MD5 digest (RFC 1321) of `n` bytes. Fit to tell texts apart, not to keep secrets.
std::array<unsigned char, 16> md5Digest(const unsigned char* data, std::size_t n);

} // namespace vcore
