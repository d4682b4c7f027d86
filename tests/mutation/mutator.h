/// @file
/// Damages files in memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

/// Damages files in memory, mostly where their structure is. What is done depends on the random numbers
/// alone.
class Mutator {
public:
    using Random = std::mt19937;

    /// `spots` are the offsets of what tells the file's structure: 32-bit values, four-character codes.
    Mutator(std::string bytes, std::vector<size_t> spots)
        : bytes_(std::move(bytes)), spots_(std::move(spots)) {}

    /// Makes `file` a copy with one to four kinds of damage; pieces of `other` may have come into it.
    void mutate(std::string& file, Random& random, const Mutator& other) const {
        file = bytes_;
        for (auto times = 1 + random() % 4; times > 0; --times) {
            damage(file, random, other);
        }
    }

private:
    size_t spot(Random& random) const {
        return random() % 16 == 0 ? random() % bytes_.size() : spots_[random() % spots_.size()];
    }

    std::uint32_t value(const std::string& file, size_t at, Random& random) const {
        std::uint32_t old = 0;
        std::memcpy(&old, &file[at], sizeof(old));
        const auto size = static_cast<std::uint32_t>(file.size()), here = static_cast<std::uint32_t>(at);
        const auto elsewhere = static_cast<std::uint32_t>(spot(random));
        const auto any = static_cast<std::uint32_t>(random());
        const std::uint32_t values[] = {0,          1,       7,        0x7FFFFFFF, 0x80000000,  0xFFFFFFFF,
                                        0xFFFFFFF7, size,    size + 1, size - 1,   size - here, here,
                                        old + 1,    old - 1, old * 2,  elsewhere,  any};
        return values[random() % std::size(values)];
    }

    void damage(std::string& file, Random& random, const Mutator& other) const {
        const size_t at = spot(random), from = spot(random);
        if (at + 8 > file.size() || from + 8 > file.size()) {
            return;
        }
        const size_t bytes = 1 + random() % (random() % 4 == 0 ? 0x4000 : 64);
        switch (random() % 16) {
        case 0:
        case 1:
            file[at + random() % 8] ^= static_cast<char>(1 << random() % 8);
            break;
        case 2:
            file[at + random() % 8] = random() % 2 != 0 ? '\0' : '\xFF';
            break;
        case 3:
            std::memset(&file[at], random() % 2 != 0 ? 0 : 0xFF, std::min(bytes, file.size() - at));
            break;
        case 4: {
            static constexpr char codes[][5] = {"RIFF", "LIST", "movi", "AVIX", "00dc", "01db",
                                                "idx1", "JUNK", "indx", "ix00", "00ix", "rec ",
                                                "strh", "strf", "vids", "auds"};
            file.replace(at, 4, codes[random() % std::size(codes)], 4);
            break;
        }
        case 5: // a block stands a second time in the place of another
            file.replace(at, std::min(bytes, file.size() - at), file.substr(from, bytes));
            break;
        case 6: // chunks have changed places
            std::swap_ranges(&file[at], &file[at] + 8, &file[from]);
            break;
        case 7:
            file.resize(at + random() % 16);
            break;
        case 8:
            file.insert(at, file.substr(from, bytes));
            break;
        case 9:
            file.erase(at, bytes);
            break;
        case 10: // its head, and the tail of another file
            file.replace(at, file.npos, other.bytes_, std::min(other.spot(random), other.bytes_.size()));
            break;
        default: {
            const std::uint32_t number = value(file, at, random);
            std::memcpy(&file[at], &number, sizeof(number));
        }
        }
    }

    std::string bytes_;
    std::vector<size_t> spots_;
};
