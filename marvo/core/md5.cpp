#include "marvo/core/md5.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vcore {

namespace {

constexpr std::size_t blockSize = 64;
constexpr std::size_t lengthSize = 8;

using Words = std::array<std::uint32_t, 4>;

/// The constant of each step: the first 32 bits behind the point of |sin(step + 1)|.
std::array<std::uint32_t, 64> makeSines() {
    std::array<std::uint32_t, 64> sines;
    for (std::size_t i = 0; i < sines.size(); ++i) {
        sines[i] = static_cast<std::uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
    }
    return sines;
}

std::uint32_t loadWord(const unsigned char* p) {
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

/// The round's function of the digest's last three words, and which word of the block goes with it.
std::uint32_t mix(std::size_t step, const Words& w, std::size_t& word) {
    const std::uint32_t b = w[1], c = w[2], d = w[3];
    switch (step / 16) {
    case 0:
        word = step;
        return (b & c) | (~b & d);
    case 1:
        word = (5 * step + 1) % 16;
        return (d & b) | (~d & c);
    case 2:
        word = (3 * step + 5) % 16;
        return b ^ c ^ d;
    default:
        word = 7 * step % 16;
        return c ^ (b | ~d);
    }
}

void addBlock(Words& digest, const unsigned char* block) {
    static const std::array<std::uint32_t, 64> sines = makeSines();
    static constexpr int turns[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    Words w = digest;
    for (std::size_t step = 0; step < sines.size(); ++step) {
        std::size_t word = 0;
        const std::uint32_t sum = w[0] + mix(step, w, word) + sines[step] + loadWord(block + 4 * word);
        w = {w[3], w[1] + std::rotl(sum, turns[step / 16][step % 4]), w[1], w[2]};
    }
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] += w[i];
    }
}

} // namespace

std::array<unsigned char, 16> md5Digest(const unsigned char* data, std::size_t n) {
    Words words = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    std::size_t done = 0;
    for (; n - done >= blockSize; done += blockSize) {
        addBlock(words, data + done);
    }

    // The rest, a bit that is set, zeros, and the number of bits.
    unsigned char tail[2 * blockSize] = {};
    const std::size_t rest = n - done;
    if (rest > 0) {
        std::memcpy(tail, data + done, rest);
    }
    tail[rest] = 0x80;
    const std::size_t size = rest + 1 + lengthSize <= blockSize ? blockSize : 2 * blockSize;
    for (std::size_t i = 0; i < lengthSize; ++i) {
        tail[size - lengthSize + i] = static_cast<unsigned char>(std::uint64_t{n} * 8 >> (8 * i));
    }
    for (std::size_t i = 0; i < size; i += blockSize) {
        addBlock(words, tail + i);
    }

    std::array<unsigned char, 16> digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<unsigned char>(words[i / 4] >> (8 * (i % 4)));
    }
    return digest;
}

} // namespace vcore
