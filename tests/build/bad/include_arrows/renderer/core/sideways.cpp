// Includes a header of the host library.
#include <vorna/canvas.h>
