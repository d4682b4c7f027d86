#include "devices/dv_layout.h"

namespace devices {

namespace {

const int segments_per_sequence = 27;
const int parts_per_segment = 5;
const int blocks_per_sequence = 150;
const int blocks_before_video = 6; // header, two of subcode, three of VAUX
const int video_blocks_per_audio_block = 15;
const int block_size = 8;      // pixels and lines
const int superblock_rows = 6; // of blocks

/// Which superblock each part of a segment comes from: the column, and the row relative to the segment's
/// sequence.
const struct {
    int column;
    int row_offset;
} shuffle[parts_per_segment] = {{2, 2}, {1, 6}, {3, 8}, {0, 0}, {4, 4}};

/// Down one column, up the next: the order of macroblocks within a superblock.
void serpentine(int index, int height, int& column, int& row) {
    column = index / height;
    row = index % height;
    if (column % 2) {
        row = height - 1 - row;
    }
}

/// The byte offset of a sequence's n-th video block, past the audio block that precedes every fifteen.
uint32_t block_offset(int sequence, int video_block) {
    const int audio_blocks = video_block / video_blocks_per_audio_block + 1;
    const int block = sequence * blocks_per_sequence + blocks_before_video + audio_blocks + video_block;
    return static_cast<uint32_t>(block * dv_layout::block_bytes);
}

} // namespace

const dv_layout& dv_layout::of(const dv_system& system) {
    static const dv_layout pal(dv_system::pal_system());
    static const dv_layout ntsc(dv_system::ntsc_system());
    return system.pal ? pal : ntsc;
}

dv_layout::dv_layout(const dv_system& system) {
    for (int sequence = 0; sequence < system.sequences; ++sequence) {
        for (int segment = 0; segment < segments_per_sequence; ++segment) {
            for (int part = 0; part < parts_per_segment; ++part) {
                macroblocks_.push_back(place(system, sequence, segment, part));
            }
        }
    }
}

dv_macroblock dv_layout::place(const dv_system& system, int sequence, int segment, int part) {
    const int superblock_column = shuffle[part].column;
    const int superblock_row = (sequence + shuffle[part].row_offset) % system.sequences;
    int column, row; // of the macroblock's first block
    bool square = true;
    if (system.pal) {
        // 9 x 3 macroblocks of 2 x 2 blocks.
        serpentine(segment, 3, column, row);
        column = superblock_column * 18 + column * 2;
        row *= 2;
    } else {
        // 4 1/2 columns of 6 macroblocks of 4 x 1 blocks: superblocks 1 and 3 begin halfway down a column
        // that their left neighbours began, and the half column at the picture's right edge is made of 2 x 2
        // blocks instead.
        static const int first_column[] = {0, 4, 9, 13, 18};
        const bool begins_halfway = superblock_column % 2 == 1;
        serpentine(segment + (begins_halfway ? 3 : 0), superblock_rows, column, row);
        column = (first_column[superblock_column] + column) * 4;
        square = (column + 4) * block_size > system.width;
        if (square) {
            row *= 2;
        }
    }
    row += superblock_row * superblock_rows;
    return {block_offset(sequence, segment * parts_per_segment + part),
            static_cast<uint16_t>(column * block_size), static_cast<uint16_t>(row * block_size), square};
}

} // namespace devices
