// The C interface of Vorna, for C99, C11, C++ and every language that calls C. Link with the library vorna-c.
//
//     vorna_canvas_settings settings;
//     vorna_canvas* canvas;
//     const vorna_color white = vorna_rgba(255, 255, 255, 255);
//     vorna_canvas_settings_init(&settings, sizeof settings);
//     settings.width = 640;
//     settings.height = 480;
//     if (vorna_canvas_create(&settings, &canvas) != VORNA_OK) {
//         fprintf(stderr, "%s\n", vorna_last_message());
//     }
//     vorna_begin_picture(canvas, &white);
//     vorna_draw_2d_polyline(canvas, count, points);
//     vorna_end_picture(canvas);
//     vorna_canvas_free(canvas);
//
// Rules of all functions:
// - Functions return a status, except for those that free and those that return a constant. After a status other than VORNA_OK
//   vorna_last_message() gives one line that says what is wrong; results that are handles are then null, and nothing was drawn.
// - Handles are opaque. `create`, `read` and the like make them, `free` of the same type ends them and accepts null. A handle is
//   used by one thread at a time; different handles may be used at the same time.
// - Arrays and texts belong to the caller and are read during the call only, unless the function says otherwise. Texts are UTF-8
//   and end in a zero byte. Texts that functions return belong to the library.
// - Settings are structs whose first member is their size. Fill them by their `init` function, then change members. Later
// versions
//   add members at the end: with a later library the ones that the program lacks have their defaults, and an earlier library
//   accepts the ones that it lacks while they are 0.
// - Switches are int32_t: 0 is no, everything else yes.
// - Device coordinates are pixels: x to the right, y upwards, z away from the viewer from 0 to 65535.
#pragma once

#include "vorna/c_canvas.h"
#include "vorna/c_draw.h"
#include "vorna/c_image.h"
#include "vorna/c_map.h"
#include "vorna/c_model.h"
#include "vorna/c_recording.h"
#include "vorna/c_types.h"
