/* The headers alone, as every dialect of C and C++ sees them. */
#include "vorna/vorna.h"

vorna_status begin(vorna_canvas* canvas);

vorna_status begin(vorna_canvas* canvas) {
    const vorna_color white = vorna_rgba(255, 255, 255, 255);
    return vorna_begin_picture(canvas, &white);
}
