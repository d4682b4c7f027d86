/* Where the members of the structures of marvo_c.h lie: the same for every compiler and target, for ever.
 * Compiled, not run: a size that is not right makes an array of -1. */
#include "marvo_c.h"

#include <stddef.h>

#define SAME(name, left, right) typedef char name[(left) == (right) ? 1 : -1]
#define LAYOUT(structure, bytes, member, offset)                                                             \
    SAME(size_of_##structure, sizeof(struct structure), bytes);                                              \
    SAME(place_in_##structure, offsetof(struct structure, member), offset)

SAME(size_of_u32, sizeof(marvo_u32), 4);
SAME(size_of_i64, sizeof(marvo_i64), 8);
SAME(size_of_result, sizeof(enum marvo_result), 4);
LAYOUT(marvo_setting_info, 280, meaning, 88);
LAYOUT(marvo_status_info, 416, first_error_text, 224);
SAME(place_of_speed, offsetof(struct marvo_status_info, speed), 152);
LAYOUT(marvo_play_info, 56, speed, 48);
LAYOUT(marvo_event, 240, text, 48);
LAYOUT(marvo_frame_info, 104, upper_field_first, 100);
LAYOUT(marvo_sound_info, 28, locked, 24);
LAYOUT(marvo_picture_info, 28, aspect_height, 24);
LAYOUT(marvo_recording_info, 256, end_text, 64);
LAYOUT(marvo_verify_result, 24, faults, 16);
LAYOUT(marvo_copy_options, 32, last, 24);
LAYOUT(marvo_copy_result, 248, note, 56);
