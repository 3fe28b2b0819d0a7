// Recordings of the C interface: documents of what was drawn.
#pragma once

#include "vorna/c_canvas.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

// A file, plain or compressed by gzip. reading: may be null. VORNA_INVALID_INPUT names the file and the place in it.
vorna_status vorna_recording_read(const char* file, const vorna_reading* reading, vorna_recording** recording);

// The same of a document in memory, size bytes of it. Messages call it "recording".
vorna_status vorna_recording_parse(const char* text, size_t size, const vorna_reading* reading, vorna_recording** recording);

// Writes a file, which appears whole or not at all; compressed when its name ends in .gz.
vorna_status vorna_recording_write(const vorna_recording* recording, const char* file);

// The document, to be freed with vorna_free. size: its bytes without the zero byte that ends it.
vorna_status vorna_recording_text(const vorna_recording* recording, char** text, size_t* size);

// The number of its calls.
vorna_status vorna_recording_calls(const vorna_recording* recording, size_t* calls);

typedef struct vorna_replay_settings {
    size_t struct_size;
    const char* module; // path of the renderer module; null = the installed one
    // The calls from `first` to `last`, counted from 0, are made; earlier ones only set the renderer up. last: SIZE_MAX = all.
    size_t first, last;
} vorna_replay_settings;

// Fills the settings with the defaults. size: sizeof(vorna_replay_settings).
vorna_status vorna_replay_settings_init(vorna_replay_settings* settings, size_t size);

// Draws the recording. color, depth: become images of what is shown; either may be null and is then not made. settings: null =
// the defaults. VORNA_INVALID_INPUT for a recording that no application would make, and for depth when it has no depth buffer.
vorna_status vorna_recording_replay(const vorna_recording* recording, const vorna_replay_settings* settings, vorna_image** color,
                                    vorna_image** depth);

void vorna_recording_free(vorna_recording* recording);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
