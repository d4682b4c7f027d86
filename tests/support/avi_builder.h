/// @file
/// AVI files as programs of all kinds write them.
#pragma once

#include "marvo/avi/riff.h"
#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

/// Composes AVI files in memory, as programs of all kinds write them.
namespace avi {

/// What the sound of a file holds at `place`.
inline unsigned char soundByte(size_t place) {
    return static_cast<unsigned char>(place % 251);
}

enum class Index { None, Relative, Absolute, Standard, StandardAndRelative };

/// What a file is like.
struct Shape {
    unsigned long frames = 6; ///< in all pieces together
    unsigned long frameSize = samples::ntscSize;
    Index index = Index::Relative;
    unsigned long pieces = 1;
    const char* tag = "dc";
    const char* handler = "dvsd";
    const char* compression = "dvsd";
    unsigned long audioBytes = 0; ///< of the sound in front of a frame, every fourth time 4 more; 0: no sound
    bool audioFirst = false;      ///< whether the sound is stream 0
    bool recLists = false;
    bool padded = true;  ///< whether chunks of odd size are padded
    bool drops = false;  ///< an empty chunk behind every frame
    bool starts = false; ///< whether DIF sequences begin as they should
};

class File {
public:
    std::string bytes;
    std::vector<size_t> frameOffsets; ///< of the chunk headers

    explicit File(const Shape& shape = {}) : shape_(shape) {
        const unsigned long perPiece = (shape.frames + shape.pieces - 1) / shape.pieces;
        for (unsigned long piece = 0; piece < shape.pieces; ++piece) {
            const size_t riff = begin("RIFF", piece == 0 ? "AVI " : "AVIX");
            if (piece == 0) {
                headers();
            }
            movi_ = begin("LIST", "movi");
            const unsigned long first = piece * perPiece;
            const unsigned long behind = std::min(shape.frames, first + perPiece);
            for (unsigned long k = first; k < behind; ++k) {
                frame(k);
            }
            if (shape.index >= Index::Standard) {
                standardIndex(first, behind);
            }
            end(movi_);
            if (piece == 0 && shape.index != Index::None && shape.index != Index::Standard) {
                chunk("idx1", legacy_);
            }
            end(riff);
        }
    }

    /// The 32-bit number at `offset`.
    void set(size_t offset, std::uint32_t value) { std::memcpy(&bytes[offset], &value, sizeof(value)); }

    /// Where a text stands `skip` bytes behind its first appearance from `from` on.
    size_t find(const char* text, size_t skip = 0, size_t from = 0) const {
        return bytes.find(text, from) + skip;
    }

    void save(const wchar_t* name) const { write(name, bytes); }

    static void write(const wchar_t* name, const std::string& content) {
        std::ofstream file(std::filesystem::path(name), std::ios::binary);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
    }

    static std::string read(const wchar_t* name) {
        std::ifstream file(std::filesystem::path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    template <class Structure>
    static std::string text(const Structure& structure) {
        return {reinterpret_cast<const char*>(&structure), sizeof(structure)};
    }

    size_t begin(const char* id, const char* type) {
        const size_t at = bytes.size();
        bytes += id + std::string(4, '\0') + type;
        return at;
    }

    void end(size_t list) { set(list + 4, u32(bytes.size() - list - 8)); }

    void chunk(const std::string& id, const std::string& data) {
        bytes += id + text(u32(data.size())) + data;
        if (shape_.padded && data.size() % 2 != 0) {
            bytes += '\0';
        }
    }

    std::string id(const char* tag, bool sound = false) const {
        const bool one = shape_.audioBytes != 0 && sound != shape_.audioFirst;
        return std::string(one ? "01" : "00") + tag;
    }

    static std::uint32_t code(const std::string& text) {
        std::uint32_t value = 0;
        std::memcpy(&value, text.data(), sizeof(value));
        return value;
    }

    static std::uint32_t u32(size_t value) { return static_cast<std::uint32_t>(value); }

    void headers() {
        const size_t hdrl = begin("LIST", "hdrl");
        riff::MainHeader main{};
        main.flags = shape_.index == Index::None || shape_.index == Index::Standard ? 0 : 0x10;
        main.streams = shape_.audioBytes != 0 ? 2 : 1;
        main.totalFrames = (shape_.frames + shape_.pieces - 1) / shape_.pieces;
        chunk("avih", text(main));
        for (const bool sound : {shape_.audioFirst, !shape_.audioFirst}) {
            if (!sound || shape_.audioBytes != 0) {
                stream(sound);
            }
        }
        const size_t odml = begin("LIST", "odml");
        chunk("dmlh", text(u32(shape_.frames)) + std::string(244, '\0'));
        end(odml);
        end(hdrl);
    }

    void stream(bool sound) {
        const size_t strl = begin("LIST", "strl");
        riff::StreamHeader header{};
        header.type = riff::fourcc(sound ? "auds" : "vids");
        header.handler = sound ? 0 : code(shape_.handler);
        header.scale = 1001;
        header.rate = 30000;
        header.length = shape_.frames * (!sound && shape_.drops ? 2 : 1);
        chunk("strh", text(header));
        riff::BitmapHeader format{sizeof(format), 720, 480, 1, 24, code(shape_.compression), 0, 0, 0, 0, 0};
        format.sizeImage = shape_.frameSize;
        const riff::WaveFormat wave{riff::pcm, 1, 8000, 8000, 1, 8};
        chunk("strf", sound ? text(wave) + std::string(2, '\0') : text(format));
        if (!sound && shape_.index >= Index::Standard) {
            super_ = bytes.size() + 8;
            riff::IndexHeader index{4, 0, 0, 0, code(id(shape_.tag)), 0, 0, 0};
            chunk("indx", text(index) + std::string(shape_.pieces * sizeof(riff::SuperIndexEntry), '\0'));
        }
        end(strl);
    }

    void frame(unsigned long k) {
        const size_t rec = shape_.recLists ? begin("LIST", "rec ") : 0;
        if (shape_.audioBytes != 0) {
            std::string sound(shape_.audioBytes + k % 4 / 3 * 4, '\0');
            for (char& byte : sound) {
                byte = static_cast<char>(soundByte(soundBytes_++));
            }
            entry(id("wb", true), sound);
        }
        auto data = samples::bytes(k, shape_.frameSize);
        if (shape_.starts) {
            for (unsigned long sequence = 0; sequence < data.size() / 12000; ++sequence) {
                std::copy_n(std::string{'\x1f', static_cast<char>(sequence << 4 | 7), '\0'}.begin(), 3,
                            data.begin() + static_cast<std::ptrdiff_t>(sequence * 12000));
            }
        }
        frameOffsets.push_back(bytes.size());
        entry(id(shape_.tag), {data.begin(), data.end()});
        if (shape_.drops) {
            entry(id(shape_.tag), "");
        }
        if (rec != 0) {
            end(rec);
        }
    }

    void entry(const std::string& id, const std::string& data) {
        const size_t base = shape_.index == Index::Absolute ? 0 : movi_ + 8;
        legacy_ += text(riff::LegacyIndexEntry{code(id), 0x10, u32(bytes.size() - base), u32(data.size())});
        chunk(id, data);
    }

    void standardIndex(unsigned long first, unsigned long behind) {
        const riff::IndexHeader header{2, 0, 1, u32(behind - first), code(id(shape_.tag)), u32(movi_), 0, 0};
        std::string data = text(header);
        for (unsigned long k = first; k < behind; ++k) {
            data += text(riff::StandardIndexEntry{u32(frameOffsets[k] + 8 - movi_),
                                                  u32(shape_.frameSize) | (k % 2 != 0 ? 0x80000000u : 0)});
        }
        const riff::SuperIndexEntry entry{u32(bytes.size()), 0, u32(data.size() + 8), u32(behind - first)};
        std::uint32_t inUse = 0;
        std::memcpy(&inUse, &bytes[super_ + 4], sizeof(inUse));
        std::memcpy(&bytes[super_ + sizeof(header) + inUse * sizeof(entry)], &entry, sizeof(entry));
        set(super_ + 4, inUse + 1);
        chunk(shape_.audioBytes != 0 && shape_.audioFirst ? "ix01" : "ix00", data);
    }

    Shape shape_;
    size_t movi_ = 0;
    size_t super_ = 0;
    size_t soundBytes_ = 0;
    std::string legacy_;
};

/// Opens a file and compares every frame with its seed, which is `first` for the first; the number of frames,
/// -1 when the file does not open.
inline long framesRead(const wchar_t* name, unsigned long frameSize = samples::ntscSize,
                       std::uint32_t first = 0) {
    FileIOAVI file;
    if (file.open(name) != FileIOAVI::Ok) {
        return -1;
    }
    std::vector<char> slot(file.slotSize());
    for (unsigned long k = 0; k < file.frames(); ++k) {
        EXPECT_EQ(file.readFrame(slot.data(), file.slotSize(), k), FileIOAVI::Ok) << file.lastError();
        EXPECT_TRUE(samples::holds(reinterpret_cast<unsigned char*>(&slot[8]), first + k, frameSize)) << k;
    }
    return static_cast<long>(file.frames());
}

} // namespace avi
