/* Stands for the DLL where a language cannot be run against it: knows one recording, of three frames, and
 * refuses what does not come as declared. What it lacks the linker points at `missing`. */
#include "marvo_c.h"
#include <string.h>

static const char known[] = "Spiel \xc3\xa4.dv";
static char sentence[256];

int missing(void);
int missing(void) {
    return MARVO_E_STATE;
}
const char* marvo_version_text(void) {
    return "0.0 \xc3\xb6";
}
const char* marvo_last_error(void) {
    return sentence;
}

int marvo_reader_open(const char* file, marvo_reader** reader) {
    strcat(strcpy(sentence, "There is no "), file);
    *reader = (marvo_reader*)known;
    return strcmp(file, known) == 0 ? MARVO_OK : MARVO_E_FILE;
}

int marvo_reader_close(marvo_reader* reader) {
    return reader == (marvo_reader*)known ? MARVO_OK : MARVO_E_HANDLE;
}

int marvo_reader_info(marvo_reader* reader, marvo_recording_info* info) {
    if (reader != (marvo_reader*)known || info->size != sizeof *info) {
        return MARVO_E_HANDLE;
    }
    info->frames = 3;
    info->frame_bytes = 100;
    info->duration_100ns = 12345678901;
    return MARVO_OK;
}

int marvo_reader_read(marvo_reader* reader, marvo_u64 number, void* buffer, marvo_u32 capacity,
                      marvo_frame_info* info) {
    if (reader != (marvo_reader*)known || info->size != sizeof *info || capacity != 100 || number > 2) {
        return MARVO_E_RANGE;
    }
    memset(buffer, (int)number + 1, capacity);
    info->bytes = capacity;
    info->time_code_known = number == 2;
    info->time_code_hours = 10;
    info->time_code_frames = 24;
    return MARVO_OK;
}

int marvo_verify(const char* file, marvo_finding_fn finding, marvo_work_fn work, void* user,
                 marvo_verify_result* result) {
    result->faults = strcmp(file, known) == 0 && !work && result->size == sizeof *result ? 1 : 99;
    return finding(user, 12345678901, "kaputt \xc3\xbc") ? MARVO_E_CANCELLED : MARVO_OK;
}

int marvo_export(const char* from, const char* to, const marvo_copy_options* options, marvo_work_fn work,
                 void* user, marvo_copy_result* result) {
    const int right = strcmp(from, known) == 0 && strcmp(to, "neu.avi") == 0 &&
                      result->size == sizeof *result && options->size == sizeof *options &&
                      options->first == 0 && options->last == MARVO_TO_THE_END &&
                      options->flags == MARVO_REPLACE;
    if (work && work(user, 1, 2)) {
        return MARVO_E_CANCELLED;
    }
    result->frames = right ? 3 : 99;
    return MARVO_OK;
}
