// Visibility of what the drawing library gives to applications.
#pragma once

#if defined(_WIN32)
#define VORNA_DRAWING_API
#else
#define VORNA_DRAWING_API __attribute__((visibility("default")))
#endif
