#include "bench/synthetic_avi.h"

#include <winioctl.h>

#include <algorithm>
#include <stdexcept>

namespace {

constexpr unsigned long sector = 4096;
constexpr unsigned long chunkHeader = 8;
constexpr unsigned long slot = SyntheticAvi::frameSize / sector * sector + sector;
constexpr unsigned long framesPerIndex = 2044;
constexpr unsigned long framesPerPiece = 7200;
constexpr unsigned long indexBlock = 16384;
constexpr unsigned long framesWithHeaders = 40;
constexpr unsigned long moviHeader = 12;

/// Little-endian numbers and four-character codes one behind the other.
class Bytes {
public:
    Bytes& code(const char* text) {
        bytes_.append(text, 4);
        return *this;
    }
    Bytes& number(unsigned long long value, int size = 4) {
        for (int i = 0; i < size; ++i) {
            bytes_ += static_cast<char>(value >> 8 * i & 0xFF);
        }
        return *this;
    }
    Bytes& zeros(size_t count) {
        bytes_.append(count, '\0');
        return *this;
    }
    Bytes& append(const std::string& bytes) {
        bytes_ += bytes;
        return *this;
    }
    const std::string& text() const { return bytes_; }

private:
    std::string bytes_;
};

std::string chunk(const char* id, const std::string& data) {
    return Bytes().code(id).number(data.size()).append(data).text();
}

std::string list(const char* type, const std::string& chunks) {
    return chunk("LIST", type + chunks);
}

/// A "JUNK" chunk of `size` bytes with its header, of which only the header is returned: the rest is zero
/// anyway.
std::string junkHeader(unsigned long long size) {
    return Bytes().code("JUNK").number(size - chunkHeader).text();
}

std::string mainHeader(unsigned long firstPieceFrames) {
    return chunk("avih", Bytes()
                             .number(40000)
                             .number(SyntheticAvi::frameSize * 25)
                             .number(sector)
                             .number(0x10010)
                             .number(firstPieceFrames)
                             .number(0)
                             .number(1)
                             .number(SyntheticAvi::frameSize)
                             .number(720)
                             .number(576)
                             .zeros(16)
                             .text());
}

std::string streamHeader(unsigned long frames) {
    return chunk("strh", Bytes()
                             .code("vids")
                             .code("dvsd")
                             .zeros(12)
                             .number(100)
                             .number(2500)
                             .number(0)
                             .number(frames)
                             .number(SyntheticAvi::frameSize)
                             .zeros(12)
                             .number(720, 2)
                             .number(576, 2)
                             .text());
}

std::string streamFormat() {
    return chunk("strf", Bytes()
                             .number(40)
                             .number(720)
                             .number(576)
                             .number(1, 2)
                             .number(24, 2)
                             .code("dvsd")
                             .number(SyntheticAvi::frameSize)
                             .zeros(16)
                             .text());
}

} // namespace

SyntheticAvi::SyntheticAvi(const wchar_t* name, unsigned long frames)
    : file_(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)),
      frames_(frames), stride_(std::max(frames / framesWithHeaders, 1ul)) {
    // Where the system does not know sparse files by name, gaps cost nothing anyway.
    DWORD ignored = 0;
    DeviceIoControl(file_.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
    for (unsigned long first = 0; first < frames; first += framesPerPiece) {
        writePiece(first, std::min(frames, first + framesPerPiece));
    }
    const std::string begin = headers(std::min(frames, framesPerPiece));
    write(12, begin);
    write(12 + begin.size(), junkHeader(headerSize - moviHeader - 12 - begin.size()));
    file_.reset();
}

void SyntheticAvi::writePiece(unsigned long first, unsigned long behind) {
    Piece piece{0, headerSize - moviHeader, headerSize, first, behind};
    if (first != 0) {
        piece = {end_, end_ + sector - moviHeader, end_ + sector, first, behind};
        write(piece.riff + 12, junkHeader(sector - 12 - moviHeader));
    }
    end_ = piece.frames;
    for (unsigned long k = first; k < behind; k += framesPerIndex) {
        const unsigned long last = std::min(behind, k + framesPerIndex);
        writeFrames(k, last);
        writeStandardIndex(k, last, piece.riff);
    }
    const unsigned long long moviEnd = end_;
    if (first == 0) {
        writeLegacyIndex(piece);
    }
    const unsigned long long pieceEnd = (end_ + chunkHeader + sector - 1) / sector * sector;
    write(end_, junkHeader(pieceEnd - end_));
    // The last byte, so that the file is as long as its sizes say.
    write(pieceEnd - 1, std::string(1, '\0'));
    end_ = pieceEnd;
    writePieceHeader(piece, moviEnd);
}

void SyntheticAvi::writeFrames(unsigned long first, unsigned long behind) {
    for (unsigned long k = first; k < behind; ++k) {
        if (k % stride_ == 0 || k == first || k == behind - 1) {
            const unsigned long long offset = end_ + static_cast<unsigned long long>(k - first) * slot;
            write(offset, Bytes().code("00dc").number(frameSize).text());
            write(offset + chunkHeader + frameSize, junkHeader(slot - chunkHeader - frameSize));
        }
    }
    end_ += static_cast<unsigned long long>(behind - first) * slot;
}

void SyntheticAvi::writeStandardIndex(unsigned long first, unsigned long behind, unsigned long long base) {
    const unsigned long count = behind - first;
    const unsigned long long frames = end_ - static_cast<unsigned long long>(count) * slot;
    Bytes entries;
    entries.number(2, 2).number(0, 1).number(1, 1).number(count).code("00dc").number(base, 8).number(0);
    for (unsigned long k = 0; k < count; ++k) {
        entries.number(frames + static_cast<unsigned long long>(k) * slot + chunkHeader - base)
            .number(frameSize);
    }
    entries.zeros(indexBlock - chunkHeader - entries.text().size());
    write(end_, chunk("00ix", entries.text()));
    indexes_.push_back({end_, indexBlock});
    durations_.push_back(count);
    end_ += indexBlock;
}

void SyntheticAvi::writeLegacyIndex(const Piece& piece) {
    Bytes entries;
    for (unsigned long k = piece.first; k < piece.behind; ++k) {
        const unsigned long indexesBefore = k / framesPerIndex;
        const unsigned long long offset =
            piece.frames + static_cast<unsigned long long>(k) * slot + indexesBefore * indexBlock;
        entries.code("00dc").number(0x10).number(offset - piece.movi - chunkHeader).number(frameSize);
    }
    write(end_, chunk("idx1", entries.text()));
    end_ += chunkHeader + entries.text().size();
}

void SyntheticAvi::writePieceHeader(const Piece& piece, unsigned long long moviEnd) {
    write(piece.riff, Bytes()
                          .code("RIFF")
                          .number(end_ - piece.riff - chunkHeader)
                          .code(piece.first == 0 ? "AVI " : "AVIX")
                          .text());
    write(piece.movi, Bytes().code("LIST").number(moviEnd - piece.movi - chunkHeader).code("movi").text());
}

std::string SyntheticAvi::headers(unsigned long firstPieceFrames) const {
    const std::string stream =
        list("strl", streamHeader(frames_) + streamFormat() + chunk("indx", superIndex()));
    const std::string extended = list("odml", chunk("dmlh", Bytes().number(frames_).zeros(244).text()));
    return list("hdrl", mainHeader(firstPieceFrames) + stream + extended);
}

std::string SyntheticAvi::superIndex() const {
    Bytes index;
    index.number(4, 2).number(0, 2).number(indexes_.size()).code("00dc").zeros(12);
    for (size_t i = 0; i < indexes_.size(); ++i) {
        index.number(indexes_[i].offset, 8).number(indexes_[i].size).number(durations_[i]);
    }
    return index.zeros(indexBlock - chunkHeader - index.text().size()).text();
}

void SyntheticAvi::write(unsigned long long offset, const std::string& bytes) {
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD done = 0;
    if (!WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, &position) ||
        done != bytes.size()) {
        throw std::runtime_error("the disk takes no synthetic recording");
    }
}
