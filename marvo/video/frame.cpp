#include "marvo/video/frame.h"

#include "marvo/core/daytime.h"
#include "marvo/video/media_type.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

namespace vvideo {

namespace {

// The DV layout: blocks of 80 bytes, 150 to a sequence; block 0 is the header, 1 and 2 hold subcode, 3 to 5
// video auxiliary data, then come nine groups of one audio and 15 video blocks.
constexpr unsigned long blockSize = 80;
constexpr unsigned long blocksPerSequence = 150;
constexpr unsigned long sequenceSize = blocksPerSequence * blockSize;
constexpr unsigned long firstAudioBlock = 6;

/// Of an audio block: 3 bytes of id and 5 of auxiliary data come first.
constexpr unsigned long audioDataOffset = 8;

constexpr unsigned char datePack = 0x62;
constexpr unsigned char timePack = 0x63;

constexpr std::align_val_t pageAlignment{4096};

/// Larger buffers are refused: the run-time library adds the alignment without looking for an overflow.
constexpr unsigned long maxSize = 0x7FFFF000;

unsigned long bufferSize(IMediaSample& sample) {
    return static_cast<unsigned long>(std::max(sample.GetSize(), 0l));
}

BYTE* bufferOf(IMediaSample* sample) {
    BYTE* buffer = nullptr;
    return sample && SUCCEEDED(sample->GetPointer(&buffer)) ? buffer : nullptr;
}

/// The type byte of a sequence's block.
unsigned char sectionType(unsigned long block) {
    if (block == 0) {
        return 0x1F;
    }
    if (block <= 2) {
        return 0x3F;
    }
    if (block < firstAudioBlock) {
        return 0x5F;
    }
    return (block - firstAudioBlock) % 16 == 0 ? 0x7F : 0x9F;
}

constexpr unsigned char videoSection = 0x9F;

void paintGrayBlock(unsigned char* at, unsigned long sequence, unsigned long block) {
    at[0] = sectionType(block);
    at[1] = static_cast<unsigned char>(sequence * 16 + 7);
    if (at[0] != videoSection) {
        return;
    }
    for (unsigned long i = 2; i < blockSize; i += 2) {
        at[i] = 0x00;
        at[i + 1] = 0x06;
    }
}

/// A packed decimal of which only some bits of the tens count.
int decimal(unsigned char byte, int tensMask) {
    return (byte & 0x0F) + 10 * ((byte >> 4) & tensMask);
}

unsigned char packDecimal(int value) {
    return static_cast<unsigned char>(value / 10 << 4 | value % 10);
}

bool readDate(const unsigned char* pack, SYSTEMTIME& time) {
    const int day = decimal(pack[2], 3);
    const int month = decimal(pack[3], 1);
    time.wYear = static_cast<WORD>(2000 + decimal(pack[4], 15));
    if (day < 1 || day > 31 || month < 1 || month > 12) {
        return false;
    }
    time.wDay = static_cast<WORD>(day);
    time.wMonth = static_cast<WORD>(month);
    return true;
}

bool readTime(const unsigned char* pack, int framesPerSecond, SYSTEMTIME& time) {
    const int frames = decimal(pack[1], 3);
    const int seconds = decimal(pack[2], 7);
    const int minutes = decimal(pack[3], 7);
    const int hours = decimal(pack[4], 3);
    if (seconds > 59 || minutes > 59 || hours > 23) {
        return false;
    }
    time.wHour = static_cast<WORD>(hours);
    time.wMinute = static_cast<WORD>(minutes);
    time.wSecond = static_cast<WORD>(seconds);
    time.wMilliseconds = static_cast<WORD>(frames * 1000 / framesPerSecond);
    return true;
}

/// Two subcode sync blocks with date and time, as they stand in a subcode block from offset 35 on.
void writeSyncBlocks(unsigned char* at, bool firstBlock, const SYSTEMTIME& time, int framesPerSecond) {
    const int year = time.wYear;
    const unsigned char bytes[] = {
        0x75,
        static_cast<unsigned char>(firstBlock ? 0x34 : 0x3A),
        0xFF,
        datePack,
        0xFF, // no time zone
        static_cast<unsigned char>(0xC0 | packDecimal(time.wDay)),
        static_cast<unsigned char>(0xE0 | packDecimal(time.wMonth)),
        static_cast<unsigned char>((year - 2000) / 10 << 4 | year % 10),
        static_cast<unsigned char>(firstBlock ? 0x70 : 0x00),
        static_cast<unsigned char>(firstBlock ? 0x05 : 0x0B),
        0xFF,
        timePack,
        static_cast<unsigned char>(0xC0 | packDecimal(framesPerSecond * time.wMilliseconds / 1000)),
        static_cast<unsigned char>(0x80 | packDecimal(time.wSecond)),
        static_cast<unsigned char>(0x80 | packDecimal(time.wMinute)),
        static_cast<unsigned char>(0xC0 | packDecimal(time.wHour)),
    };
    std::memcpy(at, bytes, sizeof(bytes));
}

} // namespace

void dvFrame::PageFree::operator()(unsigned char* page) const {
    operator delete[](page, pageAlignment);
}

dvFrame::dvFrame(unsigned long size, const void* src) {
    if (allocate(size) && src) {
        std::memcpy(data(), src, size_);
    }
}

dvFrame& dvFrame::operator=(const dvFrame& source) {
    if (this != &source) {
        init(source.size_);
        source.copyTo(this);
        id_ = source.id_;
        access_ = source.access_;
    }
    return *this;
}

bool dvFrame::init(unsigned long size) {
    if (vcore::isNullObject(this)) {
        return false;
    }
    return size == size_ || allocate(size);
}

bool dvFrame::allocate(unsigned long size) {
    data_.reset();
    if (size && size <= maxSize) {
        data_.reset(static_cast<unsigned char*>(operator new[](size, pageAlignment, std::nothrow)));
    }
    size_ = data_ ? size : 0;
    return data_ != nullptr;
}

bool dvFrame::copyFrom(IMediaSample* sample) {
    const BYTE* const buffer = bufferOf(sample);
    if (!buffer || !data_) {
        return false;
    }
    std::memcpy(data(), buffer, std::min(size_, bufferSize(*sample)));
    return true;
}

bool dvFrame::copyTo(IMediaSample* sample) const {
    BYTE* const buffer = bufferOf(sample);
    if (!buffer || !data_) {
        return false;
    }
    std::memcpy(buffer, data(), std::min(size_, bufferSize(*sample)));
    return true;
}

bool dvFrame::copyTo(dvFrame* dst) const {
    if (!dst || !data_ || !dst->data_) {
        return false;
    }
    std::memmove(dst->data(), data(), std::min(size_, dst->size_));
    return true;
}

bool dvFrame::copy(IMediaSample* dst, IMediaSample* src) {
    BYTE* const to = bufferOf(dst);
    const BYTE* const from = bufferOf(src);
    if (!to || !from) {
        return false;
    }
    const long length = std::min(dst->GetActualDataLength(), src->GetActualDataLength());
    const unsigned long room = std::min(bufferSize(*dst), bufferSize(*src));
    std::memmove(to, from, std::min(static_cast<unsigned long>(std::max(length, 0l)), room));

    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (SUCCEEDED(src->GetTime(&start, &stop))) {
        dst->SetTime(&start, &stop);
    } else {
        dst->SetTime(nullptr, nullptr);
    }
    if (SUCCEEDED(src->GetMediaTime(&start, &stop))) {
        dst->SetMediaTime(&start, &stop);
    } else {
        dst->SetMediaTime(nullptr, nullptr);
    }
    dst->SetDiscontinuity(src->IsDiscontinuity() == S_OK);
    dst->SetPreroll(src->IsPreroll() == S_OK);
    dst->SetSyncPoint(src->IsSyncPoint() == S_OK);
    return true;
}

bool dvFrame::fillGray() {
    if (!data_) {
        return false;
    }
    std::memset(data(), 0xFF, size_);
    const unsigned long sequences = std::min(size_ / sequenceSize, size_ < palFrameSize ? 10ul : 12ul);
    for (unsigned long sequence = 0; sequence < sequences; ++sequence) {
        for (unsigned long block = 0; block < blocksPerSequence; ++block) {
            paintGrayBlock(data() + sequence * sequenceSize + block * blockSize, sequence, block);
        }
    }
    return true;
}

int dvFrame::getAudioLeft() const {
    return audioSample(0);
}

int dvFrame::getAudioRight() const {
    // The header block tells the system, and with it where the frame's second half begins.
    const bool fiftyFields = size_ > 3 && data()[3] >= 0x80;
    return audioSample(fiftyFields ? 900 : 750);
}

/// The first sample of the first audio block behind `block`.
int dvFrame::audioSample(unsigned long block) const {
    const unsigned long at = (block + firstAudioBlock) * blockSize + audioDataOffset;
    if (at + 2 > size_) {
        return 0;
    }
    return static_cast<std::int16_t>(data()[at] << 8 | data()[at + 1]);
}

int dvFrame::framesPerSecond() const {
    return size_ > ntscFrameSize ? 25 : 30;
}

bool dvFrame::getDate(vcore::daytime& t) const {
    // Subcode block 1 of sequences 6 to 9: the second half of a frame of either system.
    constexpr unsigned long first = 6 * sequenceSize + blockSize;
    constexpr unsigned long end = 10 * sequenceSize + blockSize;
    constexpr unsigned long packs[] = {6, 14, 22, 30, 38, 46};

    std::optional<bool> date;
    bool time = false;
    for (unsigned long block = first; block < end && block + blockSize <= size_ && !time;
         block += sequenceSize) {
        for (const unsigned long offset : packs) {
            const unsigned char* const pack = data() + block + offset;
            if (pack[0] == datePack && !date) {
                date = readDate(pack, t.fields());
            } else if (pack[0] == timePack && !time) {
                time = readTime(pack, framesPerSecond(), t.fields());
            }
        }
    }
    t.updateFileTime();
    return date.value_or(false) && time;
}

void dvFrame::setDate(const vcore::daytime& t) {
    constexpr unsigned long syncBlocks = 35;
    const unsigned long sequences = size_ / sequenceSize;
    for (unsigned long sequence = sequences / 2; sequence < sequences; ++sequence) {
        for (const unsigned long block : {1ul, 2ul}) {
            writeSyncBlocks(data() + sequence * sequenceSize + block * blockSize + syncBlocks, block == 1,
                            t.fields(), framesPerSecond());
        }
    }
}

} // namespace vvideo
